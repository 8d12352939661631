"""Beyond 4 GiB, where a plain WAV file ends. Needs 9 GB of disk."""

import hashlib
import os
import struct
import unittest

from command_case import OUTPUT
from test_process import ProcessCase


class Large(ProcessCase):
    FRAMES = (1 << 30) + 1000  # 4 bytes each

    def chunks(self, path):
        """Name, place and size of each chunk, and the sizes of the 64-bit one."""
        found = {}
        with open(path, "rb") as file:
            found["container"] = file.read(12)[:4]
            while len(head := file.read(8)) == 8:
                name, size = struct.unpack("<4sI", head)
                found[name] = (file.tell(), size)
                if name == b"ds64":
                    found["sizes"] = struct.unpack("<QQQ", file.read(24))
                    size -= 24
                if name == b"data":
                    return found
                file.seek(size + size % 2, os.SEEK_CUR)

    def digest(self, path):
        with open(path, "rb") as file:
            return hashlib.file_digest(file, "sha1").hexdigest()

    def test_file_is_rf64_with_right_sizes_and_always_the_same(self):
        self.make_silence("in.wav", self.FRAMES)
        self.succeed("render", "Echolan", "in.wav", "out.wav")
        out = self.path("out.wav")
        found = self.chunks(out)
        self.assertEqual(found["container"], b"RF64")
        start, size = found[b"data"]
        self.assertEqual(size, 0xFFFFFFFF)
        self.assertEqual(found["sizes"], (out.stat().st_size - 8, 4 * self.FRAMES, self.FRAMES))
        self.assertEqual(out.stat().st_size, start + 4 * self.FRAMES)
        self.assertNotIn(b"PEAK", found)
        first = self.digest(out)
        self.succeed("render", "Echolan", "in.wav", "out.wav")
        self.assertEqual(self.digest(out), first)
        # It can be read: what fails is the output.
        self.fail_with(OUTPUT, "render", "Echolan", "out.wav", "missing/out.wav", says=("the folder missing",))

    def test_file_between_2_and_4_gib_is_a_wav_file(self):
        self.make_silence("in.wav", (1 << 29) + 1000)
        self.succeed("render", "Echolan", "in.wav", "out.wav")
        found = self.chunks(self.path("out.wav"))
        self.assertEqual((found["container"], found[b"data"][1]), (b"RIFF", 4 * ((1 << 29) + 1000)))


if __name__ == "__main__":
    unittest.main()
