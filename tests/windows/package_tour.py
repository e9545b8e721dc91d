"""package_tour.py FOLDER: installs the package of FOLDER (that of `make dist`) on this Windows, uses it, repairs it and removes it.

Run it as an administrator on a machine that may be changed. The first step that fails ends it with code 1.
"""
import pathlib
import subprocess
import sys
import tempfile
import winreg

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
CLASS = r"DepotIntr.DepotIntrApi\CLSID"


def run(*words, code=0):
    print(*words, flush=True)
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=False, timeout=600)
    text = done.stdout.decode("ascii", "replace")
    if done.returncode != code:
        sys.exit(f"ended with {done.returncode} instead of {code}:\n{text}")
    return text


def registered_library():
    """Where the class's library is, or nothing."""
    try:
        identifier = winreg.QueryValue(winreg.HKEY_CLASSES_ROOT, CLASS)
        return pathlib.Path(winreg.QueryValue(winreg.HKEY_CLASSES_ROOT, rf"CLSID\{identifier}\InprocServer32"))
    except OSError:
        return None


def expect(truth, text):
    if not truth:
        sys.exit(text)


def use(folder):
    """The first sample script, as a user starts it."""
    run("reg", "import", str(REPOSITORY / r"samples\depots.reg"))
    target = pathlib.Path(r"C:\DepotSamples")
    if not target.exists():
        run("xcopy", "/e", "/i", "/q", str(REPOSITORY / r"samples\profiles"), str(target))
    output = run("cscript", "//nologo", str(REPOSITORY / r"samples\first.vbs"))
    expect("Session ended." in output, output)
    run(str(folder / "depotctl.exe"), "check", "Work")


def main():
    package = str(next(pathlib.Path(sys.argv[1]).glob("DepotIntr-*-x64.msi")).resolve())
    log = str(pathlib.Path(tempfile.gettempdir()) / "depotintr.log")
    run("msiexec", "/i", package, "/qn", "/l*v", log, "ADDLOCAL=ALL")
    library = registered_library()
    expect(library and library.exists(), "the class is not registered")
    use(library.parent)

    library.unlink()
    run("msiexec", "/fa", package, "/qn", "/l*v", log)
    expect(library.exists(), "the repair did not bring the library back")
    use(library.parent)

    run("msiexec", "/x", package, "/qn", "/l*v", log)
    expect(registered_library() is None, "the class is still registered")
    expect(not library.exists(), f"{library} is still there")
    print("The package can be installed, used, repaired and removed.")


if __name__ == "__main__":
    main()
