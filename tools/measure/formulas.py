"""What the effects promise, written down once more from the formulas of docs/plugins, plainly and in double precision."""

import array
import cmath
import math

from measure.lab import RATE


def unit_delay(frequency):
    """z^-1 on the unit circle."""
    return cmath.exp(-2j * math.pi * frequency / RATE)


def resonant(kind, cutoff, resonance, frequency):
    """The complex gain of Slotter's filters: 1 / (s^2 + d s + 1), high-pass s^2 times that, through the bilinear transform."""
    z = unit_delay(frequency)
    s = (1 - z) / (1 + z) / math.tan(math.pi * cutoff / RATE)
    damping = 1.3 * resonance + 0.1 if kind == "low" else 1.38 * resonance + 0.02
    return (1 if kind == "low" else s * s) / (s * s + damping * s + 1)


def cookbook(kind, cutoff, gain, q, frequency):
    """The complex gain of Tonebench's bands: the analogue prototypes of the cookbook, through the bilinear transform."""
    z = unit_delay(frequency)
    s = (1 - z) / (1 + z) / math.tan(math.pi * cutoff / RATE)
    a = 10 ** (gain / 40)
    root = math.sqrt(a) / q
    return {
        "Peak": lambda: (s * s + s * a / q + 1) / (s * s + s / (a * q) + 1),
        "LowShelf": lambda: a * (s * s + root * s + a) / (a * s * s + root * s + 1),
        "HighShelf": lambda: a * (a * s * s + root * s + 1) / (s * s + root * s + a),
        "LowPass": lambda: 1 / (s * s + s / q + 1),
        "HighPass": lambda: s * s / (s * s + s / q + 1),
        "BandPass": lambda: (s / q) / (s * s + s / q + 1),
        "Notch": lambda: (s * s + 1) / (s * s + s / q + 1),
    }[kind]()


def limiter_knee(mode, excess, room):
    """Clampet's f for the excess above T, with room = 1 - T."""
    u = excess / room
    v = 1.1941918983186133 * u
    w = 3 * u
    return room * {
        "Soft 1": 2 / math.pi * math.sin(math.pi * u / 2),
        "Soft 2": 0.837386354243376 * (v - 0.15 * (v + 1) * v * v),
        "Soft 3": 0.5 * (1 - (u - 1) ** 2),
        "Soft 4": u / (u * u + 1),
        "Clip 1": math.tanh(math.pi * u) / math.pi,
        "Clip 2": (w * w + 27) * w / (9 * w * w + 27) / 3,
        "Clip 3": math.atan(2 * math.pi * u) / (2 * math.pi),
    }[mode]


def limiter(mode, x, threshold, harmonics=0.0):
    """Clampet's output for a sample behind the gain."""
    t, a = threshold**2, abs(x)
    top = 1 / (limiter_knee(mode, 1 - t, 1 - t) + t)
    y = a * top if a < t else 1.0 if a >= 1 else (limiter_knee(mode, a - t, 1 - t) + t) * top
    y = -y if x < 0 else y
    return min(1.0, (y - x) ** 2 * harmonics + y) if harmonics > 1e-5 else y


def compressor_gain(knee, level, threshold, ratio, size, maximize):
    """Squeezel's g for a level, with both gains at 0 dB."""
    t = threshold**2
    top = t ** (1 / ratio)
    slope = (top - t) / (1 - t)
    make_up = 1 / top if maximize else 1.0

    def line(x):
        return slope * x + t - t * slope

    a = b = t
    if knee != "Hard":
        a = max(1e-20, t - size * 0.25 * math.sqrt(0.5))
        b = t + (t - a) * math.sqrt(2 / (slope**2 + 1))
    if level <= a:
        return make_up
    if level >= b:
        return make_up * line(level) / level
    if knee == "Linear":
        part = (level - a) / (b - a)
        return ((1 - part) * a + part * line(b)) * make_up / level
    # The arc's centre: from both ends at right angles to the lines there, whose slopes are 1 and `slope`.
    away = (line(b) - a + (b - a) / slope) / (1 / slope - 1)
    x, y = a + away, a - away
    return make_up * (y + math.sqrt((a - x) ** 2 + (a - y) ** 2 - (level - x) ** 2)) / level


