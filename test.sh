#!/usr/bin/env bash
# Installs the packages on a fresh Debian or Ubuntu machine, builds, and runs every test.
set -euo pipefail
cd "$(dirname "$0")"
./install-packages.sh
cmake --preset release -DTESK_TESTS=ON -DTESK_WERROR="${CI:+ON}"
cmake --build --preset release -j"$(nproc)"
ctest --preset release -j"$(nproc)"
