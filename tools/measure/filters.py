"""Measurements of the filters and of what delays."""

import math

from measure import formulas, signals
from measure.lab import LEAD, RATE, Row, exact, setting
from measure.levels import ROUNDING, VOICE
from measure.signals import decibels

EXACT_DB = 0.01  # for gains that are measured on a recording: it is rounded to float on its way out


def gain_row(before, after, frequency, expected, settings, quantity="gain", signal=VOICE):
    measured = decibels(signals.transfer(before, after, frequency))
    return Row(signal, settings, f"{quantity} at {frequency} Hz", measured, decibels(expected), EXACT_DB, "dB")


def echolan(lab):
    voice, values = lab.voice(), {"feedback": 0.8, "delay": 0.25}
    (out,) = lab.render("Echolan", [voice], values)
    echoes = [y - x for x, y in zip(voice, out)]
    late = signals.delay(voice, echoes, 16000) / RATE * 1e3
    rows = [Row(VOICE, setting(values), "delay by cross-correlation", late, 250.0, 0.001, "ms", 3)]
    short = {"feedback": 0.8, "delay": 0.01001}  # 480.48 samples
    (out,) = lab.render("Echolan", [voice], short)
    expected = list(voice)
    for i in range(480, len(voice)):
        expected[i] += 0.64 * expected[i - 480]
    rows.append(exact(VOICE, setting(short), "greatest difference from the formula",
                      signals.greatest_difference(out, expected), 2 * ROUNDING))
    (out,) = lab.render("Echolan", [signals.impulse(2 * RATE)], values)
    places = [i for i, value in enumerate(out) if value]
    rows.append(Row("impulse", setting(values), "distance of echoes", (places[-1] - places[0]) / (len(places) - 1) / RATE * 1e3,
                    250.0, 0.0, "ms", 3))
    for echo in (1, 3):
        measured, expected = decibels(out[places[echo]]), decibels(0.64**echo)
        rows.append(Row("impulse", setting(values), f"level of echo {echo}", measured, expected, 0.001, "dB", 3))
    return rows


def bands(*enabled):
    """Six points of Tonebench, the first of them enabled: (type, hertz, decibels, Q)."""
    points = []
    for kind, hertz, gain, q in enabled:
        points.append({"type": kind, "x": f"{math.log10(hertz):.9f}", "y": gain, "q": q, "enabled": 1})
    return points + [{"enabled": 0}] * (6 - len(points))


BANDS = (("Peak", 12, 2), ("LowShelf", -9, 0.7), ("HighShelf", 6, 0.7), ("LowPass", 0, 0.7), ("HighPass", 0, 0.7),
         ("BandPass", 0, 2), ("Notch", 0, 2))


def tonebench(lab):
    voice, rows = lab.voice(), []
    (out,) = lab.render("Tonebench", [voice], points=bands())
    rows.append(exact(VOICE, "no band enabled", "difference from the input", signals.greatest_difference(out, voice)))
    for kind, gain, q in BANDS:
        (out,) = lab.render("Tonebench", [voice], points=bands((kind, 1000, gain, q)))
        text = f"{kind}, 1 kHz, {gain} dB, Q {q}" if gain else f"{kind}, 1 kHz, Q {q}"
        for frequency in (250, 1000, 4000):
            expected = formulas.cookbook(kind, 1000, gain, q, frequency)
            if abs(expected) > 1e-6:
                rows.append(gain_row(voice, out, frequency, expected, text))
            else:
                measured = abs(signals.transfer(voice, out, frequency))
                rows.append(Row(VOICE, text, f"gain at {frequency} Hz, linear", measured, 0.0, 1e-4, digits=5))
    pair = bands(("Peak", 300, 6, 1), ("Peak", 3000, -6, 1))
    (out,) = lab.render("Tonebench", [voice], points=pair)
    both = formulas.cookbook("Peak", 300, 6, 1, 1000) * formulas.cookbook("Peak", 3000, -6, 1, 1000)
    return rows + [gain_row(voice, out, 1000, both, "Peak, 300 Hz, 6 dB, and Peak, 3 kHz, -6 dB, Q 1")]


