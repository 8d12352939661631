"""What `info` tells of files."""

import json
import math
import os
import shutil
import struct
import subprocess
import sys
import unittest
from pathlib import Path

from command_case import COMMAND, FILE, USAGE, CommandCase, InstalledCase, UserCase, float_wav, wav_bytes

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
        self.write("a.wav", wav_bytes(bytes(4)))
        self.assertIn('"sample"', self.succeed("info", "a.wav"))


def zsd_bytes(channels, length, rate, peak, integers):
    return b"ZSD1" + bytes(32) + struct.pack("<iiif", rate, channels, length, peak) + bytes(8) + struct.pack(
        f"<{len(integers)}i", *integers)


def layer_one_bytes(frames):
    """MPEG-1 layer I, 32 kbit/s, mono, 44.1 kHz: frames of 32 bytes without any samples."""
    return (b"\xff\xff\x10\xc0" + bytes(28)) * frames


class Samples(CommandCase):
    def info(self, name, data):
        return json.loads(self.succeed("info", self.write(name, data)))

    def test_are_described(self):
        got = self.info("a.wav", wav_bytes(struct.pack("<6h", 0, 5, -32767, 7, 0, 1), channels=2, rate=32000))
        self.assertEqual(got, {"kind": "sample", "channels": 2, "rate": 32000, "length": 3, "bits": 16, "peak": 1.0})
        self.assertEqual(list(got), ["kind", "channels", "rate", "length", "bits", "peak"])
        got = self.info("a.zsd", zsd_bytes(3, 2, 8000, 0.25, [0, 0, 0, 0, 0, -0x80000000]))
        self.assertEqual(got, {"kind": "sample", "channels": 3, "rate": 8000, "length": 2, "bits": 32, "peak": 0.25})
        got = self.info("a.mp3", b"ID3\3\0\0\0\0\0\5hello" + layer_one_bytes(5) + b"TAG" + bytes(125))
        self.assertEqual(got, {"kind": "sample", "channels": 1, "rate": 44100, "length": 1920, "bits": 16, "peak": 0})

    def test_are_what_their_extension_says(self):
        for name in ("b.WAV", "c.x.Wav"):
            self.assertEqual(self.info(name, wav_bytes(bytes(10)))["length"], 5)
        for name in ("a", "mrf", "a.aiff", "wav"):
            self.assertEqual(self.info(name, zsd_bytes(1, 1, 1, 1, [5]))["length"], 1)
            self.write(name, wav_bytes(bytes(100)))
            self.fail_with(FILE, "info", name, says=(f"{name}, byte 0: it cannot be read as a sample",),
                           last="Invalid file contents. Invalid ZSD header.")

    def test_have_a_peak_whatever_their_numbers(self):
        self.assertEqual(self.info("a.wav", float_wav([[math.nan, -2.5, 1]]))["peak"], 2.5)
        self.assertEqual(self.info("a.wav", float_wav([[math.nan]]))["peak"], 0)
        self.assertIsNone(self.info("a.wav", float_wav([[-math.inf, 1]]))["peak"])

    def test_that_are_damaged_give_code_1_and_the_exact_message_and_place(self):
        for name, data, place, last in (
                ("a.wav", b"RIFF", "byte 0", "No WAVe header found."),
                ("a.wav", wav_bytes(bytes(10), channels=9), "byte 20", "Invalid WAVe file format tag contents."),
                ("a.wav", wav_bytes(bytes(10), size=2000000000), "byte 44", "Could not load WAV samples."),
                ("a.zsd", zsd_bytes(8, 0x7FFFFFFF, 1, 1, []), "byte 60", "Could not load samples."),
                ("a.mp3", b"", "byte 0", "MPEG stream header error."),
                ("a.mp3", b"\xff\xfb\0\0" * 100, "byte 0", "Error initializing MPEG decoder."),
                ("a.mp3", layer_one_bytes(1)[:-1], "byte 0", "Error decompressing MPEG stream.")):
            self.write(name, data)
            self.fail_with(FILE, "info", name, says=(f"{name}, {place}: it cannot be read as a sample",),
                           last="Invalid file contents. " + last)
        self.write("a.wav", wav_bytes(bytes(10), bits=12))
        self.fail_with(FILE, "info", "a.wav", says=("a.wav, byte 44",), last="Invalid source bitrate.")

    def test_that_are_not_there_are_told(self):
        for name in ("missing.wav", "", "no folder/a.mp3"):
            self.fail_with(FILE, "info", name, says=(f"{name}: it cannot be read as a sample",),
                           last=f'File "{name}" could not be open. Make sure it exists.')
        self.path("folder.wav").mkdir()
        self.fail_with(FILE, "info", "folder.wav", says=("folder.wav",),
                       last='File "folder.wav" could not be open. Make sure it exists.')

    def test_touch_neither_the_library_nor_its_settings(self):
        self.info("a.wav", wav_bytes(bytes(4)))
        self.assertEqual(list(self.data.rglob("*")), [])


class Usage(CommandCase):
    def test_a_name_is_needed(self):
        self.fail_with(USAGE, "info", says=("see: sonvelle help",))
        self.fail_with(USAGE, "info", "a", "b", says=("see: sonvelle help",))


class Unreadable(UserCase):
    def test_gives_code_1(self):
        self.write("a.mrf", b"x").chmod(0)
        self.fail_with(FILE, "info", "a.mrf", says=("a.mrf",), last='File "a.mrf" could not be open. Make sure it exists.')


if __name__ == "__main__":
    unittest.main()
