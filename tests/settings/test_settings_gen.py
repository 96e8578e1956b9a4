#!/usr/bin/env python3
"""The generator refuses a wrong schema with file and line, and writes only what changed.

In the schemas under schema_bad, each comment behind a line is a problem that has to be told for
exactly this line; no other may be told."""

import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
PROJECT = HERE.parent.parent
GENERATOR = HERE.parent.parent / "tools" / "settings_gen" / "settings_gen.py"


def generate(*arguments):
    return subprocess.run([sys.executable, "-B", str(GENERATOR), *map(str, arguments)],
                          capture_output=True, text=True, check=False)


def expected_problems(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line.startswith("#"):
            for message in re.split(r"\s# ", line)[1:]:
                yield number, message.strip()


class Generator(unittest.TestCase):
    def refuses(self, name):
        with tempfile.TemporaryDirectory() as folder:
            schema = Path(folder) / "schema"
            shutil.copytree(HERE / "schema_bad" / name, schema / name)
            result = generate("--schema", schema, "--output", Path(folder) / "out")
            self.assertEqual(result.returncode, 1)
            self.assertFalse((Path(folder) / "out").exists())
            told = []
            for line in result.stderr.splitlines():
                match = re.match(r".*\.toml:(\d+): (.*)", line)
                self.assertIsNotNone(match, line)
                told.append((int(match[1]), match[2]))
            expected = list(expected_problems(next(schema.glob("*/*.toml"))))
            self.assertGreater(len(expected), 3)
            for number, message in expected:
                hits = [each for each in told if each[0] == number and message in each[1]]
                self.assertEqual(len(hits), 1, f"line {number}: {message}\ntold: {result.stderr}")
                told.remove(hits[0])
            self.assertEqual(told, [], "problems that there are not")

    def test_wrong_fields(self):
        self.refuses("fields")

    def test_repeated_names_and_numbers(self):
        self.refuses("names")

    def test_wrong_orders_and_templates(self):
        self.refuses("orders")

    def test_texts_and_numbers_that_are_not_kept(self):
        self.refuses("texts")

    def test_columns_of_tables(self):
        self.refuses("columns")

    def test_syntax_error_has_its_line(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "schema" / "f" / "CFGConfigA.toml"
            path.parent.mkdir(parents=True)
            path.write_text('class = "CFGConfigA"\nsettings == 1\n')
            result = generate("--schema", path.parent.parent)
            self.assertEqual(result.returncode, 1)
            self.assertIn("CFGConfigA.toml:2:", result.stderr)

    def test_clash_of_error_numbers_is_told_at_both_places(self):
        with tempfile.TemporaryDirectory() as folder:
            schema = Path(folder) / "schema"
            for name in ("CFGConfigA", "CFGConfigB"):
                (schema / "f").mkdir(parents=True, exist_ok=True)
                (schema / "f" / f"{name}.toml").write_text(
                    f'class = "{name}"\nabout = "a"\nsettings = 1\nsetting = [\n'
                    '  { key = "K", get = "getK", value = "text", guard = 902005 },\n]\n')
            result = generate("--schema", schema)
            self.assertEqual(result.returncode, 1)
            for one, other in (("A", "B"), ("B", "A")):
                self.assertRegex(result.stderr, f"CFGConfig{one}.toml:5: error number 902005 is "
                                                f"also in .*CFGConfig{other}.toml:5")
            free = generate("--schema", schema, "--next-numbers")
            self.assertEqual(re.findall(r"= (\d+)", free.stdout), ["900001", "902006"])

    def test_files_that_are_no_class(self):
        for name, content, line, message in (
                ("CFGConfigTop.toml", b"", 1, "no file of the schema"),
                ("f/CFGConfigA.TOML", b"", 1, "no file of the schema"),
                ("f/g/CFGConfigA.toml", b"", 1, "no file of the schema"),
                ("f/CFGConfigA.toml", 'about = "a"\n# Höhe\n'.encode("latin-1"), 2,
                 "no UTF-8: byte 0xF6"),
                ("f/CFGConfigA.toml", b'base = ["a"]\nclass = 1\n', 2, "wrong type"),
                ("templates/range.toml", b"setting = 1\nparameters = []\n", 1, "no list of tables")):
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                path = Path(folder) / "schema" / name
                path.parent.mkdir(parents=True)
                path.write_bytes(content)
                (Path(folder) / "schema" / ".swap").touch()
                result = generate("--schema", Path(folder) / "schema")
                self.assertEqual(result.returncode, 1)
                self.assertIn(f"{name}:{line}: ", result.stderr)
                self.assertIn(message, result.stderr)
                self.assertNotRegex(result.stderr, r"Traceback|\.swap")

    def test_numbers_of_the_schema_are_not_in_the_error_tables(self):
        tables = "".join(path.read_text(encoding="utf-8")
                         for path in (PROJECT / "kpx").glob("*/Operations.h"))
        numbers = dict(re.findall(r'\{(\d+), "([^"]+)"\}', tables))
        self.assertGreater(len(numbers), 30)
        for path in sorted((PROJECT / "kpx" / "settings" / "schema").rglob("*.toml")):
            for number in re.findall(r"\b(?:reset_error|guard|set_guard) = (\d+)",
                                     path.read_text(encoding="utf-8")):
                self.assertNotIn(number, numbers, f"{path}, and {numbers.get(number)}")

    def test_only_what_changed_is_written(self):
        with tempfile.TemporaryDirectory() as folder:
            schema = Path(folder) / "schema"
            shutil.copytree(HERE / "schema_good", schema)
            sample = schema / "sample" / "CFGConfigSample.toml"
            other = schema / "sample" / "CFGConfigOther.toml"
            other.write_text('class = "CFGConfigOther"\nabout = "a"\nsettings = 1\nsetting = [\n'
                             '  { key = "K", get = "getK", value = "text" },\n]\n')
            out = Path(folder) / "out"
            self.assertEqual(generate("--schema", schema, "--output", out).returncode, 0)
            before = {path: path.stat().st_mtime_ns for path in out.rglob("*.*")}
            other.write_text(other.read_text().replace('about = "a"', 'about = "b"'))
            self.assertEqual(generate("--schema", schema, "--output", out).returncode, 0)
            changed = {path.name for path, time in before.items()
                       if path.stat().st_mtime_ns != time}
            self.assertEqual(changed, {"CFGConfigOther.h"})

            found = generate("--schema", schema, "--find", "getBoth")
            line = found.stdout.split(":")[1]
            self.assertIn('"getBoth"', sample.read_text().splitlines()[int(line) - 1])
            for name, expected in (("CFGConfigSample", 'class = "CFGConfigSample"'),
                                   ("CFGSampleStored", 'class = "CFGConfigSample"'),
                                   ("909901", "reset_error"), ("909904", '"S_Text"')):
                found = generate("--schema", schema, "--find", name)
                line = found.stdout.split(":")[1]
                self.assertIn(expected, sample.read_text().splitlines()[int(line) - 1], name)
            nothing = generate("--schema", schema, "--find", "getReall")
            self.assertEqual((nothing.returncode, nothing.stdout), (1, ""))
            self.assertIn("getReal", nothing.stderr.split("Near it:")[1])

    def test_note_stands_where_an_accessor_is_looked_up(self):
        with tempfile.TemporaryDirectory() as folder:
            schema = HERE / "schema_good"
            self.assertEqual(generate("--schema", schema, "--output", folder).returncode, 0)
            header = (Path(folder) / "kpx/settings/CFGConfigSample.h").read_text(encoding="utf-8")
            found = generate("--schema", schema, "--find", "getLZ").stdout
            for text in (header.split(" getLZ()")[0].split(";")[-1], found):
                self.assertIn("writes what the other's getter", " ".join(text.split()))


if __name__ == "__main__":
    unittest.main()
