"""A small repository in a temporary folder, for tests of the tools."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOLS = Path(__file__).resolve().parents[2] / "tools"


class TreeCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve()

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path

    def script(self, name, text):
        self.write(name, "#!/bin/bash\n" + text).chmod(0o755)

    def call(self, *command, **options):
        """(exit code, standard output, standard error)"""
        done = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
        return done.returncode, done.stdout, done.stderr

    def check(self, tool, *arguments):
        """(exit code, everything printed) of a check over the small repository."""
        code, out, err = self.call(sys.executable, "-B", TOOLS / tool, *(arguments or (self.root,)))
        return code, out + err

    def assert_finds(self, tool, *expected):
        code, output = self.check(tool)
        self.assertEqual(code, 1, output)
        for text in expected:
            self.assertIn(text, output)
        self.assertIn(f"\n{len(expected)} finding", output)

    def assert_clean(self, tool):
        code, output = self.check(tool)
        self.assertEqual(code, 0, output)
