"""Runs every sample client on the sample depots and compares all that it prints."""
import unittest

from packages import BUILD, INSTALLER, InstallationTest
from windows import REPOSITORY

SHARED = """\
Default depot:  <Work>\\
Kept in:        C:\\DepotSamples\\Work\\Sessions\\office.kre
"""
VALUES = """\
[PROFILE] Title: {Order entry - main office}
[Host] Name: {orders.example.test}
[Screen] Font: {Terminal Sans}
[Keyboard] Layout: {de-DE}
[Host] Port:    992
[Notes] Indented: {   three blanks before}
[Notes] Quoted: {"in double quotes"}
"""
END = "Session ended.\n"
ANYWHERE = """\
Work is Work profiles, reachable: True
There: True
Copied: 2 files
<Work>\\Copies\\Sessions\\office.kre
<Work>\\Copies\\Sessions\\warehouse.kre
Moved in June
Failed with 80
"""


class SamplesTest(InstallationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.windows.add(INSTALLER, "C:\\depots.msi")
        assert cls.windows.installer("/i", "C:\\depots.msi", "ADDLOCAL=ALL") == 0

    def setUp(self):
        # Each client writes into the profile and starts with the one that is shipped.
        self.windows.define_sample_depots()

    def script(self, name):
        self.windows.add(REPOSITORY / "samples" / name, f"C:\\{name}")
        return self.windows.script(f"C:\\{name}")

    def program(self, name):
        self.windows.add(BUILD / "bin" / name, f"C:\\{name}")
        return self.windows.run(f"C:\\{name}")

    def test_vbscript_client_of_the_second_interface(self):
        self.assertEqual((0, ANYWHERE + END), self.script("anywhere.vbs"))

    def test_vbscript_client(self):
        code, output = self.script("first.vbs")
        self.assertEqual(0, code)
        lines = output.splitlines(True)
        self.assertEqual(SHARED + VALUES, "".join(lines[:9]))
        self.assertRegex(lines[9], r"^Shared depot:   <.+>\\$")
        self.assertRegex(lines[10], r"^Its folder:     .+\\Shared\\eng\\any\.kre$")
        self.assertEqual([END], lines[11:])

    def test_jscript_client(self):
        self.assertEqual((0, SHARED + "[Host] Port:    992\n[Screen] Rows:  27\n[Screen] Zoom:  100\n"
                             "[Screen] Zoom:  150\n" + END), self.script("first.js"))

    def test_cpp_client_through_virtual_functions(self):
        self.assertEqual((0, SHARED + VALUES + END), self.program("first.exe"))

    def test_cpp_client_through_names(self):
        self.assertEqual((0, "Default depot:  <Work>\\\n[PROFILE] Title: {Order entry - main office}\n"
                             "[Host] Name: {orders.example.test}\n[Keyboard] Language: {(not set)}\n"
                             "[Host] Port:    992\n[Notes] Late: {written by name}\n" + END),
                         self.program("late.exe"))
        profile = self.windows.path("C:\\DepotSamples\\Work\\Sessions\\office.kre").read_text("cp1252")
        self.assertIn("Late=written by name", profile)


if __name__ == "__main__":
    unittest.main()
