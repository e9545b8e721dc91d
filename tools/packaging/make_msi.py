#!/usr/bin/env python3
"""make_msi.py FOLDER PACKAGE BUILD_FOLDER [user]: makes an installer of the run-time files in FOLDER, for the
machine or for one user.

wixl makes the database with the files; the registration goes into the installer's own tables, most of
which wixl does not know, with msibuild."""
import hashlib
import os
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path
from xml.sax.saxutils import quoteattr

import product
import registration
import summary_dates
import user_registration

# When each action is taken, and on what condition.
ACTIONS = {
    "AppSearch": (50, ""),
    "KeepFolder": (60, "KEPTFOLDER AND NOT INSTALLDIR"),
    "NoteFolder": (1005, ""),
    "RefuseFolder": (1010, "NOT Installed AND (UNSAFE)"),
    "RemoveExistingProducts": (1501, ""),  # First the old version goes, so that it takes nothing of the new.
    "UnregisterTypeLibraries": (2300, ""),
    "RemoveRegistryValues": (2600, ""),
    "UnregisterClassInfo": (2700, ""),
    "UnregisterProgIdInfo": (2900, ""),
    "RemoveFolders": (3600, ""),
    "CreateFolders": (3700, ""),
    "RegisterClassInfo": (4600, ""),
    "RegisterProgIdInfo": (4800, ""),
    "WriteRegistryValues": (5000, ""),
    "RegisterTypeLibraries": (5500, ""),
}

# Places that every user may write to, or that belong to one of them.
UNSAFE_PLACES = ("TempFolder", "LocalAppDataFolder", "AppDataFolder", "PersonalFolder",
                 "CommonAppDataFolder", "%PUBLIC", "%USERPROFILE", "%TEMP")
REFUSAL = ("Ordinary users may write to [INSTALLDIR]. Whoever may replace the libraries there has programs "
           "of other users run what they like. Choose a folder that only administrators may write to.")
# Administrators and the system may do everything, users and packaged applications read and run.
PERMISSIONS = "D:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)(A;OICI;0x1200a9;;;AC)"

TABLES = {
    "AppId": ("AppId\tRemoteServerName\tLocalService\tServiceParameters\tDllSurrogate\t"
              "ActivateAtStorage\tRunAsInteractiveUser", "s38\tS255\tS255\tS255\tS255\tI2\tI2", "AppId"),
    "Class": ("CLSID\tContext\tComponent_\tProgId_Default\tDescription\tAppId_\tFileTypeMask\tIcon_\t"
              "IconIndex\tDefInprocHandler\tArgument\tFeature_\tAttributes",
              "s38\ts32\ts72\tS255\tL255\tS38\tS255\tS72\tI2\tS32\tS255\ts38\tI2",
              "CLSID\tContext\tComponent_"),
    "ProgId": ("ProgId\tProgId_Parent\tClass_\tDescription\tIcon_\tIconIndex",
               "s255\tS255\tS38\tL255\tS72\tI2", "ProgId"),
    "TypeLib": ("LibID\tLanguage\tComponent_\tVersion\tDescription\tDirectory_\tFeature_\tCost",
                "s38\ti2\ts72\tI4\tL128\tS72\ts38\tI4", "LibID\tLanguage\tComponent_"),
    "Registry": ("Registry\tRoot\tKey\tName\tValue\tComponent_", "s72\ti2\tl255\tL255\tL0\ts72",
                 "Registry"),
    # A folder of the administrator's choice is as safe as the system's own ones, whatever it lies in.
    "MsiLockPermissionsEx": ("MsiLockPermissionsEx\tLockObject\tTable\tSDDLText\tCondition",
                             "s72\ts72\ts32\ts0\tS255", "MsiLockPermissionsEx"),
    "AppSearch": ("Property\tSignature_", "s72\ts72", "Property\tSignature_"),
    "RegLocator": ("Signature_\tRoot\tKey\tName\tType", "s72\ti2\ts255\tS255\tI2", "Signature_"),
    "DrLocator": ("Signature_\tParent\tPath\tDepth", "s72\tS72\tS255\tI2", "Signature_\tParent\tPath"),
    "Signature": ("Signature\tFileName\tMinVersion\tMaxVersion\tMinSize\tMaxSize\tMinDate\tMaxDate\t"
                  "Languages", "s72\ts255\tS20\tS20\tI4\tI4\tI4\tI4\tS255", "Signature"),
    "Condition": ("Feature_\tLevel\tCondition", "s38\ti2\tS255", "Feature_\tLevel"),
    "CustomAction": ("Action\tType\tSource\tTarget", "s72\ti2\tS72\tS255", "Action"),
    "CreateFolder": ("Directory_\tComponent_", "s72\ts72", "Directory_\tComponent_"),
}

