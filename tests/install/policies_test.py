"""The templates for the editor of group policies: whole in every language, and each setting is one that
the component reads."""
import json
import re
import unittest
import xml.etree.ElementTree as tree
import zipfile

from packages import DIST, PORTABLE, InstallationTest, product
from windows import REPOSITORY

NAMESPACE = "{http://schemas.microsoft.com/GroupPolicy/2006/07/PolicyDefinitions}"
CULTURES = {"eng": "en-US", "fra": "fr-FR", "deu": "de-DE", "esp": "es-ES", "ita": "it-IT", "jpn": "ja-JP",
            "prt": "pt-PT"}
REFERENCE = re.compile(r"\$\((string|presentation)\.(\w+)\)")
FOLDER = "C:\\Portable"


def read(path):
    """An element tree without name spaces."""
    root = tree.parse(path).getroot()
    for element in root.iter():
        if not element.tag.startswith(NAMESPACE):
            raise ValueError(f"{path}: {element.tag} is of another name space")
        element.tag = element.tag.removeprefix(NAMESPACE)
    return root


TEMPLATE = read(DIST / "policies/DepotIntr.admx")
POLICIES = {policy.get("name"): policy for policy in TEMPLATE.iter("policy")}


def texts(culture):
    return read(DIST / "policies" / culture / "DepotIntr.adml")


def value_of(element):
    """The type and the data of a value element."""
    (value,) = element
    return ("REG_DWORD", value.get("value")) if value.tag == "decimal" else ("REG_SZ", value.text)


def written(policy, state):
    """What the editor writes for a policy: (key, name, type, data). Elements take their lowest value, or a
    text of their own."""
    key, values = policy.get("key"), []
    single = policy.find(f"{state}Value")
    if single is not None:
        values.append((key, policy.get("valueName"), *value_of(single)))
    for item in policy.iterfind(f"{state}List/item"):
        values.append((item.get("key", key), item.get("valueName"), *value_of(item.find("value"))))
    for element in (policy.find("elements") if state == "enabled" else None) or ():
        name = element.get("valueName")
        if element.tag == "decimal":
            values.append((key, name, "REG_DWORD", element.get("minValue")))
        elif element.tag == "text":
            values.append((key, name, "REG_EXPAND_SZ", "C:\\trace.txt"))
        elif element.tag == "list":
            values.append((element.get("key"), "batch.exe", "REG_SZ", "batch.exe"))
        else:
            values.append((key, name, *value_of(element[1].find("value"))))
    return values


class TemplatesTest(unittest.TestCase):
    def test_every_language_of_the_product_has_its_texts(self):
        self.assertEqual(set(product.languages()), set(CULTURES))
        folders = {path.parent.name for path in (DIST / "policies").glob("*/DepotIntr.adml")}
        self.assertEqual(set(CULTURES.values()), folders)

    def test_templates_are_those_of_the_tree(self):
        for path in (REPOSITORY / "policies").rglob("DepotIntr.adm*"):
            packed = DIST / "policies" / path.relative_to(REPOSITORY / "policies")
            self.assertEqual(path.read_bytes(), packed.read_bytes())

    def test_every_text_is_there_in_every_language_and_none_is_left_over(self):
        wanted = {"string": set(), "presentation": set()}
        for element in TEMPLATE.iter():
            for text in element.attrib.values():
                for kind, name in REFERENCE.findall(text):
                    wanted[kind].add(name)
        for culture in CULTURES.values():
            root = texts(culture)
            for kind, names in wanted.items():
                found = [element.get("id") for element in root.iter(kind)]
                self.assertEqual(sorted(names), sorted(found), culture)
            self.assertTrue(all(element.text.strip() for element in root.iter("string")), culture)

    def test_texts_are_translated(self):
        english = {e.get("id"): e.text for e in texts("en-US").iter("string")}
        for culture in set(CULTURES.values()) - {"en-US"}:
            same = [e.get("id") for e in texts(culture).iter("string")
                    if e.text == english[e.get("id")] and not e.get("id").startswith("Language_")]
            self.assertEqual(["Maker", "Product"], same, culture)

    def test_every_element_has_its_field_in_every_language(self):
        for culture in CULTURES.values():
            fields = {p.get("id"): [f.get("refId") for f in p] for p in texts(culture).iter("presentation")}
            for name, policy in POLICIES.items():
                elements = [e.get("id") for e in policy.find("elements") or ()]
                self.assertEqual(elements, fields.get(name, []), f"{culture} {name}")

    def test_parts_of_a_policy_stand_in_the_order_that_editors_take(self):
        order = ["parentCategory", "supportedOn", "enabledValue", "disabledValue", "enabledList", "disabledList",
                 "elements"]
        for name, policy in POLICIES.items():
            places = [order.index(part.tag) for part in policy]
            self.assertEqual(sorted(places), places, name)
            self.assertEqual("DepotIntr", policy.find("parentCategory").get("ref"))
            self.assertEqual("SUPPORTED_Any", policy.find("supportedOn").get("ref"))

    def test_policies_stand_where_users_may_not_write(self):
        for policy in POLICIES.values():
            for state in ("enabled", "disabled"):
                for key, *_ in written(policy, state):
                    self.assertTrue(key.startswith("Software\\Policies\\Quillon\\"), key)

    def test_languages_are_those_of_the_product(self):
        codes = [item.find("value/string").text for item in POLICIES["Language"].iter("item")
                 if item.get("displayName")]
        self.assertEqual(list(product.languages()), codes)


class PoliciesTest(InstallationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        folder = cls.windows.path(FOLDER)
        folder.mkdir()
        with zipfile.ZipFile(PORTABLE) as archive:
            archive.extractall(folder)

    def check(self):
        code, output = self.windows.run(f"{FOLDER}\\depotctl.exe", "check", "--offline", "--json")
        return json.loads(output)["settings"]

    def assert_read(self, hive, short, policy, state):
        values = written(policy, state)
        for key, name, kind, data in values:
            code, output = self.windows.run("reg.exe", "add", f"{short}\\{key}", "/v", name, "/t", kind, "/d",
                                            data, "/f")
            self.assertEqual(0, code, output)
        settings = self.check()
        owner = "machine policy" if short == "HKLM" else "user policy"
        for key, name, _, data in values:
            listed = key.endswith("\\QuietHosts")
            wanted = {"name": "QuietHosts" if listed else name, "value": data, "from": owner,
                      "key": f"{hive}\\{key}"}
            self.assertIn(wanted, settings)
        for key in {key for key, *_ in values}:
            self.windows.run("reg.exe", "delete", f"{short}\\{key}", "/f")

    def test_every_policy_of_the_machine_is_read(self):
        for policy in POLICIES.values():
            for state in ("enabled", "disabled"):
                self.assert_read("HKEY_LOCAL_MACHINE", "HKLM", policy, state)

    def test_every_policy_of_the_user_is_read(self):
        both = [policy for policy in POLICIES.values() if policy.get("class") == "Both"]
        self.assertEqual(6, len(both))
        for policy in both:
            self.assert_read("HKEY_CURRENT_USER", "HKCU", policy, "enabled")

    def test_without_policies_everything_is_as_it_is_shipped(self):
        self.assertEqual({"default"}, {setting["from"] for setting in self.check()})


if __name__ == "__main__":
    unittest.main()
