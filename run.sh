#!/usr/bin/env bash
# Builds, and runs the headless sequence on an image: read, invert, binarize, write, export.
# usage: ./run.sh [IMAGE [FOLDER]]
set -euo pipefail
image=$(realpath -m "${1:-$(dirname "$0")/samples/parts.png}")
folder=$(realpath -m "${2:-tesk-output}")
cd "$(dirname "$0")"
./install-packages.sh
cmake --preset release -DTESK_TESTS=OFF >/dev/null
cmake --build --preset release -j"$(nproc)"
[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && echo "The window follows; this is the headless sequence."
mkdir -p "$folder"
exec build/release/workbench/tesk-headless "$image" "$folder"