FEATURE, STAND_IN_FEATURE = "Component", "StandIn"
CLASSES_ROOT, CURRENT_USER, LOCAL_MACHINE = 0, 1, 2
SET_PROPERTY, FAIL = 51, 19
ALWAYS, ON_DEMAND = 1, 2
RAW_VALUE_64 = 2 + 16
OWN_KEY = "Software\\Quillon\\DepotIntr"
LOCALE_KEY = "Software\\Quillon\\Farrow\\13.00\\Locale"
LANGUAGE_LIST = "Available UI Languages"
# A part of the package without a file, known by a value in the registry.
LANGUAGES = "Languages"
IS_64_BIT, HAS_REGISTRY_KEY_PATH = 256, 4
EVENT_SOURCE = "SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\DepotIntr"
# Errors, warnings and information.
EVENT_TYPES = 1 + 2 + 4
DISALLOW_ADVERTISING = 8
TYPE_LIBRARY_VERSION = 1 * 256 + 0


@dataclass(frozen=True)
class Scope:
    """Whom a package installs for."""
    wixl_name: str
    root: int  # the hive of what is written beside the classes
    base: str  # the folder that the maker's stands in
    words: tuple  # what tells its identifiers from those of the other scope
    title: str

    def identifier(self, *parts):
        return product.identifier(*parts, *self.words)

    def is_for_user(self):
        return self.root == CURRENT_USER


MACHINE = Scope("perMachine", LOCAL_MACHINE, '<Directory Id="ProgramFiles64Folder">', (), product.TITLE)
USER = Scope("perUser", CURRENT_USER,
             '<Directory Id="LocalAppDataFolder"><Directory Id="PROGRAMSDIR" Name="Programs">', ("user",),
             f"{product.TITLE} (one user)")


def description(version, files, scope):
    """The part of the package that wixl makes."""
    def part(name):
        return (f'<Component Id={quoteattr(name)} Guid="{scope.identifier("part", name)}" Win64="yes">'
                f'<File Id={quoteattr(name)} Name={quoteattr(name)} Source={quoteattr(name)} KeyPath="yes"/>'
                '</Component>')

    def feature(name, title, level, parts):
        references = "".join(f"<ComponentRef Id={quoteattr(part)}/>" for part in parts)
        return f'<Feature Id="{name}" Title="{title}" Level="{level}">{references}</Feature>'

    own = [name for name in files if name != product.STAND_IN]
    stand_in = [name for name in files if name == product.STAND_IN]
    return f"""<?xml version="1.0" encoding="utf-8"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
  <Product Id="{scope.identifier('version', version)}" Name="{scope.title}" Version="{version}"
           Language="1033" Manufacturer="{product.MAKER}" UpgradeCode="{scope.identifier('upgrades')}">
    <Package InstallerVersion="500" Compressed="yes" InstallScope="{scope.wixl_name}"/>
    <MajorUpgrade DowngradeErrorMessage="A newer version of {scope.title} is installed."/>
    <Media Id="1" Cabinet="files.cab" EmbedCab="yes"/>
    <Property Id="ARPNOMODIFY" Value="1"/>
    <Property Id="ARPURLINFOABOUT" Value="{product.LINK}"/>
    <Property Id="ARPHELPLINK" Value="{product.LINK}"/>
    <Directory Id="TARGETDIR" Name="SourceDir">
      {scope.base}
        <Directory Id="MAKERDIR" Name="{product.MAKER}">
          <Directory Id="INSTALLDIR" Name="{product.NAME}">{"".join(map(part, files))}
            <Component Id="{LANGUAGES}" Guid="{scope.identifier("part", LANGUAGES)}" Win64="yes">
              <CreateFolder/>
            </Component>
          </Directory>
        </Directory>
      {"</Directory>" * scope.base.count("<Directory")}
    </Directory>
    {feature(FEATURE, scope.title, ALWAYS, [*own, LANGUAGES])}
    {feature(STAND_IN_FEATURE, "Stand-in for the directory service", ON_DEMAND, stand_in)}
  </Product>
</Wix>
"""


def upper_guid(text):
    """Installers take identifiers in capitals only."""
    return text.upper()


def class_rows(server):
    """The rows of the tables for classes, and what those tables make the installer write."""
    rows = {"AppId": [], "Class": [], "ProgId": []}
    written = set()
    for entry in server.classes():
        clsid, app_id = upper_guid(entry.clsid), upper_guid(entry.app_id)
        if not any(row[0] == app_id for row in rows["AppId"]):
            rows["AppId"].append([app_id, "", "", "", "", "", ""])
        rows["Class"].append([clsid, "InprocServer32", server.library, entry.prog_id,
                              entry.description, app_id, "", "", "", "", "", FEATURE, ""])
        rows["ProgId"] += [[entry.prog_id, "", clsid, entry.description, "", ""],
                           [entry.independent_prog_id, entry.prog_id, "", entry.description, "", ""]]
        key = f"CLSID\\{entry.clsid}"
        written |= {(key, ""), (key, "AppID"), (f"{key}\\InprocServer32", ""), (f"{key}\\ProgID", ""),
                    (f"{key}\\VersionIndependentProgID", ""),
                    (f"{entry.independent_prog_id}\\CurVer", "")}
        for prog_id in (entry.prog_id, entry.independent_prog_id):
            written |= {(prog_id, ""), (f"{prog_id}\\CLSID", "")}
    return rows, written


