#!/usr/bin/env python3
"""Processes that take turns under one lock, undisturbed or killed at work, and processes that keep others out.

    run_lock_cases.py RUNNER LOCK_TURNS_EXE SCRATCH_FOLDER turns|killed [TURNS]
    run_lock_cases.py RUNNER TARN_EXE SCRATCH_FOLDER instance

"turns": twenty processes, TURNS (1000) each. "killed": holders are killed at random moments; a lock is stale there
after three seconds, far longer than a living holder needs. "instance": the holder of an instance lock is killed while
its child lives on.
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


def instance(runner, tarn, folder):
    """One of six that start together gets the lock, the others name it, and a killed one keeps it from nobody."""
    def start(what):
        command = [runner, tarn, "lock", "-instance", f"{folder} \\ %", "-run", what]
        return subprocess.Popen(command, stdin=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")

    first = [start("cmd /c set /p x=") for _ in range(6)]  # until its input ends
    deadline = time.monotonic() + 120
    while sum(process.poll() is None for process in first) > 1 and time.monotonic() < deadline:
        time.sleep(0.05)
    holders = [process for process in first if process.poll() is None]
    late = start("cmd /c exit 7")
    named = re.search(r"process [1-9]\d* runs as", late.communicate(timeout=120)[1])
    for process in holders:
        process.kill()
        process.wait()
    next_one = start("cmd /c exit 7").wait()
    for process in holders:
        process.stdin.close()
    statuses = [process.returncode for process in (*first, late)], next_one
    is_right = len(holders) == 1 and statuses[0].count(1) == 6 and named and next_one == 7
    return is_right, statuses


def main(runner, program, scratch, case, each="1000"):
    folder = pathlib.Path(scratch).resolve()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    (folder / "log").touch()

    def start(name, *numbers):
        return subprocess.Popen([runner, program, str(name), f"Z:{folder}", *map(str, numbers)])

    began = time.monotonic()
    if case == "instance":
        is_right, counts = instance(runner, program, folder)
    else:
        is_right, counts = {"turns": turns, "killed": killed}[case](start, folder, int(each))
    print(f"{case}: {counts}, {time.monotonic() - began:.1f} s")
    return 0 if is_right else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
