#!/usr/bin/env python3
"""Runs cases of the network tests (README.md tells their form), many at once, in a sandbox where the machine has one.

    run_net_cases.py RUNNER PROGRAM_FOLDER SCRATCH_FOLDER FILE...

Exit status 77: without a sandbox none of them can run.
"""
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import threading

import authority
import sandbox
from case import PATIENCE, Client, read_cases
from cuts import Relay, cuts_of
from dialogue import STEP, WRAPS, Player
from servers import STAND_IN, Servers

AT_ONCE = 16


def play(case, build, folder, values):
    """Against the script."""
    player = Player(case)
    player.values.update(values)
    try:
        with Client(case, build, folder, player.values) as client:
            faults = player.play(client.process) + client.faults()
            if player.is_wanted_once_more():
                faults.append(f"{case.place}: the client made one connection more")
            return faults
    finally:
        player.close()


def visit(case, build, folder, values, server):
    """Against a real server, which serves one case at a time."""
    with server.lock:
        server.fill(case)
        with Client(case, build, folder, {**server.values, **values}) as client:
            return [f"{server.name}: {fault}" for fault in [*client.faults(), *server.faults(case, folder, client.values)]]


def cut_short(case, build, folder, values, server, cut, passed):
    """One session through a relay; passed becomes what it let through."""
    def start_player():
        player = Player(case)
        threading.Thread(target=lambda: (player.play(None), player.close()), daemon=True).start()
        return player.values["host"], player.values["port"]

    host = server.values["host"] if server else "127.0.0.1"
    relay = Relay(host, (lambda: (host, server.values["port"])) if server else start_player, cut)
    try:
        told = server.values if server else {"host": host}
        with Client(case, build, folder, {**told, "patience": 1 if cut else PATIENCE, **values, "port": relay.port}) as client:
            faults = client.faults()
            if not cut and str(client.process.returncode) != (case.words("=") or ["0"])[0]:
                faults.append(f"{case.place}: the whole session ended with {client.process.returncode}")
    finally:
        relay.close()
    passed.update(relay.passed)
    return [f"{server.name if server else 'script'}, {cut}: {fault}" for fault in faults]


def find_packages(runner):
    """Where the servers are; there is no network any more in the sandbox."""
    if "TARN_SERVERS" not in os.environ:
        recipe = subprocess.run([runner.parents[1] / "deps/peers.sh"], check=True, stdout=subprocess.PIPE, encoding="utf-8")
        os.environ["TARN_SERVERS"] = recipe.stdout.strip()
    return pathlib.Path(os.environ["TARN_SERVERS"])


class Run:
    """The runs of the cases, each in a folder of its own."""

    def __init__(self, build, scratch, servers, ca):
        self.build, self.scratch, self.servers, self.ca = build, scratch, servers, ca
        self.pool = concurrent.futures.ThreadPoolExecutor(AT_ONCE)
        self.count = 0
        self.started = []  # (case, future)

    def start(self, act, case, values, *more):
        self.count += 1
        future = self.pool.submit(act, case, self.build, self.scratch / str(self.count), {"id": self.count, "ca": self.ca, **values}, *more)
        self.started.append((case, future))
        return future

    def add(self, case):
        servers = self.servers.of(case)
        for values in case.variants():
            if not case.words("peer"):
                self.add_cuts(case, values, None) if case.words("cut") else self.start(play, case, values)
            for server in servers:
                self.add_cuts(case, values, server) if case.words("cut") else self.start(visit, case, values, server)

    def add_cuts(self, case, values, server):
        passed = {"client": b"", "server": b""}
        whole = self.start(cut_short, case, values, server, None, passed)
        for cut in [] if whole.exception() or whole.result() else cuts_of(passed, case.words("cut")):
            self.start(cut_short, case, values, server, cut, {"client": b"", "server": b""})

    def failures(self):
        count = 0
        for case, future in self.started:
            try:
                faults = future.result()
            except OSError as error:
                faults = [f"{case.place}: {error}"]
            faults = case.judge(faults)
            if faults:
                count += 1
                print(f"{case.place}: {case.title}", *faults, sep="\n")
        return count


def main(*arguments):
    runner, programs, scratch, *files = (pathlib.Path(argument).resolve() for argument in arguments)
    cases = [case for file in files for case in read_cases(file, STEP)]
    packages = find_packages(runner) if any(case.words("peer") for case in cases) else pathlib.Path()
    why_not = sandbox.enter(runner)
    if why_not:
        left_out = ", ".join(case.place for case in cases if case.words("needs"))
        print(f"no sandbox ({why_not}): {STAND_IN} stands in for every server; not run: {left_out or 'nothing'}")
        cases = [case for case in cases if not case.words("needs")]
    place = scratch if why_not else sandbox.PLACE
    ca = authority.make(place / "ca") if any("tls" in file.name for file in files) else place
    WRAPS["tls"] = authority.wrapper(ca)
    servers = Servers(place, packages, not why_not, ca)
    run = Run((runner, programs), scratch, servers, ca)
    try:
        for case in cases:
            run.add(case)
        failures = run.failures()
    except OSError as error:  # a server that does not start
        sys.exit(str(error))
    finally:
        run.pool.shutdown(cancel_futures=True)
        servers.stop()
    print(f"{len(cases)} cases, {run.count} runs, {failures} failures")
    return 1 if failures else 0 if cases else 77


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
