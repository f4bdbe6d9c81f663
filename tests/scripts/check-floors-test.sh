#!/usr/bin/env bash
# Lets scripts/check-floors.sh judge made-up trees of one include each, and the project itself.
set -euo pipefail
script=$(cd "$(dirname "$0")/../../scripts" && pwd)/check-floors.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# judge <passes|refused> <file> <include line>
judge() {
    local wanted=$1 file=$2 line=$3 got=passes said
    rm -rf "$work/src"
    mkdir -p "$work/src/$(dirname "$file")"
    printf '#pragma once\n%s\n' "$line" >"$work/src/$file"
    said=$("$script" "$work") || got=refused
    # A refusal names the line.
    if [ "$got" != "$wanted" ] || { [ "$got" = refused ] && [[ "$said" != "src/$file:2: "* ]]; }; then
        echo "$file, $line: $wanted was expected, $got: $said"
        failures=1
    fi
}

judge passes visual/Visual.h '#include "visual/VisualType.h"'
judge passes visual/Visual.cpp '#include "scene/core/SceneCore.h"'
judge passes station/LinkVisual.cpp '#include "task/RobtargetVisual.h"'
judge passes selection/geometry/Box.h '#include "platform/common/Export.h"'
judge passes platform/station/import/Step.cpp '#include "platform/layout/Part.h"'
judge passes mesh/Mesh.h '#include <vector>'
judge passes mesh/Mesh.h '#include <boost/signals2/signal.hpp>'

judge refused visual/Visual.cpp '#include "view/Camera.h"'
judge refused visual/Visual.h '#  include "selection/VisualSelection.h"'
judge refused selection/geometry/Box.h '#include "scene/core/OgreCompat.h"'
judge refused selection/geometry/Box.h '#include "platform/sdf/SdfObject.h"'
judge refused scene/math/Pose.h '#include "selection/geometry/Box.h"'
judge refused platform/task/Task.cpp '#include "platform/layout/Layout.h"'
judge refused platform/layout/Body.cpp '#include "platform/station/Import.h"'
judge refused mesh/MeshManager.cpp '#include <visual/SolidVisual.h>'
judge refused view/Camera.cpp '#include "Mouse.h"'
judge refused tools/Tool.cpp '#include "mesh/Mesh.h"'

judge passes visual/SceneFaces.cpp '#include "scene/Scene.h"'
judge passes task/SceneTargets.cpp '#include "scene/Scene.h"'
judge passes visual/Picking.cpp '#include "selection/VisualSelection.h"'
judge refused visual/SceneFaces.h '#include "scene/Scene.h"'
judge refused visual/SceneFaces.cpp '#include "scene/Grid.h"'
judge refused visual/SceneFrames.cpp '#include "station/WObjVisual.h"'
judge refused visual/Faces.cpp '#include "scene/Scene.h"'
judge refused scene/core/SceneCore.cpp '#include "scene/Scene.h"'
judge refused visual/Picking.cpp '#include "view/Camera.h"'
judge refused visual/SolidVisual.cpp '#include "selection/VisualSelection.h"'

"$script" || failures=1
exit $failures
