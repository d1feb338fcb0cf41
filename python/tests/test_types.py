"""The stubs agree with the module, and the package with mypy."""

import inspect
import os
import pathlib
import re
import subprocess
import sys
from collections.abc import Mapping, MutableMapping, Sequence

import fcurvelib as fc

PACKAGE = pathlib.Path(__file__).resolve().parents[1] / "fcurvelib"

USE = """
import numpy as np, numpy.typing
import fcurvelib as fc
curves = fc.load("a.fcrvx")
curve = curves["height"]
value: float = curve(1.5)
values: np.typing.NDArray[np.float64] = curve(np.linspace(0, 1, 5)) + 1
curve.keys[1].out_tangent.type = "plateau"
curve.extend = ("cycle", "mirror")
curve.extend, curve.interpolators, curve.keys[0].interpolator = "cycle", "linear", 3.5
curve.properties = curve.segments[0].properties = {"a": "b"}
kinds: fc.Interpolators = curve.interpolators
svg: str = curve._repr_svg_()
names: list[str] = [key.properties.get("name", "") for key in curve.keys]
"""


def test_mypy_checks_the_package_and_its_use(tmp_path):
    wrong = 'curve.keys[1].out_tangent.type = "round"\ncurve.nme\nvalue = curve(np.zeros(3))\n'
    (tmp_path / "use.py").write_text(USE + wrong)
    checked = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--cache-dir", os.devnull, tmp_path / "use.py"],
                             env=dict(os.environ, MYPYPATH=str(PACKAGE.parent), LD_PRELOAD=""), cwd=PACKAGE.parent,
                             text=True, capture_output=True)
    errors = re.findall(r"^(\S+?):(\d+): error", checked.stdout, re.MULTILINE)
    line = USE.count("\n")
    assert [(os.path.basename(file), int(at)) for file, at in errors] == [("use.py", line + i) for i in (1, 2, 3)], \
        checked.stdout + checked.stderr


def test_the_stubs_name_what_is_there():
    stubs = (PACKAGE / "_core.pyi").read_text()
    classes = {block.split("(")[0].split(":")[0]: block for block in stubs.split("\nclass ")[1:]}
    for name, cls in inspect.getmembers(fc._core, inspect.isclass):
        if name.startswith("_"):
            continue
        missing = [member for member in vars(cls) if not member.startswith("_") and f" {member}(" not in classes[name]
                   and f" {member}:" not in classes[name]
                   and not any(hasattr(base, member) for base in (Mapping, MutableMapping, Sequence)
                               if issubclass(cls, base))]
        assert not missing, f"{name}: {missing}"
        assert [member for member in vars(cls) if member[0] != "_" and not getattr(cls, member).__doc__] == [], name
    for name, function in inspect.getmembers(fc._core, inspect.isbuiltin):
        assert f"def {name}(" in stubs
