"""What the sounds are made of. Signals are lists of samples at RATE; full scale is 1."""

import cmath
import math
import random
import sys
import wave
from array import array

RATE = 44100
C3, C4 = 130.8127826502993, 261.6255653005986  # key 60 of an instrument plays a sound as it is


def frames_of(seconds):
    return round(seconds * RATE)


def partial(frequency, seconds, frames, amplitude=1.0, phase=0.0):
    """A sine that falls by 60 dB in so many seconds, by turning a pointer."""
    turn = cmath.exp(complex(math.log(0.001) / (seconds * RATE), 2 * math.pi * frequency / RATE))
    pointer, out = cmath.rect(amplitude, phase), []
    for _ in range(frames):
        out.append(pointer.imag)
        pointer *= turn
    return out


def glide(start, end, speed, seconds, frames):
    """A sine whose frequency falls from `start` to `end` with a time constant `speed`, and whose level falls by 60 dB in so many
    seconds."""
    phase, level, bend, out = 0.0, 1.0, start - end, []
    fall, slow = 0.001 ** (1 / (seconds * RATE)), math.exp(-1 / (speed * RATE))
    for _ in range(frames):
        out.append(level * math.sin(phase))
        phase += 2 * math.pi * (end + bend) / RATE
        level *= fall
        bend *= slow
    return out


def noise(seed, seconds, frames):
    """White noise that falls by 60 dB in so many seconds."""
    draw, level, out = random.Random(seed).random, 1.0, []
    fall = 0.001 ** (1 / (seconds * RATE))
    for _ in range(frames):
        out.append(level * (2 * draw() - 1))
        level *= fall
    return out


def cycle(amplitudes, size=2048):
    """One period of a tone from the amplitudes of its harmonics, the first being the fundamental."""
    sines = [math.sin(2 * math.pi * i / size) for i in range(size)]
    table = [0.0] * size
    for number, amplitude in enumerate(amplitudes, 1):
        for i in range(size):
            table[i] += amplitude * sines[i * number % size]
    return table


def read_cycle(table, frequency, frames, phase=0.0):
    """The tone of a period, by straight lines between its samples."""
    size, out = len(table), []
    place, step = phase * size, frequency * size / RATE
    for _ in range(frames):
        i = int(place)
        part = place - i
        out.append(table[i] + part * (table[(i + 1) % size] - table[i]))
        place = (place + step) % size
    return out


def low_pass(signal, hertz):
    """One pole."""
    keep, y, out = math.exp(-2 * math.pi * hertz / RATE), 0.0, []
    for x in signal:
        y = x + keep * (y - x)
        out.append(y)
    return out


def high_pass(signal, hertz):
    return [x - y for x, y in zip(signal, low_pass(signal, hertz))]


def band_pass(signal, frequencies, width):
    """A resonator (state variable filter) whose frequency moves along a list of hertz, evenly spread over the signal; `width` is
    1/Q."""
    low = band = 0.0
    out, last = [], len(frequencies) - 1
    for i, x in enumerate(signal):
        place = i / len(signal) * last
        j = int(place)
        hertz = frequencies[j] + (place - j) * (frequencies[min(j + 1, last)] - frequencies[j])
        f = 2 * math.sin(math.pi * hertz / RATE)
        low += f * band
        band += f * (x - low - width * band)
        out.append(width * band)
    return out


def mix(*parts):
    """The sum of (level, signal), as long as the longest."""
    out = [0.0] * max(len(signal) for _, signal in parts)
    for level, signal in parts:
        for i, value in enumerate(signal):
            out[i] += level * value
    return out


def times(signal, curve):
    """A signal under a curve of evenly spread levels, which straight lines join."""
    last, size, out = len(curve) - 1, len(signal), []
    for i, value in enumerate(signal):
        place = i / size * last
        j = int(place)
        out.append(value * (curve[j] + (place - j) * (curve[j + 1] - curve[j])))
    return out


def drive(signal, amount):
    return [math.tanh(amount * value) for value in signal]


def faded(signal, seconds=0.005):
    """With a straight fade at its end."""
    count = min(frames_of(seconds), len(signal))
    ends = [value * (count - 1 - i) / count for i, value in enumerate(signal[len(signal) - count :])]
    return signal[: len(signal) - count] + ends


def scaled(channels, peak=0.9):
    """All channels by one factor, to a peak."""
    factor = peak / max(abs(value) for channel in channels for value in channel)
    return [[factor * value for value in channel] for channel in channels]


def write(path, channels):
    """A WAV file of 16 bits."""
    values = array("h", (round(max(-1.0, min(value, 1.0)) * 32767) for frame in zip(*channels) for value in frame))
    if sys.byteorder == "big":
        values.byteswap()
    path.parent.mkdir(parents=True, exist_ok=True)
    with wave.open(str(path), "wb") as file:
        file.setnchannels(len(channels))
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(values.tobytes())