def registry_rows(server, written):
    """The rest: what no table of its own describes."""
    stem = server.library.removesuffix(".dll")
    rest = [value for value in server.values if (value.key, value.name) not in written]
    for number, value in enumerate(rest, 1):
        if value.data == "%MODULE%":
            raise ValueError(f"{value.key} names the library")
        # A name of "*" makes an empty key, and takes it away again.
        name, data = ("*", "") if value.name is None else (value.name, value.data)
        yield [f"{stem}{number}", str(CLASSES_ROOT), value.key, name, data, server.library]
    # The type library registers these. A name of "-" takes a key away on removal, also when the library
    # file that describes the interfaces is gone.
    for name, key in [("Library", f"TypeLib\\{server.type_library}"),
                      *((name, f"Interface\\{iid}") for name, iid in server.interfaces)]:
        yield [f"{stem}{name}", str(CLASSES_ROOT), key, "-", "", server.library]


def search_rows(scope):
    """What an upgrade keeps, and whether the product's own library is there."""
    library = product.STAND_IN
    return {
        "AppSearch": [["KEPTFOLDER", "KeptFolder"], ["KEPTSTANDIN", "KeptStandIn"],
                      ["KEPTLANGUAGES", "KeptLanguages"], ["PRODUCTLANGUAGES", "ProductLanguages"],
                      ["PRODUCTSERVICE", "ProductService"]],
        "RegLocator": [[name, str(root), key, value, str(RAW_VALUE_64)] for name, root, key, value in (
            ("KeptFolder", scope.root, OWN_KEY, "InstallDir"), ("KeptStandIn", scope.root, OWN_KEY, "StandIn"),
            ("KeptLanguages", scope.root, OWN_KEY, LANGUAGES),
            ("ProductLanguages", LOCAL_MACHINE, LOCALE_KEY, LANGUAGE_LIST))],
        "DrLocator": [["ProductService", "", "[System64Folder]", "0"]],
        "Signature": [["ProductService", library, "", "", "", "", "", "", ""]],
        "Condition": [[STAND_IN_FEATURE, str(ALWAYS), "KEPTSTANDIN"]],
        "CustomAction": [["KeepFolder", str(SET_PROPERTY), "INSTALLDIR", "[KEPTFOLDER]"],
                         # Where the list of installed programs says the product is.
                         ["NoteFolder", str(SET_PROPERTY), "ARPINSTALLLOCATION", "[INSTALLDIR]"],
                         ["RefuseFolder", str(FAIL), "", REFUSAL]],
    }


def kept_rows(scope):
    root = str(scope.root)
    return [["KeptFolder", root, OWN_KEY, "InstallDir", "[INSTALLDIR]", product.COMPONENT[0]],
            ["KeptStandIn", root, OWN_KEY, "StandIn", "1", product.STAND_IN],
            ["KeptLanguages", root, OWN_KEY, LANGUAGES, "1", LANGUAGES],
            [LANGUAGES, root, LOCALE_KEY, LANGUAGE_LIST, " ".join(product.languages()), LANGUAGES]]


def event_source_rows():
    """What viewers of the event log need to show the component's entries as sentences."""
    library = product.PLAIN_TEXTS
    return [["EventMessages", str(LOCAL_MACHINE), EVENT_SOURCE, "EventMessageFile",
             f"#%[INSTALLDIR]{library}", library],
            ["EventTypes", str(LOCAL_MACHINE), EVENT_SOURCE, "TypesSupported", f"#{EVENT_TYPES}", library]]


def user_rows(servers):
    """The tables for one user, who may not write where classes of the machine are registered."""
    tables = {name: [] for name in TABLES}
    tables["CreateFolder"] = [[folder, product.COMPONENT[0]] for folder in ("MAKERDIR", "INSTALLDIR")]
    for server in servers:
        tables["Registry"] += user_registration.rows(server, str(CURRENT_USER))
    tables["Registry"] += kept_rows(USER)
    return {**tables, **search_rows(USER)}


