"""The tour of directory_tour.py through a directory, here against slapd.

Runs under tools/with-slapd with the folder of the programs as its argument.
"""
import os
import pathlib
import subprocess
import sys

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(REPOSITORY / "tests/install"))
from windows import Windows  # noqa: E402

BASE = "cn=Profiles,dc=farrow,dc=test"


def ask(words, text=""):
    return subprocess.run([REPOSITORY / "tools/with-slapd", "--ask", *words], input=text.encode(),
                          stdout=subprocess.PIPE, check=True).stdout.decode()


def main():
    # depotctl asks for a password at a terminal only.
    port = ask(["start", "tour"], "database access to * by * write").split()[0]
    ask(["apply", "tour"], f"dn: {BASE}\nobjectClass: quillonFolder\ncn: Profiles\n")
    windows = Windows()
    try:
        folder = windows.path("C:\\tour")
        folder.mkdir()
        environment = dict(windows.environment, TOUR_FOLDER=str(folder), TOUR_PREFIX="Z:")
        return subprocess.run(
            [sys.executable, "-B", REPOSITORY / "tests/windows/directory_tour.py", "wine",
             f"{sys.argv[1]}/depotctl.exe", "--", "--host", "127.0.0.1", "--port", port, "--path", BASE,
             "--authentication", "anonymous"],
            env=environment, check=False, timeout=600).returncode
    finally:
        windows.close()


if __name__ == "__main__":
    sys.exit(main())