def slotter(lab):
    voice = lab.voice()
    (out,) = lab.render("Slotter", [voice])
    rows = [exact(VOICE, "as new", "difference from the input", signals.greatest_difference(out, voice))]
    for kind, cutoff in (("low", 2000), ("high", 500)):
        for resonance in (1, 0.5, 0):
            values = {f"{kind}enable": 1, f"{kind}freq": f"{cutoff} Hz", f"{kind}resonance": resonance}
            (out,) = lab.render("Slotter", [voice], values)
            damping = 1.3 * resonance + 0.1 if kind == "low" else 1.38 * resonance + 0.02
            rows.append(gain_row(voice, out, cutoff, 1 / damping, setting(values)))
            far = cutoff * 4 if kind == "low" else cutoff // 4
            rows.append(gain_row(voice, out, far, formulas.resonant(kind, cutoff, resonance, far), setting(values)))
    return rows + slotter_corners(lab)


def slotter_corners(lab):
    values = {"lowenable": 1, "lowfreq": "2000 Hz", "lowresonance": 1}
    values |= {"highenable": 1, "highfreq": "500 Hz", "highresonance": 1}
    (out,) = lab.render("Slotter", [signals.impulse(RATE // 4)], values)

    def measured(frequency):
        return abs(signals.fourier(out[:4096], frequency))

    def expected(frequency):
        return abs(formulas.resonant("low", 2000, 1, frequency) * formulas.resonant("high", 500, 1, frequency))

    rows = []
    for edge, low, high in (("lower", 100, 1000), ("upper", 1000, 9000)):
        places = [corner(gain, low, high) for gain in (measured, expected)]
        rows.append(Row("impulse", setting(values), f"{edge} corner, -3 dB against 1 kHz", *places, 1, "Hz", 1))
    return rows


def corner(gain, low, high):
    """Where the gain, a function of hertz, is 3 dB below that at 1 kHz, between a frequency below and one above that place."""
    wanted = gain(1000) / math.sqrt(2)
    rising = gain(low) < gain(high)
    for _ in range(40):
        middle = math.sqrt(low * high)
        low, high = (middle, high) if (gain(middle) < wanted) == rising else (low, middle)
    return low


def widenor(lab):
    left, right = lab.two_voices()
    side = [(l - r) / 2 for l, r in zip(left, right)]
    rows = []
    for depth in (0.3, 1, -0.5):
        out = lab.render("Widenor", [left, right], {"depth": depth})
        middle = max(abs(l + r - a - b) / 2 for l, r, a, b in zip(left, right, *out))
        rows.append(exact("two recordings", setting({"depth": depth}), "change of the mid signal", middle, ROUNDING))
        wide = [(l - r) / 2 for l, r in zip(*out)]
        for frequency in (100, 1000, 10000):
            expected = 1 + 2 * depth * widenor_band(frequency)
            rows.append(gain_row(side, wide, frequency, expected, setting({"depth": depth}), "side gain", "two recordings"))
    return rows + widenor_width(lab) + widenor_delay(lab, left, right)


def widenor_band(frequency, low=10000, high=100):
    return formulas.resonant("low", low, 1, frequency) * formulas.resonant("high", high, 1, frequency)


def widenor_width(lab):
    """Energy of the side against that of the mid signal, of a tone that only the left channel has."""
    tone, rows = signals.sine(1000, RATE), []
    for depth in (0, 1, -0.5):
        left, right = lab.render("Widenor", [tone, [0.0] * RATE], {"depth": depth})
        left, right = left[RATE // 2 :], right[RATE // 2 :]
        side, middle = (signals.energy([l + sign * r for l, r in zip(left, right)]) for sign in (-1, 1))
        expected = decibels(1 + 2 * depth * widenor_band(1000))
        measured = decibels(math.sqrt(side / middle))
        text = setting({"depth": depth})
        rows.append(Row("1 kHz, left only", text, "side against mid energy", measured, expected, EXACT_DB, "dB"))
    return rows


def widenor_delay(lab, left, right):
    """What the delay adds is what the depth adds, later."""
    now, late = {"depth": 1, "delaydepth": 0}, {"depth": 0, "delaydepth": 1, "delay": 0.002}
    added = [[y - x for x, y in zip(left, lab.render("Widenor", [left, right], values)[0])] for values in (now, late)]
    measured = signals.delay(*added, 1000) / RATE * 1e3
    return [Row("two recordings", setting(late), "delay by cross-correlation", measured, 2.0, 0.001, "ms", 3)]


def imprinta_gain(taps, frequency):
    """The complex gain of taps, newest sample first, after the normalisation."""
    z = formulas.unit_delay(frequency)
    return sum(tap * z**k for k, tap in enumerate(taps)) / sum(map(abs, taps))


def imprinta(lab):
    voice, rows = lab.voice(), []
    mean, line = [{"x": 0, "y": 1}, {"x": 1, "y": 1}], [{"x": 0, "y": 1}, {"x": 1, "y": -1}]
    for points, curve, length in ((mean, "curve (0, 1), (1, 1)", 64), (line, "curve (0, 1), (1, -1)", 16)):
        height = points[1]["y"] - 1
        taps = [1 + height * (j + 0.5) / length for j in range(length)][::-1]
        values = {"length": length}
        (out,) = lab.render("Imprinta", [voice], values, points)
        for frequency in (100, 300, 2500):
            rows.append(gain_row(voice, out, frequency, imprinta_gain(taps, frequency), setting(values, curve)))
        (out,) = lab.render("Imprinta", [signals.impulse(2 * LEAD, LEAD)], values, points)
        expected = [tap / sum(map(abs, taps)) for tap in taps] + [0.0] * (LEAD - length)
        rows.append(exact("impulse", setting(values, curve), "greatest difference of a tap",
                          signals.greatest_difference(out[LEAD:], expected), 1e-7))
    (out,) = lab.render("Imprinta", [voice], {"length": 512}, [{"x": 0, "y": 0}, {"x": 1, "y": 0}])
    return rows + [exact(VOICE, "length=512, curve (0, 0), (1, 0)", "peak", signals.peak(out))]


def slidebench(lab):
    voice, late = lab.voice(), 6144
    (out,) = lab.render("Slidebench", [voice])
    rows = [Row(VOICE, "as new", "latency by cross-correlation", signals.delay(voice, out, 12288), late, 0, "samples", 0)]
    rows.append(exact(VOICE, "as new", "difference from the delayed input",
                      signals.greatest_difference(out[late:], voice[:-late]), ROUNDING))
    low, high = 10 * math.log10(2), 20000 * math.log10(2)
    for y, depth in ((1.5, 1), (1.5, 0.5), (2, 1), (0.5, 1)):
        points = [{"x": low, "y": y}, {"x": high, "y": y}]
        (out,) = lab.render("Slidebench", [voice], {"depth": depth}, points)
        text = setting({"depth": depth}, f"curve at {y} everywhere")
        rows.append(gain_row(voice, out, 1000, ((y - 1) * depth + 1) ** 2, text))
    return rows + slidebench_bands(lab, low, high)


def slidebench_bands(lab, low, high):
    """Tones in the middle of a bin of 4096 samples, whose spectrum leaks nowhere. The curve is read at log10 of hertz; real and
    imaginary parts have gains of their own, half a bin apart, which shows on the slope of the curve by up to 0.02 dB.
    """
    points = [{"x": low, "y": 1}, {"x": 3.6, "y": 1}, {"x": 4.0, "y": 2}, {"x": high, "y": 2}]
    text, rows = setting({"depth": 1}, "curve 1 up to x = 3.6, 2 from x = 4"), []
    for k in (100, 512, 1024):
        frequency = k * RATE / 4096
        (out,) = lab.render("Slidebench", [signals.sine(frequency, 8 * 4096, 0.1)], {"depth": 1}, points)
        v = 1 + min(1, max(0, (math.log10(frequency) - 3.6) / 0.4))
        measured = decibels(signals.amplitude(out[-4 * 4096 :], frequency) / 0.1)
        rows.append(Row(f"{frequency:.0f} Hz", text, "gain", measured, decibels(v * v), 0.02, "dB"))
    return rows
