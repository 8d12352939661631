"""Test signals, and figures of signals: levels, spectra, delays, pitches. Signals are lists of samples at lab.RATE."""

import cmath
import math

from measure.lab import RATE


def sine(frequency, frames, amplitude=1.0):
    return [amplitude * math.sin(2 * math.pi * frequency * i / RATE) for i in range(frames)]


def impulse(frames, at=0):
    return [1.0 if i == at else 0.0 for i in range(frames)]


def constant(level, frames):
    return [level] * frames


def sweep(low, high, frames, amplitude=1.0):
    """A sine that rises from `low` to `high` hertz, by the same interval in the same time."""
    growth = math.log(high / low) / frames
    return [amplitude * math.sin(2 * math.pi * low / RATE * math.expm1(growth * i) / growth) for i in range(frames)]


def steps(levels, frames):
    """Each level for so many frames."""
    return [level for level in levels for _ in range(frames)]


def decibels(amplitude):
    return 20 * math.log10(max(abs(amplitude), 1e-15))


def peak(signal):
    return max(map(abs, signal))


def greatest_difference(signal, other):
    if len(signal) != len(other):
        raise ValueError(f"{len(signal)} samples against {len(other)}")
    return max(abs(a - b) for a, b in zip(signal, other))


def energy(signal):
    return math.fsum(value * value for value in signal)


def fourier(signal, frequency):
    """The sum over signal[i] e^(-j w i), w = 2 pi frequency / RATE, by Goertzel's recursion."""
    w = 2 * math.pi * frequency / RATE
    factor, s1, s2 = 2 * math.cos(w), 0.0, 0.0
    for value in signal:
        s1, s2 = value + factor * s1 - s2, s1
    return (s1 - cmath.exp(-1j * w) * s2) * cmath.exp(-1j * w * (len(signal) - 1))


def transfer(before, after, frequency):
    """The complex gain from one signal to another at a frequency. Right for a filter whose answer has ended with the signal."""
    return fourier(after, frequency) / fourier(before, frequency)


def amplitude(signal, frequency):
    """Of a tone with whole periods in the signal."""
    return 2 * abs(fourier(signal, frequency)) / len(signal)


def fft(values):
    """The discrete Fourier transform of a list whose length is a power of two."""
    size = len(values)
    if size == 1:
        return list(values)
    even, odd = fft(values[::2]), fft(values[1::2])
    odd = [cmath.rect(1, -2 * math.pi * k / size) * value for k, value in enumerate(odd)]
    return [a + b for a, b in zip(even, odd)] + [a - b for a, b in zip(even, odd)]


def loudest(signal, frames):
    """Where the loudest part of so many frames begins, in steps of an eighth of it."""
    return max(range(0, len(signal) - frames + 1, max(1, frames // 8)), key=lambda at: energy(signal[at : at + frames]))


def delay(before, after, most, frames=8192):
    """By how many samples the loudest part of `before` is late in `after`, 0 to `most`: the top of their cross-correlation."""
    start = loudest(before[: len(before) - most], frames)
    size = 1 << (frames + most).bit_length()
    part = before[start : start + frames]
    late = after[start : start + frames + most]
    spectra = [fft(signal + [0.0] * (size - len(signal))) for signal in (part, late)]
    product = [(a.conjugate() if isinstance(a, complex) else a) * b for a, b in zip(*spectra)]
    # The inverse transform of a real correlation is the forward one of the conjugate spectrum.
    correlation = [value.real for value in fft([value.conjugate() for value in product])]
    return max(range(most + 1), key=lambda lag: correlation[lag])


def crossings(signal):
    """Times in samples of the zero crossings upwards, between the samples by a straight line."""
    pairs = enumerate(zip(signal, signal[1:]))
    return [i + a / (a - b) for i, (a, b) in pairs if a < 0 <= b]


def period(signal):
    """Samples from one crossing upwards to the next, in the mean."""
    times = crossings(signal)
    return (times[-1] - times[0]) / (len(times) - 1)


def pitches(signal, cycles):
    """(time in samples, hertz) of a tone that moves, each over so many cycles."""
    times = crossings(signal)
    return [((a + b) / 2, RATE * cycles / (b - a)) for a, b in zip(times, times[cycles:])]
