"""The packages under test, and what they are expected to register."""
import os
import re
import struct
import sys
import unittest
from pathlib import Path

from windows import REPOSITORY, Windows

sys.path.insert(0, str(REPOSITORY / "tools/packaging"))
import make_msi  # noqa: E402
import product  # noqa: E402
import registration  # noqa: E402

DIST = Path(os.environ["DEPOTINTR_DIST"])
BUILD = Path(os.environ["DEPOTINTR_BUILD"])
VERSION = product.package_version(DIST / "bin")
INSTALLER = DIST / f"DepotIntr-{VERSION}-x64.msi"
PORTABLE = DIST / f"DepotIntr-{VERSION}-portable.zip"
IDENTIFIER = re.compile(r"\{[0-9A-Fa-f-]{36}\}")
SERVERS = registration.read_servers(REPOSITORY, BUILD)


def keys_below_classes():
    """Every key that the components register, the ones above left out."""
    for server in SERVERS:
        for value in server.values:
            parts = value.key.split("\\")
            yield "\\".join(parts[:2]) if parts[0] in ("CLSID", "AppID") else parts[0]
        yield f"TypeLib\\{server.type_library}"
        for _, interface in server.interfaces:
            yield f"Interface\\{interface}"


def registration_in(windows):
    """The registration: the text of each key with all below it, empty for a missing key. Identifiers are
    the same in any letter case."""
    texts = {key.lower(): "" for key in keys_below_classes()}
    root = "[HKEY_LOCAL_MACHINE\\Software\\Classes\\"
    first = {key.split("\\")[0] for key in texts}
    for block in windows.registry("HKLM\\Software\\Classes").split("\n\n"):
        path = block.split("]")[0].removeprefix(root).lower().split("\\")
        for parts in (1, 2) if path[0] in first else ():
            if "\\".join(path[:parts]) in texts:
                texts["\\".join(path[:parts])] += IDENTIFIER.sub(lambda m: m[0].lower(), block) + "\n"
    return texts


def later_library(source, target):
    """Writes a library that tells a version higher by one."""
    image = bytearray(source.read_bytes())
    start = image.find(struct.pack("<II", 0xFEEF04BD, 0x00010000))
    build = struct.unpack_from("<H", image, start + 12)[0]
    struct.pack_into("<H", image, start + 12, build + 1)
    target.write_bytes(image)


def make_later_installer(folder):
    """An installer of the next version, whose libraries tell that they are newer."""
    for name in product.runtime_files(DIST / "bin"):
        source = DIST / "bin" / name
        if name in product.COMPONENT:
            later_library(source, folder / name)
        else:
            (folder / name).write_bytes(source.read_bytes())
    package = folder / "later.msi"
    make_msi.make(folder, package, BUILD)
    return package


class InstallationTest(unittest.TestCase):
    """Gives the tests of a class a Windows environment of their own."""
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.windows = Windows()
        cls.addClassCleanup(cls.windows.close)
