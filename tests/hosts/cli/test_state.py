"""States: what `state` prints, what `--state` takes and refuses, and that both mean the same as `--set`."""

import random
import shutil
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree

from command_case import COMMAND, FILE, PLUGIN, USAGE, CommandCase, FakeCase, float_wav

SAVE, LOAD, LOADED = 11, 12, 13


def state(**attributes):
    return "<state" + "".join(f' {key}="{value}"' for key, value in attributes.items()) + "/>"


class StateCase(CommandCase):
    def setUp(self):
        super().setUp()
        numbers = random.Random(1)
        self.write("in.wav", float_wav([[numbers.uniform(-0.5, 0.5) for _ in range(9000)] for _ in range(2)]))

    def write_state(self, text, encoding="utf-8"):
        return self.write("a.xml", text.encode(encoding))

    def attributes(self, *options):
        """Of the state that the command prints."""
        root = ElementTree.fromstring(self.succeed("state", "Echolan", *options).encode())
        self.assertEqual((root.tag, len(root), root.attrib.pop("plugin")), ("state", 0, "Echolan"))
        return root.attrib

    def values(self, *options):
        """feedback and delay as the state has them."""
        attributes = self.attributes(*options)
        self.assertEqual(sorted(attributes), ["parameterdelay", "parameterfeedback"])
        return attributes["parameterfeedback"], attributes["parameterdelay"]

    def load(self, text, encoding="utf-8"):
        return self.values("--state", self.write_state(text, encoding))

    def rendered(self, *options):
        self.render("in.wav", *options)
        return self.path("out.wav").read_bytes()


class Print(StateCase):
    def test_is_an_xml_file_with_the_plugins_name_and_values(self):
        self.assertEqual(self.succeed("state", "Echolan"), '<?xml version="1.0" encoding="utf-8"?>\n'
                         '<state parameterdelay="0.1000" parameterfeedback="0.4000" plugin="Echolan"/>\n')

    def test_has_the_values_that_are_set(self):
        self.assertEqual(self.values("--set", "feedback=0.25", "--set", "delay=0.123456"), ("0.2500", "0.1235"))
        self.assertEqual(self.values("--set", "delay=0.2", "--set", "delay=0.3"), ("0.4000", "0.3000"))

    def test_of_a_state_is_that_state_and_settings_come_behind_it(self):
        self.write("a.xml", self.succeed("state", "Echolan", "--set", "feedback=0.7", "--set", "delay=0.2").encode())
        self.assertEqual(self.values("--state", "a.xml"), ("0.7000", "0.2000"))
        self.assertEqual(self.values("--set", "delay=0.05", "--state", "a.xml"), ("0.7000", "0.0500"))

    def test_refuses_what_a_render_refuses(self):
        self.fail_with(USAGE, "state", "Ekolan", says=("did you mean Echolan?",))
        self.fail_with(USAGE, "state", "Echolan", "--set", "feedback=1", says=("out of range, 0 to 0.8",))
        self.fail_with(USAGE, "state", "Echolan", "--set", "x=1", says=('no parameter "x"',))
        self.fail_with(USAGE, "state", says=("see: sonvelle help",))
        self.fail_with(USAGE, "state", "Echolan", "more", says=("see: sonvelle help",))


class Render(StateCase):
    def test_with_a_state_equals_one_with_the_same_settings_bit_by_bit(self):
        settings = ["--set", "feedback=0.7", "--set", "delay=0.0101"]
        expected = self.rendered(*settings)
        self.write("a.xml", self.succeed("state", "Echolan", *settings).encode())
        self.assertTrue(self.rendered("--state", "a.xml") == expected)
        self.assertTrue(self.rendered("--state", "a.xml") == expected)
        self.assertTrue(self.rendered() != expected)

    def test_settings_come_behind_the_state(self):
        expected = self.rendered("--set", "feedback=0.7", "--set", "delay=0.3")
        self.write_state(state(parameterfeedback="0.7", parameterdelay="0.01"))
        self.assertTrue(self.rendered("--set", "delay=0.3", "--state", "a.xml") == expected)

    def test_takes_the_state_from_a_pipe(self):
        expected = self.rendered("--set", "feedback=0.7")
        text = self.succeed("state", "Echolan", "--set", "feedback=0.7")
        self.succeed("render", "Echolan", "in.wav", "out.wav", "--state", "/dev/stdin", stdin=None, input=text.encode())
        self.assertTrue(self.path("out.wav").read_bytes() == expected)

    def test_takes_the_state_from_the_command_that_prints_it(self):
        expected = self.rendered("--set", "delay=0.02")
        line = f"'{COMMAND}' state Echolan --set delay=0.02 | '{COMMAND}' render Echolan in.wav out.wav --state /dev/stdin"
        subprocess.run(line, shell=True, check=True, cwd=self.folder)
        self.assertTrue(self.path("out.wav").read_bytes() == expected)

    def test_of_hostile_values_ends_well(self):
        for value in ("nan", "-nan", "inf", "-inf", "1e308", "-1e308", "1e999", "-1", "17", "4.9e-324", "abc", ""):
            with self.subTest(value):
                self.write_state(state(parameterfeedback=value, parameterdelay=value))
                result = self.run_command("render", "Echolan", "in.wav", "out.wav", "--state", "a.xml")
                self.assertEqual(result.code, 0, result.err)
                self.assertNotIn("not finite", result.err)


