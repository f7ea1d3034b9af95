# Shared by demo.sh and test.sh (sourced): finds the tools that a build needs and installs those that are missing.
# shellcheck shell=bash

say() {
    printf '\n== %s\n' "$*"
}

fail() {
    printf '\n!! %s\n' "$*" >&2
    exit 1
}

# has_header NAME: the compiler finds this header.
has_header() {
    printf '#include <%s>\n' "$1" | "${CXX:-c++}" -E -x c++ - >/dev/null 2>&1
}

# has_cmake: CMake is there and new enough.
has_cmake() {
    local version
    version=$(cmake --version 2>/dev/null | sed -n '1s/[^0-9]*\([0-9.]*\).*/\1/p') || return 1
    [ -n "$version" ] && [ "$(printf '%s\n' 3.22 "$version" | sort -V | head -n 1)" = 3.22 ]
}

# missing_packages TOOL...: the Debian packages of those tools that are not here.
missing_packages() {
    local tool
    for tool in "$@"; do
        case $tool in
        compiler) command -v "${CXX:-c++}" >/dev/null || echo g++ ;;
        clang) command -v clang++ >/dev/null || echo clang ;;
        cmake) has_cmake || echo cmake ;;
        ninja) command -v ninja >/dev/null || echo ninja-build ;;
        gmp) has_header gmp.h || echo libgmp-dev ;;
        googletest)
            has_header gtest/gtest.h || echo libgtest-dev
            has_header gmock/gmock.h || echo libgmock-dev
            ;;
        pkg-config) command -v pkg-config >/dev/null || echo pkg-config ;;
        esac
    done
}

# need TOOL...: installs what is missing by apt, or says what to install and ends.
need() {
    local packages as_root=()
    packages=$(missing_packages "$@" | tr '\n' ' ')
    [ -n "$packages" ] || return 0
    say "Missing here (by the names of their Debian packages): $packages"
    if ! command -v apt-get >/dev/null; then
        fail "There is no apt on this system. Please install these by its own means, then run this again:
   a C++17 compiler, CMake 3.22 or later, Ninja, GMP with its header and, for the tests, GoogleTest and pkg-config.
   Fedora: gcc-c++ cmake ninja-build gmp-devel gtest-devel gmock-devel pkgconf
   Arch:   gcc cmake ninja gmp gtest pkgconf"
    fi
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            fail "Installing needs root, and there is no sudo. Please run as root: apt-get install $packages"
        as_root=(sudo)
    fi
    # An update may fail for one source of several; the installation tells whether that mattered.
    "${as_root[@]}" apt-get update -q || true
    # shellcheck disable=SC2086 # the packages are words
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $packages ||
        fail "apt-get could not install: $packages"
    packages=$(missing_packages "$@" | tr '\n' ' ')
    [ -z "$packages" ] || fail "Still missing after the installation: $packages"
}

# configure PRESET [OPTION...]: configures build/PRESET; a compiler cache is used when there is one.
configure() {
    local preset=$1 launcher=() log=build/$1.configure.log
    shift
    if command -v ccache >/dev/null; then launcher=(-D CMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
    mkdir -p build
    if ! cmake --preset "$preset" "${launcher[@]}" "$@" >"$log" 2>&1; then
        cat "$log" >&2
        fail "The configuration of '$preset' failed"
    fi
}
