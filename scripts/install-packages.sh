#!/usr/bin/env bash
# Installs what the build needs on Debian 12, and nothing where it is there already. With --peers also what only benchmarks
# and scripts/compare-pictures.sh use, each where it is there: other ways of doing the same work.
set -euo pipefail

packages=(
    build-essential cmake ninja-build ccache clang-format pkg-config git
    libogre-1.12-dev
    libocct-foundation-dev libocct-modeling-data-dev libocct-modeling-algorithms-dev libocct-ocaf-dev
    libocct-data-exchange-dev libocct-visualization-dev
    libfreetype-dev fonts-dejavu-core
    libminizip-dev liblzf-dev libfmt-dev libspdlog-dev libboost-dev nlohmann-json3-dev libpng-dev
    liburdfdom-dev libassimp-dev
    qt6-base-dev libcli11-dev libglfw3-dev
    universal-ctags
    libgtest-dev libgmock-dev libbenchmark-dev libembree-dev libcgal-dev
    libx11-dev libxcb1-dev libxtst-dev xvfb xauth libgl1-mesa-dri
)

peers=(libopenmesh-dev libmeshoptimizer-dev libvtk9-dev libpcl-dev f3d imagemagick)
case "${1:-}" in
--peers) packages+=("${peers[@]}") ;;
"") ;;
*)
    echo "install-packages.sh [--peers]" >&2
    exit 1
    ;;
esac

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing ${#missing[@]} packages: ${missing[*]}"
sudo=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "run this as root, or install: ${missing[*]}" >&2; exit 1; }
    sudo=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
