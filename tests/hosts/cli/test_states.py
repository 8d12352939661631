"""The states that are installed: each loads, comes back, and plays a sound of its own."""

import itertools
import json
import os
import subprocess
import sys
import unittest
from pathlib import Path

from command_case import COMMAND, DONE, CommandCase, Wav

TOOLS = Path(os.environ["SONVELLE_SOURCES"]) / "tools"
STATES = COMMAND.parent / "content" / "states"
INSTRUMENTS = ("Toneloom4NN", "Playbox", "Vinylrake", "Layerbox", "Grainloom")
QUIETEST = 10 ** (-24 / 20)
NOTE_SECONDS = 3


class States(CommandCase):
    def setUp(self):
        super().setUp()
        self.succeed("register")

    def sound(self, instrument, state):
        printed = self.succeed("render", instrument, "note.wav", "--state", state, "--note", f"60:1:0:{NOTE_SECONDS}")
        self.assertEqual([note["made"] for note in json.loads(printed)["notes"]], [True], state)
        return Wav(self.path("note.wav")).interleaved

    def test_all_play_a_whole_piece(self):
        subprocess.run([sys.executable, "-B", TOOLS / "make_piece.py", self.path("piece.mid")], check=True)
        for file in sorted(STATES.glob("*/*.xml")):
            # Many notes together may exceed full scale, of which the command warns.
            done = self.run_command("render", file.parent.name, "piece.wav", "--state", file, "--midi", "piece.mid",
                                    "--rate", 22050, "--channels", 1)
            self.assertEqual(done.code, DONE, done.err)
            self.assertTrue(all(note["made"] for note in json.loads(done.out)["notes"]), file)
            piece = Wav(self.path("piece.wav"))
            self.assertTrue(40 < piece.frames / piece.rate < 50, file)
            peak = max(map(abs, piece.interleaved))
            self.assertTrue(QUIETEST <= peak < 10, f"{file}: peak {peak}")

    def test_there_are_six_of_every_instrument(self):
        instruments = {row["name"] for row in json.loads(self.succeed("list", "--json")) if row["kind"] == "instrument"}
        self.assertEqual(instruments, set(INSTRUMENTS))
        for instrument in INSTRUMENTS:
            self.assertEqual(len(list((STATES / instrument).glob("*.xml"))), 6, instrument)


def add_tests(instrument):
    files = sorted(Path(STATES / instrument).glob("*.xml"))

    def come_back(self):
        for file in files:
            self.assertEqual(self.succeed("state", instrument, "--state", file), file.read_text(encoding="utf-8"), file)

    def play(self):
        sounds = {}
        for file in files:
            sound = sounds[file.stem] = self.sound(instrument, file)
            peak = max(map(abs, sound))
            self.assertTrue(QUIETEST <= peak < 1, f"{file.stem}: peak {peak}")
            self.assertEqual(self.sound(instrument, file).tobytes(), sound.tobytes(), file)
        for (name, sound), (other, second) in itertools.combinations(sounds.items(), 2):
            difference = max(abs(a - b) for a, b in zip(sound, second))
            self.assertGreater(difference, QUIETEST, f"{name} and {other}")

    setattr(States, f"test_those_of_{instrument}_come_back_as_they_are_written", come_back)
    setattr(States, f"test_those_of_{instrument}_are_audible_below_full_scale_repeatable_and_different", play)


for name in INSTRUMENTS:
    add_tests(name)

if __name__ == "__main__":
    unittest.main()
