#!/usr/bin/env bash
# Installs what is missing, builds the viewer and opens it on the built-in demo station. With no display it draws the same
# station into out/*.png. Arguments go to the viewer: ./demo.sh part.step
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-packages.sh

log=build/demo.log
mkdir -p build
echo "Building the viewer (some minutes the first time; $log has the details)"
if ! { cmake --preset release -DVRK_BUILD_VIEWER=ON && cmake --build --preset release --target vrkview; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    echo "The build failed; the whole of it is in $log" >&2
    exit 1
fi

viewer=build/release/bin/vrkview
# The view draws on X11; a Wayland desktop offers it through Xwayland and sets DISPLAY as well.
if [ -n "${DISPLAY:-}" ]; then
    echo "Opening the viewer; F1 lists its keys"
    exec "$viewer" "$@"
fi
mkdir -p out
"$viewer" --shot out/demo.png --view iso,front,top "$@"
echo "There is no display, so these pictures were drawn instead:"
printf '  %s\n' out/demo-iso.png out/demo-front.png out/demo-top.png
