"""costs_picture.py PICTURE RESULT.json...: draws what a value costs against the number of keys, from Google Benchmark's
results, as SVG. Of repeated runs the fastest counts: whatever else the machine does can only add to it.
"""

import json
import math
import sys

#        benchmark                 label                       colour
LINES = [("EvalRandomX", "FCurve::eval, random x", "#666666"),
         ("CompiledRandomX", "random x", "#0072b2"),
         ("CompiledCursor", "ascending x, cursor", "#009e73"),
         ("CompiledBatchRandom", "many random x at once", "#d55e00"),
         ("CompiledBatchAscending", "many ascending x at once", "#cc79a7")]
WIDTH, HEIGHT = 720, 400
LEFT, RIGHT, TOP, BOTTOM = 60, 200, 40, 50


def read(names):
    """{benchmark: {keys: nanoseconds}}"""
    times = {}
    for name in names:
        with open(name, encoding="utf-8") as file:
            for result in json.load(file)["benchmarks"]:
                benchmark, _, keys = result["run_name"].partition("/")
                if result["run_type"] != "iteration" or not keys.isdigit() or "items_per_second" not in result:
                    continue
                of_benchmark = times.setdefault(benchmark, {})
                time = 1e9 / result["items_per_second"]
                of_benchmark[int(keys)] = min(time, of_benchmark.get(int(keys), math.inf))
    return times


def main():
    times = read(sys.argv[2:])
    shown = [(times[benchmark], label, colour) for benchmark, label, colour in LINES if benchmark in times]
    if not shown:
        sys.exit("no results of " + ", ".join(line[0] for line in LINES))
    all_keys = [keys for line, _, _ in shown for keys in line]
    all_times = [time for line, _, _ in shown for time in line.values()]
    low_x, high_x = math.floor(math.log10(min(all_keys))), math.ceil(math.log10(max(all_keys)))
    low_y, high_y = math.floor(math.log10(min(all_times))), math.ceil(math.log10(max(all_times)))

    def place_x(keys):
        return LEFT + (math.log10(keys) - low_x) / (high_x - low_x) * (WIDTH - LEFT - RIGHT)

    def place_y(time):
        return HEIGHT - BOTTOM - (math.log10(time) - low_y) / (high_y - low_y) * (HEIGHT - TOP - BOTTOM)

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
           f'viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="12">',
           f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#ffffff"/>',
           f'<text x="{LEFT}" y="20" font-size="14" font-weight="bold">A value, in nanoseconds</text>']
    for power in range(low_x, high_x + 1):
        x = place_x(10 ** power)
        out.append(f'<path d="M{x:.1f} {TOP}V{HEIGHT - BOTTOM}" stroke="#e0e0e0"/>')
        label = f"{10 ** power:,}".replace(",", " ")
        out.append(f'<text x="{x:.1f}" y="{HEIGHT - BOTTOM + 18}" text-anchor="middle">{label}</text>')
    for power in range(low_y, high_y + 1):
        for digit in (1, 2, 5) if power < high_y else (1,):
            y = place_y(digit * 10 ** power)
            out.append(f'<path d="M{LEFT} {y:.1f}H{WIDTH - RIGHT}" stroke="#e0e0e0"/>')
            out.append(f'<text x="{LEFT - 8}" y="{y + 4:.1f}" text-anchor="end">{digit * 10 ** power:g}</text>')
    out.append(f'<text x="{(LEFT + WIDTH - RIGHT) / 2}" y="{HEIGHT - 10}" text-anchor="middle">keys</text>')

    labels = []
    for line, label, colour in shown:
        points = [(place_x(keys), place_y(line[keys])) for keys in sorted(line)]
        path = "L".join(f"{x:.1f} {y:.1f}" for x, y in points)
        out.append(f'<path d="M{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        out += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>' for x, y in points]
        labels.append([points[-1][1], points[-1][1], label, colour])
    labels.sort()
    for before, after in zip(labels, labels[1:]):  # apart from each other
        after[1] = max(after[1], before[1] + 15)
    out += [f'<text x="{WIDTH - RIGHT + 8}" y="{y + 4:.1f}" fill="{colour}">{label}</text>'
            for _, y, label, colour in labels]
    out.append("</svg>")
    with open(sys.argv[1], "w", encoding="utf-8") as picture:
        picture.write("\n".join(out) + "\n")


main()
