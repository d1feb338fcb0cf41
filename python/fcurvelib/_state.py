"""What pickled curves name: functions that pickle finds by module and name."""

from __future__ import annotations

from typing import Any

from . import _core


def curve_from_state(state: tuple[Any, ...]) -> _core.Curve:
    return _core._curve_from_state(state)


def container_from_state(curves: list[_core.Curve], properties: dict[str, str]) -> _core.Container:
    container = _core.Container(curves)
    container.properties = properties
    return container
