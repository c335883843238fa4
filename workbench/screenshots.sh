#!/usr/bin/env bash
# Takes the pictures in workbench/screens of the real program under a virtual display.
# Needs xvfb, openbox, xdotool and imagemagick. usage: workbench/screenshots.sh, after a release build
set -euo pipefail
cd "$(dirname "$0")/.."

# take NAME ACTIONS...: starts the program on the sample image, does what the actions tell xdotool, and takes a picture.
take() {
    local name=$1
    shift
    # shellcheck disable=SC2016
    ACTIONS="$*" NAME=$name xvfb-run -a -s "-screen 0 1600x1000x24" bash -c '
        openbox & manager=$!
        sleep 1
        build/release/workbench/tesk-plus --no-splash samples/parts.png & program=$!
        sleep 2
        eval "$ACTIONS"
        sleep 1
        import -window root +dither -colors 96 -define png:compression-level=9 "PNG8:workbench/screens/$NAME.png"
        kill $program $manager'
}

# keys X KEYS...: opens the menu at X of the menu bar, and goes through it by keys.
keys() {
    local place=$1
    shift
    echo "xdotool mousemove $place 28 click 1; sleep 0.4; xdotool key --delay 50 $*; sleep 1;"
}
process=66
analyze=129

# Process > Point to point > Binarization... > Threshold, and the threshold dragged to the right
take threshold "$(keys $process Down Right Down Down Down Down Down Right Return)" \
    'xdotool mousemove 220 445 mousedown 1; for x in 235 250 265 280; do xdotool mousemove $x 445; sleep 0.2; done;
     xdotool mouseup 1'
# Analyze > Profile > Rows... > Cumulate across Rows, and the band dragged over the small ring
take profile "$(keys $analyze Down Right Right Down Return)" \
    'xdotool mousemove 1000 715 mousedown 1; for y in 700 680 660; do xdotool mousemove 1000 $y; sleep 0.2; done;
     xdotool mouseup 1'
# Process > Geometry > Warping... > Skew by Three Points
take skew "$(keys $process Down Down Down Down Right Down Down Down Right Down Down Return)"
