"""What the command asks of a plug-in, seen from inside of one, and how it finds the library."""

import os
import shutil
import subprocess
import unittest

from command_case import COMMAND, DONE, FAKE_LIBRARY, PLUGIN, USAGE, FakeCase, InstalledCase, Wav, float_wav

ATTACH, PREPARE, PROCESS, CHANGED = 0, 100, 101, 4


class Order(FakeCase):
    def render_notes(self, frames, *options, channels=2, rate=48000):
        self.write("in.wav", float_wav([[0.5] * frames] * channels, rate))
        self.render("in.wav", *options)
        return self.notes()

    def test_the_plugin_is_made_prepared_set_run_and_destroyed(self):
        notes = self.render_notes(1100, "--set", "flip=1", "--set", "gain=0.5", rate=44100)
        self.assertEqual(notes, ["attach", "prepare 2 44100", "changed 3", "changed 0", "process 512", "process 512",
                                 "process 76", "destroy"])

    def test_blocks_are_counted_from_the_start_and_only_the_last_is_shorter(self):
        for block in (3, 512, 1000, 5000, 20000, 30000, 70000):
            for frames in (1, 999, 1000, 70001):
                with self.subTest(block=block, frames=frames):
                    sizes = [int(note.split()[1]) for note in self.render_notes(frames, "--block", block)
                             if note.startswith("process")]
                    self.assertLessEqual(set(sizes[:-1]), {block})
                    self.assertTrue(0 < sizes[-1] <= block)
                    self.assertEqual(sum(sizes), frames)

    def test_the_tail_goes_on_in_the_same_blocks(self):
        notes = self.render_notes(1100, "--tail", "0.01")
        self.assertEqual(notes[2:-1], ["process 512", "process 512", "process 512", "process 44"])

    def test_values_are_in_table_units(self):
        self.write("in.wav", float_wav([[0.5, -0.25]]))
        out = self.render("in.wav", "--set", "gain=1.5", "--set", "flip=1", "--set", "mode=0", "--set", "tail=1e1")
        self.assertEqual(list(out.channels[0]), [-0.75, 0.375])


