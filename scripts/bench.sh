#!/usr/bin/env bash
# Builds the benchmarks as released, runs each, and writes their results and one table into out/bench. Arguments go to
# every benchmark program, such as --benchmark_filter=Eval.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "${bench_needs[@]}"

say "Building the benchmarks"
cmake --preset bench
cmake --build --preset bench --parallel 2

rm -rf out/bench
mkdir -p out/bench
mapfile -t programs < <(find build/bench -name 'bench_*' -type f -perm -u+x | sort)
for program in "${programs[@]}"; do
    name=$(basename "$program")
    say "$name"
    "$program" --benchmark_out="out/bench/$name.json" --benchmark_out_format=json "$@"
done

say "Table"
python3 scripts/bench_table.py build/bench out/bench/*.json | tee out/bench/table.md
# Fails where the filter has left out what it shows.
python3 scripts/costs_picture.py out/bench/playback_costs.svg out/bench/*.json || true
say "Written to $PWD/out/bench"
