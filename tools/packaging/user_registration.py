"""What a package for one user registers: the same as regsvr32, in the user's own part of the classes."""

CLASSES = "Software\\Classes\\"
# Interfaces of type libraries are carried between apartments by the system's own marshaller.
MARSHALLER = "{00020424-0000-0000-C000-000000000046}"
# A name of "*" makes an empty key; one of "-" takes a key away on removal, with all that is in it.
EMPTY_KEY, WHOLE_KEY = "*", "-"


def _type_library(server):
    """What the registration of a type library writes."""
    library = f"TypeLib\\{server.type_library}"
    yield f"{library}\\1.0", "", server.type_library_title
    yield f"{library}\\1.0\\FLAGS", "", "0"
    yield f"{library}\\1.0\\0\\win64", "", f"[#{server.library}]"
    yield f"{library}\\1.0\\HELPDIR", "", "[INSTALLDIR]"
    for name, identifier in server.interfaces:
        interface = f"Interface\\{identifier}"
        yield interface, "", name
        yield f"{interface}\\ProxyStubClsid32", "", MARSHALLER
        yield f"{interface}\\TypeLib", "", server.type_library
        yield f"{interface}\\TypeLib", "Version", "1.0"


def _own_keys(server):
    """The keys that belong to the server alone."""
    keys = {f"TypeLib\\{server.type_library}", *(f"Interface\\{iid}" for _, iid in server.interfaces)}
    for value in server.values:
        parts = value.key.split("\\")
        keys.add("\\".join(parts[:2]) if parts[0] in ("CLSID", "AppID") else parts[0])
    return sorted(keys)


def rows(server, root):
    """The rows of the table Registry."""
    values = [(value.key, EMPTY_KEY if value.name is None else value.name,
               (value.data or "").replace("%MODULE%", f"[#{server.library}]")) for value in server.values]
    values += _type_library(server)
    values += [(key, WHOLE_KEY, "") for key in _own_keys(server)]
    stem = server.library.removesuffix(".dll")
    return [[f"{stem}{number}", root, CLASSES + key, name, data, server.library]
            for number, (key, name, data) in enumerate(values, 1)]
