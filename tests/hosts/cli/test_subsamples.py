"""Subsample libraries that the command makes, and what Grainloom makes of them."""

import array
import json
import math
import random
import unittest

from command_case import DONE, FILE, OUTPUT, USAGE, CommandCase, Wav, float_wav
from libraries import SubSampleFile

OUT = "out.qxSubSampleLib"
RATE, SIZE, HOP = 44100, 8192, 4096
BANDS = [(0, 16), (16, 16), (32, 32), (64, 64), (128, 128), (256, 256), (512, 512), (1024, 1024), (2048, 2048), (4096, 4096)]


def tone(hertz, length=20000, level=0.5):
    return [level * math.sin(2 * math.pi * hertz * i / RATE) for i in range(length)]


def noise(length=20000, level=0.5):
    numbers = random.Random(1)
    return [level * numbers.uniform(-1, 1) for _ in range(length)]


def decibels(wanted, got):
    """The signal-to-noise ratio of `got`, whatever its gain."""
    gain = sum(a * b for a, b in zip(wanted, got)) / sum(b * b for b in got)
    error = sum((a - gain * b) ** 2 for a, b in zip(wanted, got))
    return 10 * math.log10(sum(a * a for a in wanted) / error) if error else math.inf


class Subsamples(CommandCase):
    def record(self, name, *channels, rate=RATE):
        self.path(name).parent.mkdir(exist_ok=True)
        return self.write(name, float_wav(channels, rate))

    def make(self, *sources):
        made = json.loads(self.succeed("make-subsamples", *sources, OUT))
        self.file = SubSampleFile(self.path(OUT))
        return made

    def play(self, length, index=0, channels=1):
        """What Grainloom makes of all bands of one sound, to where its last fade begins."""
        self.path("SubSampleLibraries").mkdir(exist_ok=True)
        self.path(OUT).rename(self.path("SubSampleLibraries") / OUT)
        items = "".join(f'<item Index="{index}" Offset="{first}" OffsetModif="0" Volume="1"/>' for first, _ in BANDS)
        self.write("state.xml", f'<state plugin="Grainloom" subpath="" filename="{OUT}" coloroffset="0">'
                                f"<generator>{items}</generator></state>".encode())
        self.succeed("render", "Grainloom", "out.wav", "--state", "state.xml", "--rate", RATE, "--channels", channels,
                     "--note", f"60:1:0:{length / RATE}")
        self.path("SubSampleLibraries" + "/" + OUT).rename(self.path(OUT))
        return [channel[: length - 200] for channel in Wav(self.path("out.wav")).channels]


class Files(Subsamples):
    def test_have_ten_octaves_without_a_gap(self):
        self.record("a.wav", noise(10000))
        made = self.make("a.wav")
        self.assertEqual([(first, bins) for first, bins, _ in self.file.bands], BANDS)
        self.assertEqual([(band["first"], band["bins"]) for band in made["bands"]], BANDS)
        self.assertEqual((self.file.rate, self.file.name), (RATE, b"out"))
        info = json.loads(self.succeed("info", OUT))
        self.assertEqual([band["count"] for band in info["bands"]], [1] * 10)

    def test_have_the_frames_that_give_the_whole_length(self):
        for length, frames in ((1, 1), (HOP, 1), (SIZE, 1), (SIZE + 1, 2), (3 * HOP, 2), (3 * HOP + 1, 3), (20000, 4)):
            self.record("a.wav", [0.5] * length)
            (recording,) = self.make("a.wav")["recordings"]
            self.assertEqual((recording["length"], recording["frames"]), (length, frames))
            for _, _, sounds in self.file.bands:
                self.assertEqual(sounds[0][:3], (frames, length, 1))

    def test_hold_the_transform_of_each_frame(self):
        cosine = [math.cos(2 * math.pi * 100 * i / SIZE) for i in range(3 * HOP)]
        sine = [math.sin(2 * math.pi * 100 * i / SIZE) for i in range(3 * HOP)]
        self.record("a.wav", cosine, sine)
        self.make("a.wav")
        for channel, place in ((0, 200), (1, 201)):
            for frame in range(2):
                spectrum = [value for band in range(10) for value in self.file.spectra(band, 0, channel)[frame]]
                self.assertEqual(len(spectrum), SIZE)
                self.assertAlmostEqual(spectrum[place], SIZE / 2, 1)
                self.assertLess(max(abs(value) for i, value in enumerate(spectrum) if i != place), 0.1)

    def test_have_every_recording_in_every_band_the_dark_ones_first(self):
        for name, hertz in (("b", 3000), ("a", 5000), ("c", 300)):
            self.record(f"set/{name}.wav", tone(hertz, 9000))
        self.record("d.wav", [0.0] * 5000)
        made = self.make("set", "d.wav")
        self.assertEqual([recording["file"] for recording in made["recordings"]],
                         ["d.wav", "set/c.wav", "set/b.wav", "set/a.wav"])
        self.assertEqual([recording["frames"] for recording in made["recordings"]], [1, 2, 2, 2])
        for recording, hertz in zip(made["recordings"][1:], (300, 3000, 5000)):
            self.assertLess(abs(recording["centroid"] - hertz), 0.05 * hertz + 10)
        for first, bins, sounds in self.file.bands:
            self.assertEqual([sound[:3] for sound in sounds], [(1, 5000, 1)] + [(2, 9000, 1)] * 3)
        ends = sorted((sound[3], sound[3] + 4 * sound[0] * sound[2] * bins)
                      for _, bins, sounds in self.file.bands for sound in sounds)
        self.assertEqual([start for start, _ in ends], [0] + [end for _, end in ends[:-1]])
        self.assertEqual(ends[-1][1], len(self.file.data))

    def test_are_the_same_each_time(self):
        self.record("a.wav", noise(), tone(100))
        self.make("a.wav")
        first = self.path(OUT).read_bytes()
        self.make("a.wav")
        self.assertEqual(self.path(OUT).read_bytes(), first)


