"""What the comparisons of uploads share: the sandbox of the network tests, a file, and uploads in turns."""
import os
import pathlib
import statistics
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/peers"))

import sandbox
from run_net_cases import find_packages
from servers import Server

RUNNER = ROOT / "cmake/wine-run"


def begin():
    """Enters the sandbox; where the servers' programs are."""
    packages = find_packages(RUNNER)
    why_not = sandbox.enter(RUNNER)
    if why_not:
        sys.exit(f"no sandbox: {why_not}")
    return packages


def start(kind, packages):
    """A server whose folder takes uploads."""
    server = Server(kind, "127.0.0.1", sandbox.PLACE, packages, True, sandbox.PLACE)
    server.root.chmod(0o777)
    return server


def make_file(mib):
    file = sandbox.PLACE / f"file{mib}"
    with open(file, "wb") as out:
        for _ in range(mib):
            out.write(os.urandom(1 << 20))
    return file


def in_turns(uploads, rounds, mib):
    """The seconds of each upload (name: function) in each round; every second round goes the other way."""
    times = {name: [] for name in uploads}
    for number in range(rounds):
        for name, upload in sorted(uploads.items(), reverse=number % 2 == 0):
            times[name].append(upload())
        print(f"round {number + 1}:", *(f"{name} {mib / of[-1]:5.0f} MiB/s" for name, of in times.items()), flush=True)
    return times


def ratio(ours, rival):
    """Our rate to the rival's: the median of the rounds, and that of the fastest of each."""
    median = statistics.median(theirs / own for own, theirs in zip(ours, rival))
    return f"{median:.2f} of its rate (median of {len(ours)} rounds), the fastest {min(rival) / min(ours):.2f}"
