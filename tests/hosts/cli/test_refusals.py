"""Wrong values and wrong inputs: the right code, one line, nothing lost, nothing left."""

import os
import unittest

from command_case import FILE, USAGE, CommandCase, FakeCase, UserCase, flac_bytes, float_wav, wav_bytes


class Values(FakeCase):
    def refuse(self, *options, says):
        self.fail_with(USAGE, "render", "Echolan", "in.wav", "out.wav", *options, says=says)
        self.assertEqual(set(self.names()) - {"notes"}, {"bin", "in.wav"})

    def setUp(self):
        super().setUp()
        self.write("in.wav", float_wav([[0.5] * 10]))

    def test_an_unknown_key_lists_the_keys(self):
        for key in ("gian", "Gain", "", "group"):
            self.refuse("--set", f"{key}=1", says=(f'Echolan has no parameter "{key}"', "gain, tail, mode, flip"))

    def test_a_value_out_of_range_names_the_range(self):
        for setting, limits in (("gain=2.0001", "0 to 2"), ("gain=-1e-9", "0 to 2"), ("tail=-1", "0 to 100000000"),
                                ("mode=3", "0 to 2"), ("flip=2", "0 to 1"), ("tail=1e300", "0 to 100000000")):
            key, value = setting.split("=")
            self.refuse("--set", setting, says=(f'--set {key}: "{value}" is out of range, {limits}',))

    def test_what_is_no_number_is_said(self):
        for text in ("", "abc", "0.5x", "0,5", "nan", "-nan", "inf", "-inf", "1e999", "0x1", "+-1", "--1", "1.5 dB"):
            self.refuse("--set", f"gain={text}", says=(f'--set gain: "{text}" is not a finite number',))

    def test_rows_of_whole_numbers_take_no_others(self):
        for setting in ("tail=0.5", "mode=1.5", "flip=0.1"):
            self.refuse("--set", setting, says=("is not a whole number from 0 to",))

    def test_a_setting_without_equals_sign_is_no_setting(self):
        self.refuse("--set", "gain", says=("KEY=VALUE",))
        self.refuse("--set", "", says=("KEY=VALUE",))

    def test_blocks_are_whole_numbers_in_range(self):
        for text in ("0", "-1", "1.5", "abc", "", "1e3x", "1048577", "99999999999999999999", "nan"):
            self.refuse("--block", text, says=(f'--block: "{text}" is not a whole number from 1 to 1048576',))

    def test_tails_are_numbers_in_range_or_auto(self):
        for text in ("-1", "-0.001", "Auto", "", "nan", "inf", "86401", "1s", "1e300"):
            self.refuse("--tail", text, says=(f'--tail: "{text}" is neither "auto" nor a number from 0 to 86400',))

    def test_negative_numbers_are_values_and_no_options(self):
        self.refuse("--set", "gain=-1", says=("out of range",))
        self.refuse("--set=gain=-1", says=("out of range",))
        self.refuse("--block=-1", says=("--block",))


