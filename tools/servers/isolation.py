"""A network and system folders of its own for a command and all that it starts.

Some servers listen at every interface, at ports that cannot be chosen, and keep files in folders of
the system. In namespaces of their own they reach nothing, nothing reaches them, and all that they
write lies in a folder that is removed with them.
"""
import os
import pathlib
import subprocess
import sys

INSIDE = "DEPOTINTR_ISOLATED"


def enter(arguments):
    """Starts this program again inside; returns once it runs there."""
    if os.environ.get(INSIDE) == str(os.getpid()):
        return
    os.environ[INSIDE] = str(os.getpid())
    # Without a user of its own only root may; then the users inside are those outside.
    own_user = [] if os.geteuid() == 0 else ["--map-root-user"]
    os.execvp("unshare", ["unshare", "--net", "--mount", *own_user, "--", sys.executable, "-B",
                          *arguments])


def prepare(folder):
    """Makes the loopback interface usable, and folders of `folder` those of the system."""
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    subprocess.run(["mount", "--make-rprivate", "/"], check=True)
    for path in ("/run", "/dev/shm", "/etc/dirsrv", "/var/lib/dirsrv", "/var/log/dirsrv",
                 "/var/log/samba", "/var/lib/samba", "/var/cache/samba"):
        if not pathlib.Path(path).is_dir():
            continue
        own = folder / path.strip("/").replace("/", "-")
        own.mkdir()
        if path == "/etc/dirsrv":
            subprocess.run(["cp", "-a", f"{path}/.", str(own)], check=True)
        subprocess.run(["mount", "--bind", str(own), path], check=True)
    without_systemd(folder)


def without_systemd(folder):
    """The tool that creates an instance asks this file whether systemd starts it."""
    defaults = pathlib.Path("/usr/share/dirsrv/inf/defaults.inf")
    if defaults.is_file():
        own = folder / defaults.name
        own.write_text(defaults.read_text().replace("with_systemd = 1", "with_systemd = 0"))
        subprocess.run(["mount", "--bind", str(own), str(defaults)], check=True)
