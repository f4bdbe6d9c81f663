#!/usr/bin/env bash
# Lets scripts/check-viewer-surface.sh judge a made-up viewer of one line, and the project's own.
set -euo pipefail
script=$(cd "$(dirname "$0")/../../scripts" && pwd)/check-viewer-surface.sh
tree=$(mktemp -d)
trap 'rm -r "$tree"' EXIT
mkdir -p "$tree/apps/viewer" "$tree/src/scene/core"
printf 'vrk_files(vrkvisual\n    HEADERS Scene.h\n    PRIVATE_HEADERS Grid.h\n        Mask.h\n    SOURCES Grid.cpp)\n' >"$tree/src/scene/CMakeLists.txt"
printf 'vrk_files(vrkvisual PRIVATE_HEADERS Refused.h)\n' >"$tree/src/scene/core/CMakeLists.txt"

judge() { # <expected exit code> <the viewer's line>
    echo "$2" >"$tree/apps/viewer/main.cpp"
    local code=0
    "$script" "$tree" >/dev/null || code=$?
    if [ $code != "$1" ]; then
        echo "'$2': exit code $code instead of $1"
        exit 1
    fi
}
judge 0 '#include "scene/Scene.h"'
judge 1 '#include "scene/Grid.h"'
judge 1 '#include "scene/Mask.h"'
judge 1 '#include "scene/core/Refused.h"'
judge 1 '#include <Ogre.h>'
judge 1 'Ogre::Vector3 place;'
rm "$tree/src/scene/CMakeLists.txt" "$tree/src/scene/core/CMakeLists.txt"
judge 1 '#include "scene/Scene.h"'
"$script"
