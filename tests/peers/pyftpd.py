#!/usr/bin/python3
"""pyftpd.py HOST PORT ROOT: an FTP server, for the system's own Python."""
import sys

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import MultiprocessFTPServer

host, port, root = sys.argv[1:]
FTPHandler.authorizer = DummyAuthorizer()
FTPHandler.authorizer.add_user("clerk", "s3cret", root, perm="elradfmwMT")
FTPHandler.auth_failed_timeout = 0
FTPHandler.banner = "first line\r\n second line" + " of a greeting that is long enough for the form of several lines" * 2
# Sessions of one process would take events from each other: it forgets a file number too late, when that is used again.
MultiprocessFTPServer((host, int(port)), FTPHandler).serve_forever(handle_exit=False)
