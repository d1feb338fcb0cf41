"""Completes the compiled classes: what the abstract collections make of their few operations."""

from __future__ import annotations

from collections.abc import ItemsView, Iterator, Mapping, MutableMapping, Sequence, ValuesView
from typing import Any, Union

from . import _core, _observers, _plot, _tools


# Names need not be unique in a container, so that these views walk over the curves themselves.
class CurvesView(ValuesView):  # type: ignore[type-arg]
    """The curves of a container, in order."""

    _mapping: _core.Container

    def __iter__(self) -> Iterator[_core.Curve]:
        return iter(self._mapping._curves())


class NamedCurvesView(ItemsView):  # type: ignore[type-arg]
    """The (name, curve) of a container, in order; a name as often as there are curves of it."""

    _mapping: _core.Container

    def __iter__(self) -> Iterator[tuple[str, _core.Curve]]:
        return iter([(curve.name, curve) for curve in self._mapping._curves()])


def _complete(cls: Any, base: Any, names: str) -> None:
    base.register(cls)
    for name in names.split():
        if name not in vars(cls):
            setattr(cls, name, getattr(base, name))


def _picture(curves: Union[_core.Curve, _core.Container]) -> str:
    """A picture for a notebook, which wants the element alone."""
    document = _core.draw(curves, width=720)
    return document[document.index("<svg"):]


def _values(self: _core.Container) -> CurvesView:
    """The curves, in order."""
    return CurvesView(self)


def _items(self: _core.Container) -> NamedCurvesView:
    """Each (name, curve), in order."""
    return NamedCurvesView(self)


def _reversed(self: _core.Container) -> Iterator[str]:
    return reversed(list(self))


def complete() -> None:
    for name, method in (("values", _values), ("items", _items), ("__reversed__", _reversed)):
        setattr(_core.Container, name, method)
    setattr(_core.Properties, "__eq__", Mapping.__eq__)
    _complete(_core.Container, MutableMapping, "keys get pop popitem setdefault update")
    _complete(_core.Properties, MutableMapping, "keys values items get pop popitem setdefault update")
    for name, function in (("to_arrays", _tools.to_arrays), ("from_arrays", staticmethod(_tools.from_arrays)),
                           ("plot", _plot.plot)):
        setattr(_core.Curve, name, function)
    for cls in (_core.Curve, _core.Container):
        setattr(cls, "on_change", _observers.observe)
        setattr(cls, "edit", _observers.edit)
        setattr(cls, "_repr_svg_", _picture)
    _complete(_core.Report, Sequence, "index count __iter__ __contains__ __reversed__")
    for view in (_core.Keys, _core.Segments, _core.Interpolators):
        _complete(view, Sequence, "index count __iter__ __contains__ __reversed__")
