"""Installs the component for one user, who is no administrator."""
import contextlib
import subprocess
import unittest

import packages
from packages import DIST, VERSION, InstallationTest, product
from windows import REPOSITORY

USER_INSTALLER = DIST / f"DepotIntr-{VERSION}-x64-user.msi"
PACKAGE, MACHINE_PACKAGE = "C:\\user.msi", "C:\\machine.msi"
CLIENT = "C:\\client.vbs"
CLASSES = "Software\\Classes"
# The emulator lists programs of one user with those of the machine.
UNINSTALL_LISTS = [f"{hive}\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall"
                   for hive in ("HKCU", "HKLM")]
DONE = 0


def below(export, root):
    """The values of an export below a key: (key without the root, line), names in any letter case."""
    key, found = "", set()
    for line in export.replace("\\\n  ", "").split("\n"):
        if line.startswith("["):
            key = line.strip("[]").lower().removeprefix(root.lower())
        elif line:
            found.add((key, packages.IDENTIFIER.sub(lambda m: m[0].lower(), line)))
    return found


class UserPackageTest(InstallationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.windows.add(USER_INSTALLER, PACKAGE)
        cls.windows.add(packages.INSTALLER, MACHINE_PACKAGE)
        cls.windows.add(REPOSITORY / "tests/install/client.vbs", CLIENT)
        cls.windows.define_sample_depots()
        user = next(p.name for p in cls.windows.path("C:\\users").iterdir() if p.name != "Public")
        cls.folder = f"C:\\users\\{user}\\AppData\\Local\\Programs\\Quillon\\DepotIntr"

    def tearDown(self):
        for package in (PACKAGE, MACHINE_PACKAGE):
            self.windows.installer("/x", package)

    def install(self):
        self.assertEqual(DONE, self.windows.installer("/i", PACKAGE, "ADDLOCAL=ALL"))

    def registered(self, root, hive):
        """What is registered of the component in one hive."""
        keys = {f"\\{key.lower()}" for key in packages.keys_below_classes()}
        return {(key, line) for key, line in below(self.windows.registry(f"{root}\\{CLASSES}"),
                                                   f"{hive}\\{CLASSES}")
                if any(key == own or key.startswith(own + "\\") for own in keys)}

    def listed_programs(self):
        return "".join(map(self.windows.registry, UNINSTALL_LISTS))

    @contextlib.contextmanager
    def classes_of_the_user_seen(self):
        """Programs see the user's classes among all classes, as on Windows; the emulator does not merge the
        two."""
        text = self.windows.registry(f"HKCU\\{CLASSES}")
        merged = text.replace("HKEY_CURRENT_USER\\Software\\Classes", "HKEY_LOCAL_MACHINE\\Software\\Classes")
        self.windows.path("C:\\merged.reg").write_bytes(merged.replace("\n", "\r\n").encode("utf-16"))
        self.assertEqual(0, self.windows.run("reg.exe", "import", "C:\\merged.reg")[0])
        try:
            yield
        finally:
            for key in set(packages.keys_below_classes()):
                self.windows.run("reg.exe", "delete", f"HKLM\\{CLASSES}\\{key}", "/f")

    def assert_client_works(self):
        self.assertEqual((0, "orders.example.test\nend\n"), self.windows.script(CLIENT))

    def test_package_asks_for_no_administrator(self):
        summary = subprocess.run(["msiinfo", "suminfo", str(USER_INSTALLER)], capture_output=True, text=True,
                                 check=True).stdout
        source = next(line for line in summary.splitlines() if line.startswith("Source:"))
        self.assertTrue(int(source.split()[1]) & 8, summary)
        properties = subprocess.run(["msiinfo", "export", str(USER_INSTALLER), "Property"], capture_output=True,
                                    text=True, check=True).stdout
        self.assertNotIn("ALLUSERS\t", properties)

    def test_nothing_is_written_for_the_machine(self):
        before = {hive: self.windows.registry(hive) for hive in ("HKLM\\Software\\Classes",
                                                                "HKLM\\Software\\Quillon",
                                                                "HKLM\\System\\CurrentControlSet\\Services")}
        self.install()
        for hive, text in before.items():
            self.assertEqual(text, self.windows.registry(hive), hive)
        self.assertFalse(self.windows.path("C:\\Program Files\\Quillon").exists())

    def test_installed_files_are_all_run_time_files(self):
        self.install()
        files = {path.name: path.read_bytes() for path in self.windows.path(self.folder).iterdir()}
        self.assertEqual({name: source.read_bytes()
                          for name, source in product.package_files(DIST / "bin").items()}, files)

    def test_installed_component_serves_a_script_and_the_tool(self):
        self.assertNotIn("end", self.windows.script(CLIENT)[1])
        self.install()
        with self.classes_of_the_user_seen():
            self.assert_client_works()
            code, output = self.windows.run(f"{self.folder}\\depotctl.exe", "check", "Work")
            self.assertEqual(0, code, output)
            self.assertIn("  ok           registration: ", output)
        with self.windows.speaking("de_DE"):
            output = self.windows.run(f"{self.folder}\\depotctl.exe", "check", "Work")[1]
        self.assertIn("depotintr.deu.nls", output)

    def test_registration_is_what_regsvr32_writes_for_the_machine(self):
        self.install()
        installed = self.registered("HKCU", "HKEY_CURRENT_USER")
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        for name in product.runtime_files(DIST / "bin"):
            self.windows.add(DIST / "bin" / name, f"{self.folder}\\{name}")
        for name in product.COMPONENT:
            self.assertEqual(0, self.windows.run("regsvr32.exe", "/s", f"{self.folder}\\{name}")[0])
        registered = self.registered("HKLM", "HKEY_LOCAL_MACHINE")
        for name in product.COMPONENT:
            self.windows.run("regsvr32.exe", "/s", "/u", f"{self.folder}\\{name}")
        # Where the help is, of which there is none, may end in a backslash. The emulator adds marshallers for
        # programs of 16 bits, and says in the flags that the library has a file.
        plain = [{(key, line.lower().replace('\\\\"', '"')) for key, line in values
                  if not key.endswith(("\\proxystubclsid", "\\flags"))} for values in (registered, installed)]
        self.assertEqual(*plain)

    def test_removal_leaves_nothing(self):
        self.install()
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        self.assertEqual(set(), self.registered("HKCU", "HKEY_CURRENT_USER"))
        self.assertFalse(self.windows.path(self.folder).exists())
        self.assertNotIn("DepotIntr", self.listed_programs())
        self.assertEqual("", self.windows.registry("HKCU\\Software\\Quillon\\DepotIntr"))

    def test_list_of_programs_has_an_entry_of_the_user(self):
        self.install()
        entry = self.listed_programs()
        self.assertIn('"DisplayName"="DepotIntr for x64 (one user)"', entry)
        self.assertIn(f'"DisplayVersion"="{VERSION}"', entry)
        self.assertIn(f'"URLInfoAbout"="{product.LINK}"', entry)

    def test_both_packages_stand_beside_each_other(self):
        self.assertEqual(DONE, self.windows.installer("/i", MACHINE_PACKAGE, "ADDLOCAL=ALL"))
        self.assert_client_works()
        self.install()
        self.assert_client_works()
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        self.assert_client_works()


if __name__ == "__main__":
    unittest.main()
