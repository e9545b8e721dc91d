"""code_page_runs.py LOCALE FOLDER: runs the suites of FOLDER that depend on code pages, as programs of another one.

LOCALE is "UTF-8" (Windows 10 1903 and later) or a locale such as "ja-JP" (Windows 11, Windows Server 2025). Each
suite's copy gets it by a manifest, which mt.exe of the Windows SDK writes. The suites and their tests are those of
`CODE_PAGES` in tests/*/CMakeLists.txt; those that need a directory server are left out.
`code_page_runs.py --list` prints them.
"""
import glob
import os
import pathlib
import re
import shutil
import subprocess
import sys

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
SUITE = re.compile(r"depot_test\((\w+)\n((?:.*\n)*?)\s*CODE_PAGES \"([^\"]+)\"")
MANIFEST = """<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0"><application><windowsSettings>
<activeCodePage xmlns="http://schemas.microsoft.com/SMI/2019/WindowsSettings">{locale}</activeCodePage>
</windowsSettings></application></assembly>
"""
KITS = r"C:\Program Files (x86)\Windows Kits\10\bin\*\x64\mt.exe"


def suites():
    """The suites that depend on code pages, each with the filter of its tests."""
    for file in sorted(REPOSITORY.glob("tests/*/CMakeLists.txt")):
        for name, before, tests in SUITE.findall(file.read_text(encoding="utf-8")):
            if "DIRECTORY_SERVER" not in before:
                yield name, tests


def main():
    if sys.argv[1:] == ["--list"]:
        print("\n".join(" ".join(suite) for suite in suites()))
        return 0
    locale, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    tool = shutil.which("mt") or max(glob.glob(KITS))
    manifest = folder / "code_page.manifest"
    manifest.write_text(MANIFEST.format(locale=locale), encoding="utf-8")
    failed = []
    for name, tests in suites():
        program = folder / f"{name}_page_test.exe"
        shutil.copyfile(folder / f"{name}_test.exe", program)
        subprocess.run([tool, "-nologo", "-manifest", str(manifest), f"-outputresource:{program};#1"], check=True)
        print(f"== {name} as a program of {locale}: {tests}", flush=True)
        if subprocess.run([str(program.resolve()), f"--gtest_filter={tests}"], check=False,
                          env=dict(os.environ, PATH=f"{folder};{os.environ['PATH']}")).returncode:
            failed.append(name)
    print("failed: " + ", ".join(failed) if failed else "all passed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
