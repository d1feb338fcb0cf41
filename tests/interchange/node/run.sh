#!/usr/bin/env bash
# run.sh TOOL DATA WORK: easings and keyframes as another implementation computes them (npm: bezier-easing), which is
# installed into WORK once.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
tool=$1 data=$2
mkdir -p "$3"
cd "$3"
if ! [ -d node_modules/bezier-easing ] && ! npm install --no-save --no-audit --no-fund bezier-easing@3.2.0; then
    echo "FAILED: npm could not install bezier-easing; this test takes npm and, the first time, a network" >&2
    exit 1
fi
cp "$here/easings.mjs" .
node easings.mjs "$tool" "$data"
