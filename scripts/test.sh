#!/usr/bin/env bash
# Builds everything and runs every test: as released, under AddressSanitizer and UndefinedBehaviorSanitizer, and the
# tests of threads under ThreadSanitizer. Installs what is missing first. Fails when any step fails.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "${tool_needs[@]}" "${bench_needs[@]}" "${test_needs[@]}"

run_tree() { # PRESET [CMAKE --BUILD ARGUMENT]...
    local preset=$1
    shift
    say "$preset: configure and build"
    cmake --preset "$preset"
    cmake --build --preset "$preset" --parallel 2 "$@"
    say "$preset: test"
    ctest --preset "$preset"
}

run_tree release
run_tree asan-ubsan
run_tree tsan --target thread_tests
say "All tests passed."
