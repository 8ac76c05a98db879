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
# Where this system's own packages come from has the next release, too.
mirror=$(apt-get indextargets --format '$(REPO_URI) $(RELEASE)' "Codename: $(. /etc/os-release && echo "$VERSION_CODENAME")" |
    awk 'NR == 1 { print $1 }')
[ -n "$mirror" ] || { echo "newer-wine.sh: apt names no mirror of Debian" >&2; exit 1; }
tests=/srv/tests

# In namespaces of its own: what is mounted and what is started there ends with the command.
inside() {
    as_root unshare --mount --pid --fork --kill-child --mount-proc="$root/proc" chroot "$root" \
        /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
        WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe,winedbg.exe=" "$@"
}

if [ ! -e "$root/.ready" ]; then
    as_root rm -rf "$root"
    as_root debootstrap --variant=minbase --arch=i386 "$release" "$root" "$mirror"
    inside apt-get install -y --no-install-recommends wine wine32
    as_root touch "$root/.ready"
fi

as_root rm -rf "$root$tests"
as_root mkdir -p "$root$tests"
as_root cp /etc/hosts "$root/etc/hosts" # the names that the tests of sockets look up
(cd "$root$tests" && as_root cmake -E tar xf "$zip")
folder=$(cd "$root$tests" && echo *)
runs=$(($(cat "$root$tests/$folder"/*.suites | wc -l) + 1)) # and all once more above 2 GiB
inside wine --version
inside sh -c "wineboot -i </dev/null >/dev/null 2>&1; cd $tests && wine cmd /c '$folder\\run-tests.cmd' </dev/null" || true
cat "$root$tests/$folder/results/summary.txt"
grep -q "^$runs runs passed, 0 failed" "$root$tests/$folder/results/summary.txt"
