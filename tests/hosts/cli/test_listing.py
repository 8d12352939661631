import json
import os
import subprocess
import unittest

from command_case import OUTPUT, PLUGIN, USAGE, CommandCase, FakeCase


class List(CommandCase):
    def test_a_line_per_plugin_tells_name_kind_and_summary(self):
        lines = self.succeed("list").splitlines()
        self.assertIn(["Echolan", "effect", "feedback delay"], [line.split(maxsplit=2) for line in lines])
        kinds = {line.index(" " + line.split()[1] + " ") for line in lines}
        self.assertEqual(len(kinds), 1, "the columns are not aligned")

    def test_json_holds_the_same(self):
        plugins = json.loads(self.succeed("list", "--json"))
        self.assertIn({"name": "Echolan", "kind": "effect", "summary": "feedback delay"}, plugins)
        self.assertEqual(len(plugins), len(self.succeed("list").splitlines()))


class Parameters(FakeCase):
    """With a plug-in that has a row of each kind."""

    def test_text_has_a_line_and_a_help_line_per_parameter(self):
        lines = self.succeed("params", "Echolan").splitlines()
        self.assertEqual([line.split() for line in lines if line[0] != " "][1:], [
            ["gain", "Gain", "real", "0", "to", "2", "0.75", "\u00d7", "0.8"],
            ["tail", "Tail", "integer", "0", "to", "100000000", "0", "0"],
            ["mode", "Mode", "enumeration", "0", "to", "2", "0", "Plain"],
            ["flip", "Flip", "switch", "0", "to", "1", "0", "0"],
        ])
        self.assertEqual(lines[2:4], ["    Gain is a factor < 2.", "    Shown range: \u00d7 0.0 to \u00d7 2.0"])
        self.assertIn("    Choices: Plain, Silence, No numbers", lines)

    def test_columns_are_aligned(self):
        lines = [line for line in self.succeed("params", "Echolan").splitlines() if line[0] != " "]
        self.assertEqual(len({line.index(word) for line, word in zip(lines, ("KIND", "real", "integer", "enum", "switch"))}), 1)

    def test_json_has_all_fields_in_table_units_and_the_help_as_it_is(self):
        rows = json.loads(self.succeed("params", "Echolan", "--json"))
        self.assertEqual([row["key"] for row in rows], ["gain", "tail", "mode", "flip"])
        self.assertEqual(rows[0], {
            "key": "gain", "name": "Gain", "kind": "real", "range": [0, 2],
            "rangeText": ["\u00d7 0.0", "\u00d7 2.0"], "default": 0.75, "text": "\u00d7 0.8",
            "help": "<name>Gain</name> is a factor < 2.",
        })
        self.assertEqual(rows[2]["choices"], ["Plain", "Silence", "No numbers"])
        self.assertEqual([rows[2]["range"], rows[2]["default"], rows[2]["text"]], [[0, 2], 0, "Plain"])
        self.assertIsInstance(rows[1]["default"], int)

    def test_an_exception_of_the_plugin_is_the_last_line(self):
        self.environment["SONVELLE_FAKE_RAISES"] = "0"
        self.fail_with(PLUGIN, "params", "Echolan", last="It fails.")


class Names(CommandCase):
    def test_an_unknown_plugin_gets_the_nearest_name(self):
        for name in ("Ekolan", "echolan", "ECHOLAN", "Echolan "):
            for command in (("params", name), ("render", name, "in.wav", "out.wav")):
                self.fail_with(USAGE, *command, says=(f'"{name}"', "did you mean Echolan?"))

    def test_an_unknown_command_gets_the_nearest_one(self):
        self.fail_with(USAGE, "rendr", says=('"rendr"', "did you mean render?"))
        self.fail_with(USAGE, "parms", "Echolan", says=("did you mean params?",))
        self.fail_with(USAGE, "", says=('""',))
        self.fail_with(USAGE, "help", "lst", says=("did you mean list?",))


class Help(CommandCase):
    def test_without_arguments_the_usage_goes_to_standard_error(self):
        result = self.run_command()
        self.assertEqual((result.code, result.out), (USAGE, ""))
        self.assertEqual(result.err, self.succeed("help"))

    def test_help_names_every_command(self):
        text = self.succeed("help")
        for command in ("list", "params", "render", "help"):
            self.assertRegex(text, rf"(?m)^  {command} ")
            self.assertIn(f"Usage: sonvelle {command} ", self.succeed("help", command))
            self.assertEqual(self.succeed(command, "--help"), self.succeed("help", command))
        self.assertEqual(self.succeed("--help"), text)

    def test_help_of_render_tells_units_and_defaults(self):
        text = self.succeed("help", "render")
        for word in ("--set KEY=VALUE", "log10 of hertz", "--block FRAMES", "Default: 512.", "seconds", "Default: 0."):
            self.assertIn(word, text)

    def test_version_is_printed(self):
        self.assertRegex(self.succeed("--version"), r"^sonvelle \d+\.\d+\.\d+\n$")

    def test_wrong_usage_is_one_line_and_code_2(self):
        for arguments in (
            ["--nope"], ["list", "x"], ["list", "--jsn"], ["params"], ["render"], ["render", "Echolan", "in.wav"],
            ["render", "Echolan", "a", "b", "c"], ["render", "Echolan", "a", "b", "--set"], ["params", "A", "B"],
            ["render", "Echolan", "a", "b", "-x"], ["render", "Echolan", "a", "b", "--block", "1", "--block", "2"],
        ):
            with self.subTest(arguments):
                self.fail_with(USAGE, *arguments, says=("see: sonvelle help",))


class StandardOutput(CommandCase):
    COMMANDS = (["list"], ["list", "--json"], ["params", "Echolan"], ["state", "Echolan"], ["info", "a.mrf"],
                ["register"], ["help"], ["help", "--man"], ["--version"])

    def setUp(self):
        super().setUp()
        index = b"<resources><resources/></resources>"
        self.write("a.mrf", bytes(4) + len(index).to_bytes(4, "little") + bytes(4) + index)

    def test_of_a_command_that_works_gets_its_result_and_standard_error_nothing(self):
        for command in self.COMMANDS:
            self.assertNotEqual(self.succeed(*command), "")

    def test_that_is_full_gives_code_4(self):
        with open("/dev/full", "w") as full:
            for command in self.COMMANDS:
                self.fail_with(OUTPUT, *command, says=("standard output: No space left on device",),
                               capture_output=False, stdout=full, stderr=subprocess.PIPE)

    def test_that_is_closed_gives_code_4(self):
        for command in self.COMMANDS:
            self.fail_with(OUTPUT, *command, says=("standard output: Bad file descriptor",),
                           capture_output=False, stderr=subprocess.PIPE, preexec_fn=lambda: os.close(1))

    def test_that_nobody_reads_gives_code_4(self):
        reading, writing = os.pipe()
        os.close(reading)
        try:
            self.fail_with(OUTPUT, "list", says=("standard output: Broken pipe",),
                           capture_output=False, stdout=writing, stderr=subprocess.PIPE)
        finally:
            os.close(writing)


if __name__ == "__main__":
    unittest.main()
