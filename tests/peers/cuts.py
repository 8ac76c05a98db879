"""A proxy that cuts a connection short: by its end, by a reset or by silence, after so many bytes in one direction."""
import itertools
import os
import select
import socket
import threading
from typing import NamedTuple

from dialogue import bind_to, close_by_reset

BLOCK = 65536


class Cut(NamedTuple):
    how: str  # end, reset, silence; hush: silence for the client, and the end for a server that has no time for others
    towards: str  # client, server
    after: int  # bytes


class Relay:
    """Passes connections to its port on to a server; the first one is cut, later ones are whole."""

    def __init__(self, host, target, cut=None):
        self.target = target  # gives the address of the server
        self.passed = {"client": b"", "server": b""}
        self.listener = bind_to(host)
        self.listener.listen(16)
        self.port = self.listener.getsockname()[1]
        self.open = []
        threading.Thread(target=self.serve, args=(cut,), daemon=True).start()

    def close(self):
        self.listener.shutdown(socket.SHUT_RDWR)  # wakes who waits there
        self.listener.close()
        for connection in self.open:
            close_by_reset(connection)

    def serve(self, cut):
        for this_cut in itertools.chain([cut], itertools.repeat(None)):
            try:
                client = self.listener.accept()[0]
                server = socket.create_connection(self.target())
            except OSError:
                return
            self.open += [client, server]
            threading.Thread(target=self.relay, args=(client, server, this_cut), daemon=True).start()

    def relay(self, client, server, cut):
        ways = {client: ("server", server), server: ("client", client)}
        try:
            while ways and not (cut and len(self.passed[cut.towards]) >= cut.after):
                for source in select.select(list(ways), [], [])[0]:
                    towards, other = ways[source]
                    is_cut_here = cut and cut.towards == towards
                    data = source.recv(cut.after - len(self.passed[towards]) if is_cut_here else BLOCK)
                    self.passed[towards] += data
                    if data:
                        other.sendall(data)
                    else:
                        other.shutdown(socket.SHUT_WR)
                        del ways[source]
            if cut and ways:
                self.cut(client, server, cut.how)
        except (OSError, ValueError):  # reset by one of them, or closed by us
            if cut is None or cut.how not in ("silence", "hush"):
                close_by_reset(client)

    def cut(self, client, server, how):
        if how == "reset":
            close_by_reset(client)
            close_by_reset(server)
        elif how == "hush":
            close_by_reset(server)
        elif how == "end":
            server.shutdown(socket.SHUT_RDWR)
            client.shutdown(socket.SHUT_WR)
            while client.recv(BLOCK):  # unread bytes would make a reset of it
                pass


def all_cuts(passed, ways):
    """The end and a reset after every byte, silence at the first, middle and last byte of each line."""
    for towards, data in passed.items():
        for how in {"end", "reset"} & set(ways):
            yield from (Cut(how, towards, after) for after in range(len(data) + 1))
        at = 0
        for line in data.splitlines(keepends=True) if "silence" in ways else []:
            yield from (Cut("silence", towards, at + here) for here in sorted({0, len(line) // 2, len(line) - 1}))
            at += len(line)


def record_cuts(passed):
    """The end at every 16th byte and where a TLS record begins or ends; a reset and silence where one does."""
    for towards, data in passed.items():
        borders = [0]
        while borders[-1] + 5 <= len(data):
            borders.append(borders[-1] + 5 + int.from_bytes(data[borders[-1] + 3:borders[-1] + 5], "big"))
        yield from (Cut("end", towards, after) for after in sorted({*range(0, len(data), 16), *borders}))
        yield from (Cut(how, towards, after) for how in ("reset", "hush") for after in borders)


def cuts_of(passed, words):
    """Every n-th of them."""
    step = os.environ.get("TARN_CUT_STEP") or next((word for word in words if word.isdigit()), 1)
    return itertools.islice(record_cuts(passed) if "records" in words else all_cuts(passed, words), 0, None, int(step))
