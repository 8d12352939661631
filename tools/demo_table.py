#!/usr/bin/env python3
"""demo_table.py IN OUT: a small table of what went into an effect and what came out, from two WAV files."""

import math
import sys

import wav


def measure(path):
    """(rate, channels, frames, peak, RMS) of a WAV file."""
    rate, channels = wav.read(path)
    values = [value for channel in channels for value in channel]
    peak = max(map(abs, values), default=0.0)
    rms = math.sqrt(math.fsum(value * value for value in values) / max(1, len(values)))
    return rate, len(channels), len(channels[0]), peak, rms


def decibels(amplitude):
    return f"{20 * math.log10(amplitude):.1f} dB" if amplitude > 0 else "-inf dB"


def main(arguments):
    if len(arguments) != 2:
        sys.exit("usage: demo_table.py IN OUT")
    rows = [measure(path) for path in arguments]
    print(f"{'':4}{'rate':>10}{'channels':>10}{'duration':>11}{'peak':>11}{'RMS':>11}")
    for label, (rate, channels, frames, peak, rms) in zip(("in", "out"), rows):
        duration = f"{frames / rate:.2f} s"
        print(f"{label:4}{f'{rate} Hz':>10}{channels:>10}{duration:>11}{decibels(peak):>11}{decibels(rms):>11}")
    seconds = [frames / rate for rate, _, frames, _, _ in rows]
    print(f"tail: {seconds[1] - seconds[0]:.2f} s")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