class Sound(Subsamples):
    def test_is_that_of_the_recording_behind_the_first_half_frame(self):
        for samples in (tone(440), tone(30.5), tone(15000, 30001), noise(), noise(HOP * 5)):
            self.record("a.wav", samples)
            (recording,) = self.make("a.wav")["recordings"]
            self.assertGreater(recording["snr"], 120)
            (out,) = self.play(len(samples))
            self.assertGreater(decibels(samples[HOP : len(out)], out[HOP:]), 120)

    def test_fades_in_over_the_first_half_frame(self):
        samples = noise()
        self.record("a.wav", samples)
        self.make("a.wav")
        (out,) = self.play(len(samples))
        self.assertGreater(decibels([i / HOP * sample for i, sample in enumerate(samples[:HOP])], out[:HOP]), 110)

    def test_has_the_channels_of_the_recording(self):
        self.record("a.wav", tone(440), noise())
        self.make("a.wav")
        left, right = self.play(20000, channels=2)
        self.assertGreater(decibels(tone(440)[HOP : len(left)], left[HOP:]), 100)
        self.assertGreater(decibels(noise()[HOP : len(right)], right[HOP:]), 100)

    def test_is_that_of_the_recording_of_an_index(self):
        self.record("a.wav", tone(440))
        self.record("b.wav", tone(4400, 25000))
        self.make("b.wav", "a.wav")
        (out,) = self.play(25000, index=1)
        self.assertGreater(decibels(tone(4400, 25000)[HOP : len(out)], out[HOP:]), 120)

    def test_of_silence_has_no_ratio(self):
        self.record("a.wav", [0.0] * 9000)
        (recording,) = self.make("a.wav")["recordings"]
        self.assertEqual((recording["snr"], recording["centroid"]), (None, 0))


class Refused(Subsamples):
    def refuse(self, *says, sources=("a.wav",), code=FILE):
        self.fail_with(code, "make-subsamples", *sources, OUT, says=says)
        self.assertFalse(self.path(OUT).exists())

    def test_are_recordings_that_do_not_fit(self):
        for rate in (22049, 192001):
            self.record("a.wav", tone(100), rate=rate)
            self.refuse("a.wav", f"{rate} hertz", "22050 to 192000")
        for rate in (22050, 192000):
            self.record("a.wav", tone(100, 5000), rate=rate)
            self.make("a.wav")
            self.path(OUT).unlink()
        self.record("b.wav", tone(100))
        self.refuse("b.wav", "44100 hertz", "192000", sources=("a.wav", "b.wav"))
        self.record("a.wav", *[[0.5]] * 9)
        self.refuse("a.wav", "eight channels")

    def test_are_files_that_cannot_be_used(self):
        for data, says in ((b"junk", "cannot be read as a sound file"), (b"", "empty"), (float_wav([[]], RATE), "no samples"),
                           (float_wav([[math.nan]], RATE), "no numbers"), (float_wav([[3e38] * 9000], RATE), "too large")):
            self.write("a.wav", data)
            self.refuse("a.wav", says)

    def test_are_files_that_change_between_the_two_times_that_they_are_read(self):
        dark = tone(50)
        for channels, rate in (([dark[:-1]] * 2, RATE), ([dark + [0.5]] * 2, RATE), ([dark[:100]] * 2, RATE),
                               ([dark], RATE), ([dark] * 3, RATE), ([dark] * 2, 48000)):
            changed = float_wav(channels, rate)
            self.record("a.wav", dark, dark)
            self.fail_with_change(FILE, "b.wav", float_wav([tone(5000)], RATE), lambda: self.write("a.wav", changed),
                                  "make-subsamples", "a.wav", "b.wav", OUT,
                                  says="a.wav: the file has changed while it was read")
            self.assertEqual(self.names(), ["a.wav"])

    def test_are_sources_without_sounds(self):
        self.refuse("a.wav", "No such file")
        self.path("set").mkdir()
        self.refuse("set", "no sound file", sources=("set",))

    def test_is_wrong_usage(self):
        self.record("a.wav", tone(100))
        for words in ([], ["a.wav"], ["a.wav", OUT, "--compress", "zlib"]):
            self.fail_with(USAGE, "make-subsamples", *words, says=["see: sonvelle help make-subsamples"])
        self.fail_with(USAGE, "make-subsamples", "a.wav", "a.wav", says=["the same file"])
        self.fail_with(OUTPUT, "make-subsamples", "a.wav", "/dev/full", says=["/dev/full"])
        self.assertEqual(self.names(), ["a.wav"])


if __name__ == "__main__":
    unittest.main()
