#!/usr/bin/env bash
# Runs every benchmark, one after another, and leaves what each prints and one table of all comparisons with peers in
# build/bench/figures. A quarter of an hour on an otherwise idle machine.
#
#     benchmarks/all.sh [DIRECTORY]     # of breaklines, see "Constraints" in README.md
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DLUMO25D_BUILD_BENCHMARKS=ON >/dev/null
programs=(peers threads constraints segments holes clouds terrain zones cuts meshes saving)
ninja -C build/bench "${programs[@]}"

figures=$PWD/build/bench/figures
rm -rf "$figures"
mkdir -p "$figures"
export LUMO25D_FIGURES=$figures/table.md
echo '| program | case | ours s | peer | peer s | times as fast |
|---|---|---|---|---|---|' >"$LUMO25D_FIGURES"

run() {
    echo "== $*"
    (cd "$figures" && "../benchmarks/$1" "${@:2}") | tee -a "$figures/$1.txt"
}

run peers
run peers --rounds 3 uniform10
run threads
run constraints --rounds 3 ${1:+--data "$1"}
run segments --rounds 5
run holes --rounds 3 "$PWD"/tests/corpus/meshes/*.obj "$PWD"/examples/data/meshes/pig.obj
run clouds --rounds 1
run terrain $(command -v gdal_contour >/dev/null && echo --gdal)
run zones --rounds 5
run cuts
run meshes
run saving

echo
cat "$LUMO25D_FIGURES"
