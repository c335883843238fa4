#!/usr/bin/env bash
# Installs what the build needs, if anything is missing.
set -euo pipefail
packages=(g++ cmake ninja-build pkg-config libhwy-dev libjpeg-dev libpng-dev libtiff-dev libeigen3-dev libcairo2-dev
          libavformat-dev libavcodec-dev libswscale-dev
          libgtest-dev qt6-base-dev fonts-dejavu-core)
missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
$sudo apt-get update
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
