#!/usr/bin/env python3
"""Uploads of one file to OpenSSH's server by CSIsftp, by a bare loop of libssh2's writes under the same Wine, and by OpenSSH's
own sftp, in turns; and the most memory that CSIsftp's program had for a file and for one of a sixteenth.

    sftp_upload.py BUILD_FOLDER [ROUNDS] [MIB]

The times are from the opening of the remote file to its end; those of sftp are of the whole program, without what one takes
that puts nothing.
"""
import os
import pathlib
import subprocess
import sys
import time

import uploads


class Rivals:
    def __init__(self, build, server, packages):
        self.program = [uploads.RUNNER, build / "bin/sftp_upload.exe"]
        self.server, self.packages = server, packages
        self.key = server.folder / "key"
        self.key.write_bytes((server.folder / "ed25519").read_bytes())
        self.key.chmod(0o600)  # the client takes no other
        self.most_memory = 0

    def by_library(self, which, file):
        """Our own process, and what it tells of its memory."""
        values = self.server.values
        told = subprocess.run([*self.program, which, values["host"], str(values["port"]), values["fingerprint"], f"Z:{file}", "upload"],
                              check=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, encoding="utf-8").stdout.split()
        if (self.server.root / "upload").stat().st_size != file.stat().st_size:
            sys.exit("the upload is not whole")
        self.most_memory = int(told[1])
        return float(told[0])

    def session(self, commands):
        """A whole run of sftp."""
        libraries = ":".join(str(path) for path in self.packages.glob("usr/lib/*-linux-gnu"))
        options = [f"-o{option}" for option in ("StrictHostKeyChecking=no", "UserKnownHostsFile=/dev/null", "IdentitiesOnly=yes",
                                                f"Port={self.server.values['port']}")]
        began = time.monotonic()
        subprocess.run([self.packages / "usr/bin/sftp", "-q", "-b", "-", "-S", self.packages / "usr/bin/ssh", "-F", "none", "-i",
                        self.key, *options, f"clerk@{self.server.values['host']}"], check=True, input=commands.encode(),
                       stdout=subprocess.DEVNULL, env={**os.environ, "LD_LIBRARY_PATH": libraries})
        return time.monotonic() - began

    def by_sftp(self, file):
        return self.session(f"put {file} upload\n") - self.session("pwd\n")


def main(build, rounds=5, mib=256):
    packages = uploads.begin()
    server = uploads.start("sshd", packages)
    file, small = uploads.make_file(mib), uploads.make_file(mib // 16)
    rivals = Rivals(build, server, packages)
    try:
        times = uploads.in_turns({"tarn": lambda: rivals.by_library("ours", file), "sftp": lambda: rivals.by_sftp(file),
                                  "libssh2": lambda: rivals.by_library("libssh2", file)}, rounds, mib)
        memory = [rivals.by_library("ours", of) and rivals.most_memory for of in (small, file)]
    finally:
        server.stop()
    for name in "libssh2", "sftp":
        print(f"{mib} MiB by SFTP, against {name}:", uploads.ratio(times["tarn"], times[name]))
    print(f"most memory of CSIsftp's program: {memory[0]} KiB for {mib // 16} MiB, {memory[1]} KiB for {mib} MiB")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve(), *map(int, sys.argv[2:]))
