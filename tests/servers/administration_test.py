"""The steps of docs/administration.md that make a directory ready for depots, followed to the letter.

Runs under tools/with-slapd, which has started nothing yet; DEPOTINTR_DIRECTORY names the server.
Names, hosts and passwords are those of the test's server, nothing else of a step is changed.
"""
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import textwrap
import unittest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(REPOSITORY / "tools"))
from servers import ds389, samba  # noqa: E402

PAGE = (REPOSITORY / "docs/administration.md").read_text()
SERVER = os.environ.get("DEPOTINTR_DIRECTORY", "slapd")
BASE = "cn=Profiles,dc=farrow,dc=test"
CONTENTS = "quillonFileContentsBinary"
ADMINISTRATORS = {
    "slapd": ("cn=admin,dc=farrow,dc=test", "admin-secret"),
    "389": (ds389.MANAGER, ds389.PASSWORD),
    "samba": (samba.ADMINISTRATOR, samba.PASSWORD),
}
ADMINISTRATOR, PASSWORD = ADMINISTRATORS[SERVER]
GROUP = """dn: ou=groups,dc=farrow,dc=test
objectClass: organizationalUnit
ou: groups

dn: cn=editors,ou=groups,dc=farrow,dc=test
objectClass: {group}
cn: editors
member: cn=editor,dc=farrow,dc=test
{more}"""


def here(text):
    """The page's names as those of the test's server."""
    text = text.replace("dc=example,dc=com", "dc=farrow,dc=test")
    text = text.replace("DC=example,DC=com", "DC=farrow,DC=test")
    return text.replace("example.com", "farrow.test").replace("dc1.farrow.test", "127.0.0.1")


def ask(words, text=""):
    done = subprocess.run([REPOSITORY / "tools/with-slapd", "--ask", *words], input=text.encode(),
                          stdout=subprocess.PIPE, check=False)
    if done.returncode:
        raise RuntimeError(done.stdout.decode())
    return done.stdout.decode()


def step(marker):
    """The page's one command, in a line or in a block, that begins with the marker."""
    blocks = re.findall(r"^ *```\n(.*?)^ *```$", PAGE, re.S | re.M)
    texts = [textwrap.dedent(block) for block in blocks] + re.findall(r"`([^`\n]+)`", PAGE)
    found = [text for text in texts if text.startswith(marker)]
    if len(found) != 1:
        raise AssertionError(f"the page has {len(found)} steps that begin with {marker}")
    return found[0].rstrip()


class AdministrationTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory(dir=REPOSITORY / "build")
        folder = pathlib.Path(cls.scratch.name)
        cls.secret = folder / "secret"
        cls.secret.write_text(PASSWORD)
        cls.secret.chmod(0o600)
        cls.environment = dict(os.environ, LDAPTLS_REQCERT="never")
        {"slapd": cls.prepare_slapd, "389": cls.prepare_389,
         "samba": cls.prepare_samba}[SERVER](folder / "server")

    @classmethod
    def tearDownClass(cls):
        if SERVER != "slapd":
            cls.server.stop()
        cls.scratch.cleanup()

    @classmethod
    def prepare_slapd(cls, _):
        rule = " ".join(here(step("access to dn.subtree=")).split())
        ports = ask(["start", "docs"], f"live-schema\ndatabase {rule}\n"
                    "database access to attrs=userPassword by anonymous auth\n"
                    "database access to * by * read").split()
        cls.url = f"ldap://127.0.0.1:{ports[0]}"
        ask(["apply", "docs"], GROUP.format(group="groupOfNames", more=""))
        cls.shell(step("ldapadd -x -D cn=admin"))

    @classmethod
    def prepare_389(cls, folder):
        cls.server = ds389.Ds389Server(folder, 1, "no-schema")
        cls.url = f"ldap://127.0.0.1:{cls.server.port}"
        cls.server.add_people()
        cls.server.apply(GROUP.format(group="groupOfNames", more=""))
        cls.shell(step('ldapmodify -x -D "cn=Directory Manager" -W -f'))
        cls.shell(step("ldapadd -x -D cn=admin"))
        cls.shell(step("ldapmodify -x -D \"cn=Directory Manager\" -W <<'END'"))

    @classmethod
    def prepare_samba(cls, folder):
        cls.server = samba.SambaServer(folder, "no-schema")
        cls.url = f"ldaps://127.0.0.1:{cls.server.tls_port}"
        cls.server.add_people()
        cls.server.apply(GROUP.format(group="group", more="sAMAccountName: Editors\n"))
        cls.shell(step("sed 's/DC=X/"))
        cls.shell(step("ldapadd -x -D cn=admin"))
        grant = step("samba-tool dsacl set")
        example = re.search(r"S-1-5-[\d-]+", grant)[0]
        cls.shell(grant.replace(example, cls.server.sid_of("editors")) +
                  f" -s {cls.server.configuration}")

    @classmethod
    def shell(cls, command, text=""):
        """Runs a step; -W asks for the password, which is in a file here."""
        command = re.sub(r"\s-W\b", f" -y {cls.secret}", here(command))
        command = re.sub(r"-H ldaps?://\S+", f"-H {cls.url}", command)
        if "-H " not in command and command.startswith("ldap"):
            program, rest = command.split(" ", 1)
            command = f"{program} -H {cls.url} {rest}"
        command = re.sub(r"-D (cn=admin,\S+|\S+@farrow.test|\"cn=Directory Manager\")",
                         f"-D {shlex.quote(ADMINISTRATOR)}", command)
        done = subprocess.run(["bash", "-ec", "set -o pipefail\n" + command], input=text.encode(),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                              cwd=REPOSITORY, env=cls.environment)
        if done.returncode:
            raise AssertionError(command + "\n" + done.stdout.decode())
        return done.stdout.decode()

    def change(self, user, ldif):
        return self.client("ldapmodify", user, text=ldif)

    def client(self, program, user, *arguments, text=""):
        done = subprocess.run([program, "-x", "-H", self.url, "-D", f"cn={user},dc=farrow,dc=test",
                               "-w", f"{user}-secret", *arguments], input=text.encode(),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                              env=self.environment)
        return done.returncode, done.stdout.decode()

    def add_file(self, user, name):
        return self.change(user, f"dn: cn={name},{BASE}\nchangetype: add\n"
                                 f"objectClass: quillonFileBinary\ncn: {name}\n{CONTENTS}: x\n")[0]

    def test_editors_change_everything_below_the_base(self):
        self.assertEqual(0, self.add_file("editor", "a.kra"))
        folder = (f"dn: cn=Sub,{BASE}\nchangetype: add\nobjectClass: quillonFolder\ncn: Sub\n\n"
                  f"dn: cn=a.kra,{BASE}\nchangetype: moddn\nnewrdn: cn=b.kra\ndeleteoldrdn: 1\n"
                  f"newsuperior: cn=Sub,{BASE}\n\n"
                  f"dn: cn=b.kra,cn=Sub,{BASE}\nchangetype: modify\nreplace: {CONTENTS}\n"
                  f"{CONTENTS}: y\n-\n\n"
                  f"dn: cn=b.kra,cn=Sub,{BASE}\nchangetype: delete\n\n"
                  f"dn: cn=Sub,{BASE}\nchangetype: delete\n")
        code, text = self.change("editor", folder)
        self.assertEqual(0, code, text)

    def test_users_read_and_change_nothing(self):
        self.assertEqual(0, self.add_file("editor", "read.kra"))
        code, text = self.client("ldapsearch", "reader", "-LLL", "-b", BASE, "(cn=read.kra)",
                                 "objectClass", CONTENTS, "entryUUID", "objectGUID", "nsUniqueId")
        self.assertEqual(0, code, text)
        for part in ("quillonFileBinary", f"{CONTENTS}: x"):
            self.assertIn(part, text)
        # What shows that two names are one entry.
        self.assertRegex(text, "entryUUID|objectGUID|nsUniqueId|nsuniqueid")
        self.assertEqual(50, self.add_file("reader", "b.kra"))
        self.assertEqual(50, self.change("reader", f"dn: cn=read.kra,{BASE}\nchangetype: delete\n")[0])

    def test_letters_of_both_ways_to_grant_rights_are_the_same(self):
        dsacls = re.search(r'dsacls "[^"]*" /I:T /G "[^"]*:([A-Z]+)"', PAGE)[1]
        samba = re.search(r'--sddl="\(A;CI;([A-Z]+);', PAGE)[1]
        self.assertEqual(dsacls, samba)


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
