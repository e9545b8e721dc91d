"""Programs and ports of the servers that tests start."""
import ctypes
import signal
import socket
import subprocess
import time

SUFFIX = "dc=farrow,dc=test"
EDITOR, EDITOR_PASSWORD = f"cn=editor,{SUFFIX}", "editor-secret"
READER, READER_PASSWORD = f"cn=reader,{SUFFIX}", "reader-secret"


def end_with_parent():
    """A child of ours does not outlive us, not even when we are killed."""
    ctypes.CDLL(None).prctl(1, signal.SIGTERM)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def run_tool(command, text="", environment=None):
    """Returns what the program prints; fails with that when the program fails."""
    done = subprocess.run(command, input=text.encode(), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=120, check=False, env=environment)
    if done.returncode:
        raise RuntimeError(" ".join(command) + "\n" + done.stdout.decode(errors="replace"))
    return done.stdout


def start(command, log_path, ready, seconds=30):
    """Starts a server that stays in the foreground, and waits until `ready` succeeds."""
    with open(log_path, "ab") as log:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                   start_new_session=True, preexec_fn=end_with_parent)
    until = time.monotonic() + seconds
    while time.monotonic() < until and process.poll() is None:
        if ready():
            return process
        time.sleep(0.05)
    process.kill()
    raise RuntimeError(f"{command[0]} does not start: "
                       + log_path.read_text(errors="replace")[-4000:])


def listens(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0
