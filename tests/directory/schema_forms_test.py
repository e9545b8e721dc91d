"""The four forms of the directory schema name the same things by the same numbers."""
import re
import unittest
from pathlib import Path

SCHEMA = Path(__file__).resolve().parents[2] / "schema"
ARC = "1.3.6.1.4.1.99999"


def openldap_entries(text, macros):
    """Returns the entries of a definition in the form of OpenLDAP, keyed by name."""
    entries = {}
    for oid, body in re.findall(r"\(\s*([\w.:]+)\s+(NAME(?:[^()]|\([^()]*\))*)\)", text):
        name = re.search(r"NAME '(\w+)'", body)[1]
        number = oid
        while not number[0].isdigit():
            macro, _, rest = number.partition(":")
            number = macros[macro] + ("." + rest if rest else "")
        number = number.replace(":", ".")

        def listed(word):
            found = re.search(word + r"\s+(?:\(([^()]*)\)|(\w+))", body)
            text = (found[1] or found[2]) if found else ""
            return sorted(part.strip() for part in text.split("$") if part.strip())

        entries[name] = (number, listed("MUST"), listed("MAY"), "SINGLE-VALUE" in body)
    return entries


def schema_file():
    text = (SCHEMA / "quillon.schema").read_text()
    text = "\n".join(line for line in text.splitlines() if not line.startswith("#"))
    macros = dict(re.findall(r"objectidentifier (\w+) ([\w.:]+)", text))
    return openldap_entries(text, macros)


def ldif_file():
    text = (SCHEMA / "quillon.ldif").read_text()
    text = re.sub(r"\n ", "", "\n".join(l for l in text.splitlines() if not l.startswith("#")))
    macros = dict(re.findall(r"olcObjectIdentifier: (?:\{\d+\})?(\w+) ([\w.:]+)", text))
    return openldap_entries(text, macros)


def ds389_file():
    text = (SCHEMA / "quillon-389.ldif").read_text()
    text = re.sub(r"\n ", "", "\n".join(l for l in text.splitlines() if not l.startswith("#")))
    return openldap_entries(text, {})


def ldf_blocks():
    return (SCHEMA / "quillon.ldf").read_text().split("\n\n")


def ldf_file():
    entries = {}
    for block in ldf_blocks():
        values = {}
        for name, value in re.findall(r"^(\w+): (.*)$", block, re.M):
            values.setdefault(name, []).append(value)
        if values.get("changetype") != ["add"] or "lDAPDisplayName" not in values:
            continue
        number = (values.get("attributeID") or values["governsID"])[0]
        entries[values["lDAPDisplayName"][0]] = (
            number, sorted(values.get("mustContain", [])), sorted(values.get("mayContain", [])),
            values.get("isSingleValued") == ["TRUE"])
    return entries


class SchemaFormsTest(unittest.TestCase):
    def test_all_forms_agree(self):
        schema = schema_file()
        self.assertEqual({"quillonFolder", "quillonFileBinary", "quillonFileContentsBinary"},
                         set(schema))
        self.assertEqual(schema, ldif_file())
        self.assertEqual(schema, ldf_file())
        self.assertEqual(schema, ds389_file())

    def test_classes_of_active_directory_say_who_may_do_what(self):
        classes = [block for block in ldf_blocks() if "objectClass: classSchema" in block]
        self.assertEqual(2, len(classes))
        for block in classes:
            rights = re.search(r"^defaultSecurityDescriptor: D:(.*)$", block, re.M)[1]
            self.assertEqual({"DA": "RPWPCRCCDCLCLORCWOWDSDDTSW", "SY": "RPWPCRCCDCLCLORCWOWDSDDTSW",
                              "AU": "RPLCLORC"},
                             {who: what for what, who in re.findall(r"\(A;;(\w+);;;(\w+)\)", rights)})

    def test_every_number_hangs_from_the_one_arc(self):
        for number, *_ in schema_file().values():
            self.assertTrue(number.startswith(ARC + "."), number)


if __name__ == "__main__":
    unittest.main()
