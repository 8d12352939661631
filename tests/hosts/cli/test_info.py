"""What `info` tells of files."""

import json
import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

from command_case import COMMAND, FILE, USAGE, CommandCase, InstalledCase, UserCase, wav_bytes

TOOL = Path(os.environ["SONVELLE_SOURCES"]) / "tools/make_resources.py"
ITEMS = {"Peak": b"p" * 1708, "Low shelf": b"", "\u00d6l": b"abc"}
FORMS = ([], ["--large"], ["--large", "--compress-index"], ["--large", "--compress-items", "--compress-index", "--bzip2"])


class Resources(CommandCase):
    def make(self, name, *options):
        items = [f"{key}={self.write(f'{number}.bin', data)}" for number, (key, data) in enumerate(ITEMS.items())]
        subprocess.run([sys.executable, "-B", TOOL, *options, self.path(name), *items], check=True)
        return self.path(name)

    def test_are_listed_with_their_sizes_in_every_form(self):
        expected = {"kind": "resources", "resources": [{"id": key, "size": len(data)} for key, data in ITEMS.items()]}
        for options in FORMS:
            with self.subTest(options):
                got = json.loads(self.succeed("info", self.make("a.mrf", *options)))
                got["resources"].sort(key=lambda item: list(ITEMS).index(item["id"]))
                self.assertEqual(got, expected)
                self.assertEqual(list(got), ["kind", "resources"])

    def test_are_known_by_an_extension_of_any_case(self):
        self.make("a.mrf")
        for name in ("b.MRF", "c d.Mrf", "e.x.mRF"):
            shutil.copy(self.path("a.mrf"), self.path(name))
            self.assertEqual(len(json.loads(self.succeed("info", name))["resources"]), 3)

    def test_may_have_a_name_that_begins_with_a_dash(self):
        shutil.copy(self.make("a.mrf"), self.path("-a.mrf"))
        self.succeed("info", "--", "-a.mrf")

    def test_that_are_damaged_give_code_1_and_the_exact_message(self):
        whole = self.make("a.mrf", "--large").read_bytes()
        damaged = whole.replace(b'id="Peak"', b'id="Pear"')
        self.assertNotEqual(damaged, whole)
        short = "Could not read required data from stream."
        for data, last in ((b"", short), (b"x" * 27, short), (damaged, "Resource library file is corrupt."),
                           (b"x" * 100, "Invalid large resource library format.")):
            self.write("b.mrf", data)
            self.fail_with(FILE, "info", "b.mrf", says=("b.mrf: it cannot be read as a resource library",), last=last)

    def test_that_are_cut_off_anywhere_give_code_1(self):
        for options in ([], ["--large"]):
            whole = self.make("a.mrf", *options).read_bytes()
            for length in range(0, len(whole), 97):
                self.write("b.mrf", whole[:length])
                result = self.run_command("info", "b.mrf")
                self.assertEqual((result.code, result.out, len(result.err.split("\n"))), (FILE, "", 3), length)

    def test_that_are_not_there_give_code_1(self):
        for name in ("missing.mrf", "no folder/a.mrf"):
            self.fail_with(FILE, "info", name, says=(name,), last=f'File "{name}" could not be open. Make sure it exists.')
        self.path("folder.mrf").mkdir()
        self.fail_with(FILE, "info", "folder.mrf", says=("folder.mrf",),
                       last='File "folder.mrf" could not be open. Make sure it exists.')

    def test_touch_neither_the_library_nor_its_settings(self):
        self.succeed("info", self.make("a.mrf"))
        self.assertEqual(list(self.data.rglob("*")), [])


class WithoutLibrary(InstalledCase):
    def test_files_are_described(self):
        shutil.copy(TOOL, self.path("x"))
        subprocess.run([sys.executable, "-B", TOOL, self.path("a.mrf"), f"x={self.path('x')}"], check=True)
        self.assertIn('"x"', self.succeed("info", "a.mrf"))


class OtherKinds(CommandCase):
    def test_cannot_be_read_yet(self):
        for name, kind in (("a.wav", "samples"), ("a", "samples"), ("mrf", "samples"), ("a.QXMULTISAMPLE", "multisamples"),
                           ("a.qxSubSampleLib", "subsample libraries")):
            self.write(name, wav_bytes(b"\0\1" * 100))
            self.fail_with(FILE, "info", name, says=(f"{name}: {kind} cannot be read yet",))

    def test_that_are_not_there_are_told(self):
        self.fail_with(FILE, "info", "missing.wav", says=("missing.wav: No such file or directory",))
        self.fail_with(FILE, "info", "", says=("No such file or directory",))
        self.fail_with(FILE, "info", self.folder, says=("Is a directory",))

    def test_a_name_is_needed(self):
        self.fail_with(USAGE, "info", says=("see: sonvelle help",))
        self.fail_with(USAGE, "info", "a", "b", says=("see: sonvelle help",))


class Unreadable(UserCase):
    def test_gives_code_1(self):
        self.write("a.mrf", b"x").chmod(0)
        self.fail_with(FILE, "info", "a.mrf", says=("a.mrf",), last='File "a.mrf" could not be open. Make sure it exists.')


if __name__ == "__main__":
    unittest.main()