class BadInput(CommandCase):
    def refuse(self, name, *says):
        before = self.names()
        self.fail_with(FILE, "render", "Echolan", name, "out.wav", says=(str(name), *says))
        self.assertEqual(self.names(), before)

    def test_no_input(self):
        self.refuse("missing.wav", "No such file or directory")
        self.refuse("no folder/missing.wav", "No such file or directory")
        self.refuse("", "No such file or directory")
        self.refuse("-", "No such file or directory")
        self.write("file", b"x")
        self.refuse("file/in.wav", "Not a directory")

    def test_a_folder(self):
        self.refuse(self.folder, "Is a directory")

    def test_links_that_lead_nowhere_or_around(self):
        self.path("nowhere").symlink_to("missing")
        self.path("around").symlink_to("around")
        self.refuse("nowhere", "No such file or directory")
        self.refuse("around", "Too many levels of symbolic links")

    def test_an_empty_file(self):
        self.write("in.wav", b"")
        self.refuse("in.wav", "the file is empty")

    def test_what_is_no_sound(self):
        self.write("in.wav", b"This is a text.\n" * 100)
        self.refuse("in.wav", "it cannot be read as a sound file: Format not recognised.")
        self.refuse("/dev/null", "it cannot be read as a sound file")

    def test_a_header_that_is_cut_off(self):
        whole = wav_bytes(b"\0\1" * 100)
        for length in range(1, 41):  # up to the name of the data's chunk
            with self.subTest(length):
                self.write("in.wav", whole[:length])
                self.refuse("in.wav", "it cannot be read as a sound file")

    def test_no_channels_or_too_many(self):
        self.write("in.wav", wav_bytes(b"\0\1" * 100, channels=0))
        self.refuse("in.wav", "Channel count is zero.")
        self.write("in.wav", wav_bytes(b"\0\1" * 4000, channels=2000))
        self.refuse("in.wav", "Too many channels")

    def test_rates_that_are_no_rates(self):
        for rate in (0, 2**31, 2**32 - 1):
            with self.subTest(rate):
                self.write("in.wav", wav_bytes(b"\0\1" * 100, rate=rate))
                self.refuse("in.wav", "its header names no usable sample rate or number of channels")

    def test_samples_that_are_cut_off(self):
        self.write("in.wav", wav_bytes(b"\0\1" * 100)[:-50])
        self.refuse("in.wav", "the file is cut off: its header promises 200 bytes of samples, but only 150 are there")

    def test_a_stream_without_a_length_is_whole(self):
        for size in (0x7FFFF000, 0xFFFFFFFE, 0xFFFFFFFF):
            with self.subTest(size):
                self.write("in.wav", wav_bytes(b"\0\1" * 100, size=size))
                self.succeed("render", "Echolan", "in.wav", "out.wav")

    def test_compressed_data_that_is_cut_off(self):
        whole = flac_bytes([i * 7 % 2000 for i in range(20000)])
        self.write("in.flac", whole[: len(whole) // 2 + 1])
        self.refuse("in.flac", "reading failed")

    def test_a_name_with_control_characters_makes_one_line(self):
        result = self.run_command("render", "Echolan", "in\n\x1b[2J.wav", "out.wav")
        self.assertEqual((result.code, result.err), (FILE, "sonvelle: in??[2J.wav: No such file or directory\n"))

    def test_an_old_output_stays_as_it_is(self):
        self.write("in.wav", b"no sound")
        self.write("out.wav", b"old")
        self.refuse("in.wav")
        self.assertEqual(self.path("out.wav").read_bytes(), b"old")


class Unreadable(UserCase):
    def test_an_input_without_permission(self):
        self.write("in.wav", float_wav([[0.5] * 10])).chmod(0)
        self.fail_with(FILE, "render", "Echolan", "in.wav", "out.wav", says=("in.wav: Permission denied",))
        self.assertEqual(self.names(), ["bin", "in.wav"])


class SameFile(CommandCase):
    def setUp(self):
        super().setUp()
        self.sound = float_wav([[0.5] * 10])
        self.write("in.wav", self.sound)

    def refuse(self, source, output):
        before = self.names()
        self.fail_with(USAGE, "render", "Echolan", source, output, says=("are the same file",))
        self.assertEqual((self.path("in.wav").read_bytes(), self.names()), (self.sound, before))

    def test_by_name(self):
        self.refuse("in.wav", "in.wav")
        self.refuse("in.wav", "./in.wav")
        self.refuse(self.path("in.wav"), "in.wav")

    def test_by_links(self):
        self.path("link.wav").symlink_to("in.wav")
        os.link(self.path("in.wav"), self.path("hard.wav"))
        for other in ("link.wav", "hard.wav"):
            self.refuse("in.wav", other)
            self.refuse(other, "in.wav")
        self.assertTrue(self.path("link.wav").is_symlink())


if __name__ == "__main__":
    unittest.main()
