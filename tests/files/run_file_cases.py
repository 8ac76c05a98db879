#!/usr/bin/env python3
"""Files of the library next to other programs, and on a disk that is full or write-protected.

    run_file_cases.py RUNNER TARN_EXE SCRATCH_FOLDER programs|scripts|disk

Exit status: 0, 1 for a failure, 77 when a small file system cannot be mounted here.
"""
import pathlib
import re
import shutil
import subprocess
import sys

TEXT = "Zürich, ½ – „quoted“ €, naïve Ærø "
VARIANTS = [TEXT, TEXT + "\r\n" + TEXT, TEXT * 5000, TEXT + "\0" + TEXT, "a\rb\n\nc\r\r\n", "\ufeff" + TEXT, "x"]
SOUGHT = "“ €, n"


def looked_for(text):
    """What the command prints of the words between commas, and of the places of what is sought."""
    words = [word for word in re.split("[,\r\n]+", text) if word]
    starts = [match.start() for match in re.finditer(SOUGHT, text)]
    places = [f"{text.count(chr(10), 0, at) + 1}:{at - text.rfind(chr(10), 0, at)}" for at in starts]
    return "\n".join([*("  " + word for word in words), f"found:           {len(places)}", *("  " + at for at in places)])


class Tool:
    def __init__(self, runner, tool):
        self.command = [runner, tool]

    def run(self, *arguments):
        return subprocess.run([*self.command, *map(str, arguments)], capture_output=True, encoding="utf-8", timeout=60)

    def must(self, *arguments):
        run = self.run(*arguments)
        if run.returncode:
            sys.exit(f"{arguments}: {run.returncode} {run.stderr}")
        return run.stdout


def programs(tool, folder):
    """What Python writes the library reads, and what the library writes iconv and Python read."""
    for number, text in enumerate(VARIANTS):
        source, native, back = (folder / f"{number}.{kind}" for kind in ("utf8", "1252", "back"))
        source.write_bytes(text.encode("utf-8"))
        tool.must("text", "-from", "utf-8", "-to", "1252", "-file", source, "-out", native)
        tool.must("text", "-from", "1252", "-to", "utf-8", "-file", native, "-out", back)
        plain = text.removeprefix("\ufeff")  # the command drops the mark
        run = tool.run("text", "-from", "utf-8", "-to", "utf-8", "-file", source, "-find", SOUGHT, "-words", ",")
        if looked_for(plain) not in run.stdout:
            sys.exit(f"variant {number}: words and places differ: {run.stdout[:1000]}")
        other = subprocess.run(["iconv", "-f", "CP1252", "-t", "UTF-8", native], capture_output=True, check=True).stdout
        if not native.read_bytes().decode("cp1252") == back.read_bytes().decode("utf-8") == other.decode() == plain:
            sys.exit(f"variant {number} came out differently")
    listed = tool.must("files", "-list", folder).splitlines()
    for path in folder.iterdir():
        if not any(line.split()[0] == str(path.stat().st_size) and line.endswith("  " + path.name) for line in listed):
            sys.exit(f"{path.name} of {path.stat().st_size} bytes is not in {listed}")
    (folder.parent / "linked").mkdir(exist_ok=True)
    (folder.parent / "linked" / "elsewhere").write_text("not counted")
    (folder / "link").symlink_to(folder.parent / "linked")
    if "elsewhere" in tool.must("files", "-list", folder, "-recurse"):
        sys.exit("a link was entered")
    # Wine cannot remove such a link, and must not remove what it leads to.
    if tool.run("files", "-remove", folder / "link", "-recurse").returncode == 0:
        sys.exit("a link was removed")
    if not (folder.parent / "linked" / "elsewhere").exists():
        sys.exit("what a link leads to was removed")
    total = sum(path.stat().st_size for path in folder.iterdir() if path.is_file())
    if int(tool.must("files", "-size", folder)) != total:
        sys.exit("the sizes do not add up")
    print(f"{len(VARIANTS)} texts, {len(listed)} entries, {total} bytes")


# Where letters of a script stand side by side, Latin and Greek to Gothic; and emoji.
BLOCKS = [0x100, 0x390, 0x430, 0x561, 0x5D0, 0x620, 0x905, 0x9A0, 0xA15, 0xA95, 0xBAE, 0xC15, 0xE01, 0xF40, 0x10D0, 0x1200, 0x13A0,
          0x3041, 0x4E00, 0xAC00, 0x10330, 0x1F600]


def scripts(tool, folder):
    """Names in many scripts are made, listed, opened, copied and removed."""
    for number, block in enumerate(BLOCKS):
        name = "".join(chr(block + (number * 7 + 3 * i) % 16) for i in range(9))
        files = [folder / name, folder / f"{name} ½"]
        files[0].write_text(name, encoding="utf-8")
        tool.must("files", "-copy", files[0], "-to", files[1])
        listed = tool.must("files", "-list", folder, "-pattern", "?" * 11)
        found = tool.must("text", "-from", "utf-8", "-to", "utf-16", "-find", name, "-file", files[1])
        for path in files:
            tool.must("files", "-remove", path)
        if not listed.endswith(f"  {name} ½\n") or f"file:            {files[1]}, " not in found or any(folder.iterdir()):
            sys.exit(f"{name}: {listed} {found}")


def refused(tool, expected, *arguments):
    run = tool.run(*arguments)
    if run.returncode != 2 or expected not in run.stderr.lower():
        sys.exit(f"{arguments}: {run.returncode} {run.stderr!r}")


def disk(tool, folder):
    large = folder / "large"
    large.write_bytes(b"x" * 1_000_000)
    small = folder / "small"
    small.mkdir()
    mounted = ["mount", "-t", "tmpfs", "-o", "size=256k", "tmpfs", small]
    if subprocess.run(mounted, capture_output=True).returncode:
        print("no small file system can be mounted here: not run")
        sys.exit(77)
    try:
        (small / "old").write_text("old")
        for name in ("old", "new"):
            refused(tool, "disk full", "files", "-copy", large, "-to", small / name, "-overwrite")
            refused(tool, "disk full", "text", "-from", "1252", "-to", "utf-8", "-file", large, "-out", small / name)
        left = {path.name: path.read_text() for path in small.iterdir()}
        subprocess.run(["mount", "-o", "remount,ro", small], check=True)
        # Removing is not asked for: Wine says yes to that and does nothing.
        refused(tool, "access denied", "files", "-unique", small)
        refused(tool, "access denied", "files", "-copy", large, "-to", small / "new")
    finally:
        subprocess.run(["umount", small], check=True)
    if left != {"old": "old"}:
        sys.exit(f"left on the full disk: {left}")
    print("nothing is half written")


def main(runner, tool, scratch, case):
    folder = pathlib.Path(scratch).resolve()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    {"programs": programs, "scripts": scripts, "disk": disk}[case](Tool(runner, tool), folder)


if __name__ == "__main__":
    main(*sys.argv[1:])
