#!/usr/bin/env bash
# run.sh <build folder>: installs the build into a folder of its own, builds the consumer against it and runs it.
set -euo pipefail
build=$1
source=$(cd "$(dirname "$0")" && pwd)
work=$build/consumer
rm -rf "$work"
cmake --install "$build" --prefix "$work/installed" >/dev/null
cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/installed" >/dev/null
cmake --build "$work/build"
"$work/build/consumer"
test -f "$work/installed/share/vrkvisual/vrkvisual-resources.zip"