class Contents(StateCase):
    def test_that_are_missing_are_defaults(self):
        for text in ("<state/>", "<x></x>", '<?xml version="1.0"?><state/>', state(parameterdelay="0.1000"), state(other="3")):
            self.assertEqual(self.load(text), ("0.4000", "0.1000"), text)

    def test_are_raw_whatever_the_range(self):
        self.assertEqual(self.load(state(parameterfeedback="17", parameterdelay="-1")), ("17.0000", "-1.0000"))
        self.assertEqual(float(self.load(state(parameterfeedback="1e308"))[0]), 1e308)

    def test_are_found_by_names_of_any_case(self):
        self.assertEqual(self.load(state(PARAMETERFEEDBACK="0.3")), ("0.3000", "0.1000"))

    def test_that_come_twice_count_by_the_last(self):
        self.assertEqual(self.load('<state parameterdelay="0.2" parameterdelay="0.3"/>')[1], "0.3000")

    def test_of_ten_thousand_keys_are_read(self):
        keys = {f"key{i}": i for i in range(10000)}
        self.assertEqual(self.load(state(**keys, parameterdelay="0.25")), ("0.4000", "0.2500"))

    def test_may_be_in_any_encoding_that_xml_files_have(self):
        for name, encoding in (("utf-8", "utf-8-sig"), ("utf-16", "utf-16"), ("iso-8859-1", "latin-1"), ("windows-1252", "cp1252")):
            with self.subTest(encoding):
                text = f'<?xml version="1.0" encoding="{name}"?>\n' + state(parameterdelay="0.25", plugin="Echolan")
                self.assertEqual(self.load(text, encoding)[1], "0.2500")

    def test_may_be_in_every_table_of_256_characters_that_the_library_has(self):
        tables = [f"ISO-8859-{part}" for part in (*range(1, 11), 13, 14, 16)] + [f"windows-125{digit}" for digit in range(9)]
        for name in ("ascii", "IBM850", "IBM866", "IBM874", "KOI8-R", *tables):
            with self.subTest(name):
                text = f'<?xml version="1.0" encoding="{name}"?>\n' + state(parameterdelay="0.25")
                self.assertEqual(self.load(text, "ascii")[1], "0.2500")

    def test_may_name_the_plugin_or_not(self):
        for text in (state(plugin="Echolan"), state(plugin="ECHOLAN"), "<sonvelle/>"):
            self.load(text)


