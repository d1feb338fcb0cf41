"""A plot that follows a drag, step by step.

    live_plot.py                 a window, where Matplotlib is there
    live_plot.py --into out      a picture of each step, out/step00.svg and so on
"""

import argparse
import math
import pathlib

import fcurvelib as fc


class Window:
    """A line in Matplotlib's window."""

    def __init__(self, curve):
        import matplotlib.pyplot as plt
        self._plt = plt
        plt.ion()
        self._axes = curve.plot(keys=False)

    def show(self, curve):
        self._axes.clear()
        curve.plot(self._axes, handles=True)
        self._plt.pause(0.02)


class Pictures:
    """A picture of each step, with the curve as it was beneath it."""

    def __init__(self, curve, folder):
        self._before, self._folder, self._count = curve.copy(), folder, 0
        folder.mkdir(parents=True, exist_ok=True)

    def show(self, curve):
        picture = fc.draw(curve, before=self._before, values=(-5, 20), handles=True)
        (self._folder / f"step{self._count:02}.svg").write_text(picture)
        self._count += 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--into", type=pathlib.Path)
    parser.add_argument("--steps", type=int, default=40)
    arguments = parser.parse_args()

    curve = fc.Curve("height", [(1, 0), (12, 8), (24, 0)])
    curve.keys[1].unified = True
    view = Pictures(curve, arguments.into) if arguments.into else Window(curve)

    def redraw(change):
        if change.what in ("step", "end"):  # not for each handle that moves along
            view.show(curve)

    # This is what an editor does while the button is down.
    with curve.on_change(redraw), fc.drag(curve):
        key = curve.keys[1]
        for step in range(arguments.steps):
            turn = 2 * math.pi * step / arguments.steps
            key.position = 12 + 6 * math.sin(turn), 8 + 4 * math.cos(turn)
            curve.notify()


if __name__ == "__main__":
    main()
