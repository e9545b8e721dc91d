#!/usr/bin/env python3
"""make_portable.py FOLDER ARCHIVE BUILD_FOLDER: makes a zip archive of the run-time files in FOLDER and
of the manifests by which programs use them without any registration."""
import sys
import time
import zipfile
from pathlib import Path
from xml.sax.saxutils import quoteattr

import product
import registration

# Interfaces of type libraries are carried between apartments by the system's own marshaller.
MARSHALLER = "{00020424-0000-0000-C000-000000000046}"
UNKNOWN = "{00000000-0000-0000-C000-000000000046}"
APPLICATION = "application.exe.manifest"


def assembly_name(library):
    """The name differs from the library's: the system would look for the manifest in the library."""
    return f"{product.MAKER}.{library.removesuffix('.dll')}"


def identity(library, version):
    return (f'<assemblyIdentity type="win32" name="{assembly_name(library)}" version="{version}" '
            'processorArchitecture="amd64"/>')


def assembly(server, version):
    classes = "".join(f"""
    <comClass clsid="{entry.clsid}" description={quoteattr(entry.description)}
              threadingModel="{entry.threading_model}" tlbid="{server.type_library}"
              progid="{entry.prog_id}">
      <progid>{entry.independent_prog_id}</progid>
    </comClass>""" for entry in server.classes())
    interfaces = "".join(f"""
  <comInterfaceExternalProxyStub name="{name}" iid="{iid}" proxyStubClsid32="{MARSHALLER}"
                                 baseInterface="{UNKNOWN}" tlbid="{server.type_library}"/>"""
                         for name, iid in server.interfaces)
    return f"""<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">
  {identity(server.library, version)}
  <file name="{server.library}">{classes}
    <typelib tlbid="{server.type_library}" version="1.0" helpdir=""/>
  </file>{interfaces}
</assembly>
"""


def application(servers, version):
    dependencies = "".join(f"""
  <dependency>
    <dependentAssembly>
      {identity(server.library, version)}
    </dependentAssembly>
  </dependency>""" for server in servers)
    return f"""<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<!-- Stands beside a program, under the program's own name followed by ".manifest", or in it as resource
     1 of type 24 together with what that manifest says already. The other files of this archive
     stand in the program's folder. -->
<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">{dependencies}
</assembly>
"""


def make(folder, archive, build):
    version = ".".join(map(str, product.file_version(folder / "DepotIntr.dll")))
    servers = registration.read_servers(product.REPOSITORY, build)
    files = {name: source.read_bytes() for name, source in product.package_files(folder).items()}
    for server in servers:
        files[f"{assembly_name(server.library)}.manifest"] = assembly(server, version).encode()
    files[APPLICATION] = application(servers, version).encode()
    with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as packed:
        for name in sorted(files, key=str.lower):
            entry = zipfile.ZipInfo(name, time.gmtime(product.source_date())[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            packed.writestr(entry, files[name])


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit("usage: make_portable.py FOLDER ARCHIVE BUILD_FOLDER")
    make(Path(sys.argv[1]), Path(sys.argv[2]), Path(sys.argv[3]))
