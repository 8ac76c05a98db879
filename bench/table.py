#!/usr/bin/env python3
"""Prints what a benchmark run says about us and the rivals.

Benchmarks pair up by name: BM_Family_Case/ours and BM_Family_Case/rival, with the same arguments behind. A ratio above
1 says how many times faster we are. Times are medians of the repetitions.

    table.py build/bench.json [--markdown]
"""
import collections
import json
import sys

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def medians(report):
    """(what, contender) -> nanoseconds"""
    times = collections.OrderedDict()
    for run in report["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"{run['name']}: {run.get('error_message')}")
        if run.get("run_type") == "aggregate" and run.get("aggregate_name") != "median":
            continue
        family, _, rest = run.get("run_name", run["name"]).partition("/")
        contender, *arguments = rest.split("/")
        arguments = [a for a in arguments if not a.startswith(("min_time:", "repeats:", "real_time"))]
        what = " ".join([family.removeprefix("BM_").replace("_", " "), *arguments])
        times[what, contender] = run["real_time"] * UNITS[run["time_unit"]]
    return times


def readable(nanoseconds):
    for unit, size in reversed(UNITS.items()):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}" if nanoseconds < 1000 * size else f"{nanoseconds / size:.0f} {unit}"
    return f"{nanoseconds:.3g} ns"


def rows(times):
    for (what, contender), time in times.items():
        if contender == "ours" or (what, "ours") not in times:
            continue
        ours = times[what, "ours"]
        yield what, readable(ours), f"{contender} {readable(time)}", f"{time / ours:.2f}"


def alone(times):
    whats = collections.Counter(what for what, _ in times)
    return [(what, readable(time), "", "") for (what, contender), time in times.items() if whats[what] == 1]


def print_table(table, markdown):
    header = ("what", "ours", "rival", "rival / ours")
    if markdown:
        for row in [header, ("---",) * 4, *table]:
            print("| " + " | ".join(row) + " |")
        return
    widths = [max(len(row[i]) for row in [header, *table]) for i in range(4)]
    for row in [header, *table]:
        print(f"{row[0]:<{widths[0]}}  {row[1]:>{widths[1]}}  {row[2]:<{widths[2]}}  {row[3]:>{widths[3]}}")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        times = medians(json.load(file))
    if not times:
        sys.exit("no benchmark ran")
    # Repetitions run interleaved, so the order of the report is chance.
    print_table(sorted([*rows(times), *alone(times)]), "--markdown" in sys.argv)


main()
