"""Checks the list of contents, the symbols, and that packages are the same in every run."""
import hashlib
import json
import os
import re
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

from packages import BUILD, DIST, product
from windows import REPOSITORY

LIBRARIES = ("DepotIntr.dll", "DepotBrowser.dll", "qdirsvc.dll")


def files_in(folder):
    return {path.relative_to(folder).as_posix(): path for path in Path(folder).rglob("*")
            if path.is_file()}


def cross(tool, *arguments):
    return subprocess.run([f"x86_64-w64-mingw32-{tool}", *map(str, arguments)], capture_output=True,
                          text=True, check=True).stdout


class ContentsTest(unittest.TestCase):
    def setUp(self):
        self.list = json.loads((DIST / "contents.cdx.json").read_text())
        self.components = {entry["name"]: entry for entry in self.list["components"]}

    def test_list_is_one_of_cyclonedx(self):
        self.assertEqual(("CycloneDX", "1.5", 1),
                         (self.list["bomFormat"], self.list["specVersion"], self.list["version"]))
        self.assertRegex(self.list["serialNumber"], r"^urn:uuid:[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$")
        references = [entry["bom-ref"] for entry in self.list["components"]]
        self.assertEqual(len(references), len(set(references)))
        for entry in self.list["dependencies"]:
            self.assertLessEqual({entry["ref"], *entry["dependsOn"]}, {"DepotIntr", *references})

    def test_every_file_is_listed_with_its_hash(self):
        files = files_in(DIST)
        del files["contents.cdx.json"]
        listed = {name for name, entry in self.components.items() if entry["type"] == "file"}
        self.assertEqual(set(files), listed)
        for name, path in files.items():
            self.assertEqual([{"alg": "SHA-256", "content": hashlib.sha256(path.read_bytes()).hexdigest()}],
                             self.components[name]["hashes"], name)

    def test_every_entry_has_a_version_and_a_licence(self):
        for name, entry in self.components.items():
            self.assertRegex(entry["version"], r"^\d", name)
            self.assertTrue(entry["licenses"], name)
        self.assertEqual("13.0.0.208", self.components["bin/DepotIntr.dll"]["version"])

    def test_licence_is_that_of_the_tree(self):
        text = (REPOSITORY / "LICENSE").read_bytes()
        self.assertTrue(text.startswith(b"MIT License\n"))
        self.assertEqual(text, (DIST / "LICENSE.txt").read_bytes())
        self.assertEqual((REPOSITORY / "CHANGELOG.md").read_bytes(), (DIST / "CHANGELOG.md").read_bytes())
        self.assertEqual([{"license": {"id": "MIT"}}], self.components["bin/DepotIntr.dll"]["licenses"])
        self.assertEqual([{"license": {"id": "MIT"}}], self.list["metadata"]["component"]["licenses"])

    def test_every_program_and_library_carries_the_version(self):
        for name in product.runtime_files(DIST / "bin"):
            self.assertEqual((13, 0, 0, 208), product.file_version(DIST / "bin" / name), name)

    def test_run_time_libraries_inside_are_listed(self):
        for entry in self.list["dependencies"]:
            if entry["ref"].startswith("bin/"):
                self.assertLessEqual({"libstdc++ and libgcc", "mingw-w64 runtime", "winpthreads"},
                                     set(entry["dependsOn"]))
        self.assertEqual("file" if "bin/depotctl.exe" in self.components else None,
                         self.components.get("bin/depotctl.exe", {}).get("type"))
        self.assertEqual("bin/depotctl.exe" in self.components, "CLI11" in self.components)


