#!/usr/bin/env bash
# Makes the pictures of docs/guide again, from real data: runs the guide's programs, turns their drawings into PNG files by
# Ghostscript, and takes a picture of the web page by Chromium. Palettes are made by pngquant.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

for tool in gs chromium pngquant; do
    command -v $tool >/dev/null || fail "$tool is missing (Debian: ghostscript chromium pngquant)"
done
need compiler cmake ninja gmp
build=${1:-build/demo}
if [ "$build" = build/demo ]; then configure demo; fi
cmake --build "$build" --target guide example_cuts grid_mesh

work=$build/guide_pictures
mkdir -p "$work"
run() {
    say "$@"
    "$build/examples/$1" "${@:2}"
}
terrain=examples/data/terrain
run guide/triangulate $terrain/autzen_bmx_2010.xyz "$work/triangulate.ps"
run guide/breaklines examples/data/road/rock_points.xyz examples/data/road/rock_breaklines.seg "$work/breaklines.ps"
run guide/zones examples/data/coast/iceland.xyz "$work/zones.ps"
run guide/meshes examples/data/coast/iceland.xyz "$work/meshes.ps"
run guide/volumes $terrain/autzen_bmx_2010.xyz $terrain/autzen_bmx_2023.xyz "$work/volumes.ps"
run guide/contours $terrain/jacksboro_srtm.xyz "$work/contours.ps"
run guide/thinning $terrain/jacksboro_srtm.xyz "$work/thinning.ps"
run guide/holes examples/data/meshes/pig.obj "$work/holes.ps"
run guide/files $terrain/thinned_lidar.xyz "$work"
run guide/threads $terrain/jacksboro_srtm.xyz "$work/threads.ps"
run guide/progress $terrain/thinned_lidar.xyz "$work/progress.ps"
run example_cuts "$work/cuts.ps"
run grid_mesh "$work/grid_mesh.ps"

# The drawing lies between 50 and 530 points from the left and 200 and 680 from below; the texts above it are cut off.
page=(-q -dSAFER -dBATCH -dNOPAUSE -dFIXEDMEDIA -dDEVICEWIDTHPOINTS=560 -dDEVICEHEIGHTPOINTS=688)
for drawing in "$work"/*.ps; do
    read -r x0 y0 x1 y1 < <(gs "${page[@]}" -sDEVICE=bbox "$drawing" 2>&1 | sed -n 's/^%%BoundingBox: //p')
    # Drawn five times as fine as it is shown: without seams between triangles. 88 dots an inch make 590 across.
    gs -q -dSAFER -dBATCH -dNOPAUSE -dFIXEDMEDIA -sDEVICE=png16m -r440 -dDownScaleFactor=5 \
        -dDEVICEWIDTHPOINTS=$((x1 - x0 + 4)) -dDEVICEHEIGHTPOINTS=$((y1 - y0 + 4)) -sOutputFile="${drawing%.ps}.png" \
        -c "<</Install {$((2 - x0)) $((2 - y0)) translate}>> setpagedevice" -f "$drawing"
done
chromium --headless --no-sandbox --hide-scrollbars --enable-unsafe-swiftshader --window-size=840,540 \
    --virtual-time-budget=10000 --screenshot="$work/files.png" "file://$PWD/$work/files.html" 2>/dev/null

for picture in "$work"/*.png; do
    # Without dithering for drawings, which have few colours; with it for the page.
    options=(--nofs 40)
    if [ "$picture" = "$work/files.png" ]; then options=(64); fi
    pngquant --force --speed 1 --output "docs/guide/$(basename "$picture")" "${options[@]}" "$picture"
done
ls -l docs/guide/*.png
