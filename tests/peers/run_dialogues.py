#!/usr/bin/env python3
"""Plays dialogue files (dialogue.py tells their form), many cases at once.

    run_dialogues.py RUNNER PROGRAM_FOLDER SCRATCH_FOLDER FILE...
"""
import concurrent.futures
import pathlib
import sys

from dialogue import read_cases

AT_ONCE = 8


def main(runner, programs, scratch, *files):
    cases = [case for file in files for case in read_cases(file)]
    programs, scratch = pathlib.Path(programs).resolve(), pathlib.Path(scratch).resolve()
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        runs = [pool.submit(case.run, runner, programs, scratch / str(at)) for at, case in enumerate(cases)]
    failures = 0
    for case, run in zip(cases, runs):
        faults = run.result()
        failures += bool(faults)
        if faults:
            print(f"{case.place}: {case.title}", *faults, sep="\n")
    print(f"{len(cases)} dialogues, {failures} failures")
    return 1 if failures or not cases else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
