"""Runs the examples of the documents and compares what they print with what stands under them."""
import re
import unittest

from packages import INSTALLER, InstallationTest
from windows import REPOSITORY

GUIDE = REPOSITORY / "docs/api.md"
EXAMPLE = re.compile(r"^## (?P<title>[^\n]+)$|^```vbs\n(?P<script>.*?)^```\n\n```text\n(?P<output>.*?)^```$",
                     re.M | re.S)
BEFORE = 'Set depots = CreateObject("DepotIntr.DepotIntrApi")\nsession = depots.DPInitialize()\n'
AFTER = 'depots.DPUnInitialize session\nWScript.Echo "end"\n'


def examples():
    title = "start"
    for match in EXAMPLE.finditer(GUIDE.read_text()):
        if match["title"]:
            title = match["title"]
        else:
            yield title, match["script"], match["output"]


class GuideTest(InstallationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.windows.add(INSTALLER, "C:\\depots.msi")
        assert cls.windows.installer("/i", "C:\\depots.msi", "ADDLOCAL=ALL") == 0
        # With its dialogs the example of choosing would wait for a user.
        assert cls.windows.run("regsvr32.exe", "/s", "/u",
                               "C:\\Program Files\\Quillon\\DepotIntr\\DepotBrowser.dll")[0] == 0

    def run_example(self, script):
        self.windows.define_sample_depots()
        text = (script if script.startswith(BEFORE) else BEFORE + script) + AFTER
        self.windows.path("C:\\example.vbs").write_bytes(text.replace("\n", "\r\n").encode("cp1252"))
        return self.windows.script("C:\\example.vbs")

    def test_examples_print_what_stands_under_them(self):
        for title, script, output in examples():
            with self.subTest(title):
                self.assertEqual((0, output + "end\n"), self.run_example(script))

    def test_every_group_of_methods_has_an_example(self):
        titles = {title for title, _, _ in examples()}
        self.assertLessEqual({"Sessions and values", "Paths", "Files", "Listing", "Publishing",
                              "Choosing files"}, titles)

    def test_every_example_has_its_output(self):
        self.assertEqual(GUIDE.read_text().count("```vbs\n"), len(list(examples())))

    def test_first_script_of_the_overview_prints_what_stands_under_it(self):
        text = (REPOSITORY / "README.md").read_text()
        script, output = re.search(r"```vbs\n(.*?)```\n\n((?:    [^\n]*\n)+)", text, re.S).groups()
        self.windows.define_sample_depots()
        self.windows.path("C:\\first.vbs").write_bytes(script.encode("cp1252"))
        self.assertEqual((0, re.sub(r"^    ", "", output, flags=re.M)), self.windows.script("C:\\first.vbs"))


if __name__ == "__main__":
    unittest.main()
