"""The samples: drums, and tones of middle C."""

import math
import random

from content.synthesis import (
    C3, C4, band_pass, cycle, drive, faded, frames_of, glide, high_pass, low_pass, mix, noise, partial, read_cycle, times,
)


def kick():
    frames = frames_of(0.5)
    body = drive(glide(190, 48, 0.03, 0.55, frames), 1.6)
    click = high_pass(noise(1, 0.012, frames_of(0.02)), 1500)
    return [faded(mix((1, body), (0.35, click)))]


def snare():
    frames = frames_of(0.4)
    shell = mix((1, glide(260, 185, 0.015, 0.16, frames)), (0.5, partial(331, 0.11, frames)))
    wires = low_pass(high_pass(noise(2, 0.32, frames), 1800), 9000)
    return [faded(mix((0.6, shell), (0.9, wires)))]


def hat():
    frames = frames_of(0.25)
    metal = [(1, partial(frequency, 0.16, frames)) for frequency in (3130, 4227, 5390, 6533, 8012, 9871)]
    hiss = high_pass(high_pass(noise(3, 0.18, frames), 7000), 7000)
    return [faded(mix((0.12, high_pass(mix(*metal), 5000)), (1, hiss)))]


def plucked_string():
    """Karplus and Strong: a noise runs round a delay of one period, through a mean of two samples (half a sample of delay) and an
    all-pass for the rest of the period."""
    frames, period = frames_of(2), 44100 / C4
    size = int(period - 0.5 - 0.1)
    rest = period - 0.5 - size
    allpass = (1 - rest) / (1 + rest)
    draw = random.Random(4).random
    line = low_pass([2 * draw() - 1 for _ in range(size)], 6000)
    line = [value - sum(line) / size for value in line]
    out, at, before, x1, y1 = [], 0, 0.0, 0.0, 0.0
    for _ in range(frames):
        value = line[at]
        x = 0.998 * 0.5 * (value + before)
        y = allpass * (x - y1) + x1
        before, x1, y1 = value, x, y
        line[at] = y
        at = (at + 1) % size
        out.append(value)
    return [faded(out, 0.2)]


def bell():
    frames = frames_of(2.5)
    # Ratio, level, seconds: the partials of a small church bell; hum, prime, tierce, quint, nominal and above.
    partials = ((0.5, 0.5, 5), (1, 0.9, 4), (1.2, 0.6, 2.6), (1.5, 0.35, 2), (2, 0.8, 2.2), (2.67, 0.35, 1.2), (3.01, 0.3, 1),
                (4.17, 0.25, 0.7), (5.43, 0.2, 0.4), (6.8, 0.15, 0.3))
    sides = []
    for side in (-1, 1):
        parts = [(level * (1 + 0.4 * side * (-1) ** i), partial(C4 * ratio * (1 + 0.0004 * side), seconds, frames))
                 for i, (ratio, level, seconds) in enumerate(partials)]
        sides.append(faded(mix(*parts, (0.2, high_pass(noise(5, 0.03, frames), 3000))), 0.4))
    return sides


def formant(hertz, centre, width):
    return 1 / (1 + ((hertz - centre) / width) ** 2)


def vowel_pad():
    """A choir of six on "ah": saws, whose harmonics the formants weigh, out of tune with each other."""
    frames = frames_of(2)
    formants = ((700, 90, 1), (1150, 110, 0.6), (2600, 180, 0.25), (3400, 250, 0.15))
    harmonics = [sum(level * formant(C4 * n, centre, width) for centre, width, level in formants) / math.sqrt(n)
                 for n in range(1, 31)]
    table, sides = cycle(harmonics), []
    for side in range(2):
        voices = [(1, read_cycle(table, C4 * 2 ** (cents / 1200), frames, phase)) for cents, phase in
                  ((-7 + 2 * side, 0.1 + 0.3 * side), (0.5 - side, 0.55 * side + 0.2), (6 + 2 * side, 0.8 - 0.5 * side))]
        breath = band_pass(noise(6 + side, 60, frames), [2600, 2600], 0.2)
        sides.append(faded(times(mix(*voices, (0.15, breath)), [0, 0.7, 0.95, 1, 1, 1, 0.97, 0.9, 0.8, 0.6, 0.35]), 0.05))
    return sides


def spoken_word():
    """A word such as a turntable likes: "yeah", a buzz whose formants move, with a breath in front."""
    frames = frames_of(1.2)
    tone = read_cycle(cycle([1 / n for n in range(1, 60)]), C3 * 0.97, frames)
    vowels = ((1, band_pass(tone, [280, 450, 720, 760, 620], 0.12)), (0.7, band_pass(tone, [2300, 2000, 1500, 1300, 1200], 0.1)),
              (0.3, band_pass(tone, [3000, 2800, 2600, 2500, 2500], 0.1)))
    word = times(mix(*vowels), [0, 0.8, 1, 1, 0.9, 0.75, 0.5, 0.25, 0])
    return [faded(mix((1, word), (0.1, high_pass(noise(8, 0.2, frames_of(0.3)), 4000))))]


SOUNDS = {
    "Kick": kick,
    "Snare": snare,
    "Hat": hat,
    "Plucked String": plucked_string,
    "Bell": bell,
    "Vowel Pad": vowel_pad,
    "Spoken Word": spoken_word,
}
