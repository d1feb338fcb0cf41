#!/usr/bin/env bash
# Builds the Python package fcurvelib and starts an interpreter that has it imported, with the curves of
# examples/data/ball.fcrvx in `curves`. Installs what is missing first.
#
#     scripts/python.sh                      a prompt
#     scripts/python.sh FILE [ARGUMENT]...   runs a program
#     scripts/python.sh -c 'print(fc.formats())'
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${build_needs[@]}" "${python_needs[@]}"

say "Building fcurvelib" >&2
cmake --preset python "-DPython_EXECUTABLE=$python" >&2
cmake --build --preset python --parallel 2 >&2
export PYTHONPATH="$PWD/build/python/python${PYTHONPATH:+:$PYTHONPATH}"
start='import fcurvelib as fc, numpy as np'
case ${1-} in
    "")
        exec "$python" -i -c "$start; curves = fc.load('examples/data/ball.fcrvx')
print('fc is fcurvelib, np is numpy, curves is', curves)" ;;
    -c) exec "$python" -c "$start
${2-}" "${@:3}" ;;
    *) exec "$python" "$@" ;;
esac
