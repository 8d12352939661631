"""The piece that tools/make_piece.py writes, read by a plain parser of MIDI files."""

import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parent.parent.parent / "tools" / "make_piece.py"


def write(folder, name="piece.mid"):
    path = Path(folder) / name
    subprocess.run([sys.executable, "-B", str(SCRIPT), str(path)], check=True)
    return path.read_bytes()


def events_of(data):
    """(tick, bytes) of one track."""
    events, offset, tick = [], 0, 0

    def variable():
        nonlocal offset
        number = 0
        while True:
            byte = data[offset]
            offset += 1
            number = number << 7 | byte & 0x7F
            if byte < 0x80:
                return number

    while offset < len(data):
        tick += variable()
        start = offset
        if data[offset] == 0xFF:
            offset += 2
            size = variable()
            offset += size
        else:
            offset += 3
        events.append((tick, data[start:offset]))
    return events


class Piece(unittest.TestCase):
    def setUp(self):
        with tempfile.TemporaryDirectory() as folder:
            self.data = write(folder)
            self.again = write(folder, "again.mid")
        kind, count, self.ticks = struct.unpack_from(">4xIHHH", self.data)[1:]
        self.assertEqual((kind, self.data[:4]), (1, b"MThd"))
        self.tracks, offset = [], 14
        while offset < len(self.data):
            name, size = struct.unpack_from(">4sI", self.data, offset)
            self.assertEqual(name, b"MTrk")
            self.tracks.append(events_of(self.data[offset + 8 : offset + 8 + size]))
            offset += 8 + size
        self.assertEqual(len(self.tracks), count)
        self.events = sorted(event for track in self.tracks for event in track)

    def notes(self, kind):
        return [event for event in self.events if event[1][0] & 0xF0 == kind]

    def test_is_the_same_every_time(self):
        self.assertEqual(self.data, self.again)

    def test_lasts_half_a_minute_to_a_minute_through_several_tempos(self):
        seconds, last, tempo, tempos = 0.0, 0, 500000, set()
        for tick, message in self.events:
            seconds += (tick - last) * tempo / self.ticks / 1e6
            last = tick
            if message[:2] == b"\xff\x51":
                tempo = int.from_bytes(message[3:], "big")
                tempos.add(tempo)
        self.assertGreater(len(tempos), 3)
        self.assertTrue(30 < seconds < 60, seconds)

    def test_has_three_channels_many_velocities_and_a_pedal(self):
        presses = self.notes(0x90)
        self.assertEqual({message[0] & 0x0F for _, message in presses}, {0, 1, 2})
        self.assertGreater(len({message[2] for _, message in presses}), 10)
        pedal = [message[2] for _, message in self.notes(0xB0) if message[1] == 64]
        self.assertEqual((set(pedal), pedal[-1]), ({0, 127}, 0))

    def test_releases_every_note_and_strikes_none_that_sounds(self):
        for channel in range(3):
            sounding = set()
            # The order within a track is the order of playing.
            for _, message in self.tracks[1 + channel]:
                key = message[1]
                if message[0] & 0xF0 == 0x90:
                    self.assertNotIn(key, sounding)
                    sounding.add(key)
                elif message[0] & 0xF0 == 0x80:
                    sounding.remove(key)
            self.assertEqual(sounding, set())


if __name__ == "__main__":
    unittest.main()
