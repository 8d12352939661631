"""The manual page: all of the help, without a complaint of the formatter."""

import os
import re
import shutil
import subprocess
import unittest
from pathlib import Path

from command_case import CommandCase

BUILT = Path(os.environ["SONVELLE_BUILD"]) / "sonvelle.1"


class ManPage(CommandCase):
    def test_that_is_installed_is_the_one_that_the_command_prints(self):
        self.assertEqual(BUILT.read_text(), self.succeed("help", "--man"))

    def test_explains_every_command_and_option(self):
        page = self.succeed("help", "--man").replace("\\-", "-")
        commands = re.findall(r"^  ([\w-]+) ", self.succeed("help").split("Commands:")[1], re.M)
        self.assertIn("make-subsamples", commands)
        for command in commands:
            self.assertIn(f"\n.SS {command}\n\\fBsonvelle {command}\\fR", page)
            for option in re.findall(r"^  (--[\w-]+)", self.succeed("help", command), re.M):
                self.assertIn(f"\\fB{option}\\fR", page)
        self.assertIn("\nFile names that begin with", page)
        for section in ("NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "EXIT STATUS", "FILES", "EXAMPLES"):
            self.assertIn(f"\n.SH {section}\n", page)

    @unittest.skipUnless(shutil.which("groff"), "no groff")
    def test_is_formatted_without_warnings(self):
        done = subprocess.run(["groff", "-man", "-ww", "-Tutf8", "-P-c", BUILT], capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        text = done.stdout.decode()
        self.assertIn("sonvelle - list audio plug-ins and render sound files", re.sub(r".\x08|\s+", lambda m: " " if m.group().isspace() else "", text))

    @unittest.skipUnless(shutil.which("mandoc"), "no mandoc")
    def test_satisfies_mandoc(self):
        done = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", BUILT], capture_output=True)
        self.assertEqual(done.stdout, b"")


if __name__ == "__main__":
    unittest.main()
