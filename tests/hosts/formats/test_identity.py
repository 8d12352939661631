"""Every plug-in sounds the same in each format as it does by the command: bit by bit, at the same block size."""

import array
import os
import random
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "cli"))
import json

import midi
from command_case import COMMAND, CommandCase, Wav, float_wav

BUILD = Path(os.environ["SONVELLE_BUILD"])
STATES = Path(os.environ["SONVELLE_SOURCES"]) / "resources/states"
# The program that plays a host, and what it loads.
FORMATS = {
    "lv2": (os.environ["SONVELLE_LV2_RENDER"], BUILD / "lv2/Sonvelle.lv2"),
    "clap": (os.environ["SONVELLE_CLAP_RENDER"], BUILD / "clap/Sonvelle.clap"),
    "vst3": (os.environ["SONVELLE_VST3_RENDER"],
             next((BUILD / "vst3/Sonvelle.vst3/Contents").glob("*/Sonvelle.so"), BUILD / "vst3/Sonvelle.vst3")),
}
RATE, BLOCK, FRAMES = 48000, 512, 20000


def plugins():
    out = subprocess.run([COMMAND, "list", "--json"], check=True, capture_output=True, text=True).stdout
    return json.loads(out)


class FormatCase(CommandCase):
    def setUp(self):
        super().setUp()
        self.succeed("register")  # the instruments' content

    def rendered(self, *arguments):
        """By the command, interleaved; it may be louder than full scale, of which the command warns."""
        result = self.run_command("render", *arguments)
        self.assertEqual(result.code, 0, result.err)
        return Wav(self.path("out.wav")).interleaved

    def host(self, name, plugin, *options, frames=FRAMES, block=BLOCK):
        """What the plug-in gives in that format, interleaved."""
        program, module = FORMATS[name]
        out = self.path(f"{name}.f32")
        arguments = [program, module, plugin, out, "--rate", RATE, "--channels", 2, "--block", block, "--frames", frames]
        done = subprocess.run(list(map(str, [*arguments, *options])), cwd=self.folder, capture_output=True, text=True,
                              timeout=300)
        self.assertEqual((done.returncode, done.stderr), (0, ""), f"{name} {plugin}")
        samples = array.array("f", out.read_bytes())
        self.assertEqual(len(samples), 2 * frames)
        return samples

    def expect_equal(self, samples, expected, what):
        if samples.tobytes() == expected.tobytes():
            return
        at = next(i for i, pair in enumerate(zip(samples, expected)) if pair[0] != pair[1])
        self.fail(f"{what}: frame {at // 2}: {samples[at]} instead of {expected[at]}")

    def write_noise(self):
        numbers = random.Random(1)
        channels = [[numbers.uniform(-0.5, 0.5) for _ in range(FRAMES)] for _ in range(2)]
        self.write("in.wav", float_wav(channels, RATE))
        self.write("in.f32", array.array("f", (x for frame in zip(*channels) for x in frame)).tobytes())


class Effects(FormatCase):
    def random_settings(self, plugin, seed):
        numbers = random.Random(seed)
        settings = []
        for row in json.loads(self.succeed("params", plugin, "--json")):
            if "range" not in row:
                continue
            low, high = row["range"]
            value = numbers.uniform(low, high)
            if row["kind"] != "real":
                value = round(value)
            settings += ["--set", f"{row['key']}={min(max(round(value, 4), low), high)}"]
        return settings

    def test_sound_as_by_the_command_with_the_same_state(self):
        self.write_noise()
        for plugin in plugins():
            if plugin["kind"] != "effect":
                continue
            name = plugin["name"]
            for seed in range(3):
                settings = self.random_settings(name, seed) if seed else []
                self.write("state.xml", self.succeed("state", name, *settings).encode())
                expected = self.rendered(name, "in.wav", "out.wav", "--state", "state.xml", "--block", BLOCK)
                for format in FORMATS:
                    with self.subTest(plugin=name, format=format, seed=seed):
                        samples = self.host(format, name, "--in", "in.f32", "--state", "state.xml")
                        self.expect_equal(samples, expected, f"{format} {name}")

    def test_change_a_value_at_its_frame_in_each_format(self):
        self.write_noise()
        frame = 1234
        self.write("events", f"{frame} set feedback 0.1234\n{frame} set delay 0.0321\n".encode())
        plain = self.host("clap", "Echolan", "--in", "in.f32")
        answers = {}
        for format in FORMATS:
            answers[format] = self.host(format, "Echolan", "--in", "in.f32", "--events", "events")
        # LV2 has its ports at the beginning of a block.
        late = self.host("lv2", "Echolan", "--in", "in.f32", "--events", "events", block=617)
        self.expect_equal(answers["vst3"], answers["clap"], "vst3")
        self.assertNotEqual(answers["clap"].tobytes(), plain.tobytes())
        self.expect_equal(answers["clap"][: 2 * frame], plain[: 2 * frame], "before the change")
        self.expect_equal(late, answers["clap"], "lv2 in blocks that begin with the change")


class Instruments(FormatCase):
    def test_sound_as_by_the_command_with_the_same_piece(self):
        # A tick is 48 frames: 1000 ticks a quarter note of one second.
        notes = [(0, 60, 100), (100, 64, 80), (150, 60, 100), (220, 67, 127), (400, 72, 33), (410, 60, 80)]
        events = [(tick, midi.press(key, velocity)) for tick, key, velocity in notes]
        events += [(tick + 180, midi.release(key)) for tick, key, _ in notes]
        events += [(300, midi.control(64, 127)), (700, midi.control(64, 0))]
        events.sort(key=lambda event: event[0])
        ticks = [0] + [tick for tick, _ in events]
        steps = [(b - a, event[1]) for a, b, event in zip(ticks, ticks[1:], events)]
        self.write("piece.mid", midi.midi(midi.track((0, midi.tempo(1000000)), *steps), division=1000))
        lines = [f"{tick * 48} midi {' '.join(map(str, event))}\n" for tick, event in events]
        self.write("events", "".join(lines).encode())
        for plugin in plugins():
            if plugin["kind"] == "effect":
                continue
            name = plugin["name"]
            for state in sorted((STATES / name).glob("*.xml"))[:2]:
                expected = self.rendered(name, "out.wav", "--midi", "piece.mid", "--state", state, "--rate", RATE, "--block", BLOCK)
                frames = len(expected) // 2 + 1000
                self.assertGreater(max(map(abs, expected)), 0.001, "it sounds")
                for format in FORMATS:
                    with self.subTest(plugin=name, format=format, state=state.stem):
                        samples = self.host(format, name, "--state", state, "--events", "events", "--offline", frames=frames)
                        expected_here = expected + array.array("f", bytes(4 * (len(samples) - len(expected))))
                        self.expect_equal(samples, expected_here, f"{format} {name}")


if __name__ == "__main__":
    unittest.main()
