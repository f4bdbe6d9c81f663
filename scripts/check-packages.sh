#!/usr/bin/env bash
# Fails, and names the lines, if the sources of what is installed include a package that is not on the list below. Programs of
# any licence may link those of the list; what comes under the GPL, as most of CGAL does, is for bench/ alone.
# check-packages.sh [<folder>]: reads src/, apps/ and examples/ of that folder, or of the project.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

# The folders that headers of packages lie in; vrk is our own, as it is installed.
packages='vrk|sys|boost|fmt|nlohmann|spdlog|minizip|assimp|urdf_world|urdf_parser|urdf_model|console_bridge|xcb|X11|GLFW|CLI'
# Those that lie in none: of OGRE, Qt and Open CASCADE by their names, others one by one. What has no ending is the language's.
names='Ogre[A-Za-z0-9]*\.h|Q[A-Za-z0-9]*|[A-Za-z0-9_]+\.hxx|lzf\.h|png\.h|tinyxml\.h|ft2build\.h|[a-z_]+'
system='unistd|fcntl|dlfcn|signal|poll|time|malloc|spawn|emmintrin'

folders=()
for folder in src apps examples; do
    [ ! -d "$folder" ] || folders+=("$folder")
done
if [ ${#folders[@]} = 0 ]; then
    echo "there is nothing to read"
    exit 1
fi
! grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*<' "${folders[@]}" |
    grep -vE "include[[:space:]]*<(($packages)/[^>]*|$names|($system)\.h)>"
