"""Installs, upgrades, repairs and removes the component with the system's installer."""
import shutil
import tempfile
import unittest
from pathlib import Path

import packages
from packages import DIST, INSTALLER, InstallationTest, product, registration_in
from windows import REPOSITORY

FOLDER = "C:\\Program Files\\Quillon\\DepotIntr"
PACKAGE = "C:\\depots.msi"
LATER = "C:\\later.msi"
CLIENT = "C:\\client.vbs"
DONE, REFUSED, DONE_AFTER_RESTART = 0, 1603 & 0xFF, 3010 & 0xFF
EVENT_SOURCE = "HKLM\\System\\CurrentControlSet\\Services\\EventLog\\Application\\DepotIntr"
UNINSTALL_LIST = "HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall"


def later_installer():
    folder = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(folder.cleanup)
    return packages.make_later_installer(Path(folder.name))


def values_of(export):
    """The lines of an export that hold anything; keys without values are not among them."""
    key, found = "", set()
    for line in export.split("\n"):
        if line.startswith("["):
            key = line
        elif line:
            found.add((key, line))
    return found


def expandable_text(export, name):
    """A REG_EXPAND_SZ of an export, where it stands as bytes."""
    text = export.replace("\\\n", "").split(f'"{name}"=hex(2):')[1].split("\n")[0]
    data = bytes(int(byte, 16) for byte in text.replace(" ", "").split(","))
    return data.decode("utf-16-le").rstrip("\0")


