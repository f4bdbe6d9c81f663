#!/usr/bin/env bash
# Lets scripts/check-packages.sh judge made-up trees of one include each, and the project itself.
set -euo pipefail
script=$(cd "$(dirname "$0")/../../scripts" && pwd)/check-packages.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# judge <passes|refused> <file> <include line>
judge() {
    local wanted=$1 file=$2 line=$3 got=passes said
    rm -rf "${work:?}"/*
    mkdir -p "$work/$(dirname "$file")"
    printf '#pragma once\n%s\n' "$line" >"$work/$file"
    said=$("$script" "$work") || got=refused
    if [ "$got" != "$wanted" ] || { [ "$got" = refused ] && [[ "$said" != "$file:2:"* ]]; }; then
        echo "$file, $line: $wanted was expected, $got: $said"
        failures=1
    fi
}

judge passes src/mesh/Mesh.h '#include "mesh/Other.h"'
judge passes src/mesh/Mesh.h '#include <vector>'
judge passes src/mesh/Mesh.cpp '#include <OgreMesh.h>'
judge passes src/platform/cam/Remesh.cpp '#include <boost/signals2/signal.hpp>'
judge passes apps/viewer/main.cpp '#include <QWidget>'
judge passes examples/moving.cpp '#include <vrk/scene/Scene.h>'

judge refused src/platform/cam/Remesh.cpp '#include <CGAL/Surface_mesh.h>'
judge refused src/platform/cam/Remesh.h '#  include <CGAL/Surface_mesh.h>'
judge refused apps/viewer/main.cpp '#include <QtCharts/QChart>'
judge refused examples/moving.cpp '#include <gmp.h>'

"$script" || failures=1
exit $failures
