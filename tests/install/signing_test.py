"""Makes the packages with a certificate and checks what they are signed with."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from packages import BUILD, product
from windows import REPOSITORY

PASSWORD = "two words & a \"quote\""


def run(*command, **options):
    return subprocess.run(list(map(str, command)), capture_output=True, text=True, **options)


class SigningTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.key, cls.certificate = cls.folder / "key.pem", cls.folder / "certificate.pem"
        cls.pfx = cls.folder / "certificate.pfx"
        run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", cls.key, "-out",
            cls.certificate, "-days", "2", "-subj", "/CN=Packages Under Test",
            "-addext", "extendedKeyUsage=codeSigning", check=True)
        run("openssl", "pkcs12", "-export", "-inkey", cls.key, "-in", cls.certificate, "-out", cls.pfx,
            "-passout", f"pass:{PASSWORD}", check=True)
        cls.dist = cls.folder / "dist"
        # The dates of the packages lie within the certificate's.
        cls.made = cls.make(cls.dist, PASSWORD)
        cls.made.check_returncode()

    @classmethod
    def make(cls, dist, password):
        environment = {**os.environ, "SIGN_PFX": str(cls.pfx), "SIGN_PASS": password}
        return run(REPOSITORY / "tools/dist", dist, BUILD, env=environment)

    def verify(self, file):
        return run("osslsigncode", "verify", "-in", file, "-CAfile", self.certificate,
                   "-TSA-CAfile", self.certificate)

    def programs(self):
        names = product.runtime_files(self.dist / "bin")
        return [*(self.dist / "bin" / name for name in names), *self.dist.glob("*.msi")]

    def test_everything_that_runs_is_signed(self):
        self.assertGreaterEqual(len(self.programs()), 12)
        for program in self.programs():
            verified = self.verify(program)
            self.assertEqual(0, verified.returncode, f"{program}\n{verified.stdout}{verified.stderr}")
            self.assertIn("Packages Under Test", verified.stdout)

    def test_changed_file_does_not_pass(self):
        for program in (self.dist / "bin/DepotIntr.dll", *self.dist.glob("*.msi")):
            image = bytearray(program.read_bytes())
            image[len(image) // 2] ^= 1
            changed = self.folder / f"changed{program.suffix}"
            changed.write_bytes(image)
            self.assertNotEqual(0, self.verify(changed).returncode, program)

    def test_installer_holds_the_signed_files(self):
        extracted = self.folder / "extracted"
        run("msiextract", "-C", extracted, next(self.dist.glob("*.msi")), check=True)
        found = {path.name: path.read_bytes() for path in extracted.rglob("*") if path.is_file()}
        for name in product.runtime_files(self.dist / "bin"):
            self.assertEqual((self.dist / "bin" / name).read_bytes(), found[name], name)

    def test_wrong_password_makes_no_packages(self):
        dist = self.folder / "refused"
        self.assertNotEqual(0, self.make(dist, "wrong").returncode)
        self.assertEqual([], list(dist.glob("*.msi")))

    def test_password_is_printed_nowhere(self):
        self.assertNotIn(PASSWORD, self.made.stdout + self.made.stderr)

    def test_signed_packages_are_the_same_in_every_run(self):
        again = self.folder / "again"
        self.make(again, PASSWORD).check_returncode()
        for program in self.programs():
            other = again / program.relative_to(self.dist)
            self.assertEqual(program.read_bytes(), other.read_bytes(), program.name)


if __name__ == "__main__":
    unittest.main()
