"""Pieces: MIDI files that play the fake instrument. A release fades for 20 frames at 1000 hertz."""

import struct
import unittest

import midi as m
from command_case import DONE, FILE
from test_instruments import Instrument

RELEASE = [(i, round(1 - (i + 1) / 20, 2)) for i in range(20)]


def fade(volume=1.0):
    return [(1, volume * level) for _, level in RELEASE]


def cut(volume=1.0):
    """All sound off: 5 ms."""
    return [(1, round(volume * (1 - (i + 1) / 5), 2)) for i in range(5)]


class Piece(Instrument):
    def perform(self, data, *options, **more):
        self.write("piece.mid", data)
        return self.play("--midi", "piece.mid", "--rate", 1000, "--channels", 1, *options, **more)

    def perform_track(self, *events, options=(), **more):
        """Ticks are 5 ms."""
        return self.perform(m.midi(m.track(*events), kind=0), *options, **more)


    def expect_sound(self, *runs, block=512):
        """As `expect`, with the rest of the last sound's block behind it."""
        count = sum(count for count, _ in runs)
        self.assertLess(self.out.frames - count, block)
        self.expect(*runs, (self.out.frames - count, 0))


class Time(Piece):
    def test_is_half_a_second_for_a_quarter_note_until_there_is_a_tempo(self):
        self.perform_track((20, m.press()), (10, m.release()), length=5000)
        self.expect((100, 0), (50, 1), *fade())

    def test_follows_the_tempo_map_of_all_tracks(self):
        tempi = m.track((0, m.tempo(1000000)), (10, m.tempo(100000)), (100, m.tempo(2000000)))
        notes = m.track((5, m.press()), (5, m.release()), (100, m.press()), (5, m.release()))
        self.perform(m.midi(tempi, notes))
        self.expect((50, 0), (50, 1), *fade(), (80, 0), (100, 1), *fade())

    def test_of_tracks_runs_from_the_same_start(self):
        self.perform(m.midi(m.track((10, m.press(60, 127))), m.track((5, m.press(60, 127, 1)), (10, m.release(60, 1)))), length=100)
        self.expect_sound((25, 0), (25, 1), (25, 2), *[(1, 1 + level) for _, level in RELEASE], (55, 1))

    def test_can_count_frames_of_a_film(self):
        for frames, per_frame, ticks in ((-25, 40, 100), (-24, 100, 240), (-30, 80, 240)):
            self.perform(m.midi(m.track((ticks, m.press()), (ticks, m.release())), division=frames << 8 | per_frame))
            self.expect((100, 0), (100, 1), *fade())
        self.perform(m.midi(m.track((2997, m.press())), division=-29 << 8 | 10), length=3)
        self.expect_sound((10000, 0), (3, 1))

    def test_is_rounded_to_frames_and_does_not_drift(self):
        events = [(7, m.press() if i % 2 == 0 else m.release()) for i in range(200)]
        self.perform(m.midi(m.track(*events), division=96), length=1)
        starts = [i for i, sample in enumerate(self.out.channels[0]) if sample]
        self.assertEqual(starts, [int(7 * (2 * i + 1) * 500 / 96 + 0.5) for i in range(100)])

    def test_has_nothing_to_do_with_blocks(self):
        piece = m.midi(m.track((3, m.press()), (7, m.press(64, 50)), (9, m.release()), (40, m.release(64)), (2, m.press(64, 1))))
        self.perform(piece, length=150)
        whole = list(self.out.channels[0])
        for block in (1, 7, 100, 4000):
            notes = self.perform(piece, "--block", block, length=150)
            self.assertEqual(list(self.out.channels[0][:450]), whole[:450])
            self.assertEqual(len(notes), 3)