class Refused(StateCase):
    def refuse(self, text, says, last=None):
        name = self.write_state(text)
        before = self.names()
        for command in (["state", "Echolan"], ["render", "Echolan", "in.wav", "out.wav"]):
            self.fail_with(FILE, *command, "--state", name, says=("a.xml", says), last=last)
        self.assertEqual(self.names(), before)

    def test_is_a_state_of_another_plugin(self):
        self.refuse(state(plugin="Swirlo", parameterdelay="0.2"), "it is a state of Swirlo and not of Echolan")
        self.refuse(state(plugin=""), "it is a state of  and not of Echolan")

    def test_is_what_is_no_xml(self):
        self.refuse("no state", "it cannot be read as a state", "Invalid file contents. Text outside of any element.")
        for text in ("", "\n\n"):
            self.refuse(text, "it cannot be read as a state", "The XML does not contain any elements.")

    def test_is_told_with_the_place_of_the_fault(self):
        self.refuse('<state>\n  <x a="1" b=2/>\n</state>', "a.xml, line 2, column 14: it cannot be read as a state",
                    "Invalid file contents. Invalid character found where attribute expected.")
        self.refuse("\n  text", "a.xml, line 2, column 3: it cannot", "Invalid file contents. Text outside of any element.")

    def test_is_a_device_or_a_pipe_that_never_ends(self):
        self.fail_with(FILE, "state", "Echolan", "--state", "/dev/zero", says=("/dev/zero: it cannot be read as a state",),
                       last="The XML does not contain any elements.")
        with subprocess.Popen(["yes"], stdout=subprocess.PIPE) as endless:
            self.fail_with(FILE, "state", "Echolan", "--state", "/dev/stdin", stdin=endless.stdout,
                           says=("/dev/stdin, line 1, column 1: it cannot be read as a state",),
                           last="Invalid file contents. Text outside of any element.")
            endless.kill()

    def test_is_what_is_in_an_unknown_encoding(self):
        self.refuse('<?xml version="1.0" encoding="klingon"?><state/>', "it cannot be read as a state",
                    "No codec found for encoding klingon.")

    def test_is_what_is_cut_off(self):
        whole = self.succeed("state", "Echolan").rstrip()
        for length in range(len(whole)):
            with self.subTest(length):
                self.write_state(whole[:length])
                result = self.run_command("state", "Echolan", "--state", "a.xml")
                lines = result.err.split("\n")
                self.assertEqual((result.code, result.out, len(lines)), (FILE, "", 3), result.err)
                self.assertRegex(lines[0], r"^sonvelle: a\.xml(, line [12], column \d+)?: it cannot be read as a state$")

    def test_is_a_file_that_is_not_there(self):
        for name in ("missing.xml", self.folder, "", "no folder/a.xml"):
            self.fail_with(FILE, "state", "Echolan", "--state", name, says=(str(name),),
                           last=f'File "{name}" could not be open. Make sure it exists.')
        self.fail_with(FILE, "state", "Echolan", "--state", b"\xff.xml".decode(errors="surrogateescape"), says=("is no UTF-8",))

    def test_is_the_file_that_would_be_written(self):
        text = self.succeed("state", "Echolan")
        self.write_state(text)
        self.fail_with(USAGE, "render", "Echolan", "in.wav", "a.xml", "--state", "./a.xml", says=("are the same file",))
        self.assertEqual(self.path("a.xml").read_text(), text)

    def test_leaves_an_old_output_as_it_is(self):
        self.write("out.wav", b"old")
        self.refuse("<", "it cannot be read as a state", self.last_message("<"))
        self.assertEqual(self.path("out.wav").read_bytes(), b"old")

    def last_message(self, text):
        self.write_state(text)
        return self.run_command("state", "Echolan", "--state", "a.xml").err.split("\n")[1]


class Order(FakeCase):
    def test_a_render_prepares_then_loads_then_sets(self):
        self.write("in.wav", float_wav([[0.5] * 10]))
        self.write("a.xml", b'<state gain="1.5"/>')
        out = self.render("in.wav", "--set", "flip=on", "--state", "a.xml")
        self.assertEqual(self.notes(), ["attach", "prepare 1 48000", "load", "loaded", "changed 3", "process 10", "destroy"])
        self.assertEqual(list(out.channels[0]), [-0.75] * 10)

    def test_a_state_is_loaded_set_and_saved(self):
        self.write("a.xml", b'<state gain="1.5"/>')
        out = self.succeed("state", "Echolan", "--set", "flip=on", "--state", "a.xml")
        self.assertEqual(self.notes(), ["attach", "load", "loaded", "changed 3", "save", "destroy"])
        self.assertIn('<state gain="1.5000" plugin="Echolan"/>', out)

    def test_no_state_is_loaded_without_one(self):
        self.succeed("state", "Echolan")
        self.assertEqual(self.notes(), ["attach", "save", "destroy"])

    def test_exceptions_of_the_plugin_give_code_3(self):
        self.write("a.xml", b"<state/>")
        for service in (SAVE, LOAD, LOADED):
            self.environment["SONVELLE_FAKE_RAISES"] = str(service)
            self.fail_with(PLUGIN, "state", "Echolan", "--state", "a.xml", says=("plug-in",), last="It fails.")


if __name__ == "__main__":
    unittest.main()
