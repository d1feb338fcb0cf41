"""Motion capture cleaned up: rotations without jumps, few keys instead of one a frame.

    clean_mocap.py examples/data/camera.chan camera.fcrvx --tolerance 0.01

The table has a row a frame and the columns tx ty tz rx ry rz (after the frame, if it has that).
"""

import argparse

import fcurvelib as fc

CHANNELS = "tx", "ty", "tz", "rx", "ry", "rz"


def clean(source, tolerance):
    """The curves of the table, and a line of text for each."""
    tables = list(fc.load(source, format="hchan").values())
    if len(tables) != len(CHANNELS):
        raise ValueError(f"{source}: expected {len(CHANNELS)} channels, found {len(tables)}")
    channels = dict(zip(CHANNELS, tables))
    turned = fc.unroll(channels["rx"], channels["ry"], channels["rz"], "xyz")
    yield None, f"rotations changed at {turned} frames"
    for name, table in channels.items():
        keys = table.to_arrays().keys
        curve, report = fc.fit_report(keys["x"], keys["y"], tolerance, name=name)
        yield curve, f"{name}: {report.keys_before} -> {report.keys_after} keys, at most {report.error:.2g} off"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("source")
    parser.add_argument("target")
    parser.add_argument("--tolerance", type=float, default=0.01, help="in the unit of the values")
    arguments = parser.parse_args()
    curves = fc.Container()
    for curve, line in clean(arguments.source, arguments.tolerance):
        print(line)
        if curve is not None:
            curves.add(curve)
    fc.save(curves, arguments.target)


if __name__ == "__main__":
    main()
