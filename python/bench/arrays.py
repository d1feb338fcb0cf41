"""arrays.py [BATCH]: what arrays cost. BATCH is the program python_batch, which does the same in C++.

    cmake --preset python -DFCURVELIB_BENCH=ON -DPython_EXECUTABLE=/usr/bin/python3
    cmake --build --preset python
    scripts/python.sh python/bench/arrays.py build/python/python/python_batch

Each figure is the best of 15 runs.
"""

import pathlib
import subprocess
import sys
import tempfile
import time

import fcurvelib as fc
import numpy as np

N = 1_000_000


def best(function, runs=15):
    def once():
        start = time.perf_counter()
        function()
        return time.perf_counter() - start
    return min(once() for _ in range(runs))


def show(what, seconds):
    print(f"{what:44}{seconds * 1e3:10.3f} ms")


def main():
    keys = np.zeros(1000, [("x", float), ("y", float), ("in_type", "u1"), ("out_type", "u1")])
    keys["x"] = np.arange(1000)
    keys["y"] = np.sin(keys["x"]) * 10
    keys["in_type"] = keys["out_type"] = fc.tangent_types.index("smooth")
    curve = fc.Curve.from_arrays(keys, name="bench")
    x, out = np.linspace(0, 999, N), np.empty(N)
    compiled = curve.compile()
    show("compiled.eval(x, out=y), 10^6 values", best(lambda: compiled.eval(x, out=out)))
    show("compiled.eval(x)", best(lambda: compiled.eval(x)))
    show("curve(x, out=y)", best(lambda: curve(x, out=out)))
    show("curve(x)", best(lambda: curve(x)))
    if sys.argv[1:]:
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "bench.fcrvb"
            fc.save(curve, file)
            sys.stdout.flush()
            subprocess.run([sys.argv[1], file], check=True)

    many = np.resize(keys, N)
    many["x"] = np.arange(N)
    made = fc.Curve.from_arrays(many)
    show("Curve.from_arrays(keys), 10^6 keys", best(lambda: fc.Curve.from_arrays(many), 3))
    show("curve.to_arrays()", best(made.to_arrays, 3))


main()
