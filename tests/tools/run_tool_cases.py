#!/usr/bin/env python3
"""Runs the command lines of the *_cases.txt beside it and checks what they do.

    run_tool_cases.py RUNNER TARN_EXE SCRATCH_FOLDER
"""
import pathlib
import shlex
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = HERE.parent.parent / "examples"


def read_cases(path):
    """Yields (line number, checks); a check is (mark, rest of the line)."""
    case = None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("$ "):
            if case:
                yield case
            case = (number, [])
        if line.strip() and not line.startswith("#"):
            case[1].append((line[0], line[2:]))
    yield case


def check(mark, text, run, paths):
    if mark == "=":
        return run.returncode == int(text)
    if mark in ">!":
        lines = (run.stdout if mark == ">" else run.stderr).decode("utf-8", "replace").splitlines()
        return text.format(**paths) in lines
    if mark == "~":
        made, wanted = (name.format(**paths) for name in text.split())
        return (run.stdout if made == "-" else pathlib.Path(made).read_bytes()) == pathlib.Path(wanted).read_bytes()
    if mark == "-":
        return not pathlib.Path(text.format(**paths)).exists()
    raise ValueError(mark)


def main(*arguments):
    runner, tool, scratch = (pathlib.Path(argument).resolve() for argument in arguments)
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir(parents=True)
    paths = {"texts": EXAMPLES / "texts", "config": EXAMPLES / "config", "out": scratch}
    failures = count = 0
    for file in sorted(HERE.glob("*_cases.txt")):
        for number, ((_, command), *checks) in read_cases(file):
            arguments = [word.format(**paths) for word in shlex.split(command)]
            given = [pathlib.Path(text.format(**paths)).read_bytes() for mark, text in checks if mark == "<"]
            run = subprocess.run([runner, tool, *arguments], capture_output=True, input=b"".join(given))
            count += 1
            for mark, text in (check for check in checks if check[0] != "<"):
                if not check(mark, text, run, paths):
                    failures += 1
                    print(f"{file.name}:{number}: tarn {command}\n  expected: {mark} {text}")
                    print(f"  status {run.returncode}\n{(run.stdout + run.stderr).decode('utf-8', 'replace')}")
    print(f"{count} command lines, {failures} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
