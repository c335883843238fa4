#!/usr/bin/env bash
# Draws the program's icons, with ImageMagick: the plain size and the double one for dense screens.
# usage: make-icons.sh, in this folder
set -euo pipefail
green='#2f9e5b' gray='#8a94a0' blue='#2f7fd0' orange='#e08a1e'
draw() { # name, size, drawing on a grid of 16 x 16
    for scale in 1 2; do
        suffix=""; [ $scale -eq 2 ] && suffix="@2x"
        convert -size 128x128 xc:none -scale 128x128 -draw "scale 8,8 $3" -resize $(($2 * scale))x$(($2 * scale)) \
                -strip "PNG32:$1$suffix.png"
    done
}
tick='path "M 3.5,8.5 L 6.8,11.8 L 12.8,4.6"'
draw Ok16_White 16 "fill none stroke $gray stroke-width 1 roundrectangle 1.5,1.5 14.5,14.5 3,3 stroke-width 1.6 $tick"
draw OkOk16 16 "fill $green stroke $green stroke-width 1 roundrectangle 1.5,1.5 14.5,14.5 3,3 fill none stroke white stroke-width 2 $tick"
draw Current 16 "fill $orange stroke $orange stroke-width 1 path 'M 4,2.5 L 13,8 L 4,13.5 Z'"
draw Ok32 32 "fill none stroke $gray stroke-width 1 roundrectangle 1.5,1.5 14.5,14.5 3,3 stroke-width 1.4 $tick"
draw OkOk32 32 "fill $green stroke $green stroke-width 1 roundrectangle 1.5,1.5 14.5,14.5 3,3 fill none stroke white stroke-width 1.8 $tick"
draw point 16 "fill $blue stroke none circle 8,8 8,4.2"
draw open 16 "fill none stroke $orange stroke-width 1.3 path 'M 1.5,13 L 1.5,3.5 L 6,3.5 L 7.5,5.5 L 13.5,5.5 L 13.5,7.5' path 'M 1.5,13 L 4,7.5 L 15,7.5 L 12.5,13 Z'"
draw save 16 "fill none stroke $blue stroke-width 1.3 path 'M 2,2 L 12,2 L 14,4 L 14,14 L 2,14 Z' path 'M 5,2 L 5,6 L 11,6 L 11,2' path 'M 4.5,14 L 4.5,9 L 11.5,9 L 11.5,14'"
draw program 64 "fill #16364f stroke none roundrectangle 0.5,0.5 15.5,15.5 3,3 fill #d2dee6 circle 8,8 8,3.6 fill #16364f circle 8,8 8,6.4 fill none stroke #5adc82 stroke-width 0.8 circle 8,8 8,2.2 stroke #ffbe3c path 'M 1.5,8 L 14.5,8'"
