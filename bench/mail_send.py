#!/usr/bin/env python3
"""Mails to aiosmtpd in turns, in the sandbox of the network tests: a large one by the tool, which builds it too, and by curl,
which sends it finished; and two hundred small ones by the library and by Python's smtplib.

    mail_send.py BUILD_FOLDER [ROUNDS] [MIB]

The times of the large one are the server's, from the connection to the end of the message. Those of the small ones are the
programs', without what a program takes that sends nothing.
"""
import pathlib
import statistics
import subprocess
import sys
import time

import uploads
from uploads import RUNNER

SMALL = 200
SMTPLIB = """import smtplib, sys
for _ in range(int(sys.argv[3])):
    client = smtplib.SMTP("127.0.0.1", int(sys.argv[1]))
    for _ in range(int(sys.argv[2])):
        client.sendmail("a@x.test", ["b@x.test"], "Subject: s\\r\\n\\r\\nbody")
    client.quit()
"""


def run(*command):
    began = time.monotonic()
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    return time.monotonic() - began


def large(build, server, folder, mib):
    """Seconds of the tool and of curl."""
    port, taken = server.values["port"], []
    message = ["-from", "a@x.test", "-to", "b@x.test", "-subject", "s", "-body", folder / "text", "-attach", folder / f"file{mib}"]
    tool = [RUNNER, build / "bin/tarn.exe", "mail"]
    run(*tool, "-write", folder / "built", *message)
    for command in ([*tool, "-host", "127.0.0.1", "-port", str(port), *message],
                    ["curl", "-s", "--noproxy", "*", "--mail-from", "a@x.test", "--mail-rcpt", "b@x.test", "-T", folder / "built",
                     f"smtp://127.0.0.1:{port}"]):
        run(*command)
        taken.append(float((server.folder / "root.times").read_text().splitlines()[-1]))
    return taken


def small(build, server, mails, connections):
    """Seconds of the library and of smtplib."""
    port = str(server.values["port"])
    steps = [RUNNER, build / "bin/smtp_steps.exe", f"client,127.0.0.1,{port},me", "from,a@x.test", "to,b@x.test", "body,body"]
    idle = run(*steps), run("/usr/bin/python3", "-c", SMTPLIB, port, "0", "0")
    session = ["connect", *["send"] * mails, "disconnect"] * connections
    return run(*steps, *session) - idle[0], run("/usr/bin/python3", "-c", SMTPLIB, port, str(mails), str(connections)) - idle[1]


def main(build, rounds=5, mib=20):
    packages = uploads.begin()
    folder = uploads.make_file(mib).parent
    (folder / "text").write_text("text\n")
    server = uploads.start("aiosmtpd", packages)
    trials = {f"{mib} MiB, against curl": lambda: large(build, server, folder, mib),
              f"{SMALL} mails over one connection, against smtplib": lambda: small(build, server, SMALL, 1),
              f"{SMALL} mails and connections, against smtplib": lambda: small(build, server, 1, SMALL)}
    try:
        for title, trial in trials.items():
            taken = [trial() for _ in range(rounds)]
            ratio = statistics.median(rival / ours for ours, rival in taken)
            print(f"{title}: {ratio:.2f} of its rate (median of {rounds} rounds);",
                  *(f"{ours:.2f} s to {rival:.2f} s" for ours, rival in taken), flush=True)
    finally:
        server.stop()


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve(), *map(int, sys.argv[2:]))
