#!/usr/bin/env bash
# Draws the files of folders with the viewer and with other programs, from the same direction with the same lens, and lays the
# pictures beside each other: a row for each file, a column for each program.
#
# compare-pictures.sh [--bin <folder>] [--sizes "<w>x<h> ..."] [--out <folder>] <folder> ...
#   --bin    where vrkview and ais_picture lie, made by `cmake --build --preset release --target vrkview ais_picture`
#            [build/release/bin]
#   --sizes  of the pictures ["320x200 1600x1000 3840x2160"]
#   --out    where the sheets go, <folder>-<size>.png, and <folder>-<size>-part.png with the middle of each picture, pixel by
#            pixel, where the sheet has it smaller; the pictures themselves lie in pictures/ there [build/sheets]
#
# Files are those of a folder and of the folders in it. A program that cannot read a file has a cell that says so. It fails where
# the viewer does. Needs f3d, ImageMagick and xvfb-run: scripts/install-packages.sh --peers.
set -euo pipefail

project=$(cd "$(dirname "$0")/.." && pwd)
bin=$project/build/release/bin
out=$project/build/sheets
sizes="320x200 1600x1000 3840x2160"
cell=900      # pixels across a picture on a sheet, at most
part=450x300  # of the middle
columns=(ours f3d "f3d, best" "Open CASCADE")

usage() {
    sed -n '2,/^set/{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 1
}

folders=()
while [ $# -gt 0 ]; do
    case "$1" in
    --bin | --sizes | --out)
        [ $# -gt 1 ] || usage
        printf -v "${1#--}" %s "$2"
        shift
        ;;
    -*) usage ;;
    *) folders+=("$1") ;;
    esac
    shift
done
[ ${#folders[@]} -gt 0 ] || usage
for program in "$bin/vrkview" "$bin/ais_picture" f3d montage convert xvfb-run; do
    command -v "$program" >/dev/null || { echo "compare-pictures.sh: there is no $program" >&2; exit 1; }
done

# One display for all of it; software drawing, so that the pictures come out the same on every machine.
if [ -z "${VRK_COMPARE_HAS_DISPLAY:-}" ]; then
    export VRK_COMPARE_HAS_DISPLAY=1 LIBGL_ALWAYS_SOFTWARE=1
    exec xvfb-run -a -s "-screen 0 3840x2160x24" "$0" --bin "$bin" --sizes "$sizes" --out "$out" "${folders[@]}"
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT

# empty_cell <picture> <width> <height>
empty_cell() {
    convert -size "$2x$3" xc:gray85 -gravity center -pointsize $(($2 / 16)) -fill gray40 -annotate 0 "cannot read" "$1"
}

# draw_ours <file> <picture> <width> <height>
draw_ours() {
    if ! "$bin/vrkview" "$1" --size "$3x$4" --shot "$2" >"$log" 2>&1; then
        cat "$log" >&2
        echo "compare-pictures.sh: vrkview cannot draw $1 with $3x$4" >&2
        exit 1
    fi
}

# draw_ais <file> <picture> <width> <height>: prints where it looks from and at
draw_ais() {
    "$bin/ais_picture" "$1" "$2" "$3" "$4" 2>"$log" || empty_cell "$2" "$3" "$4"
}

# draw_f3d <file> <picture> <width> <height> <eye and centre, or none> [<option> ...]
draw_f3d() {
    local field from
    field=$(awk -v w="$3" -v h="$4" 'BEGIN { print 360 / 3.14159265 * atan2(sin(0.235) / cos(0.235) * h / w, 1) }') # 0.47 across
    if [ -n "$5" ]; then
        # shellcheck disable=SC2054 # the commas are f3d's
        from=(--camera-position "${5% *}" --camera-focal-point "${5#* }" --camera-view-up 0,0,1)
    else # it fits the picture itself, from the direction of the others
        from=(--camera-azimuth-angle 45 --camera-elevation-angle 35.264)
    fi
    rm -f "$2"
    f3d --dry-run --quiet --up=+Z --camera-view-angle "$field" "${from[@]}" --resolution "$3,$4" "${@:6}" \
        --output "$2" "$1" >"$log" 2>&1 || true
    [ -s "$2" ] || empty_cell "$2" "$3" "$4"
}

# draw_row <file> <folder for its pictures> <width> <height>
draw_row() {
    local from looks=(--ssao --fxaa --tone-mapping)
    case "${1,,}" in
    *.ply | *.xyz | *.pcd) looks=(--point-sprites --point-size=2 --fxaa) ;;
    esac
    mkdir -p "$2"
    draw_ours "$1" "$2/1.png" "$3" "$4"
    from=$(draw_ais "$1" "$2/4.png" "$3" "$4")
    draw_f3d "$1" "$2/2.png" "$3" "$4" "$from"
    draw_f3d "$1" "$2/3.png" "$3" "$4" "$from" "${looks[@]}"
}

# lay_sheet <sheet> <options of convert for each picture> <name of a file> ... -- <folder of its pictures> ...
lay_sheet() {
    local sheet=$1 how=$2 cells=() names=() i=0 label
    shift 2
    while [ "$1" != -- ]; do
        names+=("$1")
        shift
    done
    shift
    for pictures in "$@"; do
        for column in 1 2 3 4; do
            # shellcheck disable=SC2086 # several words
            convert "$pictures/$column.png" $how +repage "$pictures/cell-$column.png"
            label=${columns[column - 1]}
            [ "$column" -ne 1 ] || label="${names[i]}: $label"
            cells+=(-label "$label" "$pictures/cell-$column.png")
        done
        i=$((i + 1))
    done
    montage -pointsize 16 "${cells[@]}" -tile 4x -geometry +4+4 "$sheet"
    rm -f "${@/%//cell-1.png}" "${@/%//cell-2.png}" "${@/%//cell-3.png}" "${@/%//cell-4.png}"
    echo "$sheet"
}

for folder in "${folders[@]}"; do
    mapfile -t files < <(find "$folder" -maxdepth 2 -type f -regextype posix-extended \
        -iregex '.*\.(step|stp|brep|stl|urdf|ply|pcd|xyz)' | sort)
    [ ${#files[@]} -gt 0 ] || { echo "compare-pictures.sh: $folder has no files to draw" >&2; exit 1; }
    for size in $sizes; do
        width=${size%x*} height=${size#*x}
        names=() rows=()
        for file in "${files[@]}"; do
            row=$out/pictures/$(basename "$folder")-$size/$(basename "$file")
            draw_row "$file" "$row" "$width" "$height"
            names+=("$(basename "$file")")
            rows+=("$row")
        done
        sheet=$out/$(basename "$folder")-$size
        lay_sheet "$sheet.png" "-resize $cell>" "${names[@]}" -- "${rows[@]}"
        [ "$width" -le "$cell" ] ||
            lay_sheet "$sheet-part.png" "-gravity center -crop $part+0+0" "${names[@]}" -- "${rows[@]}"
    done
done
