"""A session of Ardour: plug-ins are inserted and automated, the session is saved, opened, exported; it sounds the same."""

import os
import re
import shutil
import tempfile
import unittest
from pathlib import Path

from ardour_case import Ardour, samples

# All effects but the three whose sound depends on the blocks of the host.
STEADY = ["Tonebench", "Clampet", "Slotter", "Widenor", "Bendform", "Pulsetta", "Roamplex", "Bellwarp", "Squeezel", "Lumascope",
          "Slidebench", "Echolan"]
# Those of them that move, adapt or echo: what they are at when the export begins is a matter of what was played before.
MOVING = ["Pulsetta", "Roamplex", "Bellwarp", "Squeezel", "Echolan"]
# With a preset: a sampler, which plays a file of the content, and a synthesizer.
INSTRUMENTS = {"Playbox": "Church bell", "Toneloom4NN": "Glass bell"}


@unittest.skipUnless(shutil.which("ardour7-lua"), "Ardour (package ardour) is not installed")
class Session(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.root = Path(cls.folder.name)
        (cls.root / "home").mkdir()
        cls.ardour = Ardour(cls.root / "home", os.environ["SONVELLE_BUILD"])

    def expect_sound(self, samples):
        self.assertEqual(len(samples), 2 * 2 * 48000)
        self.assertGreater(max(samples), 1000)
        self.assertGreater(max(map(abs, samples[-20000:])), 10, "it has not stopped in between")

    def test_of_lv2_effects_sounds_the_same_when_it_is_opened_again(self):
        session = self.root / "lv2"
        self.ardour.make(session, *STEADY)
        first = self.ardour.export(session, self.root / "first.wav")
        self.ardour.save_again(session)
        again = self.ardour.export(session, self.root / "again.wav")
        self.expect_sound(first)
        self.assertEqual(again.tobytes(), first.tobytes())
        text = (session / "session.ardour").read_text()
        self.assertEqual(re.findall(r'unique-id="https://sonvelle.example/plugins/(\w+)"', text), STEADY)
        self.assertEqual(text.count('state="Play"'), len(STEADY))

    def sound(self, name, format, automated):
        session = self.root / f"{name}.{format}"
        self.ardour.make(session, name, format=format, automated=automated)
        sound = self.ardour.export(session, session.with_suffix(".wav"))
        shutil.rmtree(session)
        return sound

    def test_of_an_effect_sounds_the_same_as_lv2_and_as_vst3(self):
        self.assertEqual(len(self.ardour.vst3), 20)
        for name in STEADY:
            if name in MOVING:
                continue
            with self.subTest(effect=name):
                lv2, vst3 = (self.sound(name, format, automated=False) for format in ("LV2", "VST3"))
                self.assertGreater(max(vst3), 1000)
                self.assertLessEqual(max(abs(a - b) for a, b in zip(lv2, vst3)), 1)

    def test_with_automation_sounds_the_same_as_lv2_and_as_vst3(self):
        """But for a frame at each end of a block: VST3 gets a point for the last one there."""
        lv2, vst3 = (self.sound("Clampet", format, automated=True) for format in ("LV2", "VST3"))
        for sound in (lv2, vst3):
            self.assertGreater(max(sound[-9600:]), 50 * max(sound[:9600]), "its gain has gone from -24 to 24 dB")
        others = [i for i in range(len(lv2) // 2) if abs(lv2[2 * i] - vst3[2 * i]) > 1]
        self.assertTrue(all(after - before >= 256 for before, after in zip(others, others[1:])), others)

    def test_of_an_instrument_sounds_the_same_each_time_and_as_lv2_and_as_vst3(self):
        for name, preset in INSTRUMENTS.items():
            sounds = []
            for format in ("LV2", "VST3"):
                session = self.root / f"{name}.{format}"
                self.ardour.play(session, name, preset, format)
                for _ in range(2):
                    sounds.append(self.ardour.export(session, self.root / "played.wav").tobytes())
                    self.ardour.save_again(session)
                self.expect_sound(samples(self.root / "played.wav"))
            with self.subTest(instrument=name):
                self.assertEqual([sound == sounds[0] for sound in sounds], [True] * 4)


if __name__ == "__main__":
    unittest.main()
