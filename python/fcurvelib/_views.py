"""Completes the compiled classes: what the abstract collections make of their few operations."""

from __future__ import annotations

from collections.abc import ItemsView, Iterator, KeysView, Mapping, MutableMapping, Sequence, ValuesView
from typing import Any, Union

from . import _core, _observers, _plot, _tools


# Names need not be unique in a container, so that these views walk over the curves themselves.
class CurvesView(ValuesView):  # type: ignore[type-arg]
    """The curves of a container, in order."""

    _mapping: _core.Container

    def __iter__(self) -> Iterator[_core.Curve]:
        return iter(self._mapping._curves())

    def __reversed__(self) -> Iterator[_core.Curve]:
        return reversed(self._mapping._curves())

    def __contains__(self, value: object) -> bool:
        return value in self._mapping._curves()


class NamedCurvesView(ItemsView):  # type: ignore[type-arg]
    """The (name, curve) of a container, in order; a name as often as there are curves of it."""

    _mapping: _core.Container

    def __iter__(self) -> Iterator[tuple[str, _core.Curve]]:
        return iter([(curve.name, curve) for curve in self._mapping._curves()])

    def __reversed__(self) -> Iterator[tuple[str, _core.Curve]]:
        return reversed(list(self))

    def __contains__(self, item: object) -> bool:
        return item in list(self)


class NamesView(KeysView):  # type: ignore[type-arg]
    """The names of a container's curves, in order; a name as often as there are curves of it."""

    _mapping: _core.Container

    def __reversed__(self) -> Iterator[str]:
        return reversed(self._mapping)


def _complete(cls: Any, base: Any, names: str) -> None:
    base.register(cls)
    for name in names.split():
        if name not in vars(cls):
            setattr(cls, name, getattr(base, name))


def _picture(curves: Union[_core.Curve, _core.Container]) -> str:
    """A picture for a notebook, which wants the element alone."""
    document = _core.draw(curves, width=720)
    return document[document.index("<svg"):]


_required = object()


def _pop(self: Any, key: str, default: Any = _required) -> Any:
    """Removes what the key stands for and returns it; without it, the default. KeyError where there is none."""
    if default is not _required and key not in self:
        return default
    value = self[key]
    del self[key]
    return value


def _same(self: Any, other: object) -> Any:
    return list(self) == list(other) if isinstance(other, type(self)) else NotImplemented


def _keys(self: _core.Container) -> NamesView:
    """The names, in order."""
    return NamesView(self)


def _values(self: _core.Container) -> CurvesView:
    """The curves, in order."""
    return CurvesView(self)


def _items(self: _core.Container) -> NamedCurvesView:
    """Each (name, curve), in order."""
    return NamedCurvesView(self)


def _reversed(self: _core.Container) -> Iterator[str]:
    return reversed(list(self))


def complete() -> None:
    for name, method in (("keys", _keys), ("values", _values), ("items", _items), ("__reversed__", _reversed)):
        setattr(_core.Container, name, method)
    setattr(_core.Properties, "__eq__", Mapping.__eq__)
    for mapping in (_core.Container, _core.Properties):
        setattr(mapping, "pop", _pop)
    _complete(_core.Container, MutableMapping, "get popitem setdefault")
    _complete(_core.Properties, MutableMapping, "keys values items get popitem setdefault")
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
        setattr(view, "__eq__", _same)
        setattr(view, "__hash__", None)
