#!/usr/bin/env python3
"""make_contents.py FOLDER LIST: lists what FOLDER holds, with versions, licences and hashes, as CycloneDX."""
import hashlib
import json
import subprocess
import sys
import time
from pathlib import Path

import product

OWN_LICENCE = [{"license": {"id": "MIT"}}]

# What the linker and the compiler put into every library: name, Debian's package of it, licence.
LINKED_IN = (
    ("libstdc++ and libgcc", "g++-mingw-w64-x86-64-posix", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    ("mingw-w64 runtime", "mingw-w64-x86-64-dev", "ZPL-2.1"),
    ("winpthreads", "mingw-w64-x86-64-dev", "MIT AND BSD-3-Clause"),
)
# What the command line tool alone is built with.
IN_TOOL = (
    ("CLI11", "libcli11-dev", "BSD-3-Clause"),
    ("nlohmann-json", "nlohmann-json3-dev", "MIT"),
)


def package_version(package):
    query = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package], capture_output=True,
                           text=True, check=False)
    return query.stdout.strip() or "unknown"


def library(name, package, licence):
    version = package_version(package)
    return {"type": "library", "bom-ref": name, "name": name, "version": version,
            "licenses": [{"expression": licence}],
            "purl": f"pkg:deb/debian/{package.replace('+', '%2B')}@{version.replace('+', '%2B')}"}


def file_entry(path, name, version):
    numbers = product.file_version(path)
    return {"type": "file", "bom-ref": name, "name": name,
            "version": ".".join(map(str, numbers)) if numbers else version,
            "licenses": OWN_LICENCE,
            "hashes": [{"alg": "SHA-256", "content": hashlib.sha256(path.read_bytes()).hexdigest()}]}


def dependencies(files):
    for name in files:
        if name.endswith((".dll", ".exe")):
            parts = LINKED_IN + (IN_TOOL if name.endswith(product.TOOL) else ())
            yield {"ref": name, "dependsOn": [part for part, _, _ in parts]}


def contents(folder, listing):
    version = product.package_version(folder / "bin")
    paths = {path.relative_to(folder).as_posix(): path for path in folder.rglob("*")
             if path.is_file() and path != listing}
    files = sorted(paths)
    linked = LINKED_IN + (IN_TOOL if f"bin/{product.TOOL}" in paths else ())
    components = [file_entry(paths[name], name, version) for name in files]
    components += [library(*part) for part in linked]
    digest = hashlib.sha256(json.dumps(components, sort_keys=True).encode()).hexdigest()
    serial = product.identifier("contents", digest).strip("{}").lower()
    return {
        "bomFormat": "CycloneDX", "specVersion": "1.5", "version": 1,
        "serialNumber": f"urn:uuid:{serial}",
        "metadata": {
            "timestamp": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(product.source_date())),
            "component": {"type": "application", "bom-ref": product.NAME, "name": product.NAME,
                          "version": version, "supplier": {"name": product.MAKER},
                          "licenses": OWN_LICENCE},
        },
        "components": components,
        "dependencies": [{"ref": product.NAME, "dependsOn": files}, *dependencies(files)],
    }


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit("usage: make_contents.py FOLDER LIST")
    target = Path(sys.argv[2])
    target.write_text(json.dumps(contents(Path(sys.argv[1]), target), indent=1, ensure_ascii=False) + "\n")
