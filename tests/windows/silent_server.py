"""silent_server.py PROGRAM...: shows that depotctl, started by PROGRAM, returns from a server that takes a connection and
then says nothing. Wine's directory client waits for ever there."""
import socket
import subprocess
import sys
import time

LONGEST_SECONDS = 300


def main():
    with socket.create_server(("127.0.0.1", 0)) as silent:
        port = str(silent.getsockname()[1])
        words = [*sys.argv[1:], "depots", "add", "Silent", "--host", "127.0.0.1", "--port", port,
                 "--path", "cn=Profiles,dc=example,dc=com", "--authentication", "anonymous"]
        subprocess.run(words, check=True, timeout=60)
        start = time.monotonic()
        try:
            code = subprocess.run([*sys.argv[1:], "ls", "<Silent>\\"], check=False, stdin=subprocess.DEVNULL,
                                  timeout=LONGEST_SECONDS).returncode
        except subprocess.TimeoutExpired:
            sys.exit(f"depotctl still waits after {LONGEST_SECONDS} seconds")
        subprocess.run([*sys.argv[1:], "depots", "remove", "Silent"], check=True, timeout=60)
    print(f"depotctl ended with {code} after {time.monotonic() - start:.0f} seconds")
    return 0 if code != 0 else 1


if __name__ == "__main__":
    sys.exit(main())
