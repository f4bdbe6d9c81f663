#!/usr/bin/env bash
# check-exports.sh <installed folder>: fails, and names them, if an installed header declares an operation that an
# application could call and neither library offers, or one that answers with a class that no installed header defines.
# Operations are told apart by name and number of overloads.
set -euo pipefail
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

find . -name 'libvrk*.so' -exec nm -DC --defined-only {} + | sed -nE 's/\[abi:cxx11\]//g; s/^[0-9a-f]+ [TWV] //p' |
    sort -u >"$work/offered"
# Prototypes, classes, and the definitions that stand in headers. VRK_EXPORT would be taken for a part of a name.
(cd include/vrk && find . -name '*.h' -printf '%P\n' | sort) >"$work/headers"
(cd include/vrk && ctags -x --language-force=C++ --kinds-c++=pfcs -I VRK_EXPORT -L "$work/headers" \
    --_xformat='%K	%a	%s::%N	%F:%n	%C	%{typeref}	%N') >"$work/declared"
# Ours that are only named somewhere; those of Open CASCADE have an underscore.
grep -rhoE '^ *(class|struct) [A-Za-z]+;' include/vrk | sed -E 's/^ *(class|struct) ([A-Za-z]+);/\2/' | sort -u >"$work/named"
grep -q . "$work/offered" && grep -q '^prototype' "$work/declared"

awk -F'\t' '
    { gsub(/ /, "", $3) }
    FILENAME ~ /named$/ { named[$1] = 1; next }
    FILENAME ~ /offered$/ {
        name = $0
        sub(/\(.*/, "", name)
        if (name ~ / [A-Za-z_:]+<[^ ]*>$/) { # of a template, which is told with what it returns
            sub(/<[^<]*>$/, "", name)
            sub(/^.* /, "", name)
        }
        gsub(/ /, "", name)
        offered[name]++
        next
    }
    $1 == "class" || $1 == "struct" { defined[$7] = 1; next }
    $2 != "private" && ($1 == "function" || $1 == "prototype") {
        rest = $6
        sub(/^typename:/, "", rest)
        gsub(/Ogre::[A-Za-z]+/, "", rest)
        gsub(/[^A-Za-z_]+/, " ", rest)
        answers[$4 ": " $3] = rest
    }
    $1 == "function" { inlined[$3] = 1; next }
    $2 == "private" || $5 ~ /= *(delete|default|0);/ || $5 ~ /^extern template / { next }
    { declared[$3]++; place[$3] = $4 }
    END {
        for (name in declared)
            if (declared[name] > offered[name] && !(name in inlined)) {
                print place[name] ": " name " is declared, but no library offers it"
                failed = 1
            }
        for (operation in answers) {
            count = split(answers[operation], words, " ")
            for (i = 1; i <= count; i++)
                if (words[i] in named && !(words[i] in defined)) {
                    print operation " answers with " words[i] ", which no installed header defines"
                    failed = 1
                }
        }
        exit failed
    }' "$work/named" "$work/offered" "$work/declared"
