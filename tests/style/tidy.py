"""tidy.py CLANG_TIDY SOURCE BUILD CACHE: runs clang-tidy over the library's sources, two at a time.

A source that came out clean is remembered in CACHE under a hash of all that decides about it (clang-tidy, its
configuration, the compile command, the source and every header of ours that it includes), and not looked at again
before one of them changes.
"""

import concurrent.futures
import hashlib
import json
import pathlib
import shlex
import subprocess
import sys

FOLDERS = ("model", "interp", "io", "formats", "selection", "tools", "playback", "draw", "interchange")


def digest(entry, source_dir, common):
    """Hash of everything that decides what clang-tidy says about this entry of the compile database."""
    command = shlex.split(entry["command"])
    del command[command.index("-o"):command.index("-o") + 2]
    rule = subprocess.run(command + ["-MM"], cwd=entry["directory"], check=True, capture_output=True, text=True).stdout
    files = rule.replace("\\\n", " ").split()[1:]
    hasher = hashlib.sha256(common + " ".join(command).encode())
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

    entries = [entry for entry in json.loads((build_dir / "compile_commands.json").read_text())
               if any(pathlib.Path(entry["file"]).is_relative_to(source_dir / folder) for folder in FOLDERS)]
    if not entries:
        sys.exit("tidy.py: the compile database names no source of the library")

    def check(entry):
        """(file, whether it was looked at, what was found), with nothing found for a clean file."""
        mark = cache / digest(entry, source_dir, common)
        if mark.exists():
            return entry["file"], False, ""
        run = subprocess.run([clang_tidy, "-p", str(build_dir), "--quiet", entry["file"]],
                             capture_output=True, text=True)
        if run.returncode == 0:
            mark.touch()
            return entry["file"], True, ""
        return entry["file"], True, run.stdout or run.stderr

    looked_at, unclean = 0, 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        for file, looked, found in pool.map(check, entries):
            looked_at += looked
            if found:
                unclean += 1
                print(f"{pathlib.Path(file).relative_to(source_dir)}:\n{found}", flush=True)
    print(f"{len(entries)} sources, {looked_at} looked at, {unclean} with findings")
    sys.exit(unclean != 0)


main()
