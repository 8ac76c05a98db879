"""Cases of the network tests: README.md tells their form."""
import itertools
import os
import pathlib
import random
import re
import shlex
import shutil
import subprocess
import time

PATIENCE = 300  # seconds for what must come; on a busy machine a client may be late
TOKEN = re.compile(r"\\x([0-9a-fA-F]{2})|\\(.)|\{(\w+)\}|\{([^{}]+)\*(\d+)\}|(.)", re.DOTALL)
CONTROLS = {"r": "\r", "n": "\n", "t": "\t", "0": "\0"}
SETTING = re.compile(r"(\$|env|file|with|listen|within|needs|fault|peer|server|has|lacks|letters?|cut|=|>|!) (.*)")


def pieces(text):
    """The text as bytes and names."""
    for code, control, name, repeated, count, letter in TOKEN.findall(text):
        if name:
            yield name
        elif repeated == "noise":
            yield random.Random(int(count)).randbytes(int(count))
        elif repeated:
            yield b"".join(pieces(repeated)) * int(count)
        else:
            yield bytes.fromhex(code) if code else (CONTROLS.get(control, control) or letter).encode("utf-8")


def fill(text, values):
    """The text as bytes, names replaced by their values."""
    return b"".join(str(values[piece]).encode() if isinstance(piece, str) else piece for piece in pieces(text))


class Case:
    def __init__(self, path, number, title):
        self.path, self.place, self.title = path, f"{path.name}:{number}", title
        self.settings, self.steps = [], []

    def all(self, mark):
        return [text for key, text in self.settings if key == mark]

    def words(self, mark):
        return " ".join(self.all(mark)).split()

    def variants(self):
        """The values of each run."""
        names, texts = zip(*[text.split(" ", 1) for text in self.all("with")] or [("_", "")])
        return [dict(zip(names, choice)) for choice in itertools.product(*(text.split("|") for text in texts))]

    def judge(self, faults):
        """The faults, or when some are wanted, whether they are there."""
        wanted = self.all("fault")
        if not wanted:
            return faults
        return [] if any(text in fault for fault in faults for text in wanted) else [f"{self.place}: no fault", *faults]


def read_cases(path, step):
    """The cases of a file; step is the pattern of a step."""
    cases = []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("== "):
            cases.append(Case(path, number, line[3:]))
        elif line.strip() and not line.startswith("#"):
            setting, action = SETTING.fullmatch(line), step.fullmatch(line)
            if not cases or not (setting or action):
                raise SystemExit(f"{path}:{number}: not understood: {line}")
            if setting:
                cases[-1].settings.append(setting.groups())
            else:
                cases[-1].steps.append((number, [part or "" for part in action.groups()]))
    return cases


class Client:
    """A run of a case's client, which does not outlive its "with"."""

    def __init__(self, case, build, folder, values):
        host = values["host"]
        self.case, self.values = case, {"folder": folder, "url": f"[{host}]" if ":" in host else host, **values}
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        for name, _, text in (text.partition(" ") for text in case.all("file")):
            (folder / name).write_bytes(fill(text, self.values))
        program, *arguments = shlex.split(fill(*case.all("$"), self.values).decode())
        runner, programs = build
        command = [runner, programs / f"{program}.exe"] if (programs / f"{program}.exe").exists() else [program]
        self.deadline = time.monotonic() + float((case.all("within") or [PATIENCE])[0])
        self.streams = folder / "client.out", folder / "client.err"
        with open(self.streams[0], "wb") as out, open(self.streams[1], "wb") as err:
            self.process = subprocess.Popen([*command, *arguments], stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                                            env={**os.environ, **dict(text.split("=", 1) for text in case.all("env"))})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()

    def faults(self):
        """Waits for its end."""
        try:
            self.process.wait(max(0.1, self.deadline - time.monotonic()))
        except subprocess.TimeoutExpired:
            return [f"{self.case.place}: the client did not end in time"]
        status = str(self.process.returncode)
        wrong = [f"= {text}" for text in self.case.all("=") or ["0"] if status not in text.split()]
        out, err = (path.read_bytes().decode("utf-8", "replace") for path in self.streams)
        for mark, printed in (">", out), ("!", err):
            rest = iter(printed.splitlines())
            wrong += [f"{mark} {text}" for text in self.case.all(mark) if fill(text, self.values).decode() not in rest]
        return [f"{self.case.place}: the client ended with {status}, but expected: {text}" for text in wrong] + (
            [out + err] if wrong else [])
