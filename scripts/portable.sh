#!/usr/bin/env bash
# Builds the library for aarch64 with Debian's cross compiler, with Highway and without, and computes compiled curves
# there under qemu: the bits must be those in tests/golden, as on every other processor. Not part of scripts/test.sh,
# because it adds a foreign architecture to the machine's packages.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "aarch64-linux-gnu-g++|g++-aarch64-linux-gnu" "qemu-aarch64|qemu-user"

triple=aarch64-linux-gnu
if ! [ -e /usr/lib/$triple/libexpat.so ] || ! [ -e /usr/lib/$triple/libhwy.so ]; then
    say "Installing libexpat1-dev:arm64 libhwy-dev:arm64"
    as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    "${as_root[@]}" dpkg --add-architecture arm64
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends \
        libexpat1-dev:arm64 libhwy-dev:arm64
fi

for simd in ON OFF; do
    say "Building for aarch64, FCURVELIB_SIMD=$simd"
    build=build/portable-$simd
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DFCURVELIB_SIMD=$simd \
        -DFCURVELIB_TESTS=OFF -DFCURVELIB_TOOL=OFF -DFCURVELIB_EXAMPLES=OFF -DFCURVELIB_INSTALL=OFF \
        -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=aarch64 -DCMAKE_CXX_COMPILER=$triple-g++ \
        -DCMAKE_LIBRARY_ARCHITECTURE=$triple
    cmake --build "$build" --parallel 2 --target FCurveLib
    libraries=(-lexpat)
    [ $simd = OFF ] || libraries+=(-lhwy)
    $triple-g++ -std=c++17 -O2 -ffp-contract=off -DFCURVELIB_STATIC -Iinclude -I. -Itests tests/playback/bits.cpp \
        tests/support/Museum.cpp "$build/libFCurveLib.a" "${libraries[@]}" -o "$build/playback_bits"
    qemu-aarch64 -L /usr/$triple -E LD_LIBRARY_PATH=/usr/lib/$triple \
        "$build/playback_bits" tests/golden/playback_bits.txt
done