def table_rows(servers):
    tables = {name: [] for name in TABLES}
    for server in servers:
        rows, written = class_rows(server)
        for name, added in rows.items():
            tables[name] += added
        tables["TypeLib"].append([server.type_library, "0", server.library,
                                  str(TYPE_LIBRARY_VERSION), "", "", FEATURE, ""])
        tables["Registry"] += registry_rows(server, written)
    # What an installer makes it removes when it is empty.
    tables["CreateFolder"] = [[folder, product.COMPONENT[0]] for folder in ("MAKERDIR", "INSTALLDIR")]
    tables["MsiLockPermissionsEx"] = [["Folder", "INSTALLDIR", "CreateFolder", PERMISSIONS, ""]]
    tables["Registry"] += kept_rows(MACHINE) + event_source_rows()
    return {**tables, **search_rows(MACHINE)}


def import_tables(package, folder, tables):
    arguments = []
    for name, rows in tables.items():
        columns, types, keys = TABLES[name]
        lines = [columns, types, f"{name}\t{keys}", *("\t".join(row) for row in rows)]
        path = folder / f"{name}.idt"
        path.write_bytes("".join(f"{line}\r\n" for line in lines).encode("cp1252"))
        arguments += ["-i", str(path)]
    subprocess.run(["msibuild", str(package), *arguments], check=True)


def action_queries(scope):
    table = "InstallExecuteSequence"
    # A place that is unknown would be the beginning of every folder.
    unsafe = " OR ".join(f"({place} AND INSTALLDIR ~<< {place})" for place in UNSAFE_PLACES)
    for action, (place, condition) in ACTIONS.items():
        yield f"DELETE FROM {table} WHERE Action = '{action}'"
        if action == "RefuseFolder" and scope.is_for_user():
            continue
        condition = condition.replace("UNSAFE", unsafe)
        yield (f"INSERT INTO {table} (Action, Condition, Sequence) VALUES ('{action}', '{condition}', {place})"
               if condition else f"INSERT INTO {table} (Action, Sequence) VALUES ('{action}', {place})")


def version_queries(folder, files):
    """Windows keeps the higher of two versions of a file; a hash is for files without a version."""
    for name in files:
        version = product.file_version(folder / name)
        if version:
            text = ".".join(map(str, version))
            yield f"UPDATE File SET Version = '{text}', Language = '1033' WHERE File = '{name}'"
            yield f"DELETE FROM MsiFileHash WHERE File_ = '{name}'"


def package_code(folder, files, scope):
    digest = hashlib.sha256()
    for name in files:
        digest.update(name.encode() + b"\0" + hashlib.sha256((folder / name).read_bytes()).digest())
    return scope.identifier("package", digest.hexdigest())


def make(folder, package, build, scope=MACHINE):
    sources = product.package_files(folder)
    files = list(sources)
    version = product.package_version(folder)
    date = product.source_date()
    with tempfile.TemporaryDirectory() as temporary:
        work = Path(temporary)
        for name, source in sources.items():
            # A cabinet holds the times and the modes of its files.
            shutil.copyfile(source, work / name)
            os.chmod(work / name, 0o644)
            os.utime(work / name, (date, date))
        (work / "product.wxs").write_text(description(version, files, scope))
        made = work / "product.msi"
        environment = {**os.environ, "TZ": "UTC"}
        subprocess.run(["wixl", "-a", "x64", "-o", str(made), "product.wxs"], cwd=work, check=True,
                       env=environment)
        servers = registration.read_servers(product.REPOSITORY, build)
        import_tables(made, work, user_rows(servers) if scope.is_for_user() else table_rows(servers))
        queries = [*action_queries(scope), *version_queries(work, files),
                   f"UPDATE Feature SET Attributes = {DISALLOW_ADVERTISING}",
                   "UPDATE Component SET Condition = 'NOT PRODUCTSERVICE' "
                   f"WHERE Component = '{product.STAND_IN}'",
                   # A list that is there is the product's, and stays.
                   "UPDATE Component SET Condition = 'NOT PRODUCTLANGUAGES OR KEPTLANGUAGES', "
                   f"KeyPath = '{LANGUAGES}', Attributes = {IS_64_BIT + HAS_REGISTRY_KEY_PATH} "
                   f"WHERE Component = '{LANGUAGES}'"]
        subprocess.run(["msibuild", str(made), *(x for query in queries for x in ("-q", query))],
                       check=True)
        subprocess.run(["msibuild", str(made), "-s", scope.title, product.MAKER, "x64;1033",
                        package_code(work, files, scope)], check=True)
        summary_dates.fix(made, date)
        if scope.is_for_user():
            summary_dates.need_no_rights(made)
        shutil.copyfile(made, package)


if __name__ == "__main__":
    if len(sys.argv) not in (4, 5) or sys.argv[4:] not in ([], ["user"]):
        sys.exit("usage: make_msi.py FOLDER PACKAGE BUILD_FOLDER [user]")
    make(*map(Path, sys.argv[1:4]), USER if sys.argv[4:] else MACHINE)
