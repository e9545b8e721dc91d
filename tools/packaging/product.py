"""What every package of the product shares: its names, its version and its files."""
import os
import re
import struct
import subprocess
import sys
import uuid
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
MAKER = "Quillon"
NAME = "DepotIntr"
TITLE = "DepotIntr for x64"

# The origin of every identifier that an installer needs. It never changes: the identifiers of parts
# and of the line of upgrades follow from it.
NAMESPACE = uuid.UUID("a2ad9e2a-3c57-4a5c-8a5c-5b1a8b0fd1c4")

# What reaches users. The stand-in is a part of its own: where the product's library is installed it
# must not be in the way.
COMPONENT = ("DepotIntr.dll", "DepotBrowser.dll")
STAND_IN = "qdirsvc.dll"
PLAIN_TEXTS = "DepotIntr.NLS"
TOOL = "depotctl.exe"

# What every package holds beside the programs: its name there, and the file in this tree.
DOCUMENTS = {"LICENSE.txt": "LICENSE", "CHANGELOG.md": "CHANGELOG.md"}

# Where the list of installed programs leads to.
LINK = os.environ.get("DEPOTINTR_LINK", "https://depotintr.example/")


def identifier(*parts):
    """An identifier in the notation of an installer, the same for the same parts."""
    return "{" + str(uuid.uuid5(NAMESPACE, "/".join(parts))).upper() + "}"


def file_version(path):
    """The four numbers of a library's version resource; None without one."""
    image = Path(path).read_bytes()
    start = image.find(struct.pack("<II", 0xFEEF04BD, 0x00010000))
    if start < 0:
        return None
    high, low = struct.unpack_from("<II", image, start + 8)
    return high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF


def package_version(folder):
    """Installers compare three numbers only, so the last one is the build, which grows with every
    release."""
    major, minor, _, build = file_version(Path(folder) / "DepotIntr.dll")
    return f"{major}.{minor}.{build}"


def runtime_files(folder):
    """The names of the files in a folder that the component needs at run time, and of the tool."""
    present = sorted(os.listdir(folder), key=str.lower)
    wanted = {*COMPONENT, STAND_IN, TOOL}
    return [name for name in present if name in wanted or name.lower().endswith(".nls")]


def package_files(folder):
    """The same with the documents, each with the place to take it from."""
    files = {name: Path(folder) / name for name in runtime_files(folder)}
    files.update((name, REPOSITORY / source) for name, source in DOCUMENTS.items())
    return dict(sorted(files.items(), key=lambda item: item[0].lower()))


def languages():
    """The codes of the languages that the product has texts in, in their order."""
    rows = (REPOSITORY / "src/config/languages.h").read_text()
    return re.findall(r'^    \{"([a-z]+)", ', rows, re.MULTILINE)


def source_date():
    """The moment that packages carry: that of the commit, so that every build of it is the same."""
    given = os.environ.get("SOURCE_DATE_EPOCH")
    if given:
        return int(given)
    log = subprocess.run(["git", "-C", str(REPOSITORY), "log", "-1", "--format=%ct"],
                         capture_output=True, text=True, check=True)
    return int(log.stdout)


if __name__ == "__main__":
    print(package_version(sys.argv[1]))
