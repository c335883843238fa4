#!/usr/bin/env bash
# Tries what the README promises of a fresh machine: in a minimal root made by debootstrap, from a clean clone of what is
# committed. The packages come from the mirror that this machine's own apt uses. Needs to be root.
# usage: tests/fresh-machine.sh SUITE    (bookworm, trixie)
set -euo pipefail
suite=${1:?usage: tests/fresh-machine.sh SUITE}
tree=$(git -C "$(dirname "$0")" rev-parse --show-toplevel)
mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | head -n 1)
work=$(mktemp -d)
root="$work/root"
trap 'rm -rf --one-file-system "$work"' EXIT

step() {
    local start=$SECONDS
    if "${@:2}" >"$work/log" 2>&1; then
        echo "$suite: $1: passed in $((SECONDS - start)) s$(sed -n 's/^\(100% tests passed.*\)/: \1/p' "$work/log")"
    else
        echo "$suite: $1: FAILED"
        tail -n 60 "$work/log"
        exit 1
    fi
}
inside() {
    chroot "$root" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin ${http_proxy:+http_proxy="$http_proxy"} \
        bash -c "cd /tesk && $1"
}

step "making the root" debootstrap --variant=minbase "$suite" "$root" "$mirror"
git clone -q "$tree" "$root/tesk"
step ./install-packages.sh inside ./install-packages.sh
step ./test.sh inside ./test.sh
step "./run.sh without a display" inside "./run.sh && ls tesk-output/*.png tesk-output/*.cpp"
