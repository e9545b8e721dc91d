"""Builds the sample project against the packages, as an application's developer does, and runs it."""
import subprocess
import tempfile
import unittest
from pathlib import Path

from packages import DIST, VERSION, InstallationTest

FOLDER = "C:\\Component"
WRAPPED = """\
Depot:    Work profiles
Host:     orders.example.test
Port:     992
Copied:   1 of 1
Text:     Moved in June
Found:    <Work>\\Copies\\note.txt
Found:    <Work>\\Copies\\office.kre
Refused:  80
Session ended.
"""


class ClientPackageTest(InstallationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.work = Path(folder.name)
        cls.windows.define_sample_depots()

    def configure(self, name, *options, source=DIST / "samples/client"):
        return subprocess.run(
            ["cmake", "-G", "Ninja", "-S", str(source), "-B", str(self.work / name),
             f"-DCMAKE_TOOLCHAIN_FILE={DIST}/samples/client/mingw-w64.cmake",
             f"-DCMAKE_PREFIX_PATH={DIST}", *options], capture_output=True, text=True)

    def probe(self, name, *lines):
        """Configures a project of a few lines."""
        source = self.work / f"{name}-source"
        source.mkdir()
        (source / "main.cpp").write_text("#include <DepotIntr.h>\nint main() { return IID_IDepotIntrApi.Data1 == 0; }\n")
        (source / "CMakeLists.txt").write_text("\n".join(
            ("cmake_minimum_required(VERSION 3.21)", "project(Probe LANGUAGES CXX)", *lines)))
        return self.configure(name, source=source)

    def test_sample_project_is_built_and_runs(self):
        configured = self.configure("sample")
        self.assertEqual(0, configured.returncode, configured.stderr)
        built = subprocess.run(["cmake", "--build", str(self.work / "sample")], capture_output=True, text=True)
        self.assertEqual(0, built.returncode, built.stdout)
        self.windows.add(DIST / "bin", FOLDER)
        self.assertEqual(0, self.windows.run("regsvr32.exe", "/s", f"{FOLDER}\\DepotIntr.dll")[0])
        for client in ("first", "late"):
            self.windows.add(self.work / f"sample/{client}.exe", f"C:\\{client}.exe")
            code, output = self.windows.run(f"C:\\{client}.exe")
            self.assertEqual(0, code)
            self.assertIn("[Host] Name: {orders.example.test}\n", output)
            self.assertTrue(output.endswith("Session ended.\n"))
        self.windows.add(self.work / "sample/wrapped.exe", "C:\\wrapped.exe")
        self.assertEqual((0, WRAPPED), self.windows.run("C:\\wrapped.exe"))

    def test_package_tells_its_version_and_its_folders(self):
        found = self.probe("version", f"find_package(DepotIntr {VERSION} EXACT REQUIRED)",
                           'message(STATUS "found ${DepotIntr_VERSION} ${DepotIntr_RUNTIME_DIR}")')
        self.assertEqual(0, found.returncode, found.stderr)
        self.assertIn(f"found {VERSION} {DIST}/bin", found.stdout)

    def test_client_of_a_later_version_is_refused(self):
        refused = self.probe("later", "find_package(DepotIntr 99 REQUIRED)")
        self.assertNotEqual(0, refused.returncode)
        self.assertIn(VERSION, refused.stderr)

    def test_package_may_be_found_twice(self):
        found = self.probe("twice", "find_package(DepotIntr REQUIRED)", "find_package(DepotIntr REQUIRED)",
                           "add_executable(probe main.cpp)",
                           "target_link_libraries(probe DepotIntr::identifiers)")
        self.assertEqual(0, found.returncode, found.stderr)
        built = subprocess.run(["cmake", "--build", str(self.work / "twice")], capture_output=True, text=True)
        self.assertEqual(0, built.returncode, built.stdout)


if __name__ == "__main__":
    unittest.main()
