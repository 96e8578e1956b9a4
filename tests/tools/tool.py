"""What all tests of the tool share: kpx as a process, and a folder with a configuration."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

# The program, behind the one that runs it where it was built for another system.
KPX = [*os.environ.get("KPX_RUNNER", "").split(), sys.argv[1]]
ON_WINDOWS = KPX[-1].endswith(".exe")


def kpx(*arguments, stdin=b""):
    done = subprocess.run([*KPX, *map(str, arguments)], input=stdin, capture_output=True,
                          timeout=120)
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
