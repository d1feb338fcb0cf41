"""What Matplotlib needs of a curve; used where it is there."""

from __future__ import annotations

import importlib
from typing import Any, Optional

import numpy as np

from . import _core


def plot(self: _core.Curve, ax: Optional[Any] = None, *, start: Optional[float] = None, end: Optional[float] = None,
         count: int = 1000, keys: bool = True, handles: bool = False, **style: Any) -> Any:
    """Draws the curve into Matplotlib axes, the current ones by default, and returns these.

    start and end in frames, by default the keyed range; count places, and those of the keys. keys and handles are drawn
    where asked for. style goes to the line (color, linewidth, label ...).
    """
    if ax is None:
        ax = importlib.import_module("matplotlib.pyplot").gca()
    first, last = self.range or (0.0, 1.0)
    start, end = first if start is None else start, last if end is None else end
    shown = [key for key in self.keys if start <= key.x <= end]
    places = [key.x for key in shown]
    x = np.union1d(np.linspace(start, end, count), places)
    line, = ax.plot(x, self(x), **{"label": self.name or None, **style})
    color = line.get_color()
    if handles:
        for key in shown:
            for tangent in (key.in_tangent, key.out_tangent):
                ax.plot([key.x, key.x + tangent.x], [key.y, key.y + tangent.y], color=color, linewidth=0.8, marker=".")
    if keys:
        ax.plot(places, [key.y for key in shown], linestyle="none", marker="o", color=color)
    ax.set_xlabel("frame")
    return ax
