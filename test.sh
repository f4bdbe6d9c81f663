#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: all that users run, compiled as they get it, under a virtual
# display; the parts without a window once more under the address, undefined behaviour and thread sanitizers, and the
# tests that draw under the first two. The sanitizers' builds are the debug builds; nothing is built plainly for debugging.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-packages.sh
scripts/check-format.sh
scripts/check-floors.sh
scripts/check-viewer-surface.sh
scripts/check-packages.sh

for preset in check asan tsan asan-window; do
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
done

# Software drawing, so that pictures come out the same on every machine.
export LIBGL_ALWAYS_SOFTWARE=1
xvfb-run -a -s "-screen 0 1280x1024x24" ctest --test-dir build/check --output-on-failure -j2
# Without a search for leaks: OGRE, Open CASCADE and the driver keep much to their end.
xvfb-run -a -s "-screen 0 1280x1024x24" ctest --preset asan-window
ctest --test-dir build/tsan --output-on-failure -j2
ctest --test-dir build/asan --output-on-failure -j2
