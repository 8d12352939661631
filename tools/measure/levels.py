"""Measurements of the effects that change levels sample by sample, and of the one that changes nothing."""

import array
import math

from measure import formulas, signals
from measure.lab import RATE, Row, exact, setting
from measure.signals import decibels

VOICE = "recording"
ROUNDING = 1e-6  # float output against a formula in double, magnitudes up to about 1


def against_formula(signal, values, before, after, formula, curve="", tolerance=ROUNDING):
    expected = [formula(x) for x in before]
    return exact(signal, setting(values, curve), "greatest difference from the formula",
                 signals.greatest_difference(after, expected), tolerance)


def squeezel(lab):
    slow = {"threshold": 0.5, "ratio": 4, "rmslength": 0.1, "maximize": 0}
    rows = []
    for level in (-20, -9, 0):
        tone = signals.sine(1000, 2 * RATE, 10 ** (level / 20))
        (out,) = lab.render("Squeezel", [tone], slow)
        measured = signals.amplitude(out[-RATE // 2 :], 1000) / signals.amplitude(tone[-RATE // 2 :], 1000)
        rms = 10 ** (level / 20) / math.sqrt(2)
        expected = formulas.compressor_gain("Hard", rms, 0.5, 4, 0, False)
        tone = f"1 kHz, peak {level} dB"
        rows.append(Row(tone, setting(slow), "gain", decibels(measured), decibels(expected), 0.02, "dB", 3))
    return rows + squeezel_knees(lab) + squeezel_times(lab) + squeezel_voice(lab)


def squeezel_knees(lab):
    rows, at_once = [], {"attack": 0, "release": 0, "rmslength": 0, "threshold": 0.6, "ratio": 6}
    levels = [i / 50 for i in range(1, 51)]
    for knee in ("Hard", "Linear", "Soft"):
        values = at_once | {"kneemode": knee, "kneesize": 1}
        (out,) = lab.render("Squeezel", [levels], values)
        expected = [x * formulas.compressor_gain(knee, x, 0.6, 6, 1, True) for x in levels]
        rows.append(exact("steps of 0.02", setting(values), "greatest difference from the curve",
                          signals.greatest_difference(out, expected), ROUNDING))
    return rows


def squeezel_times(lab):
    """The time until the detector has gone 1 - 1/e of its way, seen by the gain that it then gives."""
    rows, values = [], {"attack": 0.01, "release": 0.05, "rmslength": 0, "threshold": 0.2, "ratio": 4, "maximize": 0}
    for key, low, high in (("attack", 0.1, 0.9), ("release", 0.9, 0.1)):
        step = signals.steps([low, high], RATE // 2)
        (out,) = lab.render("Squeezel", [step], values)
        reached = formulas.compressor_gain("Hard", high + (low - high) / math.e, 0.2, 4, 0, False)
        gains = [after / before for before, after in zip(step, out)][RATE // 2 :]
        i = next(i for i, gain in enumerate(gains) if (gain - reached) * (gains[0] - reached) <= 0)
        time = (i + (gains[i - 1] - reached) / (gains[i - 1] - gains[i])) / RATE * 1e3
        step = f"step {low} to {high}"
        rows.append(Row(step, setting(values), f"time constant of {key}", time, values[key] * 1e3, 0.03, "ms", 3))
    return rows


def squeezel_voice(lab):
    voice = lab.voice()
    values = {"threshold": 0.3, "ratio": 4, "attack": 0.005, "release": 0.1, "rmslength": 0.002, "maximize": 1}
    (out,) = lab.render("Squeezel", [voice], values)
    difference = signals.greatest_difference(out, formulas.compressor(voice, values))
    quiet = {"threshold": 1, "ratio": 4}
    (same,) = lab.render("Squeezel", [voice], quiet)
    unchanged = signals.greatest_difference(same, voice)
    return [
        exact(VOICE, setting(values), "greatest difference from the formula", difference, ROUNDING),
        exact(VOICE, setting(quiet), "difference from the input, below the threshold", unchanged),
    ]


def clampet(lab):
    voice, values = lab.voice(), {"gain": 12}
    (out,) = lab.render("Clampet", [voice], values)
    gain = 10 ** (12 / 20)
    if signals.peak(voice) * gain < 1:
        raise SystemExit("the recording is too quiet to reach the ceiling of Clampet")
    rows = [
        Row(VOICE, setting(values), "peak", decibels(signals.peak(out)), 0.0, 0.0, "dB", 3),
        against_formula(VOICE, values, voice, out, lambda x: formulas.limiter("Soft 1", x * gain, 0.8)),
    ]
    levels = [i / 50 for i in range(-60, 61)]
    for mode in ("Soft 1", "Soft 2", "Soft 3", "Soft 4", "Clip 1", "Clip 2", "Clip 3"):
        values = {"mode": mode, "threshold": 0.6}
        (out,) = lab.render("Clampet", [levels], values)
        rows.append(against_formula("steps of 0.02", values, levels, out, lambda x: formulas.limiter(mode, x, 0.6)))
    return rows + clampet_harmonics(lab)


def clampet_harmonics(lab):
    """The second harmonic of a sine with and without the even term."""
    tone, rows = signals.sine(1000, RATE // 10), []
    for amount in (0, 0.5):
        values = {"gain": 6, "evenharmonics": amount}
        (out,) = lab.render("Clampet", [tone], values)
        shaped = [formulas.limiter("Soft 1", x * 10 ** (6 / 20), 0.8, amount) for x in tone]
        measured, expected = (signals.amplitude(signal, 2000) for signal in (out, shaped))
        rows.append(Row("1 kHz, peak 0 dB", setting(values), "amplitude of 2 kHz", measured, expected, ROUNDING, digits=4))
    return rows


def bendform(lab):
    voice = lab.voice()
    (out,) = lab.render("Bendform", [voice], {"Depth": 1})
    rows = [exact(VOICE, "Depth=1, as new", "difference from the input", signals.greatest_difference(out, voice), 1e-7)]
    points, curve = [{"x": 0, "y": 0}, {"x": 0.5, "y": 0.8}, {"x": 1, "y": 0.6}], "curve (0, 0), (0.5, 0.8), (1, 0.6)"

    def shaped(x, depth):
        u = math.sqrt(abs(x))
        v = 1.6 * u if u < 0.5 else 1 - 0.4 * min(u, 1)
        return math.copysign(v * v, x) * depth + x * (1 - depth)

    (out,) = lab.render("Bendform", [[0.25] * 100], {"Depth": 1}, points)
    rows.append(Row("constant 0.25", setting({"Depth": 1}, curve), "magnitude", out[-1], 0.64, ROUNDING, digits=4))
    levels = [i / 50 for i in range(-60, 61)]
    for depth in (1, 0.5):
        for name, signal in (("steps of 0.02", levels), (VOICE, voice)):
            (out,) = lab.render("Bendform", [signal], {"Depth": depth}, points)
            rows.append(against_formula(name, {"Depth": depth}, signal, out, lambda x: shaped(x, depth), curve))
    return rows


def lumascope(lab):
    """It only looks: nothing of what passes may change, whatever is set. What it sees is for an editor, not for the command."""
    tone, rows = list(array.array("f", signals.sweep(20, 20000, RATE))), []
    cases = {VOICE: [lab.voice()], "two recordings": lab.two_voices(), "sweep of 20 Hz to 20 kHz": [tone]}
    for values in ({}, {"fftsize": 14, "gain": 12, "psychoacousticsimulation": 1}):
        for name, channels in cases.items():
            out = lab.render("Lumascope", channels, values)
            difference = max(map(signals.greatest_difference, out, channels))
            rows.append(exact(name, setting(values), "difference from the input", difference))
    return rows
