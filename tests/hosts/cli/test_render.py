"""What comes out: the effect's formula, whatever the format and the block size."""

import array
import random
import unittest

from command_case import CommandCase, Wav, flac_bytes, float_wav, wav_bytes


def noise(channels, frames, seed=1):
    numbers = random.Random(seed)
    return [array.array("f", (numbers.uniform(-0.5, 0.5) for _ in range(frames))) for _ in range(channels)]


def echo(samples, rate, feedback=0.4, delay=0.1):
    """y[i] = x[i] + feedback^2 y[i - L] in double precision, each y rounded to a float."""
    gain, length = feedback * feedback, max(1, int(rate * delay))
    out = array.array("f")
    for i, x in enumerate(samples):
        out.append((out[i - length] if i >= length else 0.0) * gain + x)
    return out


class Echolan(CommandCase):
    def test_output_is_the_formula_sample_by_sample_in_every_format(self):
        for channels, rate in ((1, 44100), (2, 48000), (6, 96000), (2, 96000), (6, 44100)):
            with self.subTest(channels=channels, rate=rate):
                samples = noise(channels, 12345)
                self.write("in.wav", float_wav(samples, rate))
                out = self.render("in.wav")
                self.assertEqual((out.code, out.bits, out.channel_count, out.rate), (3, 32, channels, rate))
                self.expect_samples(out.channels, [echo(channel, rate) for channel in samples])

    def test_values_of_the_command_line_are_those_of_the_formula(self):
        samples = noise(2, 5000)
        self.write("in.wav", float_wav(samples))
        out = self.render("in.wav", "--set", "feedback=0.7", "--set=delay=0.0101")
        self.expect_samples(out.channels, [echo(channel, 48000, 0.7, 0.0101) for channel in samples])

    def test_of_several_values_for_a_key_the_last_one_holds(self):
        self.write("in.wav", float_wav(noise(1, 3000)))
        expected = self.render("in.wav", "--set", "delay=0.02", output="one.wav").channels
        out = self.render("in.wav", "--set", "delay=0.5", "--set", "delay=0.02").channels
        self.expect_samples(out, expected)

    def test_every_block_size_gives_the_same_file(self):
        for channels in (1, 2, 6):
            self.write("in.wav", float_wav(noise(channels, 20011)))
            self.render("in.wav", "--tail", "0.3", output="expected.wav")
            for block in (1, 7, 512, 4096, 20011, 1 << 20):
                with self.subTest(channels=channels, block=block):
                    self.render("in.wav", "--tail", "0.3", "--block", block)
                    self.assertTrue(self.path("out.wav").read_bytes() == self.path("expected.wav").read_bytes())

    def test_a_tail_continues_the_formula_over_silence(self):
        samples = noise(2, 1000)
        self.write("in.wav", float_wav(samples, 44100))
        out = self.render("in.wav", "--tail", "0.25")
        self.assertEqual(out.frames, 1000 + 11025)
        self.expect_samples(out.channels, [echo(list(channel) + [0.0] * 11025, 44100) for channel in samples])

    def test_loud_audio_is_neither_scaled_nor_clipped(self):
        samples = [array.array("f", [4.0, -3.0, 2.5, 0.0])]
        self.write("in.wav", float_wav(samples))
        self.assertEqual(self.run_command("render", "Echolan", "in.wav", "out.wav").code, 0)
        self.expect_samples(Wav(self.path("out.wav")).channels, samples)


class Length(CommandCase):
    def test_output_has_the_length_of_the_input(self):
        for frames in (0, 1, 511, 512, 513, 16383, 16384, 16385, 40000):
            with self.subTest(frames):
                self.write("in.wav", float_wav(noise(1, frames)))
                self.assertEqual(self.render("in.wav").frames, frames)

    def test_a_tail_is_rounded_to_frames(self):
        self.write("in.wav", float_wav(noise(1, 100), 44100))
        for seconds, frames in ((0, 0), ("0.0", 0), ("0.5", 22050), ("1e-5", 0), ("1.2e-5", 1), ("+0.1", 4410)):
            with self.subTest(seconds):
                self.assertEqual(self.render("in.wav", "--tail", seconds).frames, 100 + frames)

    def test_an_input_without_frames_has_a_tail(self):
        self.write("in.wav", wav_bytes(b""))
        self.assertEqual(self.render("in.wav", "--tail", "0.01").frames, 480)


class Inputs(CommandCase):
    def test_integers_are_read_with_full_scale_1(self):
        for bits, data, expected in (
            (8, bytes([0, 128, 192, 255]), [-1, 0, 0.5, 127 / 128]),
            (16, array.array("h", [-32768, 0, 16384, 32767]).tobytes(), [-1, 0, 0.5, 32767 / 32768]),
            (32, array.array("i", [-(2**31), 0, 2**30, 2**29]).tobytes(), [-1, 0, 0.5, 0.25]),
        ):
            with self.subTest(bits):
                self.write("in.wav", wav_bytes(data, bits=bits))
                self.assertEqual(list(self.render("in.wav").channels[0]), expected)

    def test_formats_are_told_by_contents_not_by_names(self):
        header = b".snd" + b"".join(n.to_bytes(4, "big") for n in (24, 8, 3, 22050, 1))  # 16 bits, big-endian
        self.write("voice.txt", header + b"\x40\x00\x20\x00\xc0\x00\x00\x00")
        out = self.render("voice.txt")
        self.assertEqual((out.rate, list(out.channels[0])), (22050, [0.5, 0.25, -0.5, 0]))

    def test_compressed_files_are_read(self):
        numbers = [i * 31 % 40001 - 20000 for i in range(30000)]
        self.write("in.flac", flac_bytes(numbers))
        out = self.render("in.flac", "--set", "feedback=0")
        self.expect_samples(out.channels, [[number / 32768 for number in numbers]])

    def test_rates_from_1_hertz_up_are_rendered(self):
        for rate in (1, 7, 8000, 192000, 16000000, 2**31 - 1):
            with self.subTest(rate):
                self.write("in.wav", wav_bytes(b"\0\x40" * 20, rate=rate))
                out = self.render("in.wav", "--set", "delay=0")
                self.assertEqual((out.rate, out.frames), (rate, 20))

    def test_up_to_1024_channels_are_rendered(self):
        samples = noise(1024, 3)
        self.write("in.wav", float_wav(samples))
        self.expect_samples(self.render("in.wav", "--block", 1).channels, samples)

    def test_a_pipe_is_read_as_it_comes(self):
        samples = noise(2, 30000)
        out = self.succeed("render", "Echolan", "/dev/stdin", "out.wav", stdin=None, input=float_wav(samples))
        self.assertEqual(out, "")
        self.expect_samples(Wav(self.path("out.wav")).channels, [echo(channel, 48000) for channel in samples])


if __name__ == "__main__":
    unittest.main()