class Notes(Piece):
    def test_have_the_velocity_as_volume_and_the_key_as_pitch(self):
        self.perform_track((0, m.press(48, 1)), (2, m.press(72, 127)), length=10)
        self.expect_sound((10, 1 / 127), (10, 1))
        self.assertEqual([note for note in self.notes() if "create" in note],
                         ["create 0 0.007874 0.500000", "create 0 1.000000 2.000000"])

    def test_end_with_velocity_0_too_and_by_running_status(self):
        self.perform_track((0, [0x90, 60, 127]), (10, [60, 0]), (10, [60, 64]), (1, [60, 0]))
        self.expect((50, 1), *fade(), (30, 0), (5, 64 / 127), *fade(64 / 127))

    def test_of_one_key_end_one_by_one_the_oldest_first(self):
        self.perform_track((0, m.press(60, 127)), (10, m.press(60, 127)), (10, m.release()), (10, m.release()))
        self.expect((50, 1), (50, 2), *[(1, 1 + level) for _, level in RELEASE], (30, 1), *fade())

    def test_of_other_channels_are_their_own(self):
        self.perform_track((0, m.press(60, 127, 15)), (10, m.release(60, 14)), (10, m.release(60, 15)))
        self.expect((100, 1), *fade())

    def test_are_held_by_the_pedal_of_their_channel(self):
        self.perform_track((0, m.control(64, 64)), (0, m.press()), (0, m.control(64, 127, 1)), (10, m.release()),
                           (10, m.control(64, 63)), (10, m.control(64, 0, 1)))
        self.expect((100, 1), *fade())

    def test_end_with_messages_for_all_of_a_channel(self):
        for number, end in ((120, cut(2)), (123, fade(2)), (127, fade(2))):
            self.perform_track((0, m.press()), (0, m.press(61)), (10, m.control(number, 0)))
            self.expect((50, 2), *end)
        self.perform_track((0, m.control(64, 127)), (0, m.press()), (10, m.release()), (10, m.control(121, 0)))
        self.expect((100, 1), *fade())

    def test_ring_out_as_one_shots(self):
        events = [(0, m.press()), (10, m.release()), (0, m.control(123, 0))]
        notes = self.perform_track(*events, options=["--one-shot"], length=300)
        self.expect_sound((300, 1))
        self.assertEqual(notes, [{"made": True, "ended": 512}])
        self.perform_track(*events, (0, m.control(120, 0)), options=["--one-shot"], length=300)
        self.expect((50, 1), *cut())

    def test_other_messages_do_nothing(self):
        self.perform_track((0, [0xC0, 5]), (0, m.control(7, 0)), (0, [0xE0, 0, 0]), (0, [0xD0, 1]), (0, [0xA0, 60, 0]),
                           (0, m.press()), (0, [0xF0, 3, 1, 2, 0xF7]), (0, [0xFF, 3, 2, 72, 105]), (0, [0xF7, 1, 0x90]),
                           (0, [0xC0, 5]), length=10)
        self.expect_sound((10, 1))

    def test_over_sixty_four_take_the_place_of_others(self):
        self.perform_track(*((0, m.press(key, 1)) for key in range(64)), (2, m.press(100)), length=100)
        self.assertAlmostEqual(self.out.channels[0][9], 64 / 127, 5)
        self.assertAlmostEqual(self.out.channels[0][15], 63 / 127 + 1, 5)


