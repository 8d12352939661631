"""What LV2's own tools say of the built bundle."""

import os
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

BUNDLE = Path(os.environ["SONVELLE_LV2_BUNDLE"])
# The tools cannot load a module that a sanitizer watches.
IS_SANITIZED = bool(os.environ.get("SONVELLE_SANITIZE"))
PLUGINS = "https://sonvelle.example/plugins/"
NAMES = """Echolan Clampet Slotter Widenor Tonebench Imprinta Bendform Pulsetta Roamplex Bellwarp Quaverly Squeezel Lumascope
    Swirlo Slidebench Grainloom Playbox Toneloom4NN Vinylrake Layerbox""".split()
INSTRUMENTS = NAMES[15:]


def tone(path, frames=20000, rate=48000):
    """A stereo WAV file of 16 bits: a sawtooth."""
    samples = [(i * 331) % 40000 - 20000 for i in range(frames)]
    data = b"".join(struct.pack("<hh", sample, -sample // 2) for sample in samples)
    form = struct.pack("<HHIIHH", 1, 2, rate, rate * 4, 4, 16)
    path.write_bytes(b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " + struct.pack("<I", 16) + form + b"data" +
                     struct.pack("<I", len(data)) + data)


class Bundle(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def run_tool(self, *words):
        environment = os.environ | {"LV2_PATH": f"{BUNDLE.parent}:/usr/lib/lv2", "XDG_DATA_HOME": str(self.folder)}
        return subprocess.run([*map(str, words)], env=environment, capture_output=True, text=True, check=False)

    def succeed(self, *words):
        result = self.run_tool(*words)
        self.assertEqual(result.returncode, 0, (words, result.stderr))
        return result

    def test_is_valid(self):
        texts = sorted(BUNDLE.glob("*.ttl"))
        self.assertEqual(len(texts), 1 + len(NAMES) + len(INSTRUMENTS))
        result = self.succeed("lv2_validate", *texts)
        report = result.stdout + result.stderr
        self.assertRegex(report, "Found 0 errors among")
        self.assertNotRegex(report, "(?i)warning:|error:")

    def test_a_broken_text_would_be_found(self):
        text = (BUNDLE / "Echolan.ttl").read_text().replace("lv2:symbol \"delay\" ;\n", "", 1)
        (self.folder / "Echolan.ttl").write_text(text)
        result = self.run_tool("lv2_validate", self.folder / "Echolan.ttl")
        self.assertNotRegex(result.stdout + result.stderr, "Found 0 errors")

    @unittest.skipIf(IS_SANITIZED, "the tools are not")
    def test_lists_all_plugins(self):
        listed = [line for line in self.succeed("lv2ls").stdout.split() if line.startswith(PLUGINS)]
        self.assertEqual(listed, sorted(PLUGINS + name for name in NAMES))

    @unittest.skipIf(IS_SANITIZED, "the tools are not")
    def test_describes_each_plugin(self):
        for name in NAMES:
            info = self.succeed("lv2info", PLUGINS + name)
            self.assertEqual(info.stderr, "")
            self.assertRegex(info.stdout, f"Name: +{name}\n")
            self.assertNotRegex(info.stdout, "Class: +Plugin\n")
            self.assertEqual("Instrument Plugin\n" in info.stdout, name in INSTRUMENTS)
            presets = info.stdout.split("Presets:")[1].split("Port 0:")[0].split("\n")
            self.assertEqual(sum(bool(line.strip()) for line in presets), 6 if name in INSTRUMENTS else 0)
        delay = self.succeed("lv2info", PLUGINS + "Echolan").stdout
        self.assertRegex(delay, r"Class: +Delay Plugin\n")
        self.assertRegex(delay, r"Has latency: +yes, reported by port 4\n")
        self.assertRegex(delay, r"Symbol: +delay\n\s+Name: +Delay\n\s+Minimum: +0\.0+\n\s+Maximum: +500\.0+\n\s+Default: +100\.0")

    @unittest.skipIf(IS_SANITIZED, "the tools are not")
    def test_effects_are_applied_to_a_file(self):
        source, result = self.folder / "in.wav", self.folder / "out.wav"
        tone(source)
        for name in NAMES:
            if name in INSTRUMENTS:
                continue
            self.succeed("lv2apply", "-i", source, "-o", result, PLUGINS + name)
            self.assertGreater(result.stat().st_size, 20000, name)
            result.unlink()

    @unittest.skipIf(IS_SANITIZED, "the tools are not")
    def test_controls_are_what_people_read(self):
        source = self.folder / "in.wav"
        tone(source)
        heard = []
        for delay in ("100", "100.0", "200"):
            self.succeed("lv2apply", "-i", source, "-o", self.folder / "out.wav", "-c", "delay", delay, PLUGINS + "Echolan")
            heard.append((self.folder / "out.wav").read_bytes())
        self.assertEqual(heard[0], heard[1])
        self.assertNotEqual(heard[0], heard[2])

    @unittest.skipIf(IS_SANITIZED, "the tools are not")
    def test_each_plugin_runs_in_a_benchmark(self):
        for name in NAMES:
            self.assertIn(PLUGINS + name, self.succeed("lv2bench", "-n", 20000, PLUGINS + name).stdout)


if __name__ == "__main__":
    unittest.main()
