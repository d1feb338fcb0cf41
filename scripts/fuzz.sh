#!/usr/bin/env bash
# Builds the fuzz targets and runs each for some seconds, one after the other; prints what each executed. Fails when one
# finds something. out/fuzz/TARGET keeps findings, log and corpus, which the next run continues with.
#
#     scripts/fuzz.sh [SECONDS] [TARGET...]     60 seconds each of all targets, unless said otherwise
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "clang++|clang"

seconds=60
if [[ ${1:-} =~ ^[0-9]+$ ]]; then
    seconds=$1
    shift
fi
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    mapfile -t targets < <(find fuzz/seeds -mindepth 1 -maxdepth 1 -type d -printf '%f\n' | sort)
fi

say "Building the fuzz targets"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --parallel "${FUZZ_JOBS:-2}" --target "${targets[@]/#/fuzz_}"

stat() { sed -n "s/^stat::$2: *//p" "$1"; }

found=0
for target in "${targets[@]}"; do
    say "$target: $seconds seconds"
    out=out/fuzz/$target
    mkdir -p "$out/corpus" "$out/findings"
    # Without -entropic=0 libFuzzer spends more time on choosing inputs than on running them.
    options=(-entropic=0 -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 -print_final_stats=1
             -artifact_prefix="$out/findings/")
    [ ! -f "fuzz/dictionaries/$target.dict" ] || options+=(-dict="fuzz/dictionaries/$target.dict")
    if ! UBSAN_OPTIONS=print_stacktrace=1 nice -n 19 "build/fuzz/fuzz/fuzz_$target" "${options[@]}" \
        "$out/corpus" "fuzz/seeds/$target" >"$out/log" 2>&1; then
        found=1
        grep -m 1 -E 'Does not hold|ERROR:|runtime error' "$out/log" || tail -n 5 "$out/log"
        grep 'Test unit written to' "$out/log" || true
    fi
    printf '%s executions, %s added to the corpus, slowest %s s, at most %s MB\n' \
        "$(stat "$out/log" number_of_executed_units)" "$(stat "$out/log" new_units_added)" \
        "$(stat "$out/log" slowest_unit_time_sec)" "$(stat "$out/log" peak_rss_mb)"
done
exit $found
