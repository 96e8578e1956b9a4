#!/usr/bin/env python3
"""The generator of the built-in texts must take good tables as they are and refuse bad lines."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

GENERATOR = Path(__file__).resolve().parents[3] / "tools" / "texts_gen" / "texts_gen.py"
sys.path.insert(0, str(GENERATOR.parent))

import texts_gen  # noqa: E402


class TextsGen(unittest.TestCase):
    def run_on(self, content):
        """(exit code, messages, written source or None)"""
        with tempfile.TemporaryDirectory() as folder:
            table, output = Path(folder) / "texts.tsv", Path(folder) / "texts.cpp"
            table.write_bytes(content)
            run = subprocess.run([sys.executable, "-B", GENERATOR, table, output],
                                 capture_output=True, text=True, check=False)
            return run.returncode, run.stderr, output.read_text() if output.exists() else None

    def test_bad_lines_are_named_and_nothing_is_written(self):
        bad = {"no tab": "7 text", "no id": "x\ttext", "beyond 32 bits": "2147483648\ttext",
               "no text": "7\t", "unknown escape": "7\ta\\q", "short number": "7\t\\u12",
               "open escape": "7\ta\\",
               "raw tab": "7\ta\tb", "carriage return inside": "7\ta\rb"}
        for case, line in bad.items():
            with self.subTest(case):
                code, messages, source = self.run_on(f"1\tgood\n{line}\n".encode())
                self.assertEqual(code, 1)
                self.assertIn("texts.tsv:2: ", messages)
                self.assertIsNone(source)
        self.assertEqual(self.run_on(b"1\t\xff\n")[0], 1)
        self.assertEqual(self.run_on(b"# no texts\n")[0], 1)

    def test_good_lines(self):
        rows, problems = [], []
        with tempfile.TemporaryDirectory() as folder:
            table = Path(folder) / "texts.tsv"
            table.write_bytes("\ufeff# comment\r\n7\ta\\n\\\\n \r\n\n7\t# ä😀\n-3\t\\uD83D\\r".encode())
            rows, problems = texts_gen.read_table(table)
        self.assertEqual(problems, [])
        self.assertEqual(rows, [(7, "a\n\\n "), (7, "# ä😀"), (-3, "\ud83d\r")])
        source = texts_gen.cpp_source(rows)
        self.assertIn("{7, 0, 5}", source)
        self.assertIn("{7, 5, 5}", source)
        self.assertIn("55357, 56832, 55357, 13", source)
        self.assertIn("builtInPlaces[] = {\n    2, 1,\n}", source)


if __name__ == "__main__":
    unittest.main()
