#!/usr/bin/env python3
"""Configuration files that others wrote, as the library reads them and as an independent reader of the same rules does.

    run_config_cases.py RUNNER TARN_EXE SCRATCH_FOLDER
"""
import pathlib
import re
import subprocess
import sys

SPACE = " \t\n\v\f\r"
# Always there on a Debian machine with our packages; more where it has more.
SOURCES = [("/usr/lib", "os-release"), ("/etc", "*.conf"), ("/etc", "*.ini"), ("/usr/share", "*.ini"),
           ("/usr/share", "*.desktop"), ("/usr/lib/systemd", "*.service"), ("/usr/share/doc", "*.ini*"),
           ("/usr/lib/python3", "*.cfg"), ("/usr/share/wine", "wine.inf")]
MOST_OF_A_KIND = 6
MOST_SECTIONS = 5
SECTION = re.compile(r"\[([^]]*)\](?!\Z)(.*?)(?=\n\[|\Z)", re.DOTALL)


def read(text):
    """A list of (name, {key: value})."""
    sections = []
    for name, body in SECTION.findall(text):
        values = {}
        for line in body.split("\n"):
            line = line.strip(SPACE)
            key, equals, value = line.partition("=")
            if line and not equals:
                break
            if line and key not in values:
                values[key.strip(SPACE)] = value.strip(SPACE)
        sections.append((name, values))
    return sections


def candidates():
    for folder, pattern in SOURCES:
        found = (path for path in sorted(pathlib.Path(folder).rglob(pattern)) if path.is_file())
        for _, path in zip(range(MOST_OF_A_KIND), found):
            try:
                text = path.read_bytes().decode("ascii")
            except (UnicodeDecodeError, OSError):
                continue  # the tool's code page does not have every character
            if text and "\0" not in text:
                yield text


def printed(command, path, *more):
    run = subprocess.run([*command, "config", "-file", path, *more], capture_output=True, text=True, timeout=60)
    if run.returncode:
        sys.exit(f"{path} {more}: status {run.returncode} {run.stderr}")
    return run.stdout.split("\n")[:-1]


def check(command, path, text):
    """How many keys were compared."""
    sections = read(text)
    names = printed(command, path)
    if names != [line for name, _ in sections for line in f"[{name}]".split("\n")]:
        sys.exit(f"{path}: sections {names}")
    keys = 0
    for name in list({name for name, _ in sections if name.strip(SPACE) == name})[:MOST_SECTIONS]:
        named = [values for other, values in sections if other == name]
        # Keys are listed section by section; a look-up sees the last one only.
        keys_listed = dict.fromkeys(key for values in named for key in sorted(values))
        wanted = [f"{key}={named[-1][key]}" for key in keys_listed if key in named[-1]]
        if printed(command, path, "-section", name) != wanted:
            sys.exit(f"{path}: [{name}] should be {wanted}")
        keys += len(wanted)
    return keys


def main(runner, tool, scratch):
    copy = pathlib.Path(scratch).resolve() / "file"
    copy.parent.mkdir(parents=True, exist_ok=True)
    files = keys = 0
    for text in candidates():
        if not text.lstrip().startswith("["):
            text = "[all]\n" + text
        copy.write_bytes(text.encode("ascii"))
        keys += check([runner, tool], copy, text)
        files += 1
    print(f"{files} files, {keys} keys")
    return 0 if files >= 5 and keys >= 50 else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
