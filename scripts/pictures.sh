#!/usr/bin/env bash
# Draws every docs/pictures/*.fcrvx into the SVG picture beside it. With --check, fails if a picture would change.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "${tool_needs[@]}"

say "Building fcurvetool"
cmake --preset demo
cmake --build --preset demo --parallel 2 --target fcurvetool
tool=$(find build/demo -name fcurvetool -type f -perm -u+x)

into=docs/pictures
[ "${1:-}" != --check ] || into=$(mktemp -d)

say "Drawing"
changed=()
for file in docs/pictures/*.fcrvx; do
    name=$(basename "$file" .fcrvx)
    more=()
    case $name in
        end_* | match_cycle) range=-24:36 ;; # five times the keyed part
        *) range=-4:28 ;;
    esac
    [ "$name" != selection ] || more=(--select height:1-2 --select turn)
    "$tool" plot "$file" -o "$into/$name.svg" --size 720x270 --range=$range --title "${name//_/ }" "${more[@]}"
    cmp -s "$into/$name.svg" "docs/pictures/$name.svg" || changed+=("$name")
done
if [ ${#changed[@]} -ne 0 ]; then
    echo "Out of date: ${changed[*]}. Run scripts/pictures.sh and look at them." >&2
    exit 1
fi
say "$(find docs/pictures -name '*.svg' | wc -l) pictures in docs/pictures"
