"""What all tests of the tool share: kpx as a process, and a folder with a configuration."""

import sys
import tempfile
import unittest
from pathlib import Path

from runner import RUNNER, run

PROGRAM = sys.argv[1]
KPX = [*RUNNER, PROGRAM]
ON_WINDOWS = PROGRAM.endswith(".exe")


def kpx(*arguments, stdin=b""):
    done = run([PROGRAM, *map(str, arguments)], input=stdin)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.file = Path(self.folder.name) / "general.xml"
        code, out, _ = kpx("config", "defaults", "CFGGeneralSettings")
        self.assertEqual(code, 0)
        self.file.write_bytes(out.encode())

    def write(self, name, content):
        path = Path(self.folder.name) / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def answers(self, expected, *arguments, stdin=b""):
        """Runs kpx, checks the exit code and that data and messages do not mix."""
        code, out, err = kpx(*arguments, stdin=stdin)
        self.assertEqual(code, expected, f"{arguments}\n{out}\n{err}")
        if expected >= 2:
            self.assertTrue(err.strip(), "a failure without a message")
        return out, err
