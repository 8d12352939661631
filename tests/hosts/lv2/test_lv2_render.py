"""The built bundle, rendered as a host of LV2 does."""

import array
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

BUNDLE = os.environ["SONVELLE_LV2_BUNDLE"]
RENDER = os.environ["SONVELLE_LV2_RENDER"]


class Render(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def run_render(self, plugin, *options, frames=4800, block=256, rate=48000):
        words = [RENDER, BUNDLE, plugin, self.folder / "out.f32", "--rate", rate, "--channels", 2, "--block", block,
                 "--frames", frames, *options]
        environment = os.environ | {"XDG_DATA_HOME": str(self.folder)}
        return subprocess.run([*map(str, words)], env=environment, capture_output=True, text=True, check=False)

    def render(self, plugin, *options, **settings):
        result = self.run_render(plugin, *options, **settings)
        self.assertEqual(result.returncode, 0, result.stderr)
        samples = array.array("f")
        samples.frombytes((self.folder / "out.f32").read_bytes())
        self.assertEqual(len(samples), 2 * settings.get("frames", 4800))
        return samples

    def write(self, name, text):
        (self.folder / name).write_text(text)
        return self.folder / name

    def impulse(self, frames=4800):
        (self.folder / "in.f32").write_bytes(array.array("f", [1, 0.5] + [0] * (2 * frames - 2)).tobytes())
        return self.folder / "in.f32"

    def test_a_state_sets_the_effect(self):
        state = self.write("state.xml", '<state parameterdelay="0.01" parameterfeedback="0.5" plugin="Echolan"/>')
        for block in (64, 100, 4800):
            samples = self.render("Echolan", "--in", self.impulse(), "--state", state, block=block)
            heard = [i for i in range(4800) if samples[2 * i] != 0]
            self.assertEqual(heard[:3], [0, 480, 960], block)

    def test_a_change_has_effect_at_its_frame(self):
        events = self.write("events.txt", "333 set hostBypass 1\n")
        tone = array.array("f", [0.5] * 9600).tobytes()
        (self.folder / "in.f32").write_bytes(tone)
        plain = self.render("Bellwarp", "--in", self.folder / "in.f32")
        for block in (64, 1000):
            changed = self.render("Bellwarp", "--in", self.folder / "in.f32", "--events", events, block=block)
            first = next(i for i in range(4800) if abs(changed[2 * i] - plain[2 * i]) > 1e-4)
            self.assertIn(first, range(333, 337))

    def test_notes_sound_from_their_frame(self):
        events = self.write("events.txt", "1000 midi 0x90 60 100\n3000 midi 128 60 0\n")
        whole = self.render("Toneloom4NN", "--events", events, "--offline", block=4800)
        parts = self.render("Toneloom4NN", "--events", events, "--offline", block=64)
        self.assertFalse(any(whole[:2000]))
        self.assertTrue(any(whole[2000:2400]))
        self.assertEqual([i // 2 for i, sample in enumerate(whole) if sample][0],
                         [i // 2 for i, sample in enumerate(parts) if sample][0])

    def test_what_is_wrong_is_said(self):
        for plugin, options, text in (
            ("Nothing", [], "Nothing: there is no such plug-in"),
            ("Echolan", ["--state", self.folder / "none.xml"], "none.xml: it cannot be read"),
            ("Echolan", ["--state", self.write("broken.xml", "<state")], "lv2_render: "),
            ("Echolan", ["--events", self.write("events.txt", "0 set nothing 1\n")], "nothing: there is no such parameter"),
            ("Echolan", ["--in"], "--in lacks its value"),
        ):
            result = self.run_render(plugin, *options)
            self.assertEqual(result.returncode, 1)
            self.assertIn(text, result.stderr)


if __name__ == "__main__":
    unittest.main()
