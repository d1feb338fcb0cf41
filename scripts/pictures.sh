#!/usr/bin/env bash
# Makes examples/data and every picture in docs/pictures again. Look at what changed before you commit it.
#
# With FOLDER TOOL MAKE_DATA it builds nothing: it makes both below FOLDER instead, with these two programs.
folder=${1-} tool=${2-} make_data=${3-}
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

if [ -z "$folder" ]; then
    need "${build_needs[@]}" "${tool_needs[@]}"
    say "Building fcurvetool and make_data"
    cmake --preset demo -DFCURVELIB_EXAMPLES=ON
    cmake --build --preset demo --parallel 2 --target fcurvetool example_make_data
    folder=.
    tool=build/demo/apps/fcurvetool/fcurvetool
    make_data=build/demo/examples/make_data
fi

data=$folder/examples/data
pictures=$folder/docs/pictures
mkdir -p "$data" "$pictures"
"$make_data" "$data"
chmod 644 "$data"/*

# Pictures of the example data.
draw() { # NAME TITLE FILE [OPTION]...
    local name=$1 title=$2 file=$3
    shift 3
    "$tool" plot "$data/$file" --title "$title" -o "$pictures/$name.svg" "$@"
}
draw ball "A bouncing ball" ball.fcrvx --velocity
draw slide "A slide, eased in and out" slide.fcrvx --velocity --acceleration
draw camera "A camera's move" camera.chan --separate
draw ends "Outside the keys" ends.fcrvx --range -35:61
draw parts "A curve and its parts" ends.fcrvx --curve continued --parts --range -9:35 --values 2.5:14.5 --size 800x360

# The other pictures have their curves beside them.
own() { # NAME FILE [OPTION]...
    local name=$1 file=$2
    shift 2
    "$tool" plot "docs/pictures/$file" --title "${name//_/ }" -o "$pictures/$name.svg" "$@"
}
for file in docs/pictures/*.fcrvx; do
    name=$(basename "$file" .fcrvx)
    more=()
    case $name in
        end_* | match_cycle) range=-24:36 ;; # five times the keyed part
        *) range=-4:28 ;;
    esac
    [ "$name" != selection ] || more=(--select height:1-2 --select turn)
    own "$name" "$name.fcrvx" --size 720x270 --range=$range "${more[@]}" 2>/dev/null # of an unknown expression
done
own rig rig.fcrvt
own poles poles.fcrvt --velocity
own marks marks.fcrvt --size 720x320 2>/dev/null # of the unknown expression

# More keys than pixels, from whole numbers so that every machine makes the same.
awk 'BEGIN { for (i = 1; i <= 5000; i++) printf "%d %.3f\n", i, (i * 7919 % 1009 - 504) * (2500 - (i - 2500) ^ 2 / 2500) / 1e6 }' |
    "$tool" plot - --velocity --title "5 000 keys" -o "$pictures/dense.svg"

# Edits, before and after.
"$tool" bake "$data/ball.fcrvx" - --to xml --step 4 --curve height --plot "$pictures/bake.svg" >/dev/null
fit() { # NAME COMMAND FILE [OPTION]...
    local name=$1 command=$2 file=$3
    shift 3
    "$tool" "$command" "$file" - --to xml --plot "$pictures/$name.svg" "$@" >/dev/null 2>&1
}
for tolerance in 1 5; do
    fit fit_noisy_$tolerance fit docs/pictures/noisy.chan --tolerance $tolerance%
done
"$tool" bake "$data/ball.fcrvx" - --to xml --curve height >"$folder/baked.fcrvx"
fit reduce_smooth reduce "$folder/baked.fcrvx" --curve height --tolerance 2%
fit reduce_broken reduce "$folder/baked.fcrvx" --curve height --tolerance 2% --broken
rm "$folder/baked.fcrvx"
for filter in box triangle gaussian savitzky-golay; do
    "$tool" smooth docs/pictures/noisy.chan - --to xml --filter $filter --width 4 \
        --plot "$pictures/smoothing_${filter//-/_}.svg" >/dev/null
done
