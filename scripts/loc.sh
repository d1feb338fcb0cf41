#!/usr/bin/env bash
# Prints how many lines of code and of tests there are, and their ratio, for each folder and in all: C++, Python,
# TypeScript and JavaScript, shell and CMake, blank lines and comments left out. Fuzz drivers are tests. A public header
# counts with the folder that has the source of its name.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "git|git" "python3|python3"

exec python3 - <<'PYTHON'
import collections
import pathlib
import re
import subprocess

C_COMMENTS = r"/\*.*?\*/|//[^\n]*"
C_STRINGS = r'R"\((?:.*?)\)"|"(?:\\.|[^"\\\n])*"|' + r"'(?:\\.|[^'\\\n])'"
HASH_STRINGS = r'"(?:\\.|[^"\\\n])*"|' + r"'[^'\n]*'"
LANGUAGES = {  # ending: (strings, comments)
    (".cpp", ".h"): (C_STRINGS, C_COMMENTS),
    (".ts", ".tsx", ".js", ".mjs"): (C_STRINGS + r"|`(?:\\.|[^`\\])*`", C_COMMENTS),
    (".py",): (HASH_STRINGS, r'^[ \t]*""".*?"""|#[^\n]*'),
    (".sh", "CMakeLists.txt", ".cmake"): (HASH_STRINGS, r"(?<![$\w{])#[^\n]*"),
}


def lines(path):
    for endings, (strings, comments) in LANGUAGES.items():
        if path.name.endswith(endings):
            # A string keeps its lines, so that what looks like a comment in it is none; a comment becomes nothing.
            text = re.sub(rf"{comments}|({strings})", lambda found: found.group(1) or "",
                          path.read_text(errors="replace"), flags=re.DOTALL | re.MULTILINE)
            return sum(1 for line in text.splitlines() if line.strip())
    return 0


def place(path, sources):
    """(folder, whether the file is a test of it)."""
    parts = path.parts
    if parts[0] == "tests":
        return (parts[1] if len(parts) > 2 else "tests"), True
    if parts[0] == "fuzz":
        return "fuzz", True
    if parts[0] == "include":
        return sources.get(path.stem, "headers"), False
    return (parts[0] if len(parts) > 1 else "cmake"), any(re.match(r"tests?$|.*\.(test|spec)\.", part) for part in parts)


names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], check=True,
                       capture_output=True, text=True).stdout.split("\0")
paths = [pathlib.Path(name) for name in names if name and pathlib.Path(name).is_file()]
sources = {path.stem: path.parts[0] for path in paths
           if path.suffix == ".cpp" and path.parts[0] not in ("tests", "fuzz", "bench", "apps", "examples")}
counts = collections.defaultdict(lambda: [0, 0])
for path in paths:
    folder, test = place(path, sources)
    counts[folder][test] += lines(path)

bench = counts.pop("bench", [0, 0])[0]
print(f"{'':14}{'code':>8}{'tests':>8}{'tests / code':>14}")
total = [sum(count[i] for count in counts.values()) for i in (0, 1)]
for folder, (code, tests) in sorted(counts.items()) + [("all", total)]:
    if code or tests:
        print(f"{folder:14}{code:8}{tests:8}{tests / code if code else float('nan'):14.2f}".replace("nan", "  -"))
print(f"\nBenchmarks, which are neither: {bench}")
PYTHON
