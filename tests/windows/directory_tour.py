"""directory_tour.py PROGRAM... -- OPTION...: tries a directory with depotctl, step by step.

PROGRAM is depotctl with what starts it, OPTION what `depotctl depots add` needs to reach an entry that is
there and empty, as in

    python tests/windows/directory_tour.py build/msys2/bin/depotctl.exe -- --host localhost --port 389 \\
        --path "CN=Profiles,CN=Depots" --authentication windows

Each step is printed; the first that fails ends the tour with code 1, and what the tour made stays to be looked at.
The variable TOUR_FILES says how many files its large folder has: more than 1,000 are more than Active Directory
returns in one answer. `make test` runs the tour against slapd (`directory_tour_test.py`).
"""
import os
import pathlib
import subprocess
import sys
import tempfile

PROFILE = "[PROFILE]\r\nTitle=Order entry\r\n[Host]\r\nName=orders.example.test\r\n"
NAMES = ["office.kre", "two words.kre", "comma, plus + and #.kre", "Müller Straße.kre"]
ROOT = "<Tour>"


class Tour:
    def __init__(self, program, options, folder):
        self.program, self.options, self.folder = program, options, pathlib.Path(folder)

    def run(self, *words, code=0):
        """What depotctl prints."""
        print("depotctl", *words, flush=True)
        done = subprocess.run([*self.program, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False, timeout=600)
        if done.returncode != code:
            # What a program prints is UTF-8, what a console takes may not be.
            text = (done.stdout + done.stderr).decode("utf-8", "replace")
            sys.exit(f"ended with {done.returncode} instead of {code}:\n"
                     + text.encode("ascii", "backslashreplace").decode())
        return done.stdout.decode("utf-8").replace("\r\n", "\n")

    @staticmethod
    def same(expected, found):
        if expected != found:
            sys.exit(f"expected {expected!a}, found {found!a}")

    def here(self, path):
        """A file of the tour's folder as depotctl has to be given it."""
        return os.environ.get("TOUR_PREFIX", "") + str(self.folder / path)

    def define(self):
        self.run("depots", "add", "Tour", *self.options)
        self.run("check", "Tour")

    def put_files(self):
        local = self.folder / "Sessions"
        local.mkdir()
        for name in NAMES:
            (local / name).write_bytes(PROFILE.encode("ascii"))
        self.run("upload", self.here("Sessions"), ROOT)
        listed = self.run("ls", f"{ROOT}\\Sessions")
        for name in NAMES:
            self.same(True, name in listed)

    def edit(self):
        for name in NAMES:
            path = f"{ROOT}\\Sessions\\{name}"
            self.same("orders.example.test\n", self.run("get", path, "Host", "Name"))
            self.run("set", path, "Host", "Name", "new.example.test")
            self.same("new.example.test\n", self.run("get", path, "Host", "Name"))

    def rearrange(self):
        self.run("cp", "-r", f"{ROOT}\\Sessions", f"{ROOT}\\Copies")
        self.run("compare", f"{ROOT}\\Sessions", f"{ROOT}\\Copies")
        self.run("mv", f"{ROOT}\\Copies", f"{ROOT}\\Moved")
        self.run("ls", f"{ROOT}\\Copies", code=1)
        self.run("mv", f"{ROOT}\\Moved\\{NAMES[0]}", f"{ROOT}\\Moved\\renamed.kre")
        self.run("compare", f"{ROOT}\\Sessions", f"{ROOT}\\Moved", code=1)

    def fetch(self):
        (self.folder / "Back").mkdir()
        self.run("download", f"{ROOT}\\Sessions", self.here("Back"))
        changed = PROFILE.replace("orders.", "new.").encode("ascii")
        for name in NAMES:
            self.same(changed, (self.folder / "Back/Sessions" / name).read_bytes())

    def crowd(self, count):
        local = self.folder / "Many"
        local.mkdir()
        for number in range(count):
            (local / f"file{number}.kre").write_bytes(b"[PROFILE]\r\n")
        self.run("upload", self.here("Many"), ROOT)
        listed = self.run("ls", f"{ROOT}\\Many")
        self.same(count, sum(line.startswith("file") for line in listed.splitlines()))

    def clean(self):
        self.run("rm", "-r", *(f"{ROOT}\\{name}" for name in ("Sessions", "Moved", "Many")))
        self.same("", self.run("ls", f"{ROOT}\\"))
        self.run("depots", "remove", "Tour")


def main():
    divider = sys.argv.index("--")
    with tempfile.TemporaryDirectory(dir=os.environ.get("TOUR_FOLDER")) as folder:
        tour = Tour(sys.argv[1:divider], sys.argv[divider + 1:], folder)
        tour.define()
        tour.put_files()
        tour.edit()
        tour.rearrange()
        tour.fetch()
        tour.crowd(int(os.environ.get("TOUR_FILES", "40")))
        tour.clean()
    print("The directory does all that was asked of it.")


if __name__ == "__main__":
    main()
