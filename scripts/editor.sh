#!/usr/bin/env bash
# Builds the graph editor and serves it on the loopback interface, at the address that it prints.
#
#     scripts/editor.sh --build     only leaves the page in out/editor: static files, for any web server or to open
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

case ${1-} in
    "" | --build) ;;
    *)
        echo "usage: scripts/editor.sh [--build]" >&2
        exit 2
        ;;
esac
need "${build_needs[@]}" "${wasm_needs[@]}" "${editor_needs[@]}"

scripts/wasm.sh --library
say "Building the bridge for WebAssembly"
cmake --build build/wasm --parallel 2 --target editor_bridge
module=$PWD/build/wasm/editor
mkdir -p "$module"
read -ra flags <<<"$wasm_flags"
# A module that is handed its bridge.wasm by the page, which brings it along compressed.
if [ -n "$(find build/wasm apps/editor/bridge \( -name '*.a' -o -name exports.cpp \) -newer "$module/bridge.wasm" 2>&1)" ]; then
    em++ "${flags[@]}" -O2 -std=c++17 -DFCURVELIB_STATIC -DFCURVEINTERCHANGE_STATIC \
        -Iinclude -Iapps/editor/bridge -Ibuild/wasm/packages/include apps/editor/bridge/exports.cpp \
        build/wasm/apps/editor/libeditor_bridge.a build/wasm/interchange/libFCurveInterchange.a \
        build/wasm/libFCurveLib.a build/wasm/packages/lib/libexpat.a -o "$module/bridge.js" \
        -sMODULARIZE=1 -sEXPORT_ES6=1 -sENVIRONMENT=web -sALLOW_MEMORY_GROWTH=1 -sMAXIMUM_MEMORY=2GB \
        -sEXPORTED_RUNTIME_METHODS=ccall -sEXPORTED_FUNCTIONS=_malloc,_free
fi

say "Building the page"
cd apps/editor
[ node_modules/.package-lock.json -nt package-lock.json ] ||
    npm ci --ignore-scripts --no-audit --no-fund --loglevel=error
npx --no-install tsc
node build.mjs ../../build/wasm/editor ../../out/editor
cd ../..
size=$(cat out/editor/* | gzip -9 | wc -c)
echo "out/editor: $size bytes compressed"
[ "${1-}" != --build ] || exit 0
exec node apps/editor/serve.mjs out/editor
