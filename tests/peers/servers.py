"""Real servers, run from where deps/peers.sh unpacked them, each in a folder of its own."""
import os
import pathlib
import re
import shutil
import socket
import subprocess
import threading
import time

from case import PATIENCE, fill
from dialogue import bind_to
from letters import faults as letter_faults, wait_for

HERE = pathlib.Path(__file__).resolve().parent
COMMANDS = {
    "proftpd": "exec {packages}/usr/sbin/proftpd -n -q -c {folder}/conf",
    "vsftpd": "mount --bind {folder}/pam.d /etc/pam.d && exec {packages}/usr/sbin/vsftpd {folder}/conf",
    "s_server": "cd {root} && exec openssl s_server -accept {url}:{port} -cert {ca}/{certificate}.pem -key {ca}/{certificate}.key "
                "-quiet {options}",
    "gnutls": "exec {packages}/usr/bin/gnutls-serv --echo -p {port} --x509certfile {ca}/{certificate}.pem "
              "--x509keyfile {ca}/{certificate}.key {options}",
    "sshd": "exec sh {folder}/start",
    "asyncssh": "exec sh {folder}/start",
    "pyftpdlib": "exec /usr/bin/python3 {here}/pyftpd.py {host} {port} {root}",
    "aiosmtpd": "exec /usr/bin/python3 {here}/mailbox.py {host} {port} {root} {ca}/{certificate} {options}",
    # It wants to be called by root, and to be a user of its own.
    "exim4": "(cat /etc/passwd; echo Debian-exim:x:4241:4241::/:/bin/false) >{folder}/passwd && (cat /etc/group; echo"
             " Debian-exim:x:4241:) >{folder}/group && for f in passwd group; do mount --bind {folder}/$f /etc/$f; done"
             " && (cat {ca}/{certificate}.pem {ca}/{certificate}.key >{folder}/tls || true) && chown 4241:4241 {folder} {root}"
             " && chmod u-s {packages}/usr/sbin/exim4 && exec {packages}/usr/sbin/exim4 -C {folder}/conf -bdf",
}
STAND_IN = "pyftpdlib"  # for all FTP servers, where there is no sandbox
OTHERS = "s_server", "aiosmtpd", "exim4"  # the second takes the place of the third there
SILENT = "s_server", "gnutls"  # these wait for the client's first word


def free_port(host):
    with bind_to(host) as probe:
        return probe.getsockname()[1]


class Server:
    def __init__(self, kind, host, place, packages, is_boxed, ca):
        self.name = f"{kind} on {host}"
        kind, certificate, options = (kind.split(":") + ["", ""])[:3]  # "s_server:good:-tls1_2,-rev"
        self.is_silent = kind in SILENT or "TLS" in options
        self.lock = threading.Lock()
        self.folder = place / re.sub(r"[^\w.]+", "-", self.name)  # a colon would end the name in a file of users
        shutil.rmtree(self.folder, ignore_errors=True)
        (self.folder / "empty").mkdir(parents=True)
        self.root = self.folder / "root"
        (self.root / "small").mkdir(parents=True)
        self.values = {"host": host, "port": free_port(host)}
        arch = next((path.name for path in (packages / "usr/lib").glob("*-linux-gnu")), "")
        names = {**self.values, "here": HERE, "packages": packages, "arch": arch, "folder": self.folder, "ca": ca,
                 "certificate": certificate, "options": options.replace(",", " ").format(ca=ca),
                 "url": host if "." in host else f"[{host}]", "root": self.root, "v4": "YES" if "." in host else "NO", "v6": "NO" if "." in host else "YES",
                 "six": "" if "." in host else "6"}
        if is_boxed:
            subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", self.root / "small"], check=True)
        self.copy_settings(HERE.parent / "data/peers" / kind, names)
        libraries = f"{packages}/usr/lib/{arch}:{packages}/lib/{arch}"
        variables = {"LD_LIBRARY_PATH": libraries, "PYTHONPATH": f"{packages}/usr/lib/python3/dist-packages"}
        own = ["unshare", "--mount"] if is_boxed else ["setpriv", "--pdeathsig", "KILL"]
        with open(self.folder / "log", "wb") as log:
            self.process = subprocess.Popen([*own, "sh", "-c", COMMANDS[kind].format(**names)], env={**os.environ, **variables},
                                            stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        self.wait()
        self.values.update(peer=self.folder, root=self.root)
        if (self.folder / "values").exists():
            self.values.update(line.split(" ", 1) for line in (self.folder / "values").read_text().splitlines())

    def copy_settings(self, source, names):
        for path in (path for path in source.rglob("*") if path.is_file()):
            copy = self.folder / path.relative_to(source)
            copy.parent.mkdir(exist_ok=True)
            copy.write_bytes(fill(path.read_text(), names))
            copy.chmod(0o600 if path.name == "users" else 0o644)

    def wait(self):
        deadline = time.monotonic() + PATIENCE
        while True:
            try:
                with socket.create_connection((self.values["host"], self.values["port"]), 5) as probe:
                    return self.is_silent or probe.recv(1)
            except OSError as error:
                if self.process.poll() is not None or time.monotonic() > deadline:
                    log = (self.folder / "log").read_text(errors="replace")
                    raise OSError(f"{self.name} does not serve: {error}\n{log}") from None
                time.sleep(0.05)

    def stop(self):
        self.process.terminate()
        try:
            self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()

    def fill(self, case):
        """The files that the case begins with and no other."""
        for path in [*self.root.iterdir(), *(self.root / "small").iterdir()]:
            if path.is_dir() and path.name != "small":
                shutil.rmtree(path)
            elif path.is_file():
                path.unlink()
        for name, _, text in (text.partition(" ") for text in case.all("server")):
            path = self.path(name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(fill(text, {}))
        for path in [self.root, *self.root.rglob("*")]:
            path.chmod(0o777)

    def path(self, name):
        return self.root / os.fsdecode(fill(name, {}))

    def faults(self, case, folder, values):
        for name, _, file in (text.partition(" ") for text in case.all("has")):
            if not self.path(name).exists():
                yield f"{case.place}: the server has no {name}"
            elif file and self.path(name).read_bytes() != (folder / file).read_bytes():
                yield f"{case.place}: {name} of the server is not {file}"
        yield from (f"{case.place}: the server has {name}" for name in case.all("lacks") if self.path(name).exists())
        if case.all("letter"):
            count = int((case.words("letters") or [1])[0])
            letters = wait_for(self.root, count)
            yield from letter_faults(case, folder, values, letters)
            if len(letters) != count:
                yield f"{case.place}: {len(letters)} letters arrived"


class Servers:
    """Each is started when it is first asked for."""

    def __init__(self, place, packages, is_boxed, ca):
        self.how = place, packages, is_boxed, ca
        self.started = {}

    def of(self, case):
        kinds = case.words("peer")
        if not self.how[2]:
            kinds = {kind.replace("exim4", "aiosmtpd") if kind.startswith(OTHERS) else STAND_IN
                     for kind in kinds if not kind.startswith("gnutls")}  # which would serve the world
        return [self.get(kind, host) for kind in kinds for host in ("127.0.0.1", "::1")]

    def get(self, *which):
        if which not in self.started:
            self.started[which] = Server(*which, *self.how)
        return self.started[which]

    def stop(self):
        for server in self.started.values():
            server.stop()
