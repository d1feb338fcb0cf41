#!/usr/bin/env bash
# Builds the library for aarch64 with Debian's cross compiler, with Highway's lanes and without, and runs the tests of
# compiled curves there under qemu: their bits must be those in tests/golden, as on every other processor. Not part of
# scripts/test.sh, as it adds a foreign architecture to the package system.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "aarch64-linux-gnu-g++|g++-aarch64-linux-gnu" "qemu-aarch64|qemu-user"

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
if ! [ -e /usr/lib/aarch64-linux-gnu/libexpat.so ]; then
    say "Installing libexpat1-dev:arm64"
    "${as_root[@]}" dpkg --add-architecture arm64
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends \
        libexpat1-dev:arm64
fi

flags=(-O2 -std=c++17 -ffp-contract=off -DFCURVELIB_BUILDING -DFCURVELIB_STATIC -Iinclude -I. -Itests)
mapfile -t sources < <(git ls-files -- 'model/*.cpp' 'interp/*.cpp' 'playback/*.cpp' | grep -v SimdLanes)
sources+=(tests/support/Museum.cpp tests/playback/bits.cpp)
# Highway is mostly headers: of its library, the two sources behind the choice of lanes are replaced by its static one.
folder=build/portable
mkdir -p "$folder"
say "Building for aarch64"
printf '%s\n' "${sources[@]}" | xargs -P 2 -I{} sh -c \
    'aarch64-linux-gnu-g++ "$@" -c "{}" -o "'"$folder"'/$(echo "{}" | tr / _).o"' sh "${flags[@]}"
aarch64-linux-gnu-g++ "$folder"/*.o -o "$folder/playback_bits" /usr/lib/aarch64-linux-gnu/libexpat.so
say "Running under qemu"
qemu-aarch64 -L /usr/aarch64-linux-gnu "$folder/playback_bits" tests/golden/playback_bits.txt
