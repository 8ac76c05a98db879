"""A scripted server: README.md tells its steps."""
import os
import re
import select
import socket
import struct
import time

from case import PATIENCE, fill, pieces

NAMES = {"any": rb"([^\r\n]*)", "data": rb"(\d+)", "hi": rb"(\d+)", "lo": rb"(\d+)"}
WRAPS = {}  # kind: function that takes a connected socket and gives one with the same calls; for the step "wrap KIND"


class Mismatch(Exception):
    pass


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
    if connection.fileno() < 0:
        return
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
        except ConnectionResetError as error:
            if not is_reset_right:
                raise Mismatch(f"the end expected, but: {error}") from None
        except TimeoutError:
            raise Mismatch(f"the client did not close in {PATIENCE} s") from None
        if self.unread:
            raise Mismatch(f"the end expected, but {self.unread[:80]!r} came")


class Player:
    """Plays the steps of one case."""

    def __init__(self, case):
        self.case = case
        self.client = None  # its process
        self.values = {}
        self.listeners = {"control": []}
        self.links = {}
        self.held = []  # sockets that are only there
        self.split = 0, 0.0
        for address in case.words("listen") or ["127.0.0.1"]:
            self.open(*address.partition("=")[::2])

    def open(self, address, state):
        listener = bind_to(address, self.values.get("port", 0))
        self.values.setdefault("host", address)
        self.values["port"] = listener.getsockname()[1]
        (self.held if state else self.listeners["control"]).append(listener)
        if state == "hole":
            self.held += fill_queue(listener)
        elif not state:
            listener.listen(64)

    def close(self):
        for link in self.links.values():
            close_by_reset(link.socket)
        for listener in sum(self.listeners.values(), self.held):
            listener.close()
        self.links, self.held, self.listeners = {}, [], {"control": []}

    def play(self, client):
        """What went wrong; then everything is closed, so that the client ends."""
        self.client = client
        place = self.case.place
        try:
            for number, (name, verb, text) in self.case.steps:
                place = f"{self.case.path.name}:{number}"
                STEPS[verb](self, name or "control", text)
            place = self.case.place
            for name in list(self.links):
                self.expect_end(name, True)
        except (Mismatch, OSError) as fault:
            self.close()
            return [f"{place}: {fault}"]
        return []

    def is_wanted_once_more(self):
        return bool(select.select(self.listeners["control"], [], [], 0)[0])

    def link(self, name):
        if name not in self.links:
            self.accept(name, "")
        return self.links[name]

    def accept(self, name, address):
        listeners = self.listeners.get(name) or self.listeners["control"]
        deadline = time.monotonic() + PATIENCE
        while not (ready := select.select(listeners, [], [], 0.1)[0]):
            if self.client and self.client.poll() is not None or time.monotonic() > deadline:
                raise Mismatch(f"no connection in {PATIENCE} s, or before the client ended")
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

    def hear_line(self, name, text, end):
        parts = list(pieces(text))
        names = [part for part in parts if isinstance(part, str)]
        pattern = b"".join(NAMES[part] if isinstance(part, str) else re.escape(part) for part in parts) + end
        heard = self.link(name).take(text, lambda unread: unread.find(b"\n") + 1)
        match = re.fullmatch(pattern, heard)
        if not match:
            raise Mismatch(f"{text} expected, but the client sent {heard!r}")
        self.values.update((key, value.decode()) for key, value in zip(names, match.groups()))
        if "hi" in names:
            self.values["data"] = int(self.values["hi"]) * 256 + int(self.values["lo"])

    def hear_bytes(self, name, text):
        wanted = fill(text, self.values)
        heard = self.link(name).take(text, lambda unread: len(wanted) * (len(unread) >= len(wanted)))
        if heard != wanted:
            same = len(os.path.commonprefix([heard, wanted]))
            raise Mismatch(f"from byte {same} on the client sent {heard[same:same + 80]!r}")

    def hear_until(self, name, text):
        last = fill(text, self.values)
        self.link(name).take(text, lambda unread: unread.find(last) + len(last) if last in unread else 0)

    def finish(self, name):
        self.link(name).socket.shutdown(socket.SHUT_WR)
        self.held.append(self.links.pop(name).socket)

    def reset(self, name):
        close_by_reset(self.link(name).socket)
        del self.links[name]

    def expect_end(self, name, is_reset_right):
        self.link(name).expect_end(is_reset_right)
        self.links.pop(name).socket.close()

    def await_reset(self, name):
        errors = select.poll()
        errors.register(self.link(name).socket, 0)
        if not errors.poll(PATIENCE * 1000):
            raise Mismatch(f"no reset by the client in {PATIENCE} s")
        self.reset(name)

    def listen(self, name, address):
        listener = bind_to(address or self.values["host"])
        listener.listen(4)
        self.listeners[name] = [listener]
        port = listener.getsockname()[1]
        self.values.update(data=port, hi=port // 256, lo=port % 256)

    def connect(self, name, text):
        peer = self.link("control").socket.getpeername()[0]
        source = text.removeprefix("from ")
        address = (peer, int(self.values["data"]))
        self.links[name] = Link(socket.create_connection(address, PATIENCE, (source, 0) if source else None))

    def expect_refusal(self, name):
        try:
            self.connect(name, "")
        except ConnectionRefusedError:
            return
        raise Mismatch("the client still listens")

    def wrap(self, name, kind):
        self.link(name).socket = WRAPS[kind](self.link(name).socket)

    def set_split(self, text):
        size, _, gap = text.partition(" ")
        self.split = int(size), float(gap or 0.001)


STEPS = {
    "S:": lambda player, name, text: player.say(name, fill(text, player.values) + b"\r\n"),
    "S-": lambda player, name, text: player.say(name, fill(text, player.values)),
    "C:": lambda player, name, text: player.hear_line(name, text, b"\r\n"),
    "C-": Player.hear_bytes,
    "until": Player.hear_until,
    "split": lambda player, name, text: player.set_split(text),
    "pause": lambda player, name, text: time.sleep(float(text)),
    "end": lambda player, name, text: player.expect_end(name, False),
    "gone": lambda player, name, text: player.expect_end(name, True),
    "broken": lambda player, name, text: player.await_reset(name),
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
