#!/usr/bin/env python3
"""hardening_test.py BIN NM: checks how what is shipped was linked, in the folder BIN of the build."""
import struct
import subprocess
import sys
import unittest
from pathlib import Path

CODE = ("DepotIntr.dll", "DepotBrowser.dll", "qdirsvc.dll", "depotctl.exe")
HIGH_ENTROPY_VA, DYNAMIC_BASE, NX_COMPAT = 0x20, 0x40, 0x100
RELOCATIONS_STRIPPED = 0x1
BIN, NM = Path(), ""


class Image:
    def __init__(self, path):
        data = path.read_bytes()
        header = struct.unpack_from("<I", data, 0x3C)[0]
        self.characteristics = struct.unpack_from("<H", data, header + 22)[0]
        optional = header + 24
        assert struct.unpack_from("<H", data, optional)[0] == 0x20B
        self.entry = struct.unpack_from("<I", data, optional + 16)[0]
        self.flags = struct.unpack_from("<H", data, optional + 70)[0]
        self.relocations = struct.unpack_from("<I", data, optional + 112 + 5 * 8 + 4)[0]
        self.data = data


def texts():
    return sorted(path.name for path in BIN.iterdir() if path.suffix.lower() == ".nls")


class HardeningTest(unittest.TestCase):
    def test_memory_is_laid_out_at_random_and_data_never_runs(self):
        self.assertGreater(len(texts()), 1)
        for name in (*CODE, *texts()):
            for flag in (HIGH_ENTROPY_VA, DYNAMIC_BASE, NX_COMPAT):
                self.assertTrue(Image(BIN / name).flags & flag, f"{name} {flag:#x}")

    def test_code_can_be_moved(self):
        for name in CODE:
            image = Image(BIN / name)
            self.assertFalse(image.characteristics & RELOCATIONS_STRIPPED, name)
            self.assertGreater(image.relocations, 0, name)

    def test_overrun_of_the_stack_ends_the_process(self):
        for name in CODE:
            symbols = subprocess.run([NM, BIN / name], capture_output=True, text=True, check=True).stdout
            self.assertIn(" __stack_chk_fail\n", symbols, name)
            self.assertIn(" __stack_chk_guard\n", symbols, name)

    def test_libraries_of_texts_start_no_code(self):
        for name in texts():
            self.assertEqual(0, Image(BIN / name).entry, name)

    def test_libraries_are_loaded_with_a_search_of_their_own_only(self):
        for name in CODE:
            # LoadLibraryW is the run-time library's, which names a library that every process has.
            self.assertFalse(b"\0LoadLibraryA\0" in Image(BIN / name).data, name)
        self.assertTrue(b"SetDefaultDllDirectories\0" in Image(BIN / "depotctl.exe").data)


if __name__ == "__main__":
    NM = sys.argv.pop()
    BIN = Path(sys.argv.pop())
    unittest.main()