class SymbolsTest(unittest.TestCase):
    def test_libraries_name_their_symbol_files(self):
        for library in LIBRARIES:
            headers = cross("objdump", "-p", DIST / "bin" / library)
            stem = library.removesuffix(".dll")
            signature = re.search(r"RSDS signature ([0-9a-f]{32}) age 1 pdb (\S+?)\)", headers)
            self.assertEqual(f"{stem}.pdb", signature[2])
            # The file tells the same identifier, with its first three numbers in this order of bytes.
            plain = bytes.fromhex(signature[1])
            stored = struct.pack("<IHH", *struct.unpack(">IHH", plain[:8])) + plain[8:]
            pdb = (DIST / "bin" / f"{stem}.pdb").read_bytes()
            self.assertTrue(pdb.startswith(b"Microsoft C/C++ MSF 7.00\r\n"), library)
            self.assertTrue(plain in pdb or stored in pdb, library)
            self.assertIn(f"{stem}.debug\0".encode(), (DIST / "bin" / library).read_bytes())

    def test_symbols_name_functions_and_lines(self):
        names = cross("nm", "-C", DIST / "bin/DepotIntr.debug")
        address = re.search(r"^([0-9a-f]+) T DllGetClassObject$", names, re.M)[1]
        place = cross("addr2line", "-e", DIST / "bin/DepotIntr.debug", address)
        self.assertRegex(place, r"\bsrc/com/entry_points\.cpp:\d+")
        self.assertIn(b"DllGetClassObject", (DIST / "bin/DepotIntr.pdb").read_bytes())

    def test_shipped_libraries_hold_no_symbols_and_no_paths(self):
        for library in LIBRARIES:
            self.assertNotIn(".debug_info", cross("objdump", "-h", DIST / "bin" / library))
            self.assertNotIn(str(REPOSITORY).encode(), (DIST / "bin" / library).read_bytes())


class ReproductionTest(unittest.TestCase):
    def test_packages_are_the_same_in_every_run(self):
        with tempfile.TemporaryDirectory() as folder:
            environment = {**os.environ, "TZ": "Pacific/Auckland"}
            subprocess.run([REPOSITORY / "tools/dist", folder + "/dist", BUILD], check=True,
                           env=environment, stdout=subprocess.DEVNULL)
            first, second = files_in(DIST), files_in(folder + "/dist")
            self.assertEqual(set(first), set(second))
            for name in first:
                self.assertEqual(first[name].read_bytes(), second[name].read_bytes(), name)

    def test_packages_carry_the_date_that_is_asked_for(self):
        with tempfile.TemporaryDirectory() as folder:
            environment = {**os.environ, "SOURCE_DATE_EPOCH": "1500000000"}
            subprocess.run([REPOSITORY / "tools/dist", folder + "/dist", BUILD], check=True,
                           env=environment, stdout=subprocess.DEVNULL)
            listed = json.loads(Path(folder, "dist/contents.cdx.json").read_text())
            self.assertEqual("2017-07-14T02:40:00Z", listed["metadata"]["timestamp"])
            package = next(Path(folder, "dist").glob("*.msi"))
            summary = subprocess.run(["msiinfo", "suminfo", str(package)], capture_output=True, text=True,
                                     check=True, env={**os.environ, "TZ": "UTC"}).stdout
            self.assertEqual(2, summary.count("Jul 14 02:40:00 2017"), summary)

    def test_other_contents_make_another_package_code(self):
        with tempfile.TemporaryDirectory() as folder:
            codes = set()
            for extra in (b"", b"changed"):
                for name in product.runtime_files(DIST / "bin"):
                    (Path(folder) / name).write_bytes((DIST / "bin" / name).read_bytes() + extra)
                package = Path(folder) / "x.msi"
                subprocess.run([REPOSITORY / "tools/packaging/make_msi.py", folder, package, BUILD],
                               check=True)
                summary = subprocess.run(["msiinfo", "suminfo", str(package)], capture_output=True,
                                         text=True, check=True).stdout
                codes.add(re.search(r"UUID\): (\S+)", summary)[1])
            self.assertEqual(2, len(codes))


if __name__ == "__main__":
    unittest.main()
