#!/usr/bin/env bash
# The main jobs on real terrain: builds the library and three of the examples, runs them on the elevation model and the
# surveys in examples/data/terrain, and leaves pictures, a page for the browser, point files and contours for map programs
# in out/. Installs what is missing (Debian and relatives).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

need compiler cmake ninja gmp
say "Building"
configure demo
cmake --build --preset demo --target demo contours volumes

say "Running"
mkdir -p out
build/demo/examples/demo examples/data/terrain/jacksboro_srtm.xyz out

say "Contours every 50 m, as a drawing and as GeoJSON"
build/demo/examples/contours examples/data/terrain/jacksboro_srtm.xyz 50 out/contours.ps out/contours.geojson

say "Cut and fill between two laser scans of a cycle track, thirteen years apart, in cubic metres"
build/demo/examples/volumes examples/data/terrain/autzen_bmx_2010.xyz examples/data/terrain/autzen_bmx_2023.xyz \
    0.05 out/volumes.ps 0.3048006

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
