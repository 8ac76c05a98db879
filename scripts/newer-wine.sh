#!/bin/bash
# Runs the tests of a package on the Wine of the next Debian release, which lives in a folder of its own: made the first time,
# in about three minutes, by debootstrap, and used again. Needs root or sudo, and nothing of it is left running.
#
#   newer-wine.sh ZIP ROOT
set -euo pipefail
. "$(dirname "$0")/../deps/apt.sh"
zip=$(realpath "$1")
root=$(realpath -m "$2")
release=trixie
mirror=${TARN_DEBIAN_MIRROR:-http://deb.debian.org/debian}
tests=/root/tests

inside() {
    as_root chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 WINEDEBUG=-all \
        DEBIAN_FRONTEND=noninteractive WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe,winedbg.exe=" "$@"
}

if [ ! -e "$root/.ready" ]; then
    as_root rm -rf "$root"
    as_root debootstrap --variant=minbase --arch=i386 "$release" "$root" "$mirror"
    inside apt-get install -y --no-install-recommends wine wine32
    as_root touch "$root/.ready"
fi

as_root mount -t proc proc "$root/proc"
trap 'inside wineserver -k || true; as_root umount "$root/proc"' EXIT
as_root rm -rf "$root$tests"
as_root mkdir -p "$root$tests"
(cd "$root$tests" && as_root cmake -E tar xf "$zip")
inside wine --version
inside wineboot -i </dev/null >/dev/null 2>&1
folder=$(basename "$(echo "$root$tests"/*)")
status=0
inside sh -c "cd $tests && wine cmd /c '$folder\\run-tests.cmd' </dev/null" || status=$?
as_root cat "$root$tests/$folder/results/summary.txt"
exit $status
