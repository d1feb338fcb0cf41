#!/usr/bin/env bash
# gltf.sh SAMPLES WORK: what the program SAMPLES writes, before the Khronos validator and three.js (npm: gltf-validator,
# three), which are installed into WORK once.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
samples=$1
mkdir -p "$2/samples"
cd "$2"
if ! [ -d node_modules/gltf-validator ] || ! [ -d node_modules/three ]; then
    if ! npm install --no-save --no-audit --no-fund gltf-validator@2.0.0-dev.3.10 three@0.180.0; then
        echo "FAILED: npm could not install gltf-validator and three; this test takes npm and, the first time, a network" >&2
        exit 1
    fi
fi
cp "$here/gltf.mjs" .
"$samples" samples
node gltf.mjs samples
