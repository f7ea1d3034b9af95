#!/usr/bin/env bash
# Runs every benchmark, one after another, and writes what they print, with one table of all comparisons on top, to
# benchmarks/figures.md. A quarter of an hour on a machine that does nothing else.
#
#     benchmarks/all.sh [DIRECTORY]     # with breaklines (see "Constraints" in README.md) instead of examples/data
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DLUMO25D_BUILD_BENCHMARKS=ON >/dev/null
ninja -C build/bench peers threads constraints segments holes clouds terrain zones cuts meshes saving

data=${1:-$PWD/examples/data}
work=$PWD/build/bench/figures
rm -rf "$work"
mkdir -p "$work"
export LUMO25D_FIGURES=$work/comparisons

# run PROGRAM [OPTION...]: the command and its output become a section.
run() {
    echo "== $*"
    {
        echo
        echo "## $1"
        echo
        echo "    $* $(uptime | sed 's/.*load average: \([0-9.]*\).*/(load \1 at the start)/')" | sed "s|$data|DIRECTORY|; s|$PWD/||g"
        echo
        (cd "$work" && "../benchmarks/$1" "${@:2}") | grep -v "^Visualizer3:\|^writing "
    } | tee -a "$work/sections"
}

run peers --rounds 3
run peers --rounds 3 uniform10
run threads --rounds 3
run constraints --rounds 3 --data "$data"
run segments --rounds 5
run holes --rounds 3 "$PWD"/tests/corpus/meshes/*.obj "$PWD"/examples/data/meshes/pig.obj
run clouds --rounds 1
run terrain $(command -v gdal_contour >/dev/null && echo --gdal)
run zones --rounds 5
run cuts
run meshes
run saving

processor=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)
memory=$(awk '/^MemTotal/ { printf "%.0f", $2 / 1048576 }' /proc/meminfo)
{
    echo '# Figures'
    echo
    echo "Made by \`benchmarks/all.sh\` in one go: $(date -I), $(nproc) cores of ${processor:-an unknown processor}, $memory GiB,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1). How each is measured is told in [README.md](README.md)."
    echo
    echo '## All comparisons'
    echo
    echo 'Medians on the clock, but for `meshes`: processor time. The last column is how many times as long the peer takes.'
    echo
    echo '| program | case | ours s | peer | peer s | times as fast |'
    echo '|---|---|---|---|---|---|'
    cat "$LUMO25D_FIGURES" "$work/sections"
} >benchmarks/figures.md
