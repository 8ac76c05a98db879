#!/usr/bin/env python3
"""Prints what a benchmark run says about us and the rivals.

Benchmarks pair up by name: BM_Family_Case/ours and BM_Family_Case/rival, with the same arguments behind. A ratio above
1 says how many times faster we are, or how many times less memory we take. Times are medians of the repetitions. What
is marked is behind by more than a tenth, or below the aim that aims.txt names. Ends with status 1 when a row failed.

    table.py bench.json                         the table, to be read on a screen
    table.py bench.json --whole                 the same of a run without a filter: each rival has its row of ours, each
                                                aim its row
    table.py bench.json --whole --into page.md  the table and a chart (page.svg) between the marker lines of the page too
"""
import argparse
import collections
import json
import os
import pathlib
import sys

import chart
from aims import Aims

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
LEVEL = 0.91  # less is behind by more than a tenth
BEGIN = "<!-- Made by `make bench DOCS=1` from here on. -->"
END = "<!-- Made by `make bench DOCS=1` up to here. -->"
HEADER = ("what", "ours", "rival", "rival / ours", "aim", "")

Row = collections.namedtuple("Row", "what ours contender rival ratio aim")


def named(run):
    """What a run is about, and whose it is."""
    family, _, rest = run.get("run_name", run["name"]).partition("/")
    contender, *arguments = rest.split("/")
    arguments = [a for a in arguments if not a.startswith(("min_time:", "repeats:", "real_time", "iterations:"))]
    return " ".join([family.removeprefix("BM_").replace("_", " "), *arguments]), contender


def read(report):
    """Two times (what, contender) -> number: nanoseconds, and committed bytes of what was made; and what failed."""
    times, sizes, failures = {}, {}, set()
    for run in report["benchmarks"]:
        if run.get("error_occurred"):
            failures.add(f"{run['name']}: {run.get('error_message')}")
        elif run.get("aggregate_name") == "median":
            what, contender = named(run)
            times[what, contender] = run["real_time"] * UNITS[run["time_unit"]]
            if "committed" in run:
                sizes[what + " memory", contender] = run["committed"]
    return times, sizes, failures


def readable_time(nanoseconds):
    for unit, size in reversed(UNITS.items()):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}" if nanoseconds < 1000 * size else f"{nanoseconds / size:.0f} {unit}"
    return f"{nanoseconds:.3g} ns"


def readable_size(count):
    return f"{count:.0f} bytes"


def alone(numbers):
    """Rivals of rows that are not there: one of the names is wrong."""
    return {f"{what}: {contender} without ours" for what, contender in numbers if (what, "ours") not in numbers}


def rows(numbers, readable, aims):
    """A row for each rival, and one for what we do alone. Repetitions run interleaved: the order of the report is chance."""
    accompanied = {what for what, contender in numbers if contender != "ours"}
    for (what, contender), number in sorted(numbers.items()):
        ours = numbers.get((what, "ours"))
        if contender != "ours" and ours is not None:
            yield Row(what, readable(ours), contender, readable(number), number / ours, aims.of(what, contender))
        elif contender == "ours" and what not in accompanied:
            yield Row(what, readable(number), "", "", None, None)


def mark(row):
    if row.ratio is None:
        return ""
    shown = round(row.ratio, 2)
    marks = ["behind"] if shown < LEVEL else []
    if row.aim is not None and shown < row.aim:
        marks.append("below the aim")
    return ", ".join(marks)


def cells(row):
    ratio = "" if row.ratio is None else f"{row.ratio:.2f}"
    aim = "" if row.aim is None else f"{row.aim:g}"
    return row.what, row.ours, f"{row.contender} {row.rival}".strip(), ratio, aim, mark(row)


def print_table(table):
    lines = [HEADER, *map(cells, table)]
    widths = [max(map(len, column)) for column in zip(*lines)]
    for what, ours, rival, ratio, aim, marks in lines:
        print(f"{what:<{widths[0]}}  {ours:>{widths[1]}}  {rival:<{widths[2]}}  {ratio:>{widths[3]}}  {aim:>{widths[4]}}  {marks}".rstrip())
    counts = collections.Counter(mark(row) for row in table)
    print(f"{len(table)} rows;", ", ".join(f"{count} {marks}" for marks, count in sorted(counts.items()) if marks) or "none behind")


def markdown(table):
    yield "| " + " | ".join(HEADER) + " |"
    yield "| --- | ---: | --- | ---: | ---: | --- |"
    for row in table:
        *plain, marks = cells(row)
        yield "| " + " | ".join([*plain, f"**{marks}**" if marks else ""]) + " |"


def replace_between_markers(text, lines, page):
    head, begin, rest = text.partition(BEGIN + "\n")
    _, end, tail = rest.partition(END)
    if not begin or not end:
        sys.exit(f"{page} has no lines {BEGIN} and {END}")
    return head + begin + "\n".join(lines) + "\n" + end + tail


def write_page(page, table, context):
    """The page and its chart, each whole or not at all."""
    picture = page.with_suffix(".svg")
    families = collections.defaultdict(list)
    for row in table:
        if row.ratio is not None:
            families[row.what.split()[0]].append((row.ratio, f"{row.what}, {row.contender}: {row.ratio:.2f}"))
    rivals = ", ".join(f"{key.removeprefix('rival ')} {context[key]}" for key in sorted(context) if key.startswith("rival "))
    made = f"Run of {context['date'][:10]}, on {context['num_cpus']} processors with a load of {context['load']} before it, against the C++ library and the system of this target; {rivals}."
    lines = ["", made, "", f"![How many times faster we are, by family]({picture.name})", "", *markdown(table), ""]
    texts = {page: replace_between_markers(page.read_text(encoding="utf-8"), lines, page),
             picture: chart.svg(families, LEVEL)}
    for path, text in texts.items():
        new = path.with_suffix(path.suffix + ".new")
        new.write_text(text, encoding="utf-8")
        os.replace(new, path)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("report", type=pathlib.Path)
    parser.add_argument("--whole", action="store_true")
    parser.add_argument("--into", type=pathlib.Path)
    arguments = parser.parse_args()
    report = json.loads(arguments.report.read_text(encoding="utf-8"))
    times, sizes, failures = read(report)
    aims = Aims(pathlib.Path(__file__).with_name("aims.txt"))
    table = sorted([*rows(times, readable_time, aims), *rows(sizes, readable_size, aims)])
    if table:
        print_table(table)
    else:
        failures.add("no benchmark ran")
    if arguments.whole:
        failures.update(alone(times), aims.unused())
    if failures:
        sys.exit("\n".join(["failed:", *sorted(failures)]))
    if arguments.into:
        write_page(arguments.into, table, report["context"])


main()