def compressor(signal, values):
    """Squeezel with a hard knee on one channel. Values are by the keys of its parameters."""
    attack, release, rms = (
        math.exp(-1 / (RATE * values[key])) if values[key] else 0.0 for key in ("attack", "release", "rmslength")
    )
    power = envelope = 0.0
    out = []
    for x in signal:
        power = (1 - rms) * x * x + rms * power + 1e-25
        level = math.sqrt(power)
        c = release if level <= envelope else attack
        envelope = c * envelope + (1 - c) * level + 1e-25
        out.append(x * compressor_gain("Hard", envelope, values["threshold"], values["ratio"], 0, values["maximize"]))
    return out


def sine_table():
    """One period of the wave "Sine" in 8192 steps of 32 bits. Its first quarter is mirrored, so that two neighbours are equal
    wherever quarters meet, which sets it apart from the sine by up to a step, 0.0008; then its peak is brought to 1.
    """
    quarter = [math.sin(2 * math.pi * i / 8192) / math.sin(2 * math.pi * 2047 / 8192) for i in range(2048)]
    half = quarter + quarter[::-1]
    return array.array("f", half + [-value for value in half] + half[:1])


TABLE = sine_table()


def wave(rate, i, offset=0.0):
    """The sine that modulates, at the sample i."""
    place = (rate * i / RATE + offset) % 1 * 8192
    at = int(place)
    return TABLE[at] + (place - at) * (TABLE[at + 1] - TABLE[at])


def autopan(left, right, depth, rate):
    """Roamplex."""
    out = [], []
    for i, (l, r) in enumerate(zip(left, right)):
        m = depth * wave(rate, i)
        out[0].append(l * (1 - m) if m >= 0 else l - r * m)
        out[1].append(l * m + r if m >= 0 else r * (1 + m))
    return out


def vibrato(signal, reach, rate):
    """Quaverly on the first channel."""
    out = []
    for i in range(len(signal)):
        place = i - 204 + reach * wave(rate, i)
        at, t = math.floor(place), place - math.floor(place)
        p0, p1, p2, p3 = (signal[k] if 0 <= k < len(signal) else 0.0 for k in range(at - 1, at + 3))
        c = (3 * (p1 - p2) - p0 + p3) / 2
        out.append(p1 + ((c * t + 2 * p2 + p0 - (5 * p1 + p3) / 2) * t + (p2 - p0) / 2) * t)
    return out


def phaser(signal, values):
    """Swirlo with a sine on the first channel. Values are by the keys of its parameters, frequencies and the rate in hertz."""
    low, high = 2 * values["MinFreq"] / RATE, 2 * values["MaxFreq"] / RATE
    stages, z, out = [0.0] * values["delays"], 0.0, []
    for i, x in enumerate(signal):
        d = (high - low) * (wave(values["rate"], i) + 1) / 2 + low
        a = (1 - d) / (1 + d)
        y = values["feedback"] ** 2 * z + x
        for k, s in enumerate(stages):
            t = s - a * y
            stages[k], y = t * a + y, t
        z = y
        out.append(y * values["Depth"] + x * (1 - values["Depth"]))
    return out


def phaser_gain(frequency, centre, values):
    """The complex gain of Swirlo while it stands at `centre` hertz."""
    d, z = 2 * centre / RATE, unit_delay(frequency)
    a = (1 - d) / (1 + d)
    chain = ((z - a) / (1 - a * z)) ** values["delays"]
    return values["Depth"] * chain / (1 - values["feedback"] ** 2 * z * chain) + 1 - values["Depth"]


def phaser_notch(centre, stages, k):
    """Hertz of the k-th notch of Swirlo without feedback, at a depth of 1/2: there the chain turns the signal over."""
    return RATE / math.pi * math.atan(2 * centre / RATE * math.tan((2 * k + 1) * math.pi / (2 * stages)))
