"""Instruments that play a file: Playbox renders a sample."""

import json
import unittest

from command_case import DONE, FILE, USAGE, CommandCase, Wav, float_wav

RAMP = [i / 1024 for i in range(1000)]
NOTE = "--note=60:1:0:0.5"


class Samples(CommandCase):
    def setUp(self):
        super().setUp()
        self.write("ramp.wav", float_wav([RAMP], 1000))

    def play(self, *options, err="", plugin="Playbox"):
        result = self.run_command("render", plugin, "out.wav", "--rate", 1000, *options)
        self.assertEqual((result.code, result.err), (DONE, err))
        self.out = Wav(self.path("out.wav"))
        return json.loads(result.out)["notes"]

    def test_are_played_by_notes(self):
        notes = self.play("--sample", "ramp.wav", "--note", "60:0.5:0.1:2")
        self.assertEqual(notes, [{"made": True, "ended": 1536}])
        sound = [0.0] * 100 + [sample * 0.5 for sample in RAMP] + [0.0] * 1000
        self.expect_samples([list(channel) for channel in self.out.channels], [sound, sound])

    def test_are_played_by_pieces(self):
        import midi as m
        self.write("a.mid", m.midi(m.track((0, m.press()), (20, m.release()))))
        self.play("--sample", "ramp.wav", "--midi", "a.mid", "--channels", 1)
        self.assertEqual(list(self.out.channels[0][:100]), RAMP[:100])
        self.assertEqual(self.out.frames, 120)

    def test_are_found_wherever_they_lie(self):
        self.path("folder").mkdir()
        self.path("folder/ramp.wav").write_bytes(self.path("ramp.wav").read_bytes())
        for path in ("folder/ramp.wav", self.path("folder") / "ramp.wav", "folder/../folder/ramp.wav", "./ramp.wav"):
            self.play("--sample", path, NOTE)
            self.assertEqual(list(self.out.channels[0]), RAMP[:500])

    def test_are_copied_unless_they_lie_in_the_folder_of_samples(self):
        self.play("--sample", "ramp.wav", NOTE)
        copy = self.path("Samples") / "Imported" / self.folder.relative_to("/") / "ramp.wav"
        self.assertEqual(copy.read_bytes(), self.path("ramp.wav").read_bytes())
        self.path("Samples/own.wav").write_bytes(float_wav([[0.25] * 1000], 1000))
        self.play("--sample", "Samples/own.wav", NOTE)
        self.assertEqual(set(self.out.channels[0]), {0.25})
        self.assertEqual(list(self.folder.rglob("own.wav")), [self.path("Samples/own.wav")])

    def test_give_the_same_bytes_each_time(self):
        notes = [f"--note={key}:0.01:{key / 1000}:0.7" for key in range(40, 80)]
        for plugin in ("Playbox", "Vinylrake"):
            self.play("--sample", "ramp.wav", *notes, plugin=plugin)
            first = self.path("out.wav").read_bytes()
            self.play("--sample", "ramp.wav", *notes, plugin=plugin)
            self.assertEqual(self.path("out.wav").read_bytes(), first)

    def test_stand_in_the_state(self):
        state = self.succeed("state", "Playbox", "--sample", "ramp.wav")
        self.assertIn('filename="ramp.wav"', state)
        self.write("state.xml", state.encode())
        self.play("--state", "state.xml", NOTE)
        self.assertEqual(list(self.out.channels[0]), RAMP[:500])

    def test_take_the_place_of_the_one_in_the_state(self):
        self.write("other.wav", float_wav([[0.25] * 1000], 1000))
        self.write("state.xml", self.succeed("state", "Playbox", "--sample", "other.wav").encode())
        self.play("--state", "state.xml", "--sample", "ramp.wav", NOTE)
        self.assertEqual(list(self.out.channels[0]), RAMP[:500])

    def test_that_are_missing_are_silence_and_a_warning(self):
        silent = "sonvelle: warning: Playbox had no sound for 1 of 1 notes; its sample may be missing\n"
        self.write("broken.wav", b"RIFF")
        for path in ("none.wav", "broken.wav", ""):
            told = f"sonvelle: warning: {path}: it cannot be loaded as a sample\n"
            notes = self.play("--sample", path, NOTE, err=told + silent)
            self.assertEqual(notes, [{"made": False, "ended": None}])
            self.assertEqual((self.out.frames, set(self.out.interleaved)), (500, {0.0}))
        self.write("state.xml", b'<state plugin="Playbox" filename="none.wav"/>')
        self.play("--state", "state.xml", NOTE, err=silent)

    def test_that_are_missing_are_a_warning_of_a_state_too(self):
        result = self.run_command("state", "Playbox", "--sample", "none.wav")
        self.assertEqual((result.code, result.err), (DONE, "sonvelle: warning: none.wav: it cannot be loaded as a sample\n"))
        self.assertIn('filename="none.wav"', result.out)

    def test_are_refused_by_plugins_that_play_none(self):
        for words in (["render", "Toneloom4NN", "out.wav", NOTE], ["state", "Toneloom4NN"], ["state", "Echolan"]):
            self.fail_with(USAGE, *words, "--sample", "ramp.wav", says=[words[1], "imports no sample"])

    def test_leave_no_output_when_the_state_is_broken(self):
        self.write("state.xml", b"no XML")
        result = self.run_command("render", "Playbox", "out.wav", "--state", "state.xml", NOTE)
        self.assertEqual(result.code, FILE)
        self.assertEqual(self.names(), ["ramp.wav", "state.xml"])

    def test_of_other_channels_and_rates_fit_the_output(self):
        self.write("stereo.wav", float_wav([[0.5] * 100, [0.25] * 100], 2000))
        self.play("--sample", "stereo.wav", "--channels", 3, "--note=60:1:0:0.1")
        self.assertEqual([channel[20] for channel in self.out.channels], [0.5, 0.25, 0.5])
        self.assertEqual([set(channel[50:]) for channel in self.out.channels], [{0.0}] * 3)


if __name__ == "__main__":
    unittest.main()
