#!/usr/bin/env python3
"""Processes that take turns under one lock, undisturbed or killed at work.

    run_lock_cases.py RUNNER LOCK_TURNS_EXE SCRATCH_FOLDER turns|killed [TURNS]

"turns": twenty processes, TURNS (1000) each. "killed": holders are killed at random moments; a lock is stale there
after three seconds, far longer than a living holder needs.
"""
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

KILLS = 5


def check_log(log, killed):
    """Everybody ends before the next one begins, unless he was killed; the last one may be at work."""
    orderly = rf"(?:(\w+) b\w+\n\1 ends\n|(?:{'|'.join(killed) or '-'}) b\w+\n)*(?:\w+ b\w+\n)?"
    end = re.match(orderly, log).end()
    if end < len(log):
        sys.exit(f"after {log.count(chr(10), 0, end)} lines: {log[end - 20:end + 20]!r}")


def turns(start, folder, each):
    processes = [start(number, each, 100, 0, 2) for number in range(20)]
    statuses = {process.wait() for process in processes}
    log = (folder / "log").read_text()
    check_log(log, set())
    counts = int((folder / "count").read_text()), log.count("ends"), log.count("begins")
    return statuses == {0} and set(counts) == {20 * each}, counts


def killed(start, folder, _):
    chance = random.Random(20240229)
    running = {str(number): start(number, 65_535, 30, 40, 1) for number in range(KILLS + 2)}
    victims, last = set(), ""
    while len(victims) < KILLS or last in victims:
        time.sleep(chance.uniform(0.5, 1.0))
        last = (folder / "log").read_text().split("\n")[-2:][0].partition(" ")[0]
        if len(victims) < KILLS and last in running.keys() - victims:  # most probably it holds the lock
            running[last].kill()
            victims.add(last)
    for process in running.values():
        process.kill()
        process.wait()
    log = (folder / "log").read_text()
    check_log(log, victims)
    return 0 < log.count("breaks") <= KILLS, (log.count("begins"), log.count("breaks"), log.count("ends"))


def main(runner, program, scratch, case, each="1000"):
    folder = pathlib.Path(scratch).resolve()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    (folder / "log").touch()

    def start(name, *numbers):
        return subprocess.Popen([runner, program, str(name), f"Z:{folder}", *map(str, numbers)])

    began = time.monotonic()
    is_right, counts = {"turns": turns, "killed": killed}[case](start, folder, int(each))
    print(f"{case}: {counts}, {time.monotonic() - began:.1f} s")
    return 0 if is_right else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
