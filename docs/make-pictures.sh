#!/bin/sh
# Makes the pictures of the documents anew, all by the viewer itself: docs/make-pictures.sh [PROGRAM]
# They are small on purpose: none over 150 kB. That of the window is a screenshot of the program, started
# on an Xvfb of 1280x880 without settings (import -window root), and brought down to 220 colours.
set -eu
cd "$(dirname "$0")/.."
# A background of one colour, which packs better than the usual one.
viewer=${1:-build/release/bin/vrkview}
pictures=docs/pictures
mkdir -p $pictures

"$viewer" --background "#7C8793" --size 440x275 --shot $pictures/cell.png
"$viewer" --background "#7C8793" --size 640x400 --view front --shot $pictures/cell-front.png
"$viewer" --background "#7C8793" --size 460x288 --display edges --shot $pictures/cell-edges.png
"$viewer" --background "#7C8793" --size 1000x625 --pick-grid 1000x625 --pick-picture $pictures/cell-picks.png > /dev/null

largest=$(find $pictures -name '*.png' -size +150000c)
if [ -n "$largest" ]; then
    echo "over 150 kB: $largest" >&2
    exit 1
fi
