#!/usr/bin/env python3
"""Uploads of one file to an FTP server by the tool and by curl, in turns, in the sandbox of the network tests.

    ftp_upload.py BUILD_FOLDER [ROUNDS] [MIB]

The times are the server's, from the opening of the data connection to its end: how long a program takes to start does
not count. Each round's ratio is of two uploads one after the other. On a busy machine the fastest of each tell more than
the median: Wine's server is one process more that waits for its turn.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/peers"))

import sandbox
from run_net_cases import find_packages
from servers import Server

RUNNER = ROOT / "cmake/wine-run"


def commands(build, server, file):
    host, port = server.values["host"], server.values["port"]
    return {
        "tarn": [RUNNER, build / "bin/tarn.exe", "ftp", "-host", host, "-port", str(port), "-user", "clerk", "-pass-env",
                 "FTP_PASSWORD", "-put", file, "-to", "upload"],
        "curl": ["curl", "-s", "--noproxy", "*", "--ftp-port", "-", "-T", file, f"ftp://clerk:s3cret@{host}:{port}/upload"],
    }


def seconds(command, server, size):
    """What the server's log says of the upload."""
    log = server.folder / "transfers"
    known = len(log.read_text().splitlines()) if log.exists() else 0
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, env={**os.environ, "FTP_PASSWORD": "s3cret"})
    deadline = time.monotonic() + 10
    while len(lines := log.read_text().splitlines()) == known and time.monotonic() < deadline:
        time.sleep(0.05)
    taken, stored = lines[-1].split()
    if len(lines) != known + 1 or int(stored) != size:
        sys.exit(f"not one upload of {size} bytes: {lines[known:]}")
    return float(taken)


def main(build, rounds=9, mib=256):
    packages = find_packages(RUNNER)
    why_not = sandbox.enter(RUNNER)
    if why_not:
        sys.exit(f"no sandbox: {why_not}")
    file = sandbox.PLACE / "file"
    with open(file, "wb") as out:
        for _ in range(mib):
            out.write(os.urandom(1 << 20))
    server = Server("proftpd", "127.0.0.1", sandbox.PLACE, packages, True, sandbox.PLACE)
    server.root.chmod(0o777)
    times = {"tarn": [], "curl": []}
    try:
        for number in range(rounds):
            for name, command in sorted(commands(build, server, file).items(), reverse=number % 2 == 0):
                times[name].append(seconds(command, server, mib << 20))
            print(f"round {number + 1}:", *(f"{name} {mib / of[-1]:5.0f} MiB/s" for name, of in times.items()), flush=True)
    finally:
        server.stop()
    median = statistics.median(curl / tarn for curl, tarn in zip(times["curl"], times["tarn"]))
    fastest = min(times["curl"]) / min(times["tarn"])
    print(f"{mib} MiB, active mode: {median:.2f} of curl's rate (median of {rounds} rounds), the fastest {fastest:.2f}")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve(), *map(int, sys.argv[2:]))
