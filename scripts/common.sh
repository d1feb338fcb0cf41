# Sourced by the other scripts: moves to the repository's top and offers `need`, which installs what is missing.
# shellcheck shell=bash disable=SC2034

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '\n== %s\n' "$*"; }

have_program() { command -v "$1" >/dev/null; }
# Modules come as Debian packages, which serve Debian's own interpreter, whatever other python3 the PATH may have.
python=/usr/bin/python3
python_does() { "$python" -c "$1" >/dev/null 2>&1; }
have_header() { echo "#include <$1>" | g++ -std=c++17 -E -x c++ -o /dev/null - >/dev/null 2>&1; }

# check|package: a program, a header in angle brackets, or "python" and a statement that works; and the Debian package
# that brings it.
build_needs=("cmake|cmake" "ninja|ninja-build" "g++|g++" "ccache|ccache" "<expat.h>|libexpat1-dev"
             "<hwy/highway.h>|libhwy-dev" "<nlohmann/json.hpp>|nlohmann-json3-dev")
tool_needs=("<CLI/CLI.hpp>|libcli11-dev")
python_needs=("python pass|python3" "python import numpy|python3-numpy"
              "python import sysconfig; open(sysconfig.get_path('include') + '/Python.h')|python3-dev"
              "python open('/usr/include/pybind11/pybind11.h')|pybind11-dev")
python_test_needs=("python import pytest|python3-pytest" "python import hypothesis|python3-hypothesis"
                   "python import mypy|mypy")
picture_needs=("rsvg-convert|librsvg2-bin")
wasm_needs=("em++|emscripten" "dpkg-source|dpkg-dev" "node|nodejs")
editor_needs=("npm|npm")
editor_test_needs=("chromium|chromium")
bench_needs=("<benchmark/benchmark.h>|libbenchmark-dev" "python3|python3")
test_needs=("<gtest/gtest.h>|libgtest-dev" "<gmock/gmock.h>|libgmock-dev" "pkg-config|pkg-config" "git|git"
            "clang++|clang" "clang-format|clang-format" "clang-tidy|clang-tidy" "python3|python3"
            "node|nodejs" "npm|npm")

# Without this ccache leaves compilations with precompiled headers alone.
export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}

# What all parts of a WebAssembly program are compiled and linked with: the exceptions and the SIMD of today's browsers.
wasm_flags="-fwasm-exceptions -msimd128"
# Emscripten's tools want Debian's Node modules, whatever node the machine has.
export NODE_PATH=/usr/share/nodejs${NODE_PATH:+:$NODE_PATH}

# need CHECK|PACKAGE...: returns at once when everything is there, else installs the packages with apt-get.
need() {
    local entry check missing=()
    for entry in "$@"; do
        check=${entry%%|*}
        case $check in
            "<"*) have_header "${check:1:-1}" ;;
            "python "*) python_does "${check#python }" ;;
            *) have_program "$check" ;;
        esac || missing+=("${entry##*|}")
    done
    [ ${#missing[@]} -ne 0 ] || return 0

    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    if ! have_program apt-get || { [ ${#as_root[@]} -ne 0 ] && ! have_program sudo; }; then
        echo "Missing, by their Debian package names: ${missing[*]}" >&2
        echo "Install them, or run this script again as root (or with sudo) on Debian." >&2
        exit 1
    fi
    say "Installing ${missing[*]}"
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
}
