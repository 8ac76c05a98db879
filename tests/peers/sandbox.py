"""A private network, mount and process namespace for a run of tests: its servers take what ports they like, nothing leaves
the machine, and whatever is started or mounted in it ends with the run, also when that is killed."""
import os
import pathlib
import subprocess
import sys

UNSHARE = ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc"]
PLACE = pathlib.Path("/srv")  # a disk in memory there
HOSTS = pathlib.Path(__file__).resolve().parent.parent / "data/net/hosts"
SET_UP = f"""
mount -t tmpfs -o mode=755 tmpfs {PLACE}
mount --bind {HOSTS} /etc/hosts
echo "hosts: files" >{PLACE}/names
mount --bind {PLACE}/names /etc/nsswitch.conf
mkdir -p /tmp/.wine-0 {PLACE}/wine {PLACE}/changes {PLACE}/work
mount -t tmpfs -o mode=700 tmpfs /tmp/.wine-0
mount -t overlay -o lowerdir="$TARN_WINE",upperdir={PLACE}/changes,workdir={PLACE}/work overlay {PLACE}/wine
echo 1 >/proc/sys/net/ipv4/tcp_syn_retries
ip link set lo up
while read -r address name _; do [ "$name" != own.test ] || ip address add "$address" dev lo; done <{HOSTS}
"""


def enter(runner):
    """Runs the program once more in a sandbox and returns "" there; without one, returns why."""
    if "TARN_WINE" in os.environ:
        subprocess.run(["sh", "-ec", SET_UP], check=True)
        os.environ["WINEPREFIX"] = str(PLACE / "wine")
        return ""
    if os.geteuid():
        return "not root"
    probe = subprocess.run([*UNSHARE, "mount", "-t", "tmpfs", "tmpfs", PLACE], capture_output=True, encoding="utf-8")
    if probe.returncode:
        return probe.stderr.strip()
    subprocess.run([runner, "cmd", "/c", "exit"], check=True)  # so that Wine's prefix is whole
    os.environ["TARN_WINE"] = os.environ.get("WINEPREFIX", str(runner.parents[1] / "build/wineprefix"))
    sys.stdout.flush()
    os.execvp("unshare", [*UNSHARE, sys.executable, *sys.argv])
