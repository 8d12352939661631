"""Measurements of the effects that a wave moves."""

import math

from measure import formulas, signals
from measure.lab import LEAD, RATE, Row, exact, setting
from measure.levels import ROUNDING, VOICE
from measure.signals import decibels


def pulsetta(lab):
    voice, values = lab.voice(), {"depth": 0.4, "rate": "4 Hz"}
    (out,) = lab.render("Pulsetta", [voice], values)
    gains = [after / before for before, after in zip(voice, out) if abs(before) > 0.02]
    rows = [
        Row(VOICE, setting(values), "highest gain", max(gains), 1.4, 0.002, digits=4),
        Row(VOICE, setting(values), "lowest gain", min(gains), 0.6, 0.002, digits=4),
        Row(VOICE, setting(values), "rate of the envelope", strongest_rate(voice, out), 4.0, 0.05, "Hz"),
    ]
    expected = [(1 - 0.4 * formulas.wave(4, i)) * x for i, x in enumerate(voice)]
    difference = signals.greatest_difference(out, expected)
    rows.append(exact(VOICE, setting(values), "greatest difference from the formula", difference, ROUNDING))
    values = {"depth": 1, "rate": "7 Hz", "phasediff": 0.25}
    left, right = lab.render("Pulsetta", [signals.constant(1, 2 * RATE)] * 2, values)
    rate = RATE / signals.period([1 - y for y in left])
    rows.append(Row("constant 1", setting(values), "rate of the envelope", rate, 7.0, 0.001, "Hz", 4))
    apart = signals.crossings([1 - y for y in left])[1] - signals.crossings([1 - y for y in right])[1]
    rows.append(Row("constant 1", setting(values), "second channel ahead", apart * 7 / RATE % 1, 0.25, 0.001, "periods", 4))
    return rows


def strongest_rate(before, after):
    """Hertz, 0.5 to 20 in steps of 0.01, of the sine that explains most of what a gain adds to a recording."""
    step = 64  # rates are far below the samples'
    parts = [(i + step / 2, before[i : i + step], after[i : i + step]) for i in range(0, len(before), step)]
    moved = [(i, sum(x * (y - x) for x, y in zip(a, b)), signals.energy(a)) for i, a, b in parts]

    def explained(rate):
        """Of the least squares fit of a sine and a cosine, weighted by the energy."""
        w = 2 * math.pi * rate / RATE
        ss = sc = cc = s = c = 0.0
        for i, value, weight in moved:
            sin, cos = math.sin(w * i), math.cos(w * i)
            ss, sc, cc = ss + weight * sin * sin, sc + weight * sin * cos, cc + weight * cos * cos
            s, c = s + value * sin, c + value * cos
        return (s * s * cc - 2 * s * c * sc + c * c * ss) / (ss * cc - sc * sc)

    coarse = max((k / 10 for k in range(5, 201)), key=explained)
    return max((coarse + k / 100 for k in range(-10, 11)), key=explained)


def roamplex(lab):
    voices, values = lab.two_voices(), {"depth": 0.4, "rate": "4 Hz"}
    out = lab.render("Roamplex", voices, values)
    before, after = ([l + r for l, r in zip(*channels)] for channels in (voices, out))
    moved = signals.greatest_difference(before, after)
    difference = max(map(signals.greatest_difference, out, formulas.autopan(*voices, 0.4, 4)))
    rows = [
        exact("two recordings", setting(values), "change of the sum of both channels", moved, ROUNDING),
        exact("two recordings", setting(values), "greatest difference from the formula", difference, ROUNDING),
    ]
    still = [signals.constant(1, 2 * RATE), [0.0] * (2 * RATE)]
    left, right = lab.render("Roamplex", still, values)
    energies = [signals.energy(channel) / len(channel) for channel in formulas.autopan(*still, 0.4, 4)]
    one = "constant 1, left only"
    rows += [
        Row(one, setting(values), "highest right", max(right), 0.4, 1e-6, digits=4),
        Row(one, setting(values), "lowest left", min(left), 0.6, 1e-6, digits=4),
        Row(one, setting(values), "energy on the left", signals.energy(left) / len(left), energies[0], 1e-6, digits=5),
        Row(one, setting(values), "energy on the right", signals.energy(right) / len(right), energies[1], 1e-6, digits=5),
    ]
    rate = RATE / signals.period([value - 0.2 for value in right])
    return rows + [Row(one, setting(values), "rate", rate, 4.0, 0.001, "Hz", 4)]


