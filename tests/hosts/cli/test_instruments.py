"""Notes of an instrument, seen from inside of one whose sounds are nothing but their volume."""

import array
import json
import unittest

from command_case import DONE, FILE, USAGE, FakeCase, Wav


def single(*numbers):
    """Numbers as 32-bit floats."""
    return list(array.array("f", numbers))


class Instrument(FakeCase):
    def play(self, *options, code=DONE, err="", **environment):
        """What a render prints; its output is `self.out`."""
        environment = {f"SONVELLE_FAKE_{name.upper()}": str(value) for name, value in environment.items()}
        result = self.run_command("render", "Playbox", "out.wav", *options, env=self.environment | environment)
        others = [line for line in result.err.splitlines(True) if "exceeds full scale" not in line]
        self.assertEqual((result.code, "".join(others)), (code, err))
        self.out = Wav(self.path("out.wav"))
        return json.loads(result.out)["notes"]

    def expect(self, *runs):
        """Each channel is a row of (count, value), the values as floats."""
        wanted = [value for count, number in runs for value in single(number) * count]
        self.expect_samples([list(channel) for channel in self.out.channels], [wanted] * self.out.channel_count)


class Requests(Instrument):
    def test_come_in_their_order_behind_state_sample_and_format(self):
        self.write("state.xml", b'<state plugin="Playbox"/>')
        self.play("--sample", "a.wav", "--state", "state.xml", "--rate", 1000, "--channels", 3,
                  "--note", "72:0.5:0.001:1", "--note", "48:1:0:0.5", length=2000)
        self.assertEqual(self.notes(), [
            "attach", "load", "loaded", "command ImportSample", "prepare 3 1000",
            "create 1 0.500000 2.000000", "create 0 1.000000 0.500000", "command FinishLoading",
            "compute 512", "compute 512", "compute 489", "close", "close", "destroy"])

    def test_have_a_delay_that_is_the_start_in_frames_rounded(self):
        for start, delay in (("0.01049", 10), ("0.0105", 11), ("0", 0), ("1", 1000)):
            self.play("--rate", 1000, "--note", f"60:1:{start}:0.1")
            self.assertIn(f"create {delay} 1.000000 1.000000", self.notes())

    def test_have_the_usual_format_without_options(self):
        self.play("--note", "60:1:0:0.1")
        self.assertIn("prepare 2 44100", self.notes())
        self.assertEqual((self.out.rate, self.out.channel_count, self.out.frames, self.out.bits), (44100, 2, 4410, 32))

    def test_keys_may_be_any_whole_numbers_and_volumes_any_numbers(self):
        self.play("--rate", 1000, "--note", "-24:1e-3:0:0.1", "--note", "180:2:0:0.1")
        self.assertEqual(self.notes()[2:4], ["create 0 0.001000 0.007812", "create 0 2.000000 1024.000000"])


class Blocks(Instrument):
    def test_have_the_size_asked_for_from_the_start_on(self):
        for block, sizes in ((512, [512, 488]), (300, [300, 300, 300, 100]), (4000, [1000]), (1000, [1000])):
            self.play("--rate", 1000, "--block", block, "--note", "60:1:0:1", length=5000)
            self.assertEqual([note for note in self.notes() if "compute" in note], [f"compute {n}" for n in sizes])

    def test_of_all_sizes_give_the_same_sound(self):
        notes = ["--rate", 1000, "--note", "60:0.3:0.1:0.5", "--note", "60:0.1:0.25:0.333"]
        for block in (1, 7, 100, 512, 5000):
            self.play("--block", block, *notes, length=400)
            self.expect((100, 0), (150, 0.3), (250, single(0.3)[0] + single(0.1)[0]), (83, 0.1), (17, 0))

    def test_are_silent_as_long_as_a_note_has_not_begun(self):
        notes = self.play("--rate", 1000, "--block", 10, "--note", "60:1:0.015:0.1", "--note", "60:0.5:0:0.1", latency=7)
        self.expect((7, 0), (15, 0.5), (78, 1.5), (15, 1))
        self.assertEqual(notes, [{"made": True, "ended": None}] * 2)


