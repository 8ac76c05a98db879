#!/usr/bin/env python3
"""Logs of whole processes: a disk that is full, a directory that is taken away.

    run_log_cases.py RUNNER TARN_EXE SCRATCH_FOLDER full-disk|directory

Exit status: 0, 1 for a failure, 77 when a small file system cannot be mounted here.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import time

LINE = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d ([mw]) \S+ \d+ \d+ \[\] (?:tarn\(\d+\)|-) (.*)")
LOSS = re.compile(r"^(\d+) lines were lost", re.MULTILINE)


def command(runner, tool, folder, text, lines, *more):
    return [runner, tool, "trace", "-level", "6", "-text", text, "-repeat", str(lines), "-trace", "m",
            "-loggingPath", f"Z:{folder}", *more]


def texts(path, level="m"):
    """The texts of a log; a torn line is an error."""
    found = []
    for line in path.read_text(encoding="utf-8").splitlines():
        match = LINE.fullmatch(line)
        if not match:
            sys.exit(f"{path.name}: torn line {line!r}")
        if match[1] == level:
            found.append(match[2])
    return found


def fill_disk(runner, tool, folder, length):
    """Whether the log itself had room for a line that tells the loss, after lines of a length."""
    run = subprocess.run(command(runner, tool, folder, "x" * length, 5000), capture_output=True, timeout=120,
                         encoding="utf-8")
    kept, told = (sum((texts(path, level) for path in folder.glob("*.log")), []) for level in "mw")
    complaints = [line for line in run.stderr.splitlines() if "cannot write" in line]
    lost = sum(int(number) for number in LOSS.findall("\n".join([*told, run.stderr])))
    if run.returncode != 0 or len(complaints) != 1 or not 100 < len(kept) < 5000 or len(kept) + lost != 5000:
        sys.exit(f"status {run.returncode}, {len(kept)} lines kept, {lost} lost, told {told}, said {run.stderr!r}")
    if "(112)" not in complaints[0]:
        sys.exit(f"a full disk is called {complaints[0]!r}")
    print(f"{len(kept)} whole lines kept, {lost} lost, told in the log: {told}; {complaints[0]}")
    return bool(told)


# What is left after the last whole line depends on the length of a line, and so on the names of machine and user: lines
# of many lengths leave room for a line that tells the loss, and leave none.
def full_disk(runner, tool, folder):
    told = set()
    for length in range(100, 400, 20):
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", folder], capture_output=True).returncode:
            print("no small file system can be mounted here: not run")
            sys.exit(77)
        try:
            told.add(fill_disk(runner, tool, folder, length))
        finally:
            subprocess.run(["umount", folder], check=True)
        if len(told) == 2:
            return
    sys.exit(f"the loss was {'always' if told == {True} else 'never'} told in the log")


def directory_taken_away(runner, tool, folder):
    logs = folder / "logs"
    process = subprocess.Popen(command(runner, tool, logs, "text", 40, "-pause", "100"), stdout=subprocess.DEVNULL)
    for _ in range(100):
        if logs.exists() and any(logs.iterdir()):
            break
        time.sleep(0.05)
    shutil.rmtree(logs)  # the system under the program lets us, although the file is open
    if process.wait(timeout=60):
        sys.exit("the process failed")
    kept = sum(len(texts(path)) for path in logs.glob("*.log"))
    if not 20 < kept < 40:
        sys.exit(f"{kept} lines after the directory was made anew")
    print(f"the directory was made anew and has {kept} whole lines")


def main(runner, tool, scratch, case):
    folder = pathlib.Path(scratch).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    for left_over in folder.iterdir():
        shutil.rmtree(left_over) if left_over.is_dir() else left_over.unlink()
    {"full-disk": full_disk, "directory": directory_taken_away}[case](runner, str(pathlib.Path(tool).resolve()), folder)


if __name__ == "__main__":
    main(*sys.argv[1:])
