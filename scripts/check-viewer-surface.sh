#!/usr/bin/env bash
# Fails, and names the lines, if the viewer names OGRE or includes a header of the library that is not installed: it is there
# to show that an application needs neither.
# check-viewer-surface.sh [<folder>]: reads apps/ and src/ of that folder, or of the project.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

private=$(find src -name CMakeLists.txt | while read -r list; do
    awk -v folder="$(dirname "${list#src/}")/" '
        BEGIN { sub(/^\.\//, "", folder) }
        { gsub(/[()]/, " & ") }
        {
            for (i = 1; i <= NF; i++)
                if ($i == "PRIVATE_HEADERS")
                    inside = 1
                else if ($i ~ /^[A-Z_]+$/ || $i == ")")
                    inside = 0
                else if (inside && $i ~ /\.h$/)
                    print "#include \"" folder $i "\""
        }' "$list"
done)
if [ -z "$private" ]; then
    echo "no private headers were found in src: the lists are read wrongly"
    exit 1
fi

failed=0
if grep -rnE 'Ogre::|#include <Ogre' apps; then
    failed=1
fi
if grep -rnF -f <(echo "$private") apps; then
    failed=1
fi
exit $failed
