#!/usr/bin/env python3
"""Uploads of one file to an FTP server by the tool and by curl, in turns.

    ftp_upload.py BUILD_FOLDER [ROUNDS] [MIB]

The times are the server's, from the opening of the data connection to its end: how long a program takes to start does
not count. Each round's ratio is of two uploads one after the other. On a busy machine the fastest of each tell more than
the median: Wine's server is one process more that waits for its turn.
"""
import os
import pathlib
import subprocess
import sys
import time

import uploads


def commands(build, server, file):
    host, port = server.values["host"], server.values["port"]
    return {
        "tarn": [uploads.RUNNER, build / "bin/tarn.exe", "ftp", "-host", host, "-port", str(port), "-user", "clerk", "-pass-env",
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
    packages = uploads.begin()
    server = uploads.start("proftpd", packages)
    programs = commands(build, server, uploads.make_file(mib))
    try:
        times = uploads.in_turns({name: lambda command=command: seconds(command, server, mib << 20)
                                  for name, command in programs.items()}, rounds, mib)
    finally:
        server.stop()
    print(f"{mib} MiB by FTP, active mode, against curl:", uploads.ratio(times["tarn"], times["curl"]))


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve(), *map(int, sys.argv[2:]))
