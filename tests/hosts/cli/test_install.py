"""What `cmake --install` puts where, and that it works there."""

import os
import shutil
import subprocess
import unittest

from command_case import CommandCase

BUILD = os.environ["SONVELLE_BUILD"]
PREFIX = os.environ["SONVELLE_PREFIX"]  # that the build was configured with


class Install(CommandCase):
    def install(self, *options, **environment):
        subprocess.run(["cmake", "--install", BUILD, *options], check=True, stdout=subprocess.DEVNULL,
                       env=os.environ | environment)

    def expect_works(self, prefix):
        self.command = prefix / "bin/sonvelle"
        self.assertIn("Echolan", self.succeed("list"))
        self.assertEqual([path.name for path in prefix.rglob("*.so")], ["Sonvelle.so"])
        self.assertEqual((prefix / "share/man/man1/sonvelle.1").read_text(), self.succeed("help", "--man"))

    def test_into_a_prefix(self):
        prefix = self.path("a prefix")
        self.install("--prefix", prefix)
        self.expect_works(prefix)

    def test_may_be_moved(self):
        self.install("--prefix", self.path("first"))
        shutil.move(self.path("first"), self.path("second"))
        self.expect_works(self.path("second"))

    def test_into_a_destination_folder(self):
        self.install(DESTDIR=str(self.path("package")))
        self.assertEqual(self.names(), ["package"])
        self.expect_works(self.path("package") / PREFIX.lstrip("/"))


if __name__ == "__main__":
    unittest.main()
