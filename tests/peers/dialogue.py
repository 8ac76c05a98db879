"""A scripted server. It plays the cases of a dialogue file, one server and one client process a case:

    == title                   begins a case; a line that begins with # is a comment
    $ tarn ftp -port {port}    the client: a program of the build (or of the system), and its arguments
    env NAME=TEXT              one more variable for it;  file NAME TEXT makes {folder}/NAME
    listen A[=closed|hole]...  addresses of the server, otherwise 127.0.0.1; {host} is the first and {port} the port of all;
                               closed: connections are refused, hole: they are never answered
    S: TEXT   S- TEXT          the server sends TEXT and CR LF, TEXT alone;  split N [SECONDS]: from here on in pieces of N
    C: TEXT   C- TEXT          the client must send exactly TEXT and CR LF, TEXT alone
    pause SECONDS              the server does nothing
    end   gone                 the client must close now, without a byte more; in order, or also by a reset
    fin   reset   shut         the server closes in order, by a reset, its own direction only
    accept [ADDRESS]           takes the next connection (the first step does that by itself, also after an end)
    NAME STEP                  the step on another connection, for example "data S- abc"; further steps for those:
    NAME listen [ADDRESS]      makes {data} (a port) and {hi},{lo} (its bytes) for S lines; NAME accept takes it
    NAME connect [from A]      to the port that {data} or {hi},{lo} stood for in a C line; NAME refused: must not succeed
    = 0 3   > TEXT   ! TEXT    the client's exit status is one of these; it prints the line on its output, on its errors
    fault TEXT                 the case must fail, and what is told holds TEXT
    within SECONDS             the client ends in this time after its start, otherwise in a minute

TEXT is UTF-8 with \\r \\n \\t \\0 \\\\ \\{ \\xHH, {TEXT*N} for a repetition, {noise*N} for N random bytes that are always the
same, and in C lines {any} for the rest of a line. When the steps are through, the client must close what is open.
"""
import os
import pathlib
import random
import re
import select
import shlex
import shutil
import socket
import struct
import subprocess
import time

PATIENCE = 20  # seconds for the next bytes or connection of a client
NAMES = {"any": rb"([^\r\n]*)", "data": rb"(\d+)", "hi": rb"(\d+)", "lo": rb"(\d+)"}
TOKEN = re.compile(r"\\x([0-9a-fA-F]{2})|\\(.)|\{(\w+)\}|\{([^{}]+)\*(\d+)\}|(.)", re.DOTALL)
CONTROLS = {"r": "\r", "n": "\n", "t": "\t", "0": "\0"}
WRAPS = {}  # name: function that takes a connected socket and gives one with the same calls; "NAME wrap KIND" calls it


class Mismatch(Exception):
    pass


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


def family_of(address):
    return socket.AF_INET6 if ":" in address else socket.AF_INET


def bind_to(address, port=0):
    listener = socket.socket(family_of(address))
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    listener.bind((address, port))
    return listener


def fill_queue(listener):
    """The connections that keep the next one from being answered."""
    listener.listen(0)
    waiting = [socket.socket(listener.family) for _ in range(3)]
    for client in waiting:
        client.setblocking(False)
        client.connect_ex(listener.getsockname())
    return waiting


def close_by_reset(connection):
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    connection.close()


class Link:
    """One connection and what was received but not yet asked for."""

    def __init__(self, connection):
        self.socket = connection
        self.unread = b""
        connection.settimeout(PATIENCE)
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def take(self, what, length_of):
        """The next bytes: as many as length_of finds in the unread ones, which is 0 as long as it wants more."""
        while not length_of(self.unread):
            try:
                received = self.socket.recv(65536)
            except TimeoutError:
                raise Mismatch(f"{what} expected, but only {self.unread[:80]!r} came in {PATIENCE} s") from None
            except OSError as error:
                raise Mismatch(f"{what} expected, but after {self.unread[:80]!r}: {error}") from None
            if not received:
                raise Mismatch(f"{what} expected, but the client closed after {self.unread[:80]!r}")
            self.unread += received
        length = length_of(self.unread)
        taken, self.unread = self.unread[:length], self.unread[length:]
        return taken

    def expect_end(self, is_reset_right):
        try:
            self.unread += self.socket.recv(65536)
        except TimeoutError:
            raise Mismatch(f"the client did not close in {PATIENCE} s") from None
        except OSError as error:
            if not is_reset_right:
                raise Mismatch(f"the end expected, but: {error}") from None
        if self.unread:
            raise Mismatch(f"the end expected, but {self.unread!r} came")
        self.socket.close()