class AutomaticTail(FakeCase):
    """The plug-in sounds on for as many samples as its parameter says."""

    def tail(self, tail, *options, frames=1100, rate=48000, effect_sounds=True):
        self.write("in.wav", float_wav([[0.5] * frames] if effect_sounds else [[0.0] * frames], rate))
        out = self.render("in.wav", "--tail", "auto", "--set", f"tail={tail}", *options)
        return out.frames - frames

    def test_an_effect_that_is_silent_at_the_inputs_end_gets_none(self):
        self.assertEqual(self.tail(0), 0)
        self.assertEqual(self.tail(5000, effect_sounds=False), 0)

    def test_it_ends_behind_the_block_in_which_the_effect_fell_silent(self):
        self.assertEqual(self.tail(1), 1536 - 1100)
        self.assertEqual(self.tail(1536 - 1100), 1536 - 1100)
        self.assertEqual(self.tail(1536 - 1100 + 1), 2048 - 1100)
        self.assertEqual(self.tail(5000, "--block", 1000), 7000 - 1100)
        self.assertEqual(self.tail(200000), -(-201100 // 512) * 512 - 1100)

    def test_small_blocks_are_asked_for_every_512_frames_or_a_little_more(self):
        self.assertEqual(self.tail(1, "--block", 1), 1536 - 1100)
        self.assertEqual(self.tail(1, "--block", 7), 3 * 518 - 1100)

    def test_blocks_are_cut_at_the_inputs_end_and_meet_their_boundaries_again(self):
        self.tail(1000)
        self.assertEqual(self.notes()[3:-1], [f"process {frames}" for frames in (512, 512, 76, 436, 512, 512)])
        self.tail(1, "--block", 7)
        self.assertEqual(self.notes()[3:-1], [f"process {frames}" for frames in [7] * 157 + [1, 6] + [7] * 64])

    def test_it_lasts_60_seconds_at_most(self):
        self.assertEqual(self.tail(100000000, rate=1000), 60000)
        self.assertEqual(self.tail(100000000, "--block", 100000, rate=1000), 60000)


class Warnings(FakeCase):
    def warning(self, samples, *options):
        self.write("in.wav", float_wav([samples]))
        result = self.run_command("render", "Echolan", "in.wav", "out.wav", *options)
        self.assertEqual((result.code, result.out, Wav(self.path("out.wav")).frames), (0, "", len(samples)))
        return result.err

    def test_output_beyond_full_scale_tells_the_peak(self):
        self.assertEqual(self.warning([0.5, -1.0], "--set", "gain=2"),
                         "sonvelle: warning: out.wav: the output exceeds full scale, its peak is at +6.0 dB\n")

    def test_output_at_full_scale_is_well(self):
        self.assertEqual(self.warning([1.0, -1.0], "--set", "gain=1"), "")

    def test_output_that_is_not_finite_is_told(self):
        self.assertEqual(self.warning([0.5], "--set", "mode=2"),
                         "sonvelle: warning: out.wav: the output contains values that are not finite\n")
        self.assertIn("not finite", self.warning([float("inf"), 0.5], "--set", "gain=1"))

    def test_silence_is_told_unless_the_input_is_silent(self):
        self.assertEqual(self.warning([0.0, 0.001], "--set", "mode=1"),
                         "sonvelle: warning: out.wav: the output is nothing but silence, but the input is not\n")
        self.assertEqual(self.warning([0.0, -0.0], "--set", "mode=1"), "")


class ClosedStreams(FakeCase):
    def test_do_not_let_a_library_that_speaks_write_into_the_output(self):
        self.write("in.wav", float_wav([[0.5] * 1000]))
        expected = self.render("in.wav", output="expected.wav")
        self.environment["SONVELLE_FAKE_SPEAKS"] = "1"
        for streams in ((0, 1, 2), (1, 2), (0, 2), (0, 1), (1,), (2,)):
            def close_streams():
                for stream in streams:
                    os.close(stream)

            with self.subTest(streams):
                options = {"stdin": None, "capture_output": False, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
                result = self.run_command("render", "Echolan", "in.wav", "out.wav", preexec_fn=close_streams, **options)
                self.assertEqual(result.code, DONE)
                self.assertTrue(self.path("out.wav").read_bytes() == self.path("expected.wav").read_bytes())
        self.assertEqual(expected.frames, 1000)


class Exceptions(FakeCase):
    def test_of_any_service_give_code_3_and_their_text_as_the_last_line(self):
        self.write("in.wav", float_wav([[0.5] * 100]))
        self.write("out.wav", b"old")
        for service in (ATTACH, PREPARE, PROCESS, CHANGED):
            with self.subTest(service):
                self.environment["SONVELLE_FAKE_RAISES"] = str(service)
                self.fail_with(PLUGIN, "render", "Echolan", "in.wav", "out.wav", "--set", "gain=1", says=("plug-in",),
                               last="It fails.")
                self.assertEqual(self.path("out.wav").read_bytes(), b"old")
                self.assertEqual(set(self.names()) - {"notes"}, {"bin", "in.wav", "out.wav"})


class Library(InstalledCase):
    def test_that_is_nowhere_is_an_error_that_names_the_places(self):
        self.fail_with(PLUGIN, "list", says=(f"{self.bin}/Sonvelle.so", f"{self.folder}/lib/sonvelle/Sonvelle.so"))

    def test_that_cannot_be_opened_is_named(self):
        (self.bin / "Sonvelle.so").write_text("no library")
        for command in (["list"], ["params", "Echolan"], ["render", "Echolan", "in.wav", "out.wav"]):
            self.fail_with(PLUGIN, *command, says=(f"{self.bin}/Sonvelle.so", "file too short"))

    def test_help_needs_none(self):
        self.succeed("help")
        self.succeed("--version")

    def test_is_found_beside_the_program_before_the_installed_one(self):
        installed = self.path("lib/sonvelle")
        installed.mkdir(parents=True)
        shutil.copy(FAKE_LIBRARY, installed / "Sonvelle.so")
        self.assertIn("flip", self.succeed("params", "Echolan"))
        shutil.copy(COMMAND.parent / "Sonvelle.so", self.bin)
        self.assertIn("feedback", self.succeed("params", "Echolan"))

    def test_is_found_when_the_program_is_started_through_a_link_or_the_search_path(self):
        shutil.copy(FAKE_LIBRARY, self.bin / "Sonvelle.so")
        self.path("linked").symlink_to(self.command)
        self.command = self.path("linked")
        self.succeed("list")
        self.command = "sonvelle"
        self.succeed("list", env=os.environ | {"PATH": str(self.bin)}, executable=str(self.bin / "sonvelle"))

    def test_that_lacks_a_plugin_lists_what_it_has(self):
        source = self.write("empty.c", b"int nothing;\n")
        if os.system(f"cc -shared -o '{self.bin}/Sonvelle.so' '{source}'") != 0:
            self.skipTest("no C compiler")
        self.assertEqual(self.succeed("list"), "")
        self.fail_with(USAGE, "params", "Echolan", says=('no plug-in "Echolan" (see: sonvelle list)',))


if __name__ == "__main__":
    unittest.main()
