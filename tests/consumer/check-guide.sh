#!/usr/bin/env bash
# check-guide.sh <installed prefix> <work folder>: whether each piece of code in the guide compiles against what is installed, as
# somebody would who types it in, and whether the programs on the page of examples are those that are installed.
set -euo pipefail
prefix=$1
work=$2
source=$(cd "$(dirname "$0")" && pwd)
docs=$(dirname "$(find "$prefix" -name embedding.md)")
examples=$(dirname "$(find "$prefix" -path '*/examples/CMakeLists.txt')")
rm -rf "$work"
mkdir -p "$work"

# What is a function of its own stands beside the others; all else is the inside of one. Includes come first.
awk '
    function flush() {
        isFunction = body ~ /^[a-z][A-Za-z0-9_:<>*& ]+\([^;]*\)\n\{/
        rest = rest "\n" (isFunction ? body : "void piece" ++count "()\n{\n" body "}\n")
        pieces++
        body = ""
    }
    /^```cpp$/ { inside = 1; next }
    /^```$/ { if (inside) flush(); inside = 0; next }
    inside && /^#include/ { print; next }
    inside { body = body $0 "\n" }
    END {
        printf "namespace guide {\n%s\n}\n", rest
        if (pieces < 20)
            exit 1
    }' "$docs/embedding.md" >"$work/guide.cpp"
export PKG_CONFIG_PATH="$(dirname "$(find "$prefix" -name vrkvisual.pc)")"
c++ -std=c++20 -fsyntax-only -Wno-unused $(pkg-config --cflags vrkvisual) -include "$source/guide_prelude.h" "$work/guide.cpp"

# "## window.cpp" and the program below it.
awk -v work="$work" '/^## .*\.cpp$/ { file = work "/" $2; next }
    /^```cpp$/ { inside = 1; next }
    /^```$/ { inside = 0; next }
    inside { print >file }' "$docs/examples.md"
for program in "$examples"/*.cpp; do
    cmp "$program" "$work/$(basename "$program")"
done
