#!/usr/bin/env bash
# run.sh <build folder>: installs the build into a folder of its own, looks whether the public surface is whole, builds the
# consumer against it and runs it.
set -euo pipefail
build=$1
source=$(cd "$(dirname "$0")" && pwd)
work=$build/consumer
rm -rf "$work"
cmake --install "$build" --prefix "$work/installed" >/dev/null
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
"$source/check-exports.sh" "$work/installed"
for internal in Float4 LargePages NearestHitBuilder NearestHitTree BVHWalk BoxTests ParallelFor; do
    test ! -e "$work/installed/include/vrk/selection/geometry/$internal.h"
done
cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/installed" "${launcher[@]}" >/dev/null
cmake --build "$work/build"
"$work/build/consumer"
test -f "$work/installed/share/vrkvisual/vrkvisual-resources.zip"
