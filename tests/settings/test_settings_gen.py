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

    def test_error_number_of_another_class_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            schema = Path(folder) / "schema"
            for name in ("CFGConfigA", "CFGConfigB"):
                (schema / "f").mkdir(parents=True, exist_ok=True)
                (schema / "f" / f"{name}.toml").write_text(
                    f'class = "{name}"\nabout = "a"\nsettings = 1\nsetting = [\n'
                    '  { key = "K", get = "getK", value = "text", guard = 5 },\n]\n')
            result = generate("--schema", schema)
            self.assertEqual(result.returncode, 1)
            self.assertRegex(result.stderr, r"CFGConfigB.toml:5: repeated error number 5")

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
            self.assertEqual(generate("--schema", schema, "--find", "getNothing").returncode, 1)


if __name__ == "__main__":
    unittest.main()
