"""A fresh Windows environment for one test, made and removed by the tools that run every other test."""
import contextlib
import os
import shutil
import subprocess
import tempfile
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
LONGEST_RUN_SECONDS = 240

# What the packages register, as far as it has names of its own.
PROG_IDS = ("DepotIntr.DepotIntrApi", "DepotIntr.DepotIntrApi.1")


def _shell(script, *arguments):
    """Runs bash with the functions of tools/wine-env."""
    return ["bash", "-c", f'. "$0/tools/wine-env"; {script}', str(REPOSITORY), *map(str, arguments)]


class Windows:
    def __init__(self):
        # The environment shares files with the template by hard links: both are in one file system.
        script = 'wine_make_template >&2; mkdir -p "$wine_root/runs"; mktemp -d "$wine_root/runs/XXXXXX"'
        made = subprocess.run(_shell(script), stdout=subprocess.PIPE, text=True, check=True)
        self.folder = Path(made.stdout.strip())
        environment = subprocess.run(
            _shell('unset DISPLAY; wine_use "$1"; wine_start; env -0', self.folder),
            stdout=subprocess.PIPE, check=True).stdout
        self.environment = dict(entry.split("=", 1) for entry in
                                environment.decode("utf-8", "surrogateescape").split("\0") if entry)

    def close(self):
        subprocess.run(_shell("wine_stop"), env=self.environment, check=True)
        shutil.rmtree(self.folder)

    def restart(self):
        """Ends every program and starts the system again, with all that it does at a start."""
        subprocess.run(_shell("wine_stop; wine_start"), env=self.environment, check=True)

    @contextlib.contextmanager
    def speaking(self, locale):
        """While it lasts, programs see a user whose interface is in the language of this locale."""
        # Only the name matters: every locale is a copy of one.
        made = _shell('cd "$wine_root/locales"; [ -e "$1" ] || cp -r en_US.UTF-8 "$1"; echo "$PWD"',
                      f"{locale}.UTF-8")
        folder = subprocess.run(made, stdout=subprocess.PIPE, text=True, check=True).stdout.strip()
        before = self.environment
        self.environment = {**before, "LOCPATH": folder, "LANG": f"{locale}.UTF-8"}
        self.environment.pop("LC_ALL", None)
        try:
            yield
        finally:
            self.environment = before

    def path(self, windows_path):
        """Where a path such as C:\\x is on this system."""
        assert windows_path[:3] == "C:\\"
        return self.folder / "drive_c" / windows_path[3:].replace("\\", "/")

    def add(self, source, windows_path):
        target = self.path(windows_path)
        target.parent.mkdir(parents=True, exist_ok=True)
        if Path(source).is_dir():
            shutil.copytree(source, target, dirs_exist_ok=True)
        else:
            shutil.copyfile(source, target)

    def _start(self, program, arguments, folder, **streams):
        return subprocess.Popen(["wine", program, *arguments], env=self.environment,
                                cwd=self.path(folder), stdin=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL, **streams)

    def run(self, program, *arguments, folder="C:\\"):
        """Runs a program to its end and returns its exit code and what it printed."""
        # A file and no pipe: a service that the program starts would hold on to a pipe.
        with tempfile.TemporaryFile() as output:
            process = self._start(program, arguments, folder, stdout=output)
            try:
                code = process.wait(LONGEST_RUN_SECONDS)
            except subprocess.TimeoutExpired:
                process.kill()
                raise
            output.seek(0)
            return code, output.read().decode("utf-8", "replace").replace("\r\n", "\n")

    def script(self, windows_path, *arguments):
        return self.run("cscript.exe", "//nologo", windows_path, *arguments)

    def start(self, program, *arguments, folder="C:\\"):
        """Starts a program whose standard output can be read line by line."""
        return self._start(program, arguments, folder, stdout=subprocess.PIPE)

    def installer(self, action, package, *properties):
        """Runs the system's installer without a window. The result is the low byte of its exit code, all
        that a program's end tells here."""
        return self.run("msiexec.exe", action, package, "/qn", *properties)[0]

    def registry(self, key):
        """What is below a key, as text in the notation of .reg files; empty without the key."""
        self.path("C:\\export.reg").unlink(missing_ok=True)
        code, _ = self.run("reg.exe", "export", key, "C:\\export.reg", "/y")
        if code != 0:
            return ""
        return self.path("C:\\export.reg").read_bytes().decode("utf-16").replace("\r\n", "\n")

    def define_sample_depots(self):
        """Puts the sample profiles into their place as they are shipped, and defines their depots."""
        self.add(REPOSITORY / "samples/profiles", "C:\\DepotSamples")
        if self.path("C:\\depots.reg").exists():
            return
        self.add(REPOSITORY / "samples/depots.reg", "C:\\depots.reg")
        outcome = self.run("reg.exe", "import", "C:\\depots.reg")
        assert outcome[0] == 0, outcome