class Player:
    """Plays the steps of one case against the client that is given."""

    def __init__(self, addresses, values):
        self.listeners = {"control": []}
        self.held = []  # sockets that are only there
        self.values = values
        self.links = {}
        self.left = []  # closed in one direction by us
        self.split = 0, 0.0
        self.client = None
        for address in addresses:
            self.open(*address)

    def open(self, address, state):
        listener = bind_to(address, self.values.get("port", 0))
        self.values.setdefault("host", address)
        self.values["port"] = listener.getsockname()[1]
        (self.held if state else self.listeners["control"]).append(listener)
        if state == "hole":
            self.held += fill_queue(listener)
        elif not state:
            listener.listen(64)

    def step(self, name, verb, text):
        STEPS[verb](self, name or "control", text)

    def link(self, name):
        if name not in self.links:
            self.accept(name, "")
        return self.links[name]

    def accept(self, name, address):
        listeners = self.listeners.get(name) or self.listeners["control"]
        deadline = time.monotonic() + PATIENCE
        while not (ready := select.select(listeners, [], [], 0.1)[0]):
            if self.client.poll() is not None:
                raise Mismatch(f"a connection expected, but the client ended with {self.client.returncode}")
            if time.monotonic() > deadline:
                raise Mismatch(f"no connection in {PATIENCE} s")
        self.links[name] = Link(ready[0].accept()[0])
        came_to = self.links[name].socket.getsockname()[0]
        if address and came_to != address:
            raise Mismatch(f"a connection to {address} expected, but it came to {came_to}")

    def say(self, name, data):
        link = self.link(name)
        size, gap = self.split
        for at in range(0, len(data), size or len(data)):
            link.socket.sendall(data[at:at + (size or len(data))])
            time.sleep(gap)

    def hear(self, name, text, end):
        wanted = [*pieces(text), end]
        names = [piece for piece in wanted if isinstance(piece, str)]
        if end or names:
            pattern = b"".join(NAMES[piece] if isinstance(piece, str) else re.escape(piece) for piece in wanted)
            heard = self.link(name).take(text, lambda unread: unread.find(b"\n") + 1)
            match = re.fullmatch(pattern, heard)
            if not match:
                raise Mismatch(f"{text} expected, but the client sent {heard!r}")
            self.values.update((key, value.decode()) for key, value in zip(names, match.groups()))
            if "hi" in names:
                self.values["data"] = int(self.values["hi"]) * 256 + int(self.values["lo"])
            return
        wanted = b"".join(wanted)
        heard = self.link(name).take(text, lambda unread: len(wanted) * (len(unread) >= len(wanted)))
        if heard != wanted:
            same = len(os.path.commonprefix([heard, wanted]))
            raise Mismatch(f"from byte {same} on the client sent {heard[same:same + 80]!r}")

    def finish(self, name):
        link = self.link(name)
        link.socket.shutdown(socket.SHUT_WR)
        self.left.append(self.links.pop(name))

    def reset(self, name):
        close_by_reset(self.link(name).socket)
        del self.links[name]

    def expect_end(self, name, is_reset_right):
        self.link(name).expect_end(is_reset_right)
        del self.links[name]

    def listen(self, name, address):
        listener = bind_to(address or self.values["host"])
        listener.listen(4)
        self.listeners[name] = [listener]
        port = listener.getsockname()[1]
        self.values.update(data=port, hi=port // 256, lo=port % 256)

    def connect(self, name, text):
        source = text.removeprefix("from ")
        peer = self.link("control").socket.getpeername()[0]
        connection = socket.socket(family_of(peer))
        if source:
            connection.bind((source, 0))
        connection.settimeout(PATIENCE)
        connection.connect((peer, int(self.values["data"])))
        self.links[name] = Link(connection)

    def expect_refusal(self, name):
        try:
            self.connect(name, "")
        except ConnectionRefusedError:
            return
        raise Mismatch("the client still listens")

    def expect_ends(self):
        for name in list(self.links):
            self.expect_end(name, True)

    def is_wanted_once_more(self):
        return bool(select.select(self.listeners["control"], [], [], 0)[0])

    def close(self):
        for link in [*self.links.values(), *self.left]:
            close_by_reset(link.socket)
        for listener in sum(self.listeners.values(), self.held):
            listener.close()
        self.links, self.left, self.held, self.listeners = {}, [], [], {"control": []}

    def wrap(self, name, kind):
        self.link(name).socket = WRAPS[kind](self.link(name).socket)

    def set_split(self, text):
        size, _, gap = text.partition(" ")
        self.split = int(size), float(gap or 0.001)


STEPS = {
    "S:": lambda player, name, text: player.say(name, fill(text, player.values) + b"\r\n"),
    "S-": lambda player, name, text: player.say(name, fill(text, player.values)),
    "C:": lambda player, name, text: player.hear(name, text, b"\r\n"),
    "C-": lambda player, name, text: player.hear(name, text, b""),
    "split": lambda player, name, text: player.set_split(text),
    "pause": lambda player, name, text: time.sleep(float(text)),
    "end": lambda player, name, text: player.expect_end(name, False),
    "gone": lambda player, name, text: player.expect_end(name, True),
    "fin": lambda player, name, text: player.finish(name),
    "reset": lambda player, name, text: player.reset(name),
    "shut": lambda player, name, text: player.link(name).socket.shutdown(socket.SHUT_WR),
    "accept": Player.accept,
    "listen": Player.listen,
    "connect": Player.connect,
    "refused": lambda player, name, text: player.expect_refusal(name),
    "wrap": Player.wrap,
}
STEP = re.compile(r"(?:(\w+) )?(%s)(?: (.*))?" % "|".join(STEPS))
SETTING = re.compile(r"(\$|env|file|listen|within|fault|=|>|!) (.*)")


class Case:
    def __init__(self, path, number, title):
        self.place = f"{path.name}:{number}"
        self.path, self.title = path, title
        self.settings, self.steps = [], []

    def all(self, mark):
        return [text for key, text in self.settings if key == mark]

    def run(self, runner, programs, folder):
        """Why the case failed, as lines."""
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        addresses = [address.partition("=")[::2] for address in " ".join(self.all("listen") or ["127.0.0.1"]).split()]
        player = Player(addresses, {"folder": folder})
        try:
            faults = list(self.faults(player, runner, programs, folder))
        finally:
            player.close()
        wanted = self.all("fault")
        if not wanted:
            return faults
        return [] if any(text in fault for fault in faults for text in wanted) else [f"{self.place}: no fault", *faults]

    def faults(self, player, runner, programs, folder):
        for name, _, text in (text.partition(" ") for text in self.all("file")):
            (folder / name).write_bytes(fill(text, {}))
        variables = dict(text.split("=", 1) for text in self.all("env"))
        program, *arguments = [fill(word, player.values).decode() for word in shlex.split(*self.all("$"))]
        command = [runner, programs / f"{program}.exe"] if (programs / f"{program}.exe").exists() else [program]
        streams = folder / "client.out", folder / "client.err"
        began = time.monotonic()
        with open(streams[0], "wb") as out, open(streams[1], "wb") as err:
            player.client = subprocess.Popen([*command, *arguments], stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                                             env={**os.environ, **variables})
        try:
            yield from self.play(player)
            limit = float((self.all("within") or [60])[0])
            player.client.wait(max(0.1, limit - (time.monotonic() - began)))
            if player.is_wanted_once_more():
                yield f"{self.place}: the client made one connection more"
        except subprocess.TimeoutExpired:
            yield f"{self.place}: the client did not end in time"
        finally:
            player.client.kill()
            player.client.wait()
        yield from self.compare(player, *(path.read_bytes().decode("utf-8", "replace") for path in streams))

    def play(self, player):
        place = self.place
        try:
            for number, step in self.steps:
                place = f"{self.path.name}:{number}"
                player.step(*step)
            place = self.place
            player.expect_ends()
        except (Mismatch, OSError) as fault:
            yield f"{place}: {fault}"
            player.close()

    def compare(self, player, out, err):
        wrong = [f"= {text}" for text in self.all("=") or ["0"] if str(player.client.returncode) not in text.split()]
        for mark, printed in (">", out), ("!", err):
            wrong += [f"{mark} {text}" for text in self.all(mark)
                      if fill(text, player.values).decode() not in printed.splitlines()]
        yield from (f"{self.place}: expected of the client: {text}" for text in wrong)
        if wrong:
            yield f"  status {player.client.returncode}\n{out}{err}"


def read_cases(path):
    cases = []
    for number, line in enumerate(pathlib.Path(path).read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("== "):
            cases.append(Case(pathlib.Path(path), number, line[3:]))
        elif line.strip() and not line.startswith("#"):
            setting, step = SETTING.fullmatch(line), STEP.fullmatch(line)
            if not cases or not (setting or step):
                raise SystemExit(f"{path}:{number}: not understood: {line}")
            if setting:
                cases[-1].settings.append(setting.groups())
            else:
                cases[-1].steps.append((number, [part or "" for part in step.groups()]))
    return cases
