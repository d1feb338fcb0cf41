"""includes.py SOURCE: holds every include against the table in docs/ARCHITECTURE.md.

A row names a folder, or a file of one without its ending, and what it may include besides itself; the closest row
decides. A public header belongs to the folder that has the source of its name, or to the one that the table of headers
without a source names; `shared` headers are everybody's. "public headers" allows all of them but detail/, which is the
library's own. Tests and benchmarks may include an internal header on a line that says why: #include "..." // internal: why.
"""

import collections
import pathlib
import re
import sys

LIBRARY = ("model", "interp", "io", "tools", "selection", "formats", "playback", "draw")
INTERCHANGE = "FCurveInterchange"
PUBLIC = "public headers"
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"(.*)$')


def tables(document):
    """The rows of every table whose head's second cell is 'includes' or 'headers without a source'."""
    arrows, owners = {}, {}
    target = None
    for line in document.read_text().splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if not line.startswith("|"):
            target = None
        elif target is None:
            target = {"includes": arrows, "headers without a source": owners}.get(cells[1], {})
        elif not cells[0].startswith("---"):
            names = re.findall(r"`([^`]+)`", cells[1])
            for place in re.findall(r"`([^`]+)`", cells[0]):
                target[place] = set(names) | ({PUBLIC} if PUBLIC in cells[1] else set())
    return arrows, {header: folder for folder, headers in owners.items() for header in headers}


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    arrows, owners = tables(root / "docs/ARCHITECTURE.md")
    files = sorted(path for path in root.glob("**/*") if path.suffix in (".h", ".cpp")
                   and path.relative_to(root).parts[0] in {row.split("/")[0] for row in arrows} | {"include"})
    sources = collections.defaultdict(set)
    for path in files:
        parts = path.relative_to(root).parts
        if path.suffix == ".cpp" and parts[0] in LIBRARY:
            sources[path.stem].add(parts[0])

    faults, includes = [], 0

    def place_of(path):
        """folder/stem for what the rows speak of, or nothing for the header that includes all."""
        parts = path.relative_to(root).parts
        if parts[0] != "include":
            return "/".join(parts[:-1] + (path.stem,))
        if parts[1] == INTERCHANGE:
            return "interchange/" + path.stem
        if path.stem == "FCurveLib":
            return None
        folder = owners.get(path.stem) or (sources[path.stem].copy().pop() if len(sources[path.stem]) == 1 else None)
        if not folder:
            faults.append(f"{path.relative_to(root)} belongs to no folder: name it in docs/ARCHITECTURE.md")
        return f"{folder}/{path.stem}"

    def row_of(place):
        while place not in arrows and "/" in place:
            place = place.rpartition("/")[0]
        return place

    for path in files:
        place = place_of(path)
        if place is None:
            continue
        row = row_of(place)
        if row not in arrows:
            faults.append(f"{path.relative_to(root)}: docs/ARCHITECTURE.md has no row for {place}")
            continue
        for number, line in enumerate(path.read_text().splitlines(), 1):
            found = INCLUDE.match(line)
            if not found:
                continue
            includes += 1
            name, remark = found.groups()
            where = f"{path.relative_to(root)}:{number}: \"{name}\""
            bases = (path.parent, root, root / "include", root / "tests")
            header = next((base / name for base in bases if (base / name).is_file()), None)
            if header is None:
                faults.append(f"{where} is no file of ours")
                continue
            header = header.resolve()
            public = header.is_relative_to(root / "include")
            detail = public and "detail" in header.relative_to(root / "include").parts
            target = place_of(header)
            if PUBLIC in arrows[row]:
                allowed = public and not detail
                if place.split("/")[0] in ("tests", "bench") and remark.strip().startswith("// internal: "):
                    allowed = True
            else:
                allowed = target is None and path.parts[-2] == "tests"
            if target is not None:
                steps = target.split("/")
                closest = {"/".join(steps[:i]) for i in range(1, len(steps) + 1)}
                own = place.split("/")[0]
                allowed = allowed or bool(closest & (arrows[row] | {own, "shared"}))
            if not allowed:
                faults.append(f"{where}: {row} may include {', '.join(sorted(arrows[row])) or 'nobody'}")

    print("\n".join(faults) if faults else f"{includes} includes in {len(files)} files are as drawn")
    sys.exit(bool(faults) or includes == 0)


main()
