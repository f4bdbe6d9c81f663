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
test "$("$work/build/consumer")" = "$work/installed/libexec/vrkvisual/vrkcadreader"

"$source/check-guide.sh" "$work/installed" "$work/guide"

# The examples, from where they are installed.
examples=$(dirname "$(find "$work/installed" -path '*/examples/CMakeLists.txt')")
cmake -S "$examples" -B "$work/examples" -G Ninja -DCMAKE_PREFIX_PATH="$work/installed" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" "${launcher[@]}" >/dev/null
cmake --build "$work/examples"
mkdir -p "$work/pictures"
"$work/examples/moving" "$work/pictures/moving.png"
"$work/examples/pictures" "$work/pictures" "$source/Bracket.stl" >"$work/pictures/picks"
"$work/examples/window" "$source/Bracket.stl" "$work/pictures/window.png"
"$work/examples/widget" "$source/Bracket.stl" "$work/pictures/widget.png"
# Every one of the 12 sides has the body in its middle.
test "$(grep -c "^[0-9]*: Bracket" "$work/pictures/picks")" = 12

# Without CMake.
export PKG_CONFIG_PATH="$(dirname "$(find "$work/installed" -name vrkvisual.pc)")"
c++ $(pkg-config --cflags vrkvisual) -o "$work/plain" "$source/main.cpp" "$source/each_class.cpp" $(pkg-config --libs vrkvisual) \
    -Wl,-rpath,"$(pkg-config --variable=libdir vrkvisual)"
"$work/plain"

# A CMake that is too old is told so, and not met with errors of its parser.
config=$(find "$work/installed" -name vrkvisualConfig.cmake)
cat >"$work/old.cmake" <<END
set(CMAKE_VERSION 3.18.4)
include($config)
message("\${vrkvisual_FOUND}: \${vrkvisual_NOT_FOUND_MESSAGE}")
END
cmake -P "$work/old.cmake" 2>&1 | grep -q "FALSE: vrkvisual needs CMake 3.23 or newer, and this is 3.18.4"
test -f "$work/installed/share/vrkvisual/vrkvisual-resources.zip"

# An installation that was moved finds what belongs to it.
mv "$work/installed" "$work/moved"
libraries=$(dirname "$(find "$work/moved" -name libvrkplatform.so.0)")
test "$(LD_LIBRARY_PATH=$libraries "$work/build/consumer")" = "$work/moved/libexec/vrkvisual/vrkcadreader"
