"""What `cmake --install` puts where, and that it works there."""

import os
import shutil
import subprocess
import unittest
from pathlib import Path

from command_case import CommandCase, Wav

BUILD = os.environ["SONVELLE_BUILD"]
PREFIX = os.environ["SONVELLE_PREFIX"]  # that the build was configured with


def names(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*"))


def built_content():
    return [name for name in names(Path(BUILD) / "content") if not name.startswith(".")]


class Install(CommandCase):
    def install(self, *options, **environment):
        subprocess.run(["cmake", "--install", BUILD, *options], check=True, stdout=subprocess.DEVNULL,
                       env=os.environ | environment)

    def expect_works(self, prefix):
        self.command = prefix / "bin/sonvelle"
        self.assertIn("Echolan", self.succeed("list"))
        self.assertEqual([path.name for path in prefix.glob("lib*/**/sonvelle/*")], ["Sonvelle.so"])
        self.assertEqual((prefix / "share/man/man1/sonvelle.1").read_text(), self.succeed("help", "--man"))
        if (Path(BUILD) / "content").is_dir():
            self.expect_content(prefix)

    def expect_content(self, prefix):
        """Everything that was built, and a state of it plays from anywhere."""
        content = prefix / "share/sonvelle"
        self.assertEqual(names(content), built_content())
        (self.data / "Tessaron/SonvelleConfiguration.cfg").unlink()  # of the commands before
        self.succeed("register", cwd="/")
        state = content / "states/Playbox/Church bell.xml"
        self.succeed("render", "Playbox", self.path("bell.wav"), "--state", state, "--note", "60:1:0:1", cwd="/")
        self.assertGreater(max(Wav(self.path("bell.wav")).interleaved), 0.5)
        self.path("bell.wav").unlink()

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

    def test_a_format_alone_brings_the_content_that_its_presets_play(self):
        for component, file in (("LV2", "lib/lv2/Sonvelle.lv2/manifest.ttl"), ("CLAP", "lib/clap/Sonvelle.clap"),
                                ("VST3", "lib/vst3/Sonvelle.vst3/Contents")):
            prefix = self.path(component)
            self.install("--prefix", prefix, "--component", component)
            self.assertTrue((prefix / file).exists())
            self.assertEqual(len(list((prefix / "lib").iterdir())), 1)
            if (Path(BUILD) / "content").is_dir():
                self.assertEqual(names(prefix / "share/sonvelle"), built_content())


if __name__ == "__main__":
    unittest.main()
