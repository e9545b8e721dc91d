"""A domain controller of Samba, provisioned into a folder of its own.

It is as it comes: a plain bind is refused. `port` is a relay that adds the encryption, because
the client library of the test system does not return from encrypted answers above 16 KB;
`tls_port` and `plain_port` are the server's own. Its ports are fixed, so that there is one at a
time.
"""
import base64
import os
import pathlib
import re
import shutil
import signal
import socket
import ssl
import threading
import time

from servers import processes
from servers.processes import SUFFIX, run_tool

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
REALM, ADMINISTRATOR, PASSWORD = "farrow.test", "Administrator@farrow.test", "Admin-secret1"


def is_installed():
    return bool(shutil.which("samba-tool") and shutil.which("samba")
                and pathlib.Path("/usr/share/samba/setup/ad-schema").is_dir())


class TlsRelay:
    """Takes plain connections and secures each towards the server."""

    def __init__(self, target):
        self.target = target
        self.context = ssl.create_default_context()
        self.context.check_hostname = False
        self.context.verify_mode = ssl.CERT_NONE
        self.socket = socket.create_server(("127.0.0.1", 0), backlog=200)
        self.port = self.socket.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            client, _ = self.socket.accept()
            threading.Thread(target=self.relay, args=(client,), daemon=True).start()

    def relay(self, client):
        try:
            plain = socket.create_connection(("127.0.0.1", self.target))
            plain.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            client.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            server = self.context.wrap_socket(plain)
        except OSError:
            client.close()
            return
        up = threading.Thread(target=self.copy, args=(client, server), daemon=True)
        up.start()
        self.copy(server, client)
        up.join()
        client.close()
        server.close()

    @staticmethod
    def copy(source, target):
        try:
            while data := source.recv(65536):
                target.sendall(data)
        except OSError:
            pass
        for end in (source, target):
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass


class SambaServer:
    def __init__(self, folder, settings):
        self.folder, self.settings = folder, settings
        self.tls_port, self.plain_port = 636, 389
        self.log_path = folder / "output"
        folder.mkdir()
        self.provision()
        self.process = None
        self.launch()
        self.port = TlsRelay(self.tls_port).port
        if "no-schema" not in settings.split():
            self.load_schema()
            self.grant_rights()

    def provision(self):
        root = self.folder / "domain"
        run_tool(["samba-tool", "domain", "provision", f"--targetdir={root}", "--server-role=dc",
                  "--dns-backend=NONE", f"--realm={REALM}", "--domain=FARROW",
                  f"--adminpass={PASSWORD}", "--host-name=dc1", "--host-ip=127.0.0.1",
                  "--option=interfaces=lo", "--option=bind interfaces only=yes",
                  "--option=dsdb:schema update allowed=true"])
        self.configuration = root / "etc/smb.conf"
        text = self.configuration.read_text()
        text = re.sub(r"(?m)^(\s*server services =).*$", r"\1 ldap", text)
        text = re.sub(r"(?m)^(\s*log file =).*$", rf"\1 {self.folder}/log", text)
        self.configuration.write_text(text)
        self.database = root / "private/sam.ldb"
        options = ["-s", str(self.configuration)]
        run_tool(["samba-tool", "domain", "passwordsettings", "set", "--complexity=off",
                  "--min-pwd-age=0", "--max-pwd-age=0", *options])

    def add_people(self):
        for dn, secret in ((processes.EDITOR, processes.EDITOR_PASSWORD),
                           (processes.READER, processes.READER_PASSWORD)):
            name = re.match("cn=([^,]*)", dn)[1]
            encoded = base64.b64encode(f'"{secret}"'.encode("utf-16-le")).decode()
            self.apply(f"dn: {dn}\nobjectClass: user\ncn: {name}\nsAMAccountName: {name}\n"
                       f"unicodePwd:: {encoded}\nuserAccountControl: 66048\n")

    def load_schema(self):
        """What docs/administration.md tells an administrator to do."""
        text = (REPOSITORY / "schema/quillon.ldf").read_text()
        self.modify(text.replace("DC=X", SUFFIX.upper()))
        # As an administrator may allow it: entries of another class below folders of depots.
        self.modify(f"dn: CN=Container,CN=Schema,CN=Configuration,{SUFFIX}\nchangetype: modify\n"
                    "add: possSuperiors\npossSuperiors: quillonFolder\n-\n\n"
                    "dn:\nchangetype: modify\nadd: schemaUpdateNow\nschemaUpdateNow: 1\n-\n")

    def grant_rights(self):
        """The editor may change all, the reader what every user may."""
        self.add_people()
        sid = self.sid_of("editor")
        run_tool(["samba-tool", "dsacl", "set", "-s", str(self.configuration),
                  f"--objectdn={SUFFIX}", f"--sddl=(A;CI;RPWPCCDCLCLORCSD;;;{sid})"])

    def sid_of(self, name):
        found = run_tool(["ldbsearch", "-H", str(self.database), f"(cn={name})", "objectSid"])
        return re.search(r"objectSid: (\S+)", found.decode())[1]

    def is_ready(self):
        try:
            self.search("", "base", "(objectClass=*)", "1.1")
            return True
        except RuntimeError:
            return False

    def launch(self):
        self.process = processes.start(
            ["samba", "--foreground", "--no-process-group", "-s", str(self.configuration)],
            self.log_path, self.is_ready)

    def stop(self):
        """Its processes are one group."""
        if self.process:
            try:
                os.killpg(self.process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            self.process.wait()
            self.process = None
            while processes.listens(self.tls_port):
                time.sleep(0.02)

    def unmount(self):
        pass

    def mark(self):
        """What it logs is not looked at."""

    def lines(self):
        return ""

    def client(self, program, *arguments, text=""):
        environment = dict(os.environ, LDAPTLS_REQCERT="never")
        return run_tool([program, "-x", "-H", f"ldaps://127.0.0.1:{self.tls_port}", "-D",
                         ADMINISTRATOR, "-w", PASSWORD, *arguments], text, environment)

    def modify(self, text):
        return self.client("ldapmodify", text=text)

    def apply(self, text):
        return self.client("ldapmodify", "-a", text=text)

    def search(self, base, scope, search_filter, *attributes):
        return self.client("ldapsearch", "-LLL", "-o", "ldif-wrap=no", "-E", "pr=500/noprompt",
                           "-b", base, "-s", scope, search_filter, *attributes)

    show = search

    def version(self):
        return run_tool(["samba", "--version"]).decode().split()[1]
