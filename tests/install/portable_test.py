"""Uses the component from the portable archive, without any registration."""
import subprocess
import unittest
import zipfile

import packages
from packages import BUILD, PORTABLE, InstallationTest, product, registration_in

FOLDER = "C:\\Portable"
WORKS = "[Host] Name: {orders.example.test}\n"


class PortableTest(InstallationTest):
    def setUp(self):
        self.windows.define_sample_depots()
        self.folder = self.windows.path(FOLDER)
        self.folder.mkdir(exist_ok=True)
        with zipfile.ZipFile(PORTABLE) as archive:
            archive.extractall(self.folder)
        for client in ("first", "late"):
            self.windows.add(BUILD / f"bin/{client}.exe", f"{FOLDER}\\{client}.exe")
            manifest = self.folder / "application.exe.manifest"
            (self.folder / f"{client}.exe.manifest").write_bytes(manifest.read_bytes())

    def run_client(self, client):
        return self.windows.run(f"{FOLDER}\\{client}.exe")

    def test_archive_holds_the_run_time_files_and_the_manifests(self):
        with zipfile.ZipFile(PORTABLE) as archive:
            manifests = [name for name in archive.namelist() if name.endswith(".manifest")]
            self.assertEqual(["application.exe.manifest", "Quillon.DepotBrowser.manifest",
                              "Quillon.DepotIntr.manifest"], manifests)
            for name, source in product.package_files(packages.DIST / "bin").items():
                self.assertEqual(source.read_bytes(), archive.read(name))

    def test_clients_find_the_class_without_registration(self):
        self.assertEqual(set(registration_in(self.windows).values()), {""})
        for client in ("first", "late"):
            code, output = self.run_client(client)
            self.assertEqual(0, code, output)
            self.assertIn(WORKS, output)
        self.assertEqual(set(registration_in(self.windows).values()), {""})

    def test_tool_works_from_the_folder(self):
        code, output = self.windows.run(f"{FOLDER}\\depotctl.exe", "get",
                                        "<Work>\\Sessions\\office.kre", "Host", "Name")
        self.assertEqual((0, "orders.example.test\n"), (code, output))
        code, output = self.windows.run(f"{FOLDER}\\depotctl.exe", "check", "Work")
        self.assertEqual(0, code, output)
        self.assertIn("the component is not registered", output)

    def test_client_without_a_manifest_does_not_find_the_class(self):
        for client in ("first", "late"):
            (self.folder / f"{client}.exe.manifest").unlink()
            self.assertEqual(1, self.run_client(client)[0])

    def test_client_with_an_incomplete_folder_does_not_start(self):
        (self.folder / "Quillon.DepotIntr.manifest").unlink()
        self.assertNotIn(WORKS, self.run_client("first")[1])

    def test_manifests_are_well_formed(self):
        for manifest in self.folder.glob("*.manifest"):
            subprocess.run(["python3", "-c", "import sys, xml.dom.minidom as d; d.parse(sys.argv[1])",
                            str(manifest)], check=True)


if __name__ == "__main__":
    unittest.main()