class InstallerTest(InstallationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.windows.add(INSTALLER, PACKAGE)
        cls.windows.add(later_installer(), LATER)
        cls.windows.add(REPOSITORY / "tests/install/client.vbs", CLIENT)
        cls.windows.define_sample_depots()

    def tearDown(self):
        # The installer keeps a copy of the package of everything that is installed.
        if list(self.windows.path("C:\\windows\\Installer").glob("*.msi")):
            for package in (PACKAGE, LATER):
                self.windows.installer("/x", package)
        shutil.rmtree(self.windows.path("C:\\Program Files\\Quillon"), ignore_errors=True)

    def install(self, *properties):
        """Installs everything, as where the product itself is not installed."""
        self.install_plainly("ADDLOCAL=ALL", *properties)

    def install_plainly(self, *properties):
        self.assertEqual(DONE, self.windows.installer("/i", PACKAGE, *properties))

    def upgrade(self, *properties):
        return self.windows.installer("/i", LATER, *properties)

    def installed(self, folder=FOLDER):
        path = self.windows.path(folder)
        return sorted(p.name for p in path.iterdir()) if path.exists() else []

    def installed_version(self):
        return product.file_version(self.windows.path(FOLDER) / "DepotIntr.dll")

    def listed_versions(self):
        return [line.split('"')[3] for line in self.windows.registry(UNINSTALL_LIST).split("\n")
                if line.startswith('"DisplayVersion"="13.')]

    def check(self):
        """What the installed tool says of the installation and of one depot."""
        return self.windows.run(f"{FOLDER}\\depotctl.exe", "check", "Work")

    def assert_client_works(self):
        self.assertEqual((0, "orders.example.test\nend\n"), self.windows.script(CLIENT))

    def assert_nothing_registered(self):
        self.assertEqual({}, {k: v for k, v in registration_in(self.windows).items() if v})

    def test_installed_files_are_all_run_time_files(self):
        self.install()
        self.assertEqual(sorted(product.package_files(DIST / "bin")), self.installed())
        for name, source in product.package_files(DIST / "bin").items():
            self.assertEqual(source.read_bytes(),
                             (self.windows.path(FOLDER) / name).read_bytes(), name)

    def test_list_of_programs_says_what_is_installed_and_where(self):
        folder = "C:\\Depots\\Component"
        self.install(f"INSTALLDIR={folder}")
        (entry,) = [block for block in self.windows.registry(UNINSTALL_LIST).split("\n\n")
                    if f'"DisplayName"="{product.TITLE}"' in block]
        place = folder.replace("\\", "\\\\") + "\\\\"
        for line in (f'"DisplayVersion"="{packages.VERSION}"', f'"InstallLocation"="{place}"',
                     f'"Publisher"="{product.MAKER}"', f'"HelpLink"="{product.LINK}"',
                     f'"URLInfoAbout"="{product.LINK}"'):
            self.assertIn(line, entry)

    def test_licence_and_changes_are_installed(self):
        self.install()
        for name, source in product.DOCUMENTS.items():
            self.assertEqual((REPOSITORY / source).read_bytes(),
                             (self.windows.path(FOLDER) / name).read_bytes())

    def test_installed_component_serves_a_script(self):
        self.assertNotIn("end", self.windows.script(CLIENT)[1])
        self.install()
        self.assert_client_works()

    def test_installation_registers_what_regsvr32_registers(self):
        self.install()
        installed = registration_in(self.windows)
        self.assertNotIn("", installed.values())
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        for name in product.runtime_files(DIST / "bin"):
            self.windows.add(DIST / "bin" / name, f"{FOLDER}\\{name}")
        for name in product.COMPONENT:
            self.assertEqual(0, self.windows.run("regsvr32.exe", "/s", f"{FOLDER}\\{name}")[0])
        registered = registration_in(self.windows)
        for name in product.COMPONENT:
            self.windows.run("regsvr32.exe", "/s", "/u", f"{FOLDER}\\{name}")
        self.assertEqual(registered, installed)

    def test_source_of_the_event_log_is_the_installers_alone(self):
        self.assertEqual("", self.windows.registry(EVENT_SOURCE))
        folder = "C:\\Depots\\Component"
        self.install(f"INSTALLDIR={folder}")
        entry = self.windows.registry(EVENT_SOURCE)
        self.assertIn('"TypesSupported"=dword:00000007', entry)
        self.assertEqual(f"{folder}\\DepotIntr.NLS", expandable_text(entry, "EventMessageFile"))
        self.assertEqual(DONE, self.upgrade())
        self.assertEqual(entry, self.windows.registry(EVENT_SOURCE))
        self.assertEqual(DONE, self.windows.installer("/x", LATER))
        self.assertEqual("", self.windows.registry(EVENT_SOURCE))
        for name in product.runtime_files(DIST / "bin"):
            self.windows.add(DIST / "bin" / name, f"C:\\ByHand\\{name}")
        self.assertEqual(0, self.windows.run("regsvr32.exe", "/s", "C:\\ByHand\\DepotIntr.dll")[0])
        self.assertEqual("", self.windows.registry(EVENT_SOURCE))
        self.windows.run("regsvr32.exe", "/s", "/u", "C:\\ByHand\\DepotIntr.dll")

    def test_removal_leaves_nothing(self):
        hives = ("HKLM\\Software", "HKLM\\System", "HKCU\\Software")
        self.windows.run("cscript.exe", "//nologo", CLIENT)
        registry = {hive: values_of(self.windows.registry(hive)) for hive in hives}
        self.install()
        self.assert_client_works()
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        for hive in hives:
            left = values_of(self.windows.registry(hive)) - registry[hive]
            self.assertEqual(set(), {entry for entry in left if "\\Wine\\" not in entry[0]})
        self.assert_nothing_registered()
        self.assertFalse(self.windows.path("C:\\Program Files\\Quillon").exists())

    def test_removal_keeps_depots_and_profiles(self):
        self.install()
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        self.assertIn("DepotSamples", self.windows.registry("HKCU\\Software\\Quillon\\Farrow\\Depots"))
        self.assertTrue(self.windows.path("C:\\DepotSamples\\Work\\Sessions\\office.kre").exists())

    def test_removal_keeps_a_folder_that_holds_other_files(self):
        self.install()
        other = self.windows.path("C:\\Program Files\\Quillon\\other.txt")
        other.write_text("another product's")
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        self.assertTrue(other.exists())

    def test_folder_is_the_administrators_choice(self):
        self.install("INSTALLDIR=C:\\Depots\\Component")
        self.assertIn("DepotIntr.dll", self.installed("C:\\Depots\\Component"))
        self.assertEqual([], self.installed())
        self.assert_client_works()

    def test_stand_in_is_installed_on_demand_only(self):
        self.install_plainly()
        self.assertIn("DepotIntr.dll", self.installed())
        self.assertNotIn("qdirsvc.dll", self.installed())

    def test_stand_in_gives_way_to_the_products_own_library(self):
        own = self.windows.path("C:\\windows\\system32\\qdirsvc.dll")
        own.write_bytes((DIST / "bin/qdirsvc.dll").read_bytes())
        self.addCleanup(own.unlink)
        self.install()
        self.assertNotIn("qdirsvc.dll", self.installed())

    def test_upgrade_keeps_the_folder_and_the_stand_in(self):
        folder = "C:\\Depots\\Component"
        self.install(f"INSTALLDIR={folder}")
        self.assertEqual(DONE, self.upgrade())
        self.assertIn("DepotIntr.dll", self.installed(folder))
        self.assertIn("qdirsvc.dll", self.installed(folder))
        self.assertEqual([], self.installed())
        self.assert_client_works()

    def test_upgrade_does_not_bring_the_stand_in(self):
        self.install_plainly()
        self.assertEqual(DONE, self.upgrade())
        self.assertIn("DepotIntr.dll", self.installed())
        self.assertNotIn("qdirsvc.dll", self.installed())

    def test_users_of_every_language_get_their_texts(self):
        self.install()
        for locale, language in (("de_DE", "deu"), ("ja_JP", "jpn"), ("fr_CA", "fra"), ("fi_FI", "eng")):
            with self.subTest(locale):
                with self.windows.speaking(locale):
                    output = self.check()[1]
                self.assertIn(f"depotintr.{language}.nls", output)

    def test_list_of_languages_of_the_product_stays(self):
        key = "HKLM\\Software\\Quillon\\Farrow\\13.00\\Locale"
        self.windows.run("reg.exe", "add", key, "/v", "Available UI Languages", "/d", "eng ita", "/f")
        self.addCleanup(self.windows.run, "reg.exe", "delete", key, "/f")
        self.install()
        self.assertEqual(DONE, self.upgrade())
        self.assertIn('"Available UI Languages"="eng ita"', self.windows.registry(key))
        self.assertEqual(DONE, self.windows.installer("/x", LATER))
        self.assertIn('"Available UI Languages"="eng ita"', self.windows.registry(key))

    def test_upgrade_keeps_the_list_of_languages(self):
        self.install()
        self.assertEqual(DONE, self.upgrade())
        key = "HKLM\\Software\\Quillon\\Farrow\\13.00\\Locale"
        self.assertIn('"Available UI Languages"="eng fra deu', self.windows.registry(key))

    def test_folder_that_ordinary_users_write_to_is_refused(self):
        user = next(p.name for p in self.windows.path("C:\\users").iterdir() if p.name != "Public")
        for folder in ("C:\\users\\Public\\DepotIntr", f"C:\\users\\{user}\\AppData\\Local\\DepotIntr",
                       "C:\\ProgramData\\DepotIntr", f"C:\\Users\\{user}\\Documents\\x"):
            with self.subTest(folder):
                self.assertEqual(REFUSED, self.windows.installer("/i", PACKAGE, f"INSTALLDIR={folder}"))
                self.assertFalse(self.windows.path(folder).exists())
        self.assert_nothing_registered()

    def test_installed_tool_finds_everything_in_order(self):
        self.install()
        code, output = self.check()
        self.assertEqual(0, code, output)
        for step in ("registration", "dialogs", "user folder", "texts"):
            self.assertIn(f"  ok           {step}: ", output)
        self.assertIn("<Work>, defined for the user", output)

    def test_tool_names_what_a_half_removed_installation_lacks(self):
        losses = {"DepotIntr.dll": "which is not there", "qdirsvc.dll": "qdirsvc.dll is neither",
                  "DepotIntr.NLS": "DepotIntr.NLS\" is not there",
                  "DepotBrowser.dll": "dialogs: they are registered as"}
        for name, words in losses.items():
            with self.subTest(name):
                self.install()
                self.windows.path(f"{FOLDER}\\{name}").unlink()
                code, output = self.check()
                self.assertEqual(1, code, output)
                self.assertIn(words, output)
                self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))

    def test_upgrade_replaces_the_older_version(self):
        self.install()
        older = self.installed_version()
        self.assertEqual([packages.VERSION], self.listed_versions())
        self.assertEqual(DONE, self.upgrade())
        self.assertEqual((*older[:3], older[3] + 1), self.installed_version())
        self.assertEqual([f"13.0.{older[3] + 1}"], self.listed_versions())
        self.assertNotIn("", registration_in(self.windows).values())
        self.assert_client_works()

    def test_upgraded_component_is_removed_without_a_trace(self):
        self.install()
        self.upgrade()
        self.assertEqual(DONE, self.windows.installer("/x", LATER))
        self.assert_nothing_registered()
        self.assertEqual([], self.installed())

    def test_older_version_does_not_replace_a_newer_one(self):
        self.assertEqual(DONE, self.upgrade("ADDLOCAL=ALL"))
        newer = self.installed_version()
        self.assertEqual(REFUSED, self.windows.installer("/i", PACKAGE))
        self.assertEqual(newer, self.installed_version())
        self.assert_client_works()

    def test_upgrade_while_a_client_runs_leaves_that_client_working(self):
        self.install()
        older = self.installed_version()
        client = self.windows.start("cscript.exe", "//nologo", CLIENT, "C:\\stop")
        self.assertEqual(b"orders.example.test\r\n", client.stdout.readline())
        self.assertEqual(DONE_AFTER_RESTART, self.upgrade())
        self.assertIn("it waits for the next start of Windows", self.check()[1])
        self.windows.path("C:\\stop").write_text("")
        self.assertEqual(b"Order entry - main office\r\nend\r\n", client.stdout.read())
        client.stdout.close()
        client.wait(10)
        self.windows.restart()
        self.assertEqual(older[3] + 1, self.installed_version()[3])
        self.assertNotIn("next start of Windows", self.check()[1])
        self.assertEqual(sorted(product.package_files(DIST / "bin")), self.installed())
        self.assert_client_works()

    def test_missing_files_are_repaired(self):
        self.install()
        self.windows.path(f"{FOLDER}\\DepotIntr.dll").unlink()
        self.windows.path(f"{FOLDER}\\DepotIntr.NLS").unlink()
        self.assertNotIn("end", self.windows.script(CLIENT)[1])
        self.assertEqual(DONE, self.windows.installer("/i", PACKAGE, "REINSTALL=ALL", "REINSTALLMODE=amus"))
        self.assertIn("DepotIntr.NLS", self.installed())
        self.assert_client_works()

    def test_missing_keys_are_repaired(self):
        self.install()
        complete = registration_in(self.windows)
        for key in ("CLSID\\{38A373C9-E31B-4505-A763-B14081A1332B}", "DepotIntr.DepotIntrApi",
                    "TypeLib\\{F83FE105-A22E-4399-9B89-1A6C8CB957DD}"):
            self.assertEqual(0, self.windows.run("reg.exe", "delete", f"HKCR\\{key}", "/f")[0])
        self.assertEqual(DONE, self.windows.installer("/i", PACKAGE, "REINSTALL=ALL", "REINSTALLMODE=amus"))
        self.assertEqual(complete, registration_in(self.windows))
        self.assert_client_works()

    def test_installation_without_its_files_is_removed(self):
        self.install()
        for name in self.installed():
            self.windows.path(f"{FOLDER}\\{name}").unlink()
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        self.assert_nothing_registered()
        self.assertEqual([], self.listed_versions())

    def test_installation_without_its_keys_is_removed(self):
        self.install()
        for key in set(packages.keys_below_classes()):
            self.windows.run("reg.exe", "delete", f"HKCR\\{key}", "/f")
        self.assertEqual(DONE, self.windows.installer("/x", PACKAGE))
        self.assert_nothing_registered()
        self.assertEqual([], self.installed())

    def test_component_registered_by_hand_is_taken_over(self):
        for name in product.runtime_files(DIST / "bin"):
            self.windows.add(DIST / "bin" / name, f"C:\\ByHand\\{name}")
        self.assertEqual(0, self.windows.run("regsvr32.exe", "/s", "C:\\ByHand\\DepotIntr.dll")[0])
        self.install()
        server = registration_in(self.windows)["clsid\\{38a373c9-e31b-4505-a763-b14081a1332b}"]
        self.assertIn(FOLDER.replace("\\", "\\\\"), server)
        self.assertNotIn("ByHand", server)
        self.assert_client_works()


if __name__ == "__main__":
    unittest.main()
