"""bench_table.py BUILD RESULT.json...: one Markdown table of Google Benchmark's results.

Times are CPU times for one item (one evaluation, one key, ...), where a benchmark counts items, or else for one
iteration. K is the time of the benchmark named BezierKernel, and where that was run each time is also given in K.
"""

import json
import pathlib
import platform
import re
import subprocess
import sys

NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
NOT_COUNTERS = {"name", "family_index", "per_family_instance_index", "run_name", "run_type", "repetitions",
                "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit", "items_per_second",
                "bytes_per_second", "aggregate_name", "aggregate_unit", "label"}


def machine(build_dir):
    cpu = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    commands = json.loads((build_dir / "compile_commands.json").read_text())
    words = commands[0]["command"].split()
    compiler = subprocess.run([words[0], "--version"], check=True, capture_output=True, text=True).stdout.splitlines()[0]
    flags = " ".join(word for word in words if re.match(r"-(O|f|m|std|DNDEBUG|g)", word))
    return f"{cpu.group(1) if cpu else platform.machine()}; {compiler}; {flags}"


def nanoseconds(result):
    if "items_per_second" in result:
        return 1e9 / result["items_per_second"]
    return result["cpu_time"] * NANOSECONDS[result["time_unit"]]


def in_words(time):
    for unit in ("ns", "us", "ms"):
        if time < 1000 * NANOSECONDS[unit]:
            return f"{time / NANOSECONDS[unit]:.3g} {unit}"
    return f"{time / NANOSECONDS['s']:.3g} s"


def main():
    results = []
    for name in sys.argv[2:]:
        results += json.loads(pathlib.Path(name).read_text())["benchmarks"]
    # Of repeated runs the median stands for all.
    if any(result.get("aggregate_name") == "median" for result in results):
        results = [result for result in results if result.get("aggregate_name") == "median"]
    kernel = next((nanoseconds(result) for result in results if result["run_name"] == "BezierKernel"), None)

    print(machine(pathlib.Path(sys.argv[1])))
    print("\n| benchmark | time | in K | |\n| --- | ---: | ---: | --- |")
    for result in results:
        time = nanoseconds(result)
        ratio = f"{time / kernel:.2f}" if kernel else ""
        counters = ", ".join(f"{key} {value:.4g}" for key, value in result.items()
                             if key not in NOT_COUNTERS and isinstance(value, (int, float)))
        print(f"| {result['run_name']} | {in_words(time)} | {ratio} | {counters} |")


main()
