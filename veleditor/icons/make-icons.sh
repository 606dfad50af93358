#!/bin/sh
# Draws the window icons: a sheet with three rows of a tree, the value of the
# last one in the green that the editor gives to what can be changed. Run it
# after changing the drawing; the pictures are kept beside it.
set -eu
cd "$(dirname -- "$0")"

# draw SIZE FILE: on a grid of 48 units, four times too large, then reduced.
draw() {
    convert -size 768x768 xc:none \
        -draw 'scale 16,16
               fill #1f3a5f roundrectangle 2,1 46,47 6,6
               fill #f6f8fb roundrectangle 4.5,3.5 43.5,44.5 4,4
               fill #1f3a5f rectangle 10.5,15 13.5,39 rectangle 10.5,22.5 20,25.5
               rectangle 10.5,36 20,39
               fill #2f6db5 roundrectangle 8,8 30,16 2,2
               fill #5b93d4 roundrectangle 18,20 38,28 2,2
               fill #00a800 roundrectangle 18,33.5 40,41.5 2,2' \
        -filter Box -resize "$1x$1" -strip -define png:exclude-chunks=date,time "$2"
}

draw 16 ZOT.png
draw 32 ZOT32x32.png
draw 48 ZOT48x48.png
