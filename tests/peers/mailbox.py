#!/usr/bin/python3
"""mailbox.py HOST PORT ROOT CERTIFICATE [TLS|STARTTLS]: a mail server that takes a login, for the system's own Python. Messages go to ROOT/new, with the
envelope on top as exim writes it; how long each took from the connection on, to ROOT.times."""
import os
import pathlib
import signal
import ssl
import sys
import time

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import SMTP, AuthResult

host, port, root, certificate, *kind = sys.argv[1:]
folder = pathlib.Path(root)


class Handler:
    count = 0

    async def handle_RCPT(self, server, session, envelope, address, options):
        answers = {"reject": "550 5.1.1 no such user", "later": "451 4.7.1 later"}
        answer = answers.get(address.partition("@")[0], "250 2.1.5 ok")
        if answer.startswith("250"):
            envelope.rcpt_tos.append(address)
        return answer

    async def handle_DATA(self, server, session, envelope):
        self.count += 1
        top = f"Return-path: <{envelope.mail_from}>\r\nEnvelope-to: {', '.join(envelope.rcpt_tos)}\r\n"
        (folder / "new").mkdir(exist_ok=True)
        (folder / "half").write_bytes(top.encode() + envelope.original_content)
        os.rename(folder / "half", folder / "new" / str(self.count))
        with open(root + ".times", "a") as times:
            times.write(f"{time.monotonic() - server.began}\n")
        return "250 2.0.0 ok"


def authenticate(server, session, envelope, mechanism, data):
    return AuthResult(success=(data.login, data.password) == (b"clerk", b"s3cret"), handled=False)


class TimedSMTP(SMTP):
    def connection_made(self, transport):
        self.began = time.monotonic()
        super().connection_made(transport)


def context():
    made = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
    made.load_cert_chain(certificate + ".pem", certificate + ".key")
    return made


class Server(Controller):
    def factory(self):
        return TimedSMTP(self.handler, hostname="mail.test", ident="ready", authenticator=authenticate, auth_require_tls=is_upgraded,
                    require_starttls=is_upgraded, tls_context=context() if is_upgraded else None, data_size_limit=50_000_000,
                    loop=self.loop)


is_upgraded = kind == ["STARTTLS"]
Server(Handler(), hostname=host, port=int(port), ssl_context=context() if kind and not is_upgraded else None).start()
signal.pause()
