#!/usr/bin/env python3
"""Runs the example service as a whole process, on a console.

    run_service_cases.py RUNNER SERVICE_EXE SCRATCH_FOLDER
"""
import pathlib
import shutil
import subprocess
import sys
import time

PATIENCE = 60  # seconds for what takes milliseconds on a machine that is not busy


def wait_for(what, condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"waited in vain: {what}")
        time.sleep(0.05)


class Service:
    def __init__(self, runner, program, folder):
        self.folder = folder
        self.process = None
        self.ini = folder / "service.ini"
        self.command = [runner, program, "-config", f"Z:{self.ini}", "-name", f"test-表-{folder.name}"]
        for name in ("in", "out", "out2", "logs"):
            (folder / name).mkdir(parents=True)

    def configure(self, *settings):
        lines = ["[service]", f"inbox=Z:{self.folder}/in", "pollMilliseconds=20", *settings,
                 "[logging]", f"loggingPath=Z:{self.folder}/logs", "trace=m", "keep=on", "notracethread=", ""]
        new = self.folder / "service.new"
        new.write_text("\n".join(lines))
        new.replace(self.ini)

    def start(self):
        self.process = subprocess.Popen(self.command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")
        line = self.process.stdout.readline().strip()
        if not line.startswith("running, process "):
            sys.exit(f"not running: {line!r} {self.process.communicate()}")
        return line.rsplit(" ", 1)[1]

    def run(self, *more):
        return subprocess.run([*self.command, *more], capture_output=True, encoding="utf-8", timeout=PATIENCE)

    def count(self, name, text):
        """The outbox that the result comes to, and the result."""
        half = self.folder / "in" / (name + ".half")
        half.write_text(text)
        half.rename(self.folder / "in" / (name + ".txt"))
        results = [self.folder / outbox / (name + ".txt.count") for outbox in ("out", "out2")]
        wait_for(f"{name} is counted", lambda: any(path.exists() for path in results))
        return next((path.parent.name, int(path.read_text())) for path in results if path.exists())

    def log(self):
        return "".join(path.read_text(encoding="utf-8") for path in (self.folder / "logs").glob("*.log"))


def expect(what, found, wanted):
    if found != wanted:
        sys.exit(f"{what}: {found!r} instead of {wanted!r}")


def walk(service):
    folder = service.folder
    out, out2 = (f"outbox=Z:{folder}/{name}" for name in ("out", "out2"))
    service.configure()
    run = service.run()
    expect("a setting that is missing", (run.returncode, run.stderr), (2, "service: [service] has no outbox\n"))
    expect("nothing to stop", service.run("-stop").returncode, 1)

    service.configure(out)
    number = service.start()
    expect("words", service.count("first", "a b\nc\n"), ("out", 3))

    second = service.run()
    expect("a second instance", (second.returncode, second.stderr), (1, f"service: already running, process {number}\n"))

    service.configure(out2)
    wait_for("the ini file is read again", lambda: "was read again" in service.log())
    names = (f"new-{number}" for number in range(1000))
    wait_for("new settings", lambda: service.count(next(names), "a") == ("out2", 1))  # what is in work keeps the old ones
    service.configure(out, "workers=none")
    wait_for("a mistake is told", lambda: "workers=none is no number from 1 to 64" in service.log())
    expect("a mistake changes nothing", service.count("last", "a b"), ("out2", 2))

    expect("a stop is asked for", service.run("-stop").returncode, 0)
    service.process.communicate(timeout=PATIENCE)
    expect("stopped", service.process.returncode, 0)
    expect("left in work", [path.name for path in (folder / "in").iterdir()], [])
    expect("the log tells it", ") stopped" in service.log(), True)


def main(runner, program, scratch):
    folder = pathlib.Path(scratch).resolve()
    shutil.rmtree(folder, ignore_errors=True)
    service = Service(runner, program, folder)
    try:
        walk(service)
    finally:
        if service.process:
            service.process.kill()
    print("the service started, worked, renewed its settings and stopped")


if __name__ == "__main__":
    main(*sys.argv[1:])
