"""Interpolators and names of formulas that are written in Python."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any, Optional, TypeVar

from . import _core

_Maker = TypeVar("_Maker", bound=Callable[..., Any])


def register(name: str, maker: Optional[_Maker] = None) -> Any:
    """Adds a name to the language of formulas, and so to files: "name", "name(2, x)".

    maker(*arguments) makes what it stands for: an interpolator, a callable (x, segment), a number, or an expression.
    Arguments are floats where they do not depend on x, Interpolators where they do, and str where they stand in
    double quotation marks. An exception makes the text a FormulaError; in a file, an expression that nobody understands.
    MemoryError and what is no Exception (KeyboardInterrupt) come out as they are; of a text, RecursionError too.
    ValueError for a name that has a meaning already ("sin", "linear", "pi") or is none.

        @fc.register("wobble")
        def wobble(size=1.0):
            return lambda x, segment: size * math.sin(x)

        curve.interpolators = "1 + wobble(0.2)"
    """
    if maker is None:
        def decorate(decorated: _Maker) -> _Maker:
            _core._register(name, decorated)
            return decorated
        return decorate
    _core._register(name, maker)
    return maker


def unregister(name: str) -> None:
    """Removes a name that register added; curves that have it already keep it."""
    _core._unregister(name)
