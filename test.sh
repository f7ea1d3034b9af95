#!/usr/bin/env bash
# Builds the library and runs all tests: as a release, under the address and undefined-behaviour sanitizers (by Clang where
# there is Clang, and then with short runs of the fuzzers) and the threaded tests under the thread sanitizer. Installs
# what is missing (Debian and its relatives).
#
#   ./test.sh          everything
#   ./test.sh quick    the release build only
#   ./test.sh clang    the release build by Clang instead of the default compiler
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=scripts/setup.sh
source scripts/setup.sh

mode=${1:-full}
case $mode in
full | quick | clang) ;;
*) fail "Usage: ./test.sh [quick | clang]" ;;
esac

summary=()

# suite PRESET TITLE [CTEST OPTION...]: builds one preset and runs its tests.
suite() {
    local preset=$1 title=$2 start=$SECONDS runner=()
    shift 2
    say "$title: building"
    configure "$preset"
    cmake --build --preset "$preset"
    say "$title: testing"
    # The thread sanitizer of older compilers can't cope with strongly randomised addresses.
    if [ "$preset" = tsan ] && setarch "$(uname -m)" -R true 2>/dev/null; then runner=(setarch "$(uname -m)" -R); fi
    if "${runner[@]}" ctest --preset "$preset" -j "$(nproc)" --no-tests=error "$@"; then
        summary+=("passed  $title ($((SECONDS - start)) s)")
    else
        summary+=("FAILED  $title ($((SECONDS - start)) s)")
    fi
}

need compiler cmake ninja gmp googletest pkg-config
if [ "$mode" = clang ]; then
    need clang
    suite clang "Release build by Clang, warnings are errors, all tests"
else
    suite release "Release build, warnings are errors, all tests"
fi
if [ "$mode" = full ]; then
    if command -v clang++ >/dev/null; then
        suite fuzz "Address and undefined-behaviour sanitizers by Clang, with fuzzers of the file readers" -LE package
    else
        suite asan "Address and undefined-behaviour sanitizers" -LE package
    fi
    suite tsan "Thread sanitizer, threaded tests" -L threaded
fi

say "Summary"
printf '%s\n' "${summary[@]}"
if printf '%s\n' "${summary[@]}" | grep -q '^FAILED'; then exit 1; fi
