"""The recordings that the spectra of "Natural Bass" are taken from: eight bass tones of C3."""

import math

from content.synthesis import C3, cycle, drive, faded, frames_of, glide, high_pass, low_pass, mix, noise, partial, read_cycle, scaled

SECONDS = 1.5


def decaying(seconds, weights, brightness):
    """Strings: each harmonic falls on its own, the higher the sooner."""
    frames = frames_of(SECONDS)
    return mix(*((weight, partial(C3 * n * math.sqrt(1 + 0.00008 * n * n), seconds / (1 + (n - 1) / brightness), frames, phase=n))
                 for n, weight in enumerate(weights, 1)))


def plucked(position, count):
    """A string's harmonics when it is plucked at a part of its length."""
    return [abs(math.sin(math.pi * n * position)) / n**1.3 for n in range(1, count + 1)]


def sustained(amplitudes, seconds):
    table, fall = cycle(amplitudes), 0.001 ** (1 / (seconds * 44100))
    level, out = 1.0, []
    for value in read_cycle(table, C3, frames_of(SECONDS)):
        out.append(level * value)
        level *= fall
    return out


def tones():
    """(name, channels)"""
    frames = frames_of(SECONDS)
    pick = high_pass(noise(21, 0.02, frames_of(0.03)), 1200)
    reed = [1 / n if n % 2 else 0.15 / n for n in range(1, 25)]
    named = {
        "Finger": decaying(4, plucked(0.3, 12), 4),
        "Pick": mix((1, decaying(4, plucked(0.12, 24), 9)), (0.3, pick)),
        "Muted": low_pass(decaying(1.2, plucked(0.2, 10), 2), 700),
        "Upright": mix((1, decaying(2.2, plucked(0.4, 14), 3)), (0.2, low_pass(noise(22, 0.05, frames), 300))),
        "Sub": drive(glide(C3 * 1.5, C3, 0.02, 5, frames), 1.3),
        "Saw": low_pass(sustained([1 / n for n in range(1, 40)], 5), 1200),
        "Hollow": sustained(reed, 6),
        "Driven": drive(decaying(5, plucked(0.25, 16), 6), 4),
    }
    return {name: scaled([faded(signal, 0.1)]) for name, signal in named.items()}
