"""tidy.py CLANG_TIDY SOURCE BUILD CACHE: runs clang-tidy over the library's sources, two units at a time.

A unit is a few sources of one folder, because most of the time goes into the headers that they share. One that came out
clean is remembered in CACHE under a hash of all that decides about it (clang-tidy, its configuration, the compile
command, the sources and every header of ours that they include), and not looked at again before one of them changes.
"""

import concurrent.futures
import hashlib
import json
import pathlib
import re
import shlex
import subprocess
import sys

FOLDERS = ("model", "interp", "io", "formats", "selection", "tools", "playback", "draw", "interchange")
UNIT = 8  # sources
ALONE = {"SimdLanes.cpp"}  # includes itself, once for each kind of processor


class Unit:
    """Sources of one folder as one, and their entry in a compile database. An included source would not do: the
    analyzer passes it over. A line keeps its text unless an earlier one includes the same."""

    def __init__(self, sources, file, command, directory):
        self.file = file
        self.entry = {"directory": directory, "file": str(file), "command": command.replace("FILE", str(file))}
        self.places = []  # (source, line) of each line
        lines, included = [], set()
        for source in sources:
            for number, line in enumerate(source.read_text().splitlines(), 1):
                again = line.startswith("#include") and line in included
                included.add(line)
                lines.append("" if again else line)
                self.places.append((source, number))
        file.write_text("\n".join(lines) + "\n")

    def placed(self, output):
        """What clang-tidy says of the unit, said of its sources."""
        def place(hit):
            source, number = self.places[int(hit.group(1)) - 1]
            return f"{source}:{number}"
        return re.sub(re.escape(str(self.file)) + r":(\d+)", place, output)


def units(entries, source_dir, cache):
    folders, commands = {}, {}
    for entry in entries:
        path = pathlib.Path(entry["file"])
        folders.setdefault(path if path.name in ALONE else path.parent, []).append(path)
        commands[path] = entry["command"].replace(entry["file"], "FILE")
    for folder, paths in sorted(folders.items()):
        paths.sort()
        for first in range(0, len(paths), UNIT):
            name = "_".join(folder.relative_to(source_dir).parts) + f"_{first // UNIT}.cpp"
            yield Unit(paths[first:first + UNIT], cache / name, commands[paths[first]], entries[0]["directory"])


def digest(entry, source_dir, common):
    """Hash of everything that decides what clang-tidy says about this entry of the compile database."""
    command = shlex.split(entry["command"])
    del command[command.index("-o"):command.index("-o") + 2]
    rule = subprocess.run(command + ["-MM"], cwd=entry["directory"], check=True, capture_output=True, text=True).stdout
    files = rule.replace("\\\n", " ").split()[1:]
    hasher = hashlib.sha256(common + " ".join(command).encode() + pathlib.Path(entry["file"]).read_bytes())
    for name in sorted(files):
        path = pathlib.Path(entry["directory"], name).resolve()
        if path.is_relative_to(source_dir):
            hasher.update(b"\0" + str(path.relative_to(source_dir)).encode() + b"\0" + path.read_bytes())
    return hasher.hexdigest()


def main():
    clang_tidy, source_dir, build_dir, cache = sys.argv[1], *map(pathlib.Path, sys.argv[2:5])
    source_dir = source_dir.resolve()
    cache.mkdir(parents=True, exist_ok=True)
    version = subprocess.run([clang_tidy, "--version"], check=True, capture_output=True).stdout
    common = version + (source_dir / ".clang-tidy").read_bytes()

    database = json.loads((build_dir / "compile_commands.json").read_text())
    sources = {entry["file"]: entry for entry in reversed(database)  # a few are compiled into programs of tests later
               if any(pathlib.Path(entry["file"]).is_relative_to(source_dir / folder) for folder in FOLDERS)}
    if not sources:
        sys.exit("tidy.py: the compile database names no source of the library")
    whole = list(units(list(sources.values()), source_dir, cache.resolve()))
    (cache / "compile_commands.json").write_text(json.dumps([unit.entry for unit in whole]))

    def check(unit):
        """(whether it was looked at, what was found), with nothing found for a clean one."""
        mark = cache / digest(unit.entry, source_dir, common)
        if mark.exists():
            return False, ""
        run = subprocess.run([clang_tidy, "-p", str(cache), "--quiet", f"--config-file={source_dir / '.clang-tidy'}",
                              str(unit.file)], capture_output=True, text=True)
        if run.returncode == 0:
            mark.touch()
            return True, ""
        return True, unit.placed(run.stdout or run.stderr)

    looked_at, unclean = 0, 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        for looked, found in pool.map(check, whole):
            looked_at += looked
            if found:
                unclean += 1
                print(found, flush=True)
    print(f"{len(sources)} sources, {looked_at} of {len(whole)} units looked at, {unclean} with findings")
    sys.exit(unclean != 0)


main()