class End(Piece):
    def test_is_where_the_last_fade_ends(self):
        self.perform_track((0, m.press()), (10, m.release()), (100, m.control(7, 1)))
        self.assertEqual(self.out.frames, 70)

    def test_is_where_the_last_sound_ends_though_its_key_goes_up_later(self):
        notes = self.perform_track((0, m.press()), (100, m.release()), options=["--block", 64], length=30)
        self.assertEqual(notes, [{"made": True, "ended": 64}])
        self.assertEqual(self.out.frames, 64)

    def test_has_the_tail_behind_it(self):
        self.perform_track((0, m.press()), (10, m.release()), options=["--tail", "0.1"])
        self.expect((50, 1), *fade(), (100, 0))

    def test_comes_ten_minutes_behind_the_piece_at_last(self):
        self.perform_track((20, m.press()), length=100000000)
        self.assertGreaterEqual(self.out.frames, 600100)
        self.assertLess(self.out.frames, 600100 + 512)

    def test_of_a_piece_without_notes_is_at_once(self):
        self.assertEqual(self.perform_track((100, m.control(64, 127))), [])
        self.assertEqual(self.out.frames, 0)

    def test_leaves_no_stream_open(self):
        self.perform_track((0, m.press()), (1, m.press()), (2, m.release()), length=1000)
        notes = [note.split()[0] for note in self.notes()]
        self.assertEqual(notes.count("create"), notes.count("close"))

    def test_notes_that_are_not_made_are_told(self):
        self.perform_track((0, m.press()), (1, m.press(61)), loading=0, length=10)
        self.assertEqual([note for note in self.notes() if note.startswith(("create", "command"))], [
            "command FinishLoading", "create 0 1.000000 1.000000", "command FinishLoading",
            "create 0 1.000000 1.000000", "create 0 1.000000 1.059463"])


class Broken(Piece):
    def refuse(self, data, *says):
        self.write("piece.mid", data)
        self.fail_with(FILE, "render", "Playbox", "out.wav", "--midi", "piece.mid", says=["piece.mid", *says])
        self.assertEqual([name for name in self.names() if name != "notes"], ["bin", "piece.mid"])

    def test_files_are_refused_with_the_place(self):
        good = m.track((0, m.press()), (10, m.release()))
        for data, says in (
            (b"RIFF" + bytes(30), "byte 4: it cannot be read as a MIDI file: it does not begin with MThd"),
            (b"MT", "byte 0"), (m.midi(good)[:-1], "byte 22: it cannot be read as a MIDI file: it is cut off"),
            (m.midi(good)[:10], "cut off"), (m.midi(good, count=2), "tracks are missing"),
            (m.midi(good, kind=2), "format 2"), (m.midi(good, division=0), "no length"),
            (m.midi(good, division=-25 << 8), "no length"), (m.midi(good, division=-26 << 8 | 4), "unknown rate"),
            (m.midi(m.track((0, [60, 127]))), "byte 23: it cannot be read as a MIDI file: an event has no status"),
            (m.midi(m.track((0, [0x90, 60]), end=False)), "cut off"),
            (m.midi(m.track((0, [0x90, 200, 1]))), "too few bytes"), (m.midi(m.track((0, [0xF1, 0]))), "no known kind"),
            (m.midi(m.track((0, [0xFF, 0x51, 2, 1, 1]))), "cut off"), (m.midi(m.track((0, m.tempo(0)))), "tempo is 0"),
            (m.midi(m.chunk(b"MTrk", b"\xff\xff\xff\xff\x00")), "more than four bytes"),
            (m.midi(m.track((0, [0xF0, 0x8F, 0xFF, 0x7F]))), "cut off"),
            (m.midi(m.track((0xFFFFFFF, m.press())), division=1), "longer than a day"),
        ):
            with self.subTest(says=says):
                self.refuse(data, says)

    def test_files_that_are_not_there_or_empty_are_refused(self):
        self.fail_with(FILE, "render", "Playbox", "out.wav", "--midi", "none.mid", says=["none.mid", "No such file"])
        self.refuse(b"", "the file is empty")

    def test_what_is_unusual_is_read(self):
        note = m.track((0, m.press()), (2, m.release()), end=False)
        header = m.chunk(b"MThd", struct.pack(">HHHH", 0, 1, 100, 7))
        for data in (m.midi(note), header + note, m.midi(m.chunk(b"XFIH", b"abc"), note, count=1),
                     m.midi(note) + b"junk behind", m.midi(note, m.track((0, m.press())), count=1)):
            self.assertEqual(len(self.perform(data)), 1)
            self.expect((10, 1), *fade())


if __name__ == "__main__":
    unittest.main()
