#!/usr/bin/env bash
# Builds fcurvetool and runs it over examples/data: tells what is in each file, and draws it into out/demo.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "${tool_needs[@]}" "${picture_needs[@]}"

say "Building fcurvetool"
cmake --preset demo
cmake --build --preset demo --parallel 2 --target fcurvetool
tool=$(find build/demo -name fcurvetool -type f -perm -u+x)

mkdir -p out/demo
written=()
for file in examples/data/*; do
    name=$(basename "$file")
    picture=out/demo/${name%.*}.svg
    say "fcurvetool info $file"
    "$tool" info "$file"
    "$tool" plot "$file" -o "$picture"
    written+=("$picture")
    if have_program rsvg-convert; then
        rsvg-convert --format=png --output="${picture%.svg}.png" "$picture"
        written+=("${picture%.svg}.png")
    fi
done

say "Pictures, for a browser or an image viewer:"
printf '  %s\n' "${written[@]/#/$PWD/}"
