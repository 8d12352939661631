import sys
from unittest import mock

from tree_case import TOOLS, TreeCase

sys.path.insert(0, str(TOOLS))
import make_effect_pictures  # noqa: E402
import wav  # noqa: E402
from measure import MEASUREMENTS  # noqa: E402
from measure import document  # noqa: E402
from measure.lab import Row  # noqa: E402
from measure.pictures import PICTURES  # noqa: E402

# A command with effects of whatever name, which all multiply by GAIN.
COMMAND = """\
case $1 in
  list) echo '[{"name": "NAME", "kind": "effect"}, {"name": "Other", "kind": "instrument"}]' ;;
  render) exec python3 -B -c 'import sys; sys.path.insert(0, "TOOLS"); import wav
rate, channels = wav.read(sys.argv[1])
wav.write(sys.argv[2], rate, [[GAIN * value for value in channel] for channel in channels])' "$3" "$4" ;;
  *) echo "sonvelle: no" >&2; exit 2 ;;
esac
"""


class MeasureEffects(TreeCase):
    def setUp(self):
        super().setUp()
        for name in ("Front_Center", "Front_Left", "Front_Right"):
            wav.write(self.root / f"{name}.wav", 48000, [[0.25, -0.5] * 100])

        self.voice = Row("recording", "", "gain", 1.0, 1.0, 0.0)

    def command(self, name="Lumascope", gain=1):
        text = COMMAND.replace("NAME", name).replace("GAIN", str(gain)).replace("TOOLS", str(TOOLS))
        self.script("sonvelle", text)
        return self.root / "sonvelle"

    def measure(self, *arguments, recordings=None):
        options = ["--command", self.root / "sonvelle", "--recordings", recordings or self.root]
        return self.call(sys.executable, "-B", TOOLS / "measure_effects.py", *options, *arguments)

    def test_rows_that_hold_are_printed(self):
        self.command()
        code, out, err = self.measure("Lumascope")
        self.assertEqual(code, 0, err)
        self.assertEqual(out.count("| Lumascope |"), 6)
        self.assertEqual(out.count("| yes |"), 6)

    def test_a_row_that_does_not_hold_fails_and_says_by_how_much(self):
        self.command(gain=1.5)
        code, out, err = self.measure("Lumascope")
        self.assertEqual(code, 1)
        self.assertIn("Lumascope: difference from the input of recording with as new: 2e-01, expected 0, ", err)
        self.assertIn("holds: no, +0.25\n", err)

    def test_an_effect_without_measurements_fails(self):
        self.command("Newcomer")
        code, out, err = self.measure("Newcomer")
        self.assertEqual(code, 1)
        self.assertIn("Newcomer: there is no measurement of it\n", err)

    def test_an_effect_that_is_not_measured_on_a_recording_fails(self):
        tone = Row("1 kHz", "", "gain", 1.0, 1.0, 0.0)
        for rows, wrong in (([tone, tone], 1), ([self.voice], 1), ([tone, self.voice], 0)):
            with mock.patch.dict(MEASUREMENTS, Echolan=lambda lab, rows=rows: rows):
                self.assertEqual(len(document.EFFECTS_PART.measure(None, ["Echolan"], MEASUREMENTS)[1]), wrong)

    def test_missing_recordings_and_a_missing_command_are_named(self):
        self.command()
        code, out, err = self.measure("Lumascope", recordings=self.root / "none")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("none/Front_Center.wav (package alsa-utils", err)
        (self.root / "sonvelle").unlink()
        code, out, err = self.measure("Lumascope")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("build the targets", err)

    def test_a_recording_of_another_rate_is_refused(self):
        self.command()
        wav.write(self.root / "Front_Center.wav", 44100, [[0.0]])
        code, out, err = self.measure("Lumascope")
        self.assertEqual(code, 1)
        self.assertIn("Front_Center.wav: 44100 Hz, the measurements need 48000 Hz", err)

    def test_what_the_command_says_when_it_fails_is_passed_on(self):
        self.command("Bendform")
        code, out, err = self.measure("Bendform")
        self.assertEqual(code, 1)
        self.assertIn("sonvelle state Bendform: exit code 2\nsonvelle: no", err)

    def test_every_effect_with_measurements_has_a_picture(self):
        self.assertEqual(MEASUREMENTS.keys(), PICTURES.keys())


class Document(TreeCase):
    def setUp(self):
        super().setUp()
        self.row = Row("recording", "depth=1", "gain", 1.004, 1.0, 0.01, "dB", 3)
        self.table = {"Echo": [self.row]}
        entry = document.line(document.cells(self.row))
        self.text = f"# Measurements\n\n## Echo\n\n| head |\n|---|\n{entry}\n"

    def found(self, text):
        return " ".join(document.differences(self.table, text))

    def test_that_says_the_same_is_right(self):
        self.assertEqual(self.found(self.text), "")

    def test_may_have_been_measured_elsewhere(self):
        self.assertEqual(self.found(self.text.replace("1.004 dB", "0.999 dB")), "")

    def test_with_a_result_that_does_not_hold_is_wrong(self):
        self.assertIn("does not hold", self.found(self.text.replace("1.004 dB", "1.021 dB")))
        self.assertIn("does not hold", self.found(self.text.replace("| yes", "| no, +1 dB")))

    def test_with_another_setting_or_expectation_is_wrong(self):
        for old, new in (("depth=1", "depth=2"), ("1.000 dB", "2.000 dB"), ("0.01 dB", "0.5 dB")):
            self.assertIn("Echo: the document lists other measurements", self.found(self.text.replace(old, new)))

    def test_with_other_effects_is_wrong(self):
        self.assertIn("Echo is measured, but not in the document", self.found("# Measurements\n"))
        self.assertIn("Tone is in the document, but not measured", self.found(self.text + "\n## Tone\n"))


class Pictures(TreeCase):
    def findings(self, text):
        return " ".join(make_effect_pictures.findings("echo", text, self.root))

    def test_that_are_there_and_shown_are_right(self):
        self.write("echo.svg", "<svg>1.0</svg>")
        self.write("echo.md", "![Echo](echo.svg)")
        self.assertEqual(self.findings("<svg>1.1</svg>"), "")

    def test_that_are_missing_old_large_or_not_shown_are_found(self):
        self.assertIn("echo.svg is missing", self.findings("<svg/>"))
        self.assertIn("echo.md does not show echo.svg", self.findings("<svg/>"))
        self.write("echo.svg", "<svg>1.0</svg>")
        self.assertIn("echo.svg is not what the library gives", self.findings("<svg>1.5</svg>"))
        self.assertIn("40001 bytes", self.findings("x" * 40001))
