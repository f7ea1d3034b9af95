#!/usr/bin/env bash
# The main job on real terrain: builds the library and examples/demo.cpp, runs it on the elevation model in
# examples/data/terrain, and leaves pictures, a page for the browser and point files in out/. Installs what is missing
# (Debian and relatives).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

need compiler cmake ninja gmp
say "Building"
configure demo
cmake --build --preset demo --target demo

say "Running"
mkdir -p out
build/demo/examples/demo examples/data/terrain/jacksboro_srtm.xyz out

if command -v gs >/dev/null; then
    say "Pictures"
    for drawing in out/*.ps; do
        gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=png16m -r120 -dTextAlphaBits=4 -dGraphicsAlphaBits=4 \
            -sOutputFile="${drawing%.ps}.png" "$drawing"
        echo "$drawing -> ${drawing%.ps}.png"
    done
else
    say "No ghostscript here: the drawings stay PostScript (with it, out/ gets PNG files as well)"
fi

say "Left in out/ (terrain.html is the surface to turn and zoom: open it in a browser)"
find out -type f -printf '%10s bytes  %p\n' | sort -k 3
