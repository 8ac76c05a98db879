#!/usr/bin/python3
"""pysftpd.py HOST PORT KEY AUTHORIZED: an SFTP server for its current directory, for the system's own Python."""
import asyncio
import sys

import asyncssh

host, port, key, authorized = sys.argv[1:]


class Doorkeeper(asyncssh.SSHServer):
    def password_auth_supported(self):
        return True

    def validate_password(self, username, password):
        return (username, password) == ("clerk", "s3cret")


async def serve():
    await asyncssh.create_server(Doorkeeper, host, int(port), server_host_keys=[key], sftp_factory=True,
                                 authorized_client_keys=authorized)
    await asyncio.Event().wait()


asyncio.run(serve())
