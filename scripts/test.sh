#!/usr/bin/env bash
# Builds everything and runs every test: as released, under AddressSanitizer and UndefinedBehaviorSanitizer, and the
# tests of threads under ThreadSanitizer. Builds library, tool and examples with Clang too, and links a consumer there.
# Installs what is missing first. Fails when any step fails.
#
#     scripts/test.sh --quick     the tests as released alone, without those of style, package,
#                                 Python and editor
#     scripts/test.sh --editor    the graph editor alone, in a browser
#     scripts/test.sh --python    the Python package alone, under both of these sanitizers, which the whole leaves out:
#                                 building its module for them takes five minutes of processor time
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

test_editor() {
    need "${editor_test_needs[@]}"
    scripts/editor.sh --build
    say "editor: test in a browser"
    node apps/editor/tests/run.mjs out/editor
}
if [ "${1-}" = --editor ]; then
    test_editor
    exit
fi

if [ "${1-}" = --python ]; then
    need "${build_needs[@]}" "${test_needs[@]}" "${python_needs[@]}" "${python_test_needs[@]}"
    say "asan-ubsan: configure and build the Python package"
    cmake --preset asan-ubsan -B build/asan-ubsan-python "-DPython_EXECUTABLE=$python" -DFCURVELIB_PYTHON=ON \
        -DFCURVELIB_TOOL=OFF -DFCURVELIB_EXAMPLES=OFF -DFCURVELIB_EDITOR=OFF
    cmake --build build/asan-ubsan-python --parallel 2 --target fcurvelib_core
    say "asan-ubsan: test it"
    ctest --test-dir build/asan-ubsan-python --output-on-failure -R '^python\.'
    exit
fi

need "${build_needs[@]}" "${tool_needs[@]}" "${bench_needs[@]}" "${test_needs[@]}"

run_tree() { # PRESET [CMAKE --BUILD ARGUMENT]...
    local preset=$1
    shift
    say "$preset: configure and build"
    cmake --preset "$preset" "${more[@]}"
    cmake --build --preset "$preset" --parallel 2 "$@"
    say "$preset: test"
    ctest --preset "$preset"
}

more=("-DPython_EXECUTABLE=$python")
if [ "${1-}" = --quick ]; then
    more=(-DFCURVELIB_CHECKS=OFF -DFCURVELIB_BENCH=OFF -DFCURVELIB_PYTHON=OFF -DFCURVELIB_UNITY=ON)
    run_tree release
    say "The tests passed. Left out: sanitizers, Clang, style, package, Python, editor."
    exit
fi

need "${python_needs[@]}" "${python_test_needs[@]}"
run_tree release
more=()

say "clang: configure, build, link a consumer"
cmake --preset clang
cmake --build --preset clang --parallel 2
clang++ -std=c++17 -Iinclude tests/package/consumer/main.cpp -o build/clang/consumer \
    -Lbuild/clang -lFCurveLib -Wl,-rpath,"$PWD/build/clang"
build/clang/consumer

run_tree asan-ubsan
run_tree tsan --target thread_tests
test_editor
say "All tests passed."
