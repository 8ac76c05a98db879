#!/usr/bin/env python3
"""The tool puts the texts of examples/texts on a real FTP server, by IPv4 and by IPv6, and shows what the two said.

    show-upload.py BUILD_FOLDER

The server is one of the network tests' and runs in their sandbox, or on loopback where there is none.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/peers"))

import sandbox
from run_net_cases import find_packages
from servers import STAND_IN, Server

RUNNER = ROOT / "cmake/wine-run"
TEXTS = ROOT / "examples/texts"
PATTERN = "g*-utf8.txt"
TARGET = "texts/枕草子"


def upload(server, build, logs):
    """Runs the tool; the commands and replies of its log."""
    shutil.rmtree(logs, ignore_errors=True)
    arguments = ["ftp", "-host", server.values["host"], "-port", str(server.values["port"]), "-user", "clerk",
                 "-pass-env", "FTP_PASSWORD", "-mkdir", TARGET, "-put", f"examples/texts/{PATTERN}", "-to", TARGET]
    print("$ tarn", *arguments)
    logging = ["-trace", "d", "-fileLogFilter", "csiftp", "-loggingPath", f"Z:{logs}"]
    tool = subprocess.run([RUNNER, build / "bin/tarn.exe", *arguments, *logging], cwd=ROOT, stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, env={**os.environ, "FTP_PASSWORD": "s3cret"})
    if tool.returncode:
        sys.exit(f"the upload failed with status {tool.returncode}")
    return "".join(path.read_text(encoding="utf-8", errors="replace") for path in logs.iterdir())


def show(log):
    """The dialogue, > what the client sent, < what the server replied."""
    for speaker, text in re.findall(r"csiftp\(\d+\) (Command|Reply): (.*)", log):
        for line in text.split(r"\r\n"):
            print("    >" if speaker == "Command" else "    <", line)


def compare(server):
    sent = sorted(TEXTS.glob(PATTERN))
    wrong = [path.name for path in sent if (server.root / TARGET / path.name).read_bytes() != path.read_bytes()]
    if wrong:
        sys.exit(f"{server.name} has other bytes of {', '.join(wrong)}")
    print(f"{server.name} has {len(sent)} files with the bytes that were sent")


def main(build):
    packages = find_packages(RUNNER)
    why_not = sandbox.enter(RUNNER)
    place = build / "upload" if why_not else sandbox.PLACE
    kind = STAND_IN if why_not else "proftpd"
    if why_not:
        print(f"no sandbox ({why_not}): {kind} on loopback")
    for host in "127.0.0.1", "::1":
        server = Server(kind, host, place, packages, not why_not, place)
        server.root.chmod(0o777)  # the server gives up its rights
        try:
            show(upload(server, build, place / "logs"))
            compare(server)
        finally:
            server.stop()


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve())
