import array
import struct
import sys

from tree_case import TOOLS, TreeCase


def wav(code, channels, bits, data, extra=b""):
    head = struct.pack("<HHIIHH", code, channels, 48000, 48000 * channels * bits // 8, channels * bits // 8, bits)
    body = b"WAVE" + b"junk" + struct.pack("<I", 3) + b"abc\0"
    body += b"fmt " + struct.pack("<I", len(head + extra)) + head + extra + b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", len(body)) + body


class DemoTable(TreeCase):
    def table(self, first, second):
        (self.root / "in.wav").write_bytes(first)
        (self.root / "out.wav").write_bytes(second)
        return self.call(sys.executable, "-B", TOOLS / "demo_table.py", self.root / "in.wav", self.root / "out.wav")

    def test_it_shows_length_peak_and_rms_of_both_files_and_the_tail(self):
        integers = array.array("h", [16384, -16384] * 24000).tobytes()
        floats = array.array("f", [2.0, 0.0] * 96000).tobytes()
        code, out, err = self.table(wav(1, 1, 16, integers), wav(3, 2, 32, floats))
        self.assertEqual(code, 0, err)
        rows = [line.split() for line in out.splitlines()]
        self.assertEqual(rows[1], "in 48000 Hz 1 1.00 s -6.0 dB -6.0 dB".split())
        self.assertEqual(rows[2], "out 48000 Hz 2 2.00 s 6.0 dB 3.0 dB".split())
        self.assertEqual(rows[3], "tail: 1.00 s".split())

    def test_it_reads_24_bits_and_the_extensible_header(self):
        guid = struct.pack("<HHI", 22, 24, 0) + struct.pack("<H", 1) + bytes(14)
        half = b"\0\0\xc0" * 480
        code, out, err = self.table(wav(0xFFFE, 1, 24, half, guid), wav(1, 1, 24, half))
        self.assertEqual(code, 0, err)
        self.assertEqual(out.count("-6.0 dB"), 4)
        self.assertIn("tail: 0.00 s", out)

    def test_silence_has_no_level(self):
        silence = wav(1, 1, 16, bytes(960))
        code, out, err = self.table(silence, silence)
        self.assertEqual(code, 0, err)
        self.assertEqual(out.count("-inf dB"), 4)

    def test_a_file_that_is_no_wav_is_named(self):
        code, out, err = self.table(b"text", b"text")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("in.wav: no WAV file", err)
