"""What Sonvelle brings along for its instruments, as it is built."""

import json
import os
import subprocess
import sys
import unittest
from pathlib import Path

from command_case import COMMAND, CommandCase, Wav

CONTENT = COMMAND.parent / "content"
DRUM = "MultiSamples/Sonvelle Drum.qxMultiSample"
BASS = "SubSampleLibraries/Natural/Natural Bass.qxSubSampleLib"


def files_of(folder):
    """{path below the folder: bytes} of what is made, without the states."""
    files = [path for path in folder.rglob("*") if path.is_file() and not path.name.startswith(".")]
    return {str(path.relative_to(folder)): path.read_bytes() for path in files if "states" not in path.parts}


class Content(CommandCase):
    def info(self, name):
        return json.loads(self.succeed("info", CONTENT / name))

    def test_is_the_same_whenever_it_is_made(self):
        script = Path(os.environ["SONVELLE_SOURCES"]) / "tools" / "make_content.py"
        subprocess.run([sys.executable, "-B", script, "--command", COMMAND, self.path("content")], check=True)
        again, built = files_of(self.path("content")), files_of(CONTENT)
        self.assertEqual(again.keys(), built.keys())
        for name, data in built.items():
            self.assertTrue(again[name] == data, name)

    def test_has_small_samples_below_full_scale(self):
        samples = sorted((CONTENT / "Samples").iterdir())
        self.assertGreaterEqual(len(samples), 6)
        self.assertLess(sum(path.stat().st_size for path in samples), 1500000)
        channels = set()
        for path in samples:
            told = self.info(path.relative_to(CONTENT))
            self.assertEqual((told["rate"], told["bits"]), (44100, 16), path)
            self.assertTrue(0.5 < told["peak"] < 1, path)
            channels.add(told["channels"])
        self.assertEqual(channels, {1, 2})

    def test_has_a_drum_of_three_layers_with_three_takes_and_two_tracks(self):
        told = self.info(DRUM)
        self.assertEqual((told["layers"], told["takes"], told["rate"]), (3, 9, 44100))
        self.assertEqual([track["name"] for track in told["tracks"]], ["Close", "Room"])

    def test_has_eight_sounds_for_each_band_of_the_bass(self):
        self.assertEqual([band["count"] for band in self.info(BASS)["bands"]], [8] * 10)

    def test_plays_from_any_folder_after_register(self):
        self.succeed("register", cwd="/")
        self.write("bass.xml", b"<state/>")  # Grainloom's default
        self.write("drum.xml", b'<state filename="Sonvelle Drum.qxMultiSample"/>')
        for instrument, state in (("Grainloom", "bass.xml"), ("Layerbox", "drum.xml")):
            self.succeed("render", instrument, self.path("out.wav"), "--state", self.path(state), "--note", "60:1:0:0.5", cwd="/")
            self.assertGreater(max(Wav(self.path("out.wav")).interleaved), 0.1, instrument)


if __name__ == "__main__":
    unittest.main()
