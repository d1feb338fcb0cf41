"""Converts many files, and tells what each conversion lost.

    convert_all.py examples/data/*.fcrvx --to csv --into out

Exits with 1 where a file could not be converted; the others are.
"""

import argparse
import pathlib
import sys

import fcurvelib as fc


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("sources", nargs="+", type=pathlib.Path)
    parser.add_argument("--to", default="binary", choices=[it.name for it in fc.formats() if it.writable])
    parser.add_argument("--into", type=pathlib.Path, default=pathlib.Path())
    parser.add_argument("--fps", type=float, default=24.0, help="frames a second, where a file does not say")
    arguments = parser.parse_args()
    extension = next(it.extension for it in fc.formats() if it.name == arguments.to)
    arguments.into.mkdir(parents=True, exist_ok=True)

    failed = 0
    for source in arguments.sources:
        target = arguments.into / f"{source.stem}.{extension}"
        try:
            report = fc.convert(source, target, arguments.to, frame_rate=arguments.fps)
        except fc.Error as error:
            print(error, file=sys.stderr)
            failed += 1
            continue
        print(f"{source} -> {target}: {'nothing lost' if not report else f'{len(report)} losses'}")
        for loss in report:
            print(f"    {loss.curve}: {loss}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
