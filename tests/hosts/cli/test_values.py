"""Values with units and names, as people type them."""

import re
import unittest

from command_case import USAGE, CommandCase, FakeCase, float_wav


class Units(CommandCase):
    def set(self, setting):
        """The value that the state has then."""
        key = setting.split("=")[0]
        return re.search(rf'parameter{key}="(.*?)"', self.succeed("state", "Echolan", "--set", setting)).group(1)

    def refuse(self, setting, says):
        key, text = setting.split("=")
        self.fail_with(USAGE, "state", "Echolan", "--set", setting, says=(f'--set {key}: "{text}" is {says}',))

    def test_of_decibels_and_times_become_table_units(self):
        for text, value in (("-20 dB", "0.3162"), ("-20dB", "0.3162"), ("-20 DB", "0.3162"), ("silence", "0.0000"),
                            ("-6.5 dB", "0.6879"), ("-inf dB", "0.0000"), (" -20  dB ", "0.3162")):
            self.assertEqual(self.set(f"feedback={text}"), value, text)
        for text, value in (("120 ms", "0.1200"), ("120ms", "0.1200"), ("0.25 s", "0.2500"), ("0 ms", "0.0000"), ("500 ms", "0.5000")):
            self.assertEqual(self.set(f"delay={text}"), value, text)

    def test_are_needed_for_shown_values_since_a_number_alone_is_in_table_units(self):
        self.assertEqual(self.set("delay=0.12"), "0.1200")
        self.assertEqual(self.set("delay= 0.12 "), "0.1200")
        self.refuse("delay=120", "out of range, 0 to 0.5")
        self.refuse("feedback=-20", "out of range, 0 to 0.8")

    def test_stand_in_the_range_of_an_error(self):
        for setting in ("delay=501 ms", "delay=1 s", "delay=-1 ms"):
            self.refuse(setting, "out of range, 0.0 ms to 500 ms")
        for setting in ("feedback=0 dB", "feedback=-3.8 dB"):
            self.refuse(setting, "out of range, silence to -3.9 dB")

    def test_that_an_error_names_as_limits_are_taken(self):
        self.assertEqual(self.set("feedback=-3.9 dB"), "0.7989")
        self.assertEqual(self.set("delay=0.0 ms"), "0.0000")

    def test_that_do_not_fit_are_refused_with_an_example(self):
        for text in ("50%", "5 Hz", "on", "abc", "", "-6 dB x", "1e400 dB", "nan dB", "0,5", "nan", "inf", "1e999", "0x1"):
            self.refuse(f"feedback={text}", 'neither a finite number nor a text like "-15.9 dB"')
        self.refuse("delay=-6 dB", 'neither a finite number nor a text like "100 ms"')

    def test_give_the_audio_of_the_number(self):
        self.write("in.wav", float_wav([[0.5] * 20000]))
        self.render("in.wav", "--set", "delay=0.12", output="a.wav")
        self.render("in.wav", "--set", "delay=120 ms", output="b.wav")
        self.assertEqual(self.path("a.wav").read_bytes(), self.path("b.wav").read_bytes())


class Names(FakeCase):
    def set(self, setting):
        self.write("in.wav", float_wav([[0.5]]))
        return self.render("in.wav", "--set", setting).channels[0][0]

    def refuse(self, setting, says):
        self.fail_with(USAGE, "state", "Echolan", "--set", setting, says=(says,))

    def test_of_choices_are_taken_in_any_case(self):
        for setting in ("mode=Plain", "mode=plain", "mode= PLAIN ", "mode=0"):
            self.assertEqual(self.set(setting), 0.375)

    def test_of_no_choice_list_the_choices(self):
        for text in ("Plan", "", "Plain 2", "0x1", "nan"):
            self.refuse(f"mode={text}", f'--set mode: "{text}" is neither a number from 0 to 2 nor one of: "Plain", "Silence", "No numbers"')

    def test_of_a_switch_are_on_and_off(self):
        for text, sign in (("on", -1), ("ON", -1), ("yes", -1), ("true", -1), ("1", -1), ("off", 1), ("No", 1), ("false", 1), ("0", 1)):
            self.assertEqual(self.set(f"flip={text}"), 0.375 * sign, text)
        self.refuse("flip=maybe", '"maybe" is neither 0 or 1 nor "on" or "off"')
        self.refuse("flip=2", "out of range, 0 to 1")

    def test_of_whole_numbers_take_no_unit_that_is_not_shown(self):
        self.refuse("tail=5 ms", '--set tail: "5 ms" is not a whole number')


if __name__ == "__main__":
    unittest.main()
