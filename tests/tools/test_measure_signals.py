import cmath
import math
import random
import sys

from tree_case import TOOLS, TreeCase

sys.path.insert(0, str(TOOLS))
import wav  # noqa: E402
from measure import signals  # noqa: E402
from measure.lab import RATE, Row, exact  # noqa: E402


class MeasureSignals(TreeCase):
    def setUp(self):
        super().setUp()
        self.random = random.Random(5)

    def noise(self, frames):
        return [self.random.uniform(-1, 1) for _ in range(frames)]

    def test_the_transform_is_the_sum_of_its_definition(self):
        values = self.noise(64)
        for k, value in enumerate(signals.fft(values)):
            expected = sum(x * cmath.exp(-2j * math.pi * k * i / 64) for i, x in enumerate(values))
            self.assertAlmostEqual(value, expected, places=10)

    def test_the_fourier_sum_at_one_frequency_is_that_of_its_definition(self):
        values = self.noise(100)
        for frequency in (0.0, 77.7, 1000.0, 23999.0):
            expected = sum(x * cmath.exp(-2j * math.pi * frequency / RATE * i) for i, x in enumerate(values))
            self.assertAlmostEqual(signals.fourier(values, frequency), expected, places=9)

    def test_a_delay_is_found_to_the_sample_with_an_echo_and_noise_around(self):
        before = self.noise(6000) + [0.0] * 4000
        for late in (0, 1, 777, 2000):
            after = [0.5 * value for value in [0.0] * late + before[: len(before) - late]]
            after = [value + 0.1 * other for value, other in zip(after, self.noise(len(after)))]
            self.assertEqual(signals.delay(before, after, 2000, 2048), late)

    def test_the_gain_of_a_filter_is_found_on_any_signal_that_ends(self):
        before = self.noise(500) + [0.0] * 10
        after = [0.5 * x + 0.25 * y for x, y in zip(before, [0.0] + before)]
        for frequency in (100, 9000):
            expected = 0.5 + 0.25 * cmath.exp(-2j * math.pi * frequency / RATE)
            self.assertAlmostEqual(signals.transfer(before, after, frequency), expected, places=9)

    def test_amplitude_and_period_are_those_of_the_sine(self):
        tone = signals.sine(1000, RATE // 10, 0.3)
        self.assertAlmostEqual(signals.amplitude(tone, 1000), 0.3)
        self.assertAlmostEqual(signals.amplitude(tone, 2000), 0.0)
        self.assertAlmostEqual(signals.period(tone), 48.0)

    def test_a_sweep_rises_from_its_low_to_its_high_end(self):
        pitches = [pitch for _, pitch in signals.pitches(signals.sweep(200, 2000, RATE), 2)]
        self.assertAlmostEqual(pitches[0] / 200, 1, delta=0.03)
        self.assertAlmostEqual(pitches[-1] / 2000, 1, delta=0.01)
        self.assertEqual(pitches, sorted(pitches))

    def test_signals_of_different_lengths_are_not_compared(self):
        with self.assertRaises(ValueError):
            signals.greatest_difference([0.0], [0.0, 0.0])

    def test_a_file_of_floats_comes_back_as_it_was_written(self):
        channels = [[0.5, -2.0, 0.0], [1.0, 0.25, 1e-3]]
        wav.write(self.root / "a.wav", 44100, channels)
        rate, read = wav.read(self.root / "a.wav")
        self.assertEqual(rate, 44100)
        self.assertEqual(read[0], channels[0])
        self.assertAlmostEqual(read[1][2], 1e-3, places=9)

    def test_a_row_holds_within_its_tolerance_and_else_says_by_how_much_not(self):
        self.assertEqual(Row("", "", "", 1.5, 1.0, 0.5, "dB").verdict(), "yes")
        self.assertEqual(Row("", "", "", 1.75, 1.0, 0.5, "dB").verdict(), "no, +0.75 dB")
        self.assertEqual(exact("", "", "", 1e-9).verdict(), "no, +1e-09")

    def test_what_is_no_number_does_not_hold(self):
        self.assertFalse(Row("", "", "", math.nan, 1.0, 0.5).holds())
        self.assertFalse(Row("", "", "", math.inf, 1.0, 0.5).holds())

    def test_figures_have_their_unit_and_no_negative_zero(self):
        self.assertEqual(Row("", "", "", 0, 0, 0, "dB").show(-0.001), "0.00 dB")
        self.assertEqual(exact("", "", "", 0).show(0.0), "0")
        self.assertEqual(exact("", "", "", 0).show(3.21e-8), "3e-08")
