"""An instance of the 389 Directory Server in folders of its own (see isolation.py)."""
import os
import pathlib
import re
import shutil
import signal

from servers import processes
from servers.forwarder import Forwarder
from servers.processes import SUFFIX, run_tool

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
MANAGER, PASSWORD = "cn=Directory Manager", "manager-secret"
ANSWERS = """[general]
config_version = 2
full_machine_name = localhost
start = False
strict_host_checking = False
systemd = False
selinux = False

[slapd]
instance_name = {name}
port = {port}
secure_port = {tls_port}
root_password = {password}
user = root
group = root
self_sign_cert = True

[backend-userroot]
suffix = {suffix}
create_suffix_entry = True
"""


def is_installed():
    return bool(shutil.which("dscreate") and shutil.which("ns-slapd"))


class Ds389Server:
    def __init__(self, folder, number, settings):
        self.folder, self.name = folder, f"depots{number}"
        self.own_port, self.tls_port = processes.free_port(), processes.free_port()
        self.port = Forwarder(self.own_port).port
        self.log_path = folder / "output"
        folder.mkdir()
        self.create()
        self.launch()
        if "no-schema" not in settings.split():
            self.load_schema()
            self.grant_rights()

    def create(self):
        answers = self.folder / "answers.inf"
        answers.write_text(ANSWERS.format(name=self.name, port=self.own_port, tls_port=self.tls_port,
                                          password=PASSWORD, suffix=SUFFIX))
        run_tool(["dscreate", "from-file", str(answers)])
        self.configuration = pathlib.Path(f"/etc/dirsrv/slapd-{self.name}")
        entries = self.configuration / "dse.ldif"
        entries.write_text(entries.read_text().replace(
            "\nnsslapd-port:", "\nnsslapd-listenhost: 127.0.0.1"
            "\nnsslapd-securelistenhost: 127.0.0.1\nnsslapd-port:", 1))

    def load_schema(self):
        """What docs/administration.md tells an administrator to do."""
        self.modify((REPOSITORY / "schema/quillon-389.ldif").read_text())

    def add_people(self):
        for dn, secret in ((processes.EDITOR, processes.EDITOR_PASSWORD),
                           (processes.READER, processes.READER_PASSWORD)):
            name = re.match("cn=([^,]*)", dn)[1]
            self.apply(f"dn: {dn}\nobjectClass: person\ncn: {name}\nsn: {name}\n"
                       f"userPassword: {secret}\n")

    def grant_rights(self):
        """The editor may change all, every user may read."""
        self.add_people()
        self.modify(f"""dn: {SUFFIX}
changetype: modify
add: aci
aci: (targetattr != "userPassword")(version 3.0; acl "Users read"; allow (read, search, compare) userdn = "ldap:///all";)
aci: (targetattr = "*")(version 3.0; acl "The editor writes"; allow (all) userdn = "ldap:///{processes.EDITOR}";)
""")

    def launch(self):
        self.process = processes.start(
            ["ns-slapd", "-D", str(self.configuration), "-i", f"/run/{self.name}.pid", "-d", "0"],
            self.log_path, lambda: processes.listens(self.own_port))

    def stop(self):
        if self.process:
            os.killpg(self.process.pid, signal.SIGKILL)
            self.process.wait()
            self.process = None

    def unmount(self):
        pass

    def mark(self):
        """What it logs is not looked at."""

    def lines(self):
        return ""

    def client(self, program, *arguments, text=""):
        return run_tool([program, "-x", "-H", f"ldap://127.0.0.1:{self.own_port}", "-D", MANAGER,
                         "-w", PASSWORD, *arguments], text)

    def modify(self, text):
        return self.client("ldapmodify", text=text)

    def apply(self, text):
        return self.client("ldapmodify", "-a", text=text)

    def show(self, base, scope, search_filter, *attributes):
        return self.client("ldapsearch", "-LLL", "-o", "ldif-wrap=no", "-z", "max", "-b", base,
                           "-s", scope, search_filter, *attributes)

    def version(self):
        return re.search(r"389-Directory/(\S+)", run_tool(["ns-slapd", "-v"]).decode())[1]
