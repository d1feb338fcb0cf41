#!/usr/bin/env bash
# run.sh SOURCE BUILD WORK: installs BUILD, moves what was installed, and builds and runs consumers against it; then
# includes SOURCE as a guest in another project, shared and static.
set -euo pipefail
source_dir=$1 build_dir=$2 work=$3
here=$source_dir/tests/package
cd "$work"

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# stage BUILD NAME: installs BUILD and leaves the result, moved, in NAME; $package_libs is its library folder there.
stage() {
    rm -rf "$2" "$2.staging"
    cmake --install "$1" --prefix "$work/$2.staging" >install.log
    mv "$2.staging" "$2"
    if grep -rIl "$work/$2.staging" "$2"; then fail "the files above name the folder they were installed to"; fi
    if grep -rIl "$source_dir" "$2"; then fail "the files above name the source tree"; fi
    package_libs=$(dirname "$(find "$work/$2" -name pkgconfig -type d)")
}

# consume_by_cmake NAME, consume_by_pkg_config NAME [--static]: build and run the consumer against a staged package.
consume_by_cmake() {
    rm -rf "$1-cmake"
    cmake -S "$here/consumer" -B "$1-cmake" -DCMAKE_PREFIX_PATH="$work/$1" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
    cmake --build "$1-cmake"
    "$1-cmake/consumer"
}
consume_by_pkg_config() {
    local name=$1
    shift
    export PKG_CONFIG_PATH=$package_libs/pkgconfig
    # shellcheck disable=SC2046  # flags are words
    "$CXX" -std=c++17 "$here/consumer/main.cpp" -o "$name-pkg-config" $(pkg-config "$@" --cflags --libs FCurveLib)
    LD_LIBRARY_PATH=$package_libs "./$name-pkg-config"
}

echo "== installed, moved, shared"
stage "$build_dir" shared
[ -e "$package_libs/libFCurveLib.so.19" ] || fail "no libFCurveLib.so.19"
if PKG_CONFIG_PATH=$package_libs/pkgconfig pkg-config --libs FCurveLib | grep expat; then
    fail "a consumer of the shared library is told to link Expat"
fi
consume_by_cmake shared
consume_by_pkg_config shared
if grep -q '^FCURVELIB_TOOL:BOOL=ON' "$build_dir/CMakeCache.txt" && [ -e "$source_dir/apps/fcurvetool" ]; then
    shared/bin/fcurvetool --help >/dev/null || fail "the installed fcurvetool does not run"
fi
if grep -q '^FCURVELIB_PYTHON:BOOL=ON' "$build_dir/CMakeCache.txt"; then
    python=$(sed -n 's/^Python_EXECUTABLE:[A-Z]*=//p' "$build_dir/CMakeCache.txt")
    module=$(find "$work/shared" -path '*/fcurvelib/_core*.so')
    (cd / && PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=${module%/fcurvelib/*} "$python" -c "
import fcurvelib as fc
assert fc.__file__.startswith('$work/shared/'), fc.__file__
curve = fc.Curve('a', [(0, 0), (10, 5)])
assert fc.loads(fc.dumps(curve))['a'] == curve and curve(10) == 5") || fail "the installed fcurvelib does not run"
fi

echo "== guest with every default: brings nothing but the library"
rm -rf guest-default
cmake -S "$here/guest" -B guest-default -DFCURVELIB_SOURCE="$source_dir"
ctest --test-dir guest-default -N | grep -x 'Total Tests: 0' || fail "the guest brings its tests along"
cmake --install guest-default --prefix "$work/guest-default/installed"
if [ -e guest-default/installed ]; then fail "the guest is installed unasked"; fi
own_command=$(grep '"command".*guest/own.cpp' guest-default/compile_commands.json)
user_command=$(grep '"command".*consumer/main.cpp' guest-default/compile_commands.json)
if grep -oE -- ' -(W|f|D|std=)[^ ]*' <<<"$own_command"; then fail "the flags above leak into the whole project"; fi
if grep -oE -- ' -(W|f|D)[^ ]*' <<<"$user_command"; then fail "the flags above leak to those who link the library"; fi

echo "== guest, static, installed on request"
cmake -S "$here/guest" -B guest-static -DFCURVELIB_SOURCE="$source_dir" -DBUILD_SHARED_LIBS=OFF -DFCURVELIB_INSTALL=ON \
    -DFCURVELIB_UNITY=ON
cmake --build guest-static --parallel 2
guest-static/consumer
stage guest-static static
consume_by_cmake static
consume_by_pkg_config static --static

echo "== guest, static, without Highway: the same bits"
cmake -S "$here/guest" -B guest-scalar -DFCURVELIB_SOURCE="$source_dir" -DBUILD_SHARED_LIBS=OFF -DFCURVELIB_SIMD=OFF \
    -DFCURVELIB_UNITY=ON
cmake --build guest-scalar --parallel 2
guest-scalar/consumer
"$CXX" -std=c++17 -ffp-contract=off -DFCURVELIB_STATIC -I"$source_dir/include" -I"$source_dir" -I"$source_dir/tests" \
    "$source_dir/tests/playback/bits.cpp" "$source_dir/tests/support/Museum.cpp" \
    "$(find guest-scalar -name libFCurveLib.a)" -lexpat -o scalar_bits
./scalar_bits "$source_dir/tests/golden/playback_bits.txt"
