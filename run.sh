#!/usr/bin/env bash
# Builds, and opens the workbench on an image. Without a display it runs the headless sequence instead: read, invert,
# binarize, write, export.
# usage: ./run.sh [IMAGE [FOLDER]]
set -euo pipefail
image=$(realpath -m "${1:-$(dirname "$0")/samples/parts.png}")
folder=$(realpath -m "${2:-tesk-output}")
cd "$(dirname "$0")"
./install-packages.sh
cmake --preset release -DTESK_TESTS=OFF >/dev/null
cmake --build --preset release -j"$(nproc)"
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec build/release/workbench/tesk-plus "$image"
fi
mkdir -p "$folder"
exec build/release/workbench/tesk-headless "$image" "$folder"
