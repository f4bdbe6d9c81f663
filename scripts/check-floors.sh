#!/usr/bin/env bash
# Fails, and names the lines, if a source includes from a floor above its own.
# check-floors.sh [<folder>]: reads what lies in src/ of that folder, or of the project.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

# From the ground up; a folder stands on the floor of the longest name here that its path begins with. Those of one line
# may include each other. A class of a higher floor is named by forward declaration, and one source up there meets it.
floors='
platform/common
scene/math
selection/geometry
platform/sdf
platform/broker platform/geometry platform/smart platform/task
platform/layout
platform
scene/core
mesh
visual
selection
view
station task preview handles
scene
'

# The only doors up: each family of the scene's operations is part of the class that it is declared in, and picking is told
# through one source what the visuals do.
grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]' src | awk -v floors="$floors" '
    BEGIN {
        count = split(floors, lines, "\n")
        for (i = 1; i <= count; i++) {
            names = split(lines[i], folders, " ")
            for (j = 1; j <= names; j++)
                rank[folders[j]] = i
        }
    }
    # 0 where no floor is known.
    function rankOf(path) {
        while (sub(/\/[^\/]*$/, "", path))
            if (path in rank)
                return rank[path]
        return 0
    }
    function isDoor(file, target) {
        if (target == "scene/Scene.h")
            return file ~ /\/Scene[A-Za-z]*\.cpp$/ && rankOf(file) > rank["mesh"]
        return file == "visual/Picking.cpp" && target == "selection/VisualSelection.h"
    }
    {
        match($0, /^[^:]*:[0-9]+:/)
        place = substr($0, 1, RLENGTH - 1)
        file = place
        sub(/:[0-9]+$/, "", file)
        sub(/^src\//, "", file)
        quoted = $0 ~ /include[[:space:]]*"/
        target = substr($0, RLENGTH + 1)
        sub(/^[^"<]*["<]/, "", target)
        sub(/[">].*$/, "", target)
        if (!quoted && !rankOf(target)) # a package
            next
        if (!rankOf(file) || !rankOf(target))
            print place ": \"" target "\" or the file itself lies in no folder that has a floor"
        else if (rankOf(target) > rankOf(file) && !isDoor(file, target))
            print place ": \"" target "\" stands on a floor above"
        else
            next
        failed = 1
    }
    END { exit failed }'
