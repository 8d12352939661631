"""A session of Ardour: plug-ins are inserted and automated, the session is saved, opened, exported; it sounds the same."""

import os
import re
import shutil
import tempfile
import unittest
from pathlib import Path

from ardour_case import Ardour

URI = "https://sonvelle.example/plugins/"
# All effects but the three whose sound depends on the blocks of the host.
STEADY = ["Tonebench", "Clampet", "Slotter", "Widenor", "Bendform", "Pulsetta", "Roamplex", "Bellwarp", "Squeezel", "Lumascope",
          "Slidebench", "Echolan"]
# Those of them that move, adapt or echo: what they are at when the export begins is a matter of what was played before.
MOVING = ["Pulsetta", "Roamplex", "Bellwarp", "Squeezel", "Echolan"]


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
        self.ardour.make(session, *(URI + name for name in STEADY))
        first = self.ardour.export(session, self.root / "first.wav")
        self.ardour.save_again(session)
        again = self.ardour.export(session, self.root / "again.wav")
        self.expect_sound(first)
        self.assertEqual(again.tobytes(), first.tobytes())
        text = (session / "session.ardour").read_text()
        self.assertEqual(re.findall(r'unique-id="https://sonvelle.example/plugins/(\w+)"', text), STEADY)
        self.assertEqual(text.count('state="Play"'), len(STEADY))

    def test_of_an_effect_sounds_the_same_as_lv2_and_as_vst3(self):
        found = dict(reversed(pair) for pair in re.findall(r'uid="(\w+)" name="(\w+)"', self.ardour.vst3))
        self.assertEqual(len(found), 20)
        for name in STEADY:
            if name in MOVING:
                continue
            with self.subTest(effect=name):
                session = self.root / name
                self.ardour.make(session, URI + name)
                self.ardour.edit(session, lambda text: text.replace('state="Play"', 'state="Off"'))
                lv2 = self.ardour.export(session, self.root / f"{name}.lv2.wav")
                self.ardour.turn_into_vst3(session, {URI + name: found[name]})
                vst3 = self.ardour.export(session, self.root / f"{name}.vst3.wav")
                self.assertGreater(max(vst3), 1000)
                self.assertLessEqual(max(abs(a - b) for a, b in zip(lv2, vst3)), 1)


if __name__ == "__main__":
    unittest.main()
