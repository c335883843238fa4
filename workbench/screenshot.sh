#!/usr/bin/env bash
# Takes workbench/screenshot.png of the real program under a virtual display. Needs xvfb, xdotool and imagemagick.
# usage: workbench/screenshot.sh, after a release build
set -euo pipefail
cd "$(dirname "$0")/.."
xvfb-run -a -s "-screen 0 1280x860x24" bash -c '
    build/release/workbench/tesk-plus --no-splash samples/parts.png & program=$!
    sleep 3
    xdotool mousemove 66 9 click 1 sleep 0.5
    # Process > Point to point > Binarization... > Threshold
    xdotool key Down Right Down Down Down Down Down Right Return
    sleep 2
    import -window root workbench/screenshot.png
    kill $program'
