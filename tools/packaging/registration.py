"""What the components register: read from the registry scripts that they carry, so that an installer
and a manifest say the same as regsvr32."""
import re
from dataclasses import dataclass
from pathlib import Path

TOKEN = re.compile(r"'([^']*)'|([{}=])|([^\s{}='][^\s]*)")


@dataclass(frozen=True)
class Value:
    """One value below HKEY_CLASSES_ROOT; the name "" is the default value, None a key without any."""
    key: str
    name: str | None
    data: str | None


@dataclass(frozen=True)
class Class:
    clsid: str
    description: str
    prog_id: str
    independent_prog_id: str
    threading_model: str
    app_id: str


@dataclass(frozen=True)
class Server:
    """One in-process server with everything that its registration writes besides its type library."""
    library: str
    values: tuple[Value, ...]
    type_library: str
    type_library_title: str
    interfaces: tuple[tuple[str, str], ...]  # name and identifier

    def value(self, key, name=""):
        for value in self.values:
            if (value.key, value.name) == (key, name):
                return value.data
        raise KeyError(f"{self.library} does not register {key} [{name}]")

    def classes(self):
        clsids = sorted({v.key.split("\\")[1] for v in self.values if v.key.startswith("CLSID\\")})
        return [self._class(f"CLSID\\{clsid}", clsid) for clsid in clsids]

    def _class(self, key, clsid):
        return Class(clsid, self.value(key), self.value(f"{key}\\ProgID"),
                     self.value(f"{key}\\VersionIndependentProgID"),
                     self.value(f"{key}\\InprocServer32", "ThreadingModel"),
                     self.value(key, "AppID"))


def _tokens(script):
    for match in TOKEN.finditer(script):
        quoted, sign, word = match.groups()
        yield ("text", quoted) if quoted is not None else ("sign", sign) if sign else ("text", word)


class _Parser:
    def __init__(self, script, replacements):
        for name, text in replacements.items():
            script = script.replace(f"%{name}%", text)
        self.tokens = list(_tokens(script))
        self.values = []

    def parse(self):
        root = self._text()
        if root != "HKCR":
            raise ValueError(f"registration outside HKEY_CLASSES_ROOT: {root}")
        self._keys("")
        if self.tokens:
            raise ValueError(f"more than one root: {self.tokens[0]}")
        return self.values

    def _next_is(self, token):
        if self.tokens[:1] != [token]:
            return False
        del self.tokens[0]
        return True

    def _text(self):
        kind, text = self.tokens.pop(0)
        if kind != "text":
            raise ValueError(f"unexpected {text}")
        return text

    def _keys(self, path):
        if not self._next_is(("sign", "{")):
            return
        while not self._next_is(("sign", "}")):
            if self._next_is(("text", "val")):
                name = self._text()
                self.values.append(Value(path, name, self._data()))
            else:
                self._key(path)

    def _key(self, path):
        kept = self._next_is(("text", "NoRemove"))
        self._next_is(("text", "ForceRemove"))
        key = f"{path}\\{self._text()}".lstrip("\\")
        before = len(self.values)
        if self.tokens[:1] == [("sign", "=")]:
            self.values.append(Value(key, "", self._data()))
        self._keys(key)
        if len(self.values) == before and not kept:
            self.values.append(Value(key, None, None))

    def _data(self):
        if not self._next_is(("sign", "=")) or self._text() != "s":
            raise ValueError("only texts are registered")
        return self._text()


def parse_script(script, replacements):
    return _Parser(script, replacements).parse()


def _braced(identifier):
    return "{" + identifier.upper() + "}"


def read_server(library, sources, generated):
    """The server whose interface description stands in `sources`, built into `generated`."""
    header = (sources / "identifiers.h").read_text()
    idl = (sources / f"{library}.idl").read_text()
    identifiers = dict(re.findall(r"^#define (\w+) ([0-9A-F-]{36})$", header, re.M))
    described = re.findall(r"uuid\((\w+)\)[^\]]*\]\s*(library|interface|coclass)\s+(\w+)",
                           idl)
    title = re.search(r'helpstring\("([^"]*)"\)\]\s*library', idl)[1]
    prefix = library.upper()
    replacements = {"APPID": "{" + identifiers[f"{prefix}_APPID"] + "}", "MODULE": "%MODULE%"}
    values = []
    for script in [sources / "appid.rgs", *sorted(Path(generated).glob("*.rgs"))]:
        values += parse_script(script.read_text(), replacements)
    return Server(f"{library}.dll", tuple(values),
                  next(_braced(identifiers[i]) for i, kind, _ in described if kind == "library"), title,
                  tuple((name, _braced(identifiers[i])) for i, kind, name in described
                        if kind == "interface"))


def read_servers(repository, build):
    return [read_server("DepotIntr", repository / "src/host", build / "src/host"),
            read_server("DepotBrowser", repository / "companions/depotbrowser",
                        build / "companions/depotbrowser")]
