#!/bin/bash
# Downloads the servers that the network tests talk to, with the libraries that this machine lacks, unpacks them and
# prints their root. Nothing is installed: the packages would start daemons and push each other out.
set -euo pipefail
. "$(dirname "$0")/recipe.sh"

# One set a line: what excludes each other stands on lines of its own.
sets="proftpd-core python3-pyftpdlib libpam-pwdfile libwrap0 gnutls-bin exim4-daemon-light python3-aiosmtpd
vsftpd
openssh-server python3-asyncssh"

build() {
    use_main_suite
    local packages
    while read -ra packages; do
        apt-get "${apt_main[@]}" -q -s --no-install-recommends install "${packages[@]}"
    done <<<"$sets" >plan
    mkdir -p packages installed
    # What is installed is named too: a server of the machine's own would lie elsewhere.
    { sed -n 's/^Inst \([^ ]*\) .*/\1/p' plan; echo "$sets" | tr ' ' '\n'; } | sort -u >names
    (cd packages && xargs apt-get "${apt_main[@]}" -q download) <names
    for package in packages/*.deb; do dpkg-deb -x "$package" installed; done
}

build_once peers 2 usr/sbin/sshd "the servers of the tests"
