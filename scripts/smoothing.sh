#!/usr/bin/env bash
# Draws the pictures of docs/smoothing.md.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "${tool_needs[@]}"

say "Building fcurvetool"
cmake --preset demo
cmake --build --preset demo --parallel 2 --target fcurvetool
tool=$(find build/demo -name fcurvetool -type f -perm -u+x)

for filter in box triangle gaussian savitzky-golay; do
    "$tool" smooth docs/pictures/noisy.chan - --to xml --filter $filter --width 4 \
        --plot "docs/pictures/smoothing_${filter//-/_}.svg" >/dev/null
done
say "4 pictures in docs/pictures"
