#!/usr/bin/env python3
"""The settings reference shows every setting once, with links that lead somewhere, whatever
characters its texts have."""

import re
import subprocess
import sys
import tempfile
import unittest
from html.parser import HTMLParser
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent.parent
TOOLS = PROJECT / "tools" / "settings_gen"
sys.path.insert(0, str(TOOLS))
from reference import breakable  # noqa: E402
from schema import Problems, read_enumerations, read_schema  # noqa: E402

ENUMERATIONS = PROJECT / "kpx" / "settings" / "Enumerations.h"

HOSTILE = {"CFGConfigHostile": r'''
settings = 7
setting = [
  { key = "Base: Radio RTS/CTS", get = "getA", set = "setA", value = "text", caption = "7", group = "GetMLT(7)" },
  { key = "Base: Radio RTS CTS", get = "getB", set = "setB", value = "long", caption = " x", group = "8" },
  { key = "</td><b>&lt;|`'{{total}}", get = "getC", set = "setC", value = "text", caption = "<i>|*ß", group = "" },
  { key = "ä", get = "getD", set = "setD", value = "double", decimals = -1, caption = "c", group = "g" },
  { key = "Ä", get = "getE", value = "long", missing = -1, guard = 909801, older_key = "Old", note = "a <b> | b" },
  { key = "ä", get = "getF", value = "text", shares_key = true },
  { key = "Gone", value = "long", caption = "c", group = "g" },
]
constructor = [
  { key = "Gone", to = 3 },
  { set = "setC", to = "</script><script>alert(1)</script>\n\"ß\"" },
  { set = "setD", to = 0.5 },
]
''', "CFGConfigNothing": "settings = 0\n"}


class Reader(HTMLParser):
    """The ids, links, tags and rows of a page, read as a browser does."""

    def __init__(self, text):
        super().__init__()
        self.ids, self.links, self.tags, self.rows = [], [], [], []
        self.sources = []
        self.cell = None
        self.small = []
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.tags.append(tag)
        self.ids += [attributes["id"]] if "id" in attributes else []
        self.links += [attributes["href"]] if "href" in attributes else []
        self.sources += [attributes["src"]] if "src" in attributes else []
        if tag == "section":
            self.name = attributes["id"]
        elif tag == "tr":
            self.rows.append([self.name])
        elif tag == "td":
            self.rows[-1].append("")
            self.cell = self.rows[-1]
        elif tag == "small" and self.cell:
            self.small.append("")
            self.cell = self.small

    def handle_endtag(self, tag):
        if tag == "td":
            self.cell = None

    def handle_data(self, data):
        if self.cell:
            self.cell[-1] += data

    def cells(self):
        """Class, key and the other cells of each setting, without what stands behind the key."""
        return [[row[0], row[1].removeprefix("#").rstrip(), *row[2:]]
                for row in self.rows if row[1:]]


class Reference(unittest.TestCase):
    def write(self, *arguments):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        out = Path(folder.name) / "out"
        result = subprocess.run(
            [sys.executable, "-B", str(TOOLS / "reference.py"), "--output", str(out),
             *map(str, arguments)], capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 0, result.stderr)
        return out, Reader((out / "index.html").read_text(encoding="utf-8"))

    def write_hostile(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        schema = Path(folder.name) / "schema"
        (schema / "f_g").mkdir(parents=True)
        for name, text in HOSTILE.items():
            (schema / "f_g" / f"{name}.toml").write_text(
                f'class = "{name}"\nabout = "a <b> & c"\n{text}', encoding="utf-8")
        texts = Path(folder.name) / "texts.tsv"
        texts.write_text("7\tGröße <5>\n", encoding="utf-8")
        return self.write("--schema", schema, "--texts", texts)

    def test_every_setting_of_the_schema_stands_once(self):
        problems = Problems()
        schema = read_schema(PROJECT / "kpx" / "settings" / "schema",
                             read_enumerations(ENUMERATIONS), problems)
        self.assertEqual(problems.told(), [])
        expected = [(each.name, setting.key, setting.get, setting.set)
                    for each in schema for setting in each.settings]
        expected += [(each.name, column.key, "", "") for each in schema for column in each.columns]
        out, page = self.write()
        self.assertEqual(sorted(tuple(row[:4]) for row in page.cells()), sorted(expected))
        rows = [line for path in out.glob("*.md")
                for line in path.read_text(encoding="utf-8").splitlines()
                if line.startswith("| ") and not line.startswith("| key ")]
        self.assertEqual(len(rows), len(expected))

    def test_links_resolve_and_nothing_is_fetched(self):
        for out, page in (self.write(), self.write_hostile()):
            self.assertEqual(len(page.ids), len(set(page.ids)))
            self.assertEqual(page.sources, [])
            self.assertNotIn("link", page.tags)
            for link in page.links:
                self.assertTrue(link.startswith("#") and link[1:] in page.ids
                                or (out / link).is_file(), link)
            for path in out.glob("*.md"):
                text = path.read_text(encoding="utf-8")
                for link in re.findall(r"\]\(([^)]*)\)", text):
                    self.assertTrue(f'<a id="{link[1:]}">' in text if link.startswith("#")
                                    else (out / link).is_file(), link)

    def test_any_text_comes_through_unchanged(self):
        out, page = self.write_hostile()
        by_getter = {row[2]: row for row in page.cells()}
        self.assertEqual(by_getter["getC"][1], "</td><b>&lt;|`'{{total}}")
        self.assertEqual(by_getter["getC"][6], r'"</script><script>alert(1)</script>\n\"ß\""')
        self.assertEqual(by_getter["getC"][7:9], ["<i>|*ß", '""'])
        self.assertEqual(page.tags.count("script"), 1)
        self.assertNotIn("b", page.tags)
        for line in (out / "f_g.md").read_text(encoding="utf-8").splitlines():
            if line.startswith("|"):
                self.assertEqual(len(re.findall(r"(?<!\\)\|", line)), 11, line)

    def test_what_the_cells_say(self):
        page = self.write_hostile()[1]
        by_getter = {row[2]: row[4:] for row in page.cells()}
        for getter, expected in {
            # type, decimals, default, caption, group, when missing, errors
            "getA": ["text · 4", "", "–", "7 Größe <5>", "GetMLT(7) Größe <5>", '""', ""],
            "getB": ["long · 1", "", "–", '" x"', "8", "0", ""],
            "getD": ["double · 3", "all (-1)", "0.5", "c", "g", "0.0", ""],
            "getE": ["long · 1", "", "–", "", "", "-1", "909801 get"],
            "getF": ["text · 4", "", "0.5", "", "", '""', ""],
            "": ["long · 1", "", "3", "c", "g", "", ""],
        }.items():
            self.assertEqual(by_getter[getter], expected, getter)
        self.assertIn("CFGConfigNothing", page.ids)
        self.assertEqual(page.small, ["older: Old ", "a <b> | b"])

    def test_names_break_at_humps_only(self):
        for pieces in (["get", "GEO2", "RDF", "Meas", "Set"], ["TACHY_", "Tol_", "XY"],
                       ["Groß", "Kleinschreibung"], ["UTMX"], ["a&lt;b"]):
            self.assertEqual(breakable("".join(pieces).replace("&lt;", "<")), "<wbr>".join(pieces))


if __name__ == "__main__":
    unittest.main()