class Sounds(Instrument):
    def test_are_cut_behind_their_length(self):
        self.play("--rate", 1000, "--note", "60:1:0:0.1", "--note", "60:0.5:0:0.099", "--note", "60:0.25:0.2:0.1")
        self.expect((99, 1.5), (1, 1), (100, 0), (100, 0.25))

    def test_start_and_length_are_rounded_by_themselves(self):
        self.play("--rate", 1000, "--note", "60:1:0.0006:0.0106")
        self.expect((1, 0), (11, 1))

    def test_of_no_length_are_silent(self):
        self.assertEqual(self.play("--rate", 1000, "--note", "60:1:0.5:0"), [{"made": True, "ended": None}])
        self.expect((500, 0))
        self.assertEqual(self.notes().count("close"), 1)

    def test_are_summed_as_floats_in_the_order_of_their_notes(self):
        volumes = [0.1, 0.7, 1e-8, 0.2]
        self.play("--rate", 1000, *(f"--note=60:{volume}:0:0.01" for volume in volumes))
        total = 0.0
        for volume in single(*volumes):
            total = single(total + volume)[0]
        self.expect((10, total))

    def test_end_in_the_block_that_reports_it_and_are_closed_there(self):
        notes = self.play("--rate", 1000, "--block", 64, "--note", "60:1:0:1", "--note", "60:0.5:0.1:1", length=100)
        self.assertEqual(notes, [{"made": True, "ended": 128}, {"made": True, "ended": 256}])
        self.expect((100, 1), (100, 0.5), (900, 0))
        self.assertEqual([note for note in self.notes() if note.startswith(("compute", "close"))],
                         ["compute 64"] * 3 + ["close"] + ["compute 64"] * 3 + ["close"])

    def test_end_where_the_last_of_them_does_and_the_tail_behind_it(self):
        self.play("--rate", 1000, "--note", "60:1:0.3:0.2", "--note", "60:0.5:0:0.1", "--tail", "0.1")
        self.expect((100, 0.5), (200, 0), (200, 1), (100, 0))
        self.play("--rate", 1000, "--note", "60:1:0:0.2", "--tail", "auto")
        self.expect((200, 1))

    def test_beyond_full_scale_are_told(self):
        result = self.run_command("render", "Playbox", "out.wav", "--note", "60:2:0:1")
        self.assertEqual((result.code, result.err), (
            DONE, "sonvelle: warning: out.wav: the output exceeds full scale, its peak is at +6.0 dB\n"))

    def test_that_are_not_made_are_silent(self):
        notes = self.play("--rate", 1000, "--note", "60:-1:0:0.1", "--note", "60:1:0:0.05",
                          err="sonvelle: warning: Playbox had no sound for 1 of 2 notes; its sample may be missing\n")
        self.assertEqual(notes, [{"made": False, "ended": None}, {"made": True, "ended": None}])
        self.expect((50, 1), (50, 0))

    def test_that_cannot_be_loaded_are_told(self):
        self.play("--note", "60:1:0:0.1", loading=0)
        self.play("--note", "60:1:0:0.1", loading=1,
                  err="sonvelle: warning: some recordings of the instrument cannot be read\n")

    def test_reach_every_channel_and_any_rate(self):
        for channels in (1, 2, 7, 64):
            self.play("--rate", 768000, "--channels", channels, "--note", "60:0.5:0:0.001", length=500)
            self.assertEqual((self.out.channel_count, self.out.rate), (channels, 768000))
            self.expect((500, 0.5), (268, 0))

    def test_are_closed_when_the_output_cannot_be_written(self):
        result = self.run_command("render", "Playbox", "/dev/full", "--note", "60:1:0:1")
        self.assertEqual(result.code, 4)
        self.assertEqual(self.notes()[-2:], ["close", "destroy"])


class Refusals(Instrument):
    def test_of_notes(self):
        for note, says in (
            ("60:1:0", "is not KEY:VEL:START:LEN"), ("60:1:0:1:1", "is not KEY:VEL:START:LEN"),
            ("60:1::1", "is not KEY:VEL:START:LEN"), ("60:loud:0:1", "is not KEY:VEL:START:LEN"),
            (":", "is not KEY:VEL:START:LEN"), ("60:1:0:1 ", "is not KEY:VEL:START:LEN"),
            ("60.5:1:0:1", "whole number from -240 to 240"), ("241:1:0:1", "whole number from -240 to 240"),
            ("60:1:-0.1:1", "0 to 2400 seconds"), ("60:1:0:-1", "0 to 2400 seconds"), ("60:1:0:2401", "0 to 2400"),
            ("60:nan:0:1", "is not KEY:VEL:START:LEN"), ("60:inf:0:1", "is not KEY:VEL:START:LEN"),
        ):
            with self.subTest(note=note):
                self.fail_with(USAGE, "render", "Playbox", "out.wav", f"--note={note}", says=["--note", note, says])
        self.assertNotIn("out.wav", self.names())

    def test_of_formats(self):
        for option, values in (("--rate", ("0", "768001", "44.1", "x")), ("--channels", ("0", "65", "-1"))):
            for value in values:
                self.fail_with(USAGE, "render", "Playbox", "out.wav", "--note=60:1:0:1", f"{option}={value}",
                               says=[option, value, "whole number from 1 to"])

    def test_of_words_that_an_instrument_does_not_want(self):
        note = "--note=60:1:0:1"
        for words, says in (
            (["in.wav", "out.wav", note], "wants OUT.wav alone"), (["out.wav"], "wants --note or --midi"),
            (["out.wav", note, "--midi", "a.mid"], "wants --note or --midi"),
            (["out.wav", note, "--one-shot"], "--one-shot goes with --midi"),
            (["out.wav", note, "--set", "gain=1"], 'no parameter "gain"'),
        ):
            self.fail_with(USAGE, "render", "Playbox", *words, says=["Playbox", says] if "--one" not in says else [says])

    def test_of_words_that_an_effect_does_not_want(self):
        for words in (["--note=60:1:0:1"], ["--midi", "a.mid"], ["--sample", "a.wav"], ["--one-shot"], ["--rate", "1"],
                      ["--channels", "1"]):
            self.fail_with(USAGE, "render", "Echolan", "in.wav", "out.wav", *words, says=["Echolan", "is an effect", words[0].split("=")[0]])
        self.fail_with(USAGE, "render", "Echolan", "out.wav", says=["wants IN and OUT.wav"])

    def test_of_an_output_that_is_a_source_as_well(self):
        self.write("a", b"<state/>")
        for option in ("--state", "--sample", "--midi"):
            notes = [] if option == "--midi" else ["--note=60:1:0:1"]
            self.fail_with(USAGE, "render", "Playbox", "a", option, "a", *notes, says=["a and a are the same file"])

    def test_of_a_state_that_is_broken(self):
        self.write("state.xml", b"<state")
        result = self.run_command("render", "Playbox", "out.wav", "--state", "state.xml", "--note", "60:1:0:1")
        self.assertEqual(result.code, FILE)
        self.assertIn("state.xml", result.err.splitlines()[0])
        self.assertEqual(self.names(), ["bin", "notes", "state.xml"])


if __name__ == "__main__":
    unittest.main()