def bellwarp(lab):
    tone, rows = signals.sine(3000, RATE), []
    for depth in (1, 0.4):
        values = {"depth1": depth, "frequency1": "500 Hz"}
        (out,) = lab.render("Bellwarp", [tone], values)
        for frequency, expected in ((2500, depth / 2), (3000, 1 - depth), (3500, depth / 2)):
            measured = signals.amplitude(out, frequency)
            # The wave of the table is not quite a sine: see formulas.sine_table.
            rows.append(Row("3 kHz", setting(values), f"amplitude of {frequency} Hz", measured, expected, 0.0005, digits=4))
    voice, one = lab.voice(), {"depth1": 0.7, "frequency1": "440 Hz"}
    both = one | {"enable2": 1, "depth2": 0.5, "frequency2": "1234 Hz"}
    (out,) = lab.render("Bellwarp", [voice], both)
    expected = [x * (0.7 * formulas.wave(440, i) + 0.3) * (0.5 * formulas.wave(1234, i) + 0.5) for i, x in enumerate(voice)]
    difference = signals.greatest_difference(out, expected)
    rows.append(exact(VOICE, setting(both), "greatest difference from the formula", difference, ROUNDING))
    both["modulate"] = 1
    (out,) = lab.render("Bellwarp", [voice], both)
    expected = [x * ((formulas.wave(440, i) + formulas.wave(1234, i)) * 0.6 + 0.4) for i, x in enumerate(voice)]
    difference = signals.greatest_difference(out, expected)
    rows.append(exact(VOICE, setting(both), "greatest difference from the formula", difference, ROUNDING))
    (out,) = lab.render("Bellwarp", [voice], {"enable1": 0})
    return rows + [exact(VOICE, "enable1=0", "difference from the input", signals.greatest_difference(out, voice))]


def quaverly(lab):
    tone, rows = signals.sine(1000, 2 * RATE), []
    for depth, rate in ((0.4, 4), (1, 6)):
        values = {"depth": depth, "rate": f"{rate} Hz"}
        (out,) = lab.render("Quaverly", [tone], values)
        cents = [1200 * math.log2(pitch / 1000) for time, pitch in signals.pitches(out, 2) if time > LEAD]
        swing = 200 * depth * 2 * math.pi * rate / RATE  # of the speed at which the place moves
        for name, measured, expected in (("highest", max(cents), 1 + swing), ("lowest", min(cents), 1 - swing)):
            rows.append(Row("1 kHz", setting(values), f"{name} pitch", measured, 1200 * math.log2(expected), 1.0, "cents", 1))
    voice, still = lab.voice(), {"depth": 0, "rate": "0.01 Hz"}
    (out,) = lab.render("Quaverly", [voice], still)
    # A depth of 0 still moves by one sample, which at this rate takes 25 s.
    rows.append(Row(VOICE, setting(still), "delay by cross-correlation", signals.delay(voice, out, 1000), 204, 0, "samples", 0))
    values = {"depth": 0.4, "rate": "4 Hz"}
    (out,) = lab.render("Quaverly", [voice], values)
    difference = signals.greatest_difference(out, formulas.vibrato(voice, 80, 4))
    return rows + [exact(VOICE, setting(values), "greatest difference from the formula", difference, ROUNDING)]


def swirlo(lab):
    voice, still = lab.voice(), {"MinFreq": "1000 Hz", "MaxFreq": "1000 Hz"}
    rows = []
    # Without a sweep it is a filter like any other.
    for more in ({"Depth": 0.5, "feedback": 0, "delays": 6}, {"Depth": 0.4, "feedback": 0.7, "delays": 4}):
        (out,) = lab.render("Swirlo", [voice], still | more)
        for frequency in (300, 1000, 5000):
            measured = decibels(signals.transfer(voice, out, frequency))
            expected = decibels(formulas.phaser_gain(frequency, 1000, more))
            rows.append(Row(VOICE, setting(still | more), f"gain at {frequency} Hz", measured, expected, 0.01, "dB"))
    return rows + swirlo_notches(lab, still | {"Depth": 0.5, "feedback": 0, "delays": 6}) + swirlo_sweep(lab, voice)


def swirlo_notches(lab, values):
    (out,) = lab.render("Swirlo", [signals.impulse(4 * LEAD, LEAD)], values)
    rows, response = [], out[LEAD:]
    for k in range(3):
        expected = formulas.phaser_notch(1000, 6, k)
        near = [expected * 2 ** (i / 1200) for i in range(-100, 101)]
        notch = min(near, key=lambda frequency: abs(signals.fourier(response, frequency)))
        rows.append(Row("impulse", setting(values), f"notch {k + 1}", notch, expected, expected / 1000, "Hz", 1))
        depth = abs(signals.fourier(response, expected))
        rows.append(Row("impulse", setting(values), f"gain in notch {k + 1}, linear", depth, 0.0, 1e-3, digits=5))
    return rows


def swirlo_sweep(lab, voice):
    """With a sweep, and feedback: every sample by the formula."""
    values = {"Depth": 0.4, "MinFreq": 400, "MaxFreq": 1600, "rate": 2, "feedback": 0.7, "delays": 6}
    texts = values | {key: f"{values[key]} Hz" for key in ("MinFreq", "MaxFreq", "rate")}
    (out,) = lab.render("Swirlo", [voice], texts)
    difference = signals.greatest_difference(out, formulas.phaser(voice, values))
    return [exact(VOICE, setting(texts), "greatest difference from the formula", difference, 2 * ROUNDING)]
