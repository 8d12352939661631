"""The model of a piece that instruments are measured against, and the two parts of the document."""

import sys
from unittest import mock

from tree_case import TOOLS, TreeCase

sys.path.insert(0, str(TOOLS))
import make_piece  # noqa: E402
from measure import document, instruments, piece  # noqa: E402
from measure.lab import Row  # noqa: E402

RATE = piece.NOTE_RATE


def press(tick, key):
    return tick, 2, bytes([0x90, key, 127])


def release(tick, key):
    return tick, 0, bytes([0x80, key, 64])


def pedal(tick, value):
    return tick, 1, bytes([0xB0, 64, value])


class Piece(TreeCase):
    def voices(self, *events, tempos=((0, 120),)):
        messages = [(tick, 0, b"\xff\x51\x03" + round(60e6 / tempo).to_bytes(3, "big")) for tick, tempo in tempos]
        with mock.patch.object(make_piece, "voices", lambda: ([list(events)], messages)):
            return [(voice.start / RATE, voice.released / RATE) for voice in piece.voices()]

    def test_a_quarter_lasts_as_the_tempo_in_front_of_it_says(self):
        events = press(480, 60), release(960, 60)
        self.assertEqual(self.voices(*events), [(0.5, 1.0)])
        self.assertEqual(self.voices(*events, tempos=((0, 120), (720, 60))), [(0.5, 1.25)])

    def test_the_pedal_holds_what_is_released_until_it_goes_up(self):
        held = press(0, 60), pedal(240, 127), release(480, 60), pedal(960, 0)
        self.assertEqual(self.voices(*held), [(0.0, 1.0)])
        self.assertEqual(self.voices(press(0, 60), pedal(240, 127), pedal(300, 0), release(480, 60)), [(0.0, 0.5)])

    def test_a_mix_is_the_sum_of_notes_that_fade_out_in_twenty_milliseconds(self):
        played = [piece.Voice(0, 60, 1, 100), piece.Voice(50, 60, 0.5, 100)]
        out = piece.mix(played, lambda ratio, frames: [1.0] * frames)
        self.assertEqual(len(out), 100 + RATE // 50)
        self.assertEqual((out[0], out[49], out[50], out[99]), (1, 1, 1.5, 1.5))
        self.assertAlmostEqual(out[100], 1.5 * (1 - 50 / RATE))
        self.assertEqual(out[-1], 0)

    def test_a_sound_may_end_before_its_key_is_released(self):
        out = piece.mix([piece.Voice(0, 60, 1, 100)], lambda ratio, frames: [1.0] * 10)
        self.assertEqual(sum(out), 10)


class Reading(TreeCase):
    def test_at_the_own_speed_gives_the_sound(self):
        self.assertEqual(instruments.read([1.0, -2.0, 3.0], 1, 3), [1, -2, 3])

    def test_goes_through_every_sample_and_ends_with_the_last_one(self):
        self.assertEqual(instruments.read([1.0, -2.0, 3.0], 0.5, 9)[::2], [1, -2, 3])
        self.assertEqual(len(instruments.read([1.0, -2.0, 3.0], 0.5, 9)), 5)


class Document(TreeCase):
    def setUp(self):
        super().setUp()
        patch = mock.patch.object(document, "DOCUMENT", self.root / "measurements.md")
        patch.start()
        self.addCleanup(patch.stop)
        self.row = Row("piece", "", "gain", 1.0, 1.0, 0.0)

    def test_is_written_part_by_part(self):
        tables = {"Echolan": [self.row]}, {"Playbox": [self.row, self.row]}
        parts = document.EFFECTS_PART, document.INSTRUMENTS_PART
        for order in ((0, 1), (1, 0), (0, 1)):
            for number in order:
                parts[number].write(tables[number])
                text = document.DOCUMENT.read_text()
                self.assertEqual(document.differences(tables[number], parts[number].text(text)), [])
            self.assertEqual(list(document.read(text)), ["Echolan", "Playbox"])
            self.assertEqual(text.count("# Measurements\n"), 1)

    def test_has_parts_that_do_not_mix(self):
        document.EFFECTS_PART.write({"Echolan": [self.row]})
        text = document.DOCUMENT.read_text()
        self.assertEqual(document.differences({"Playbox": [self.row]}, document.INSTRUMENTS_PART.text(text)),
                         ["Playbox is measured, but not in the document"])
