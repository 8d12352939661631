"""What the pictures of the effects show: each function of PICTURES takes a Lab, measures and returns the text of an SVG."""

import math

from measure import signals
from measure.filters import bands
from measure.lab import LEAD, RATE
from measure.signals import decibels
from svg_plot import Axis, Curve, frequency_axis, plot, spaced

POINTS = 240


def frequencies(low=20, high=20000):
    return [low * (high / low) ** (i / (POINTS - 1)) for i in range(POINTS)]


def response(lab, effect, values=None, points=None, frames=8192):
    """(hertz, decibels) of the answer to an impulse that comes when the effect has begun."""
    (out,) = lab.render(effect, [signals.impulse(LEAD + frames, LEAD)], values, points)
    return [(f, decibels(signals.fourier(out[LEAD:], f))) for f in frequencies()]


def gain_axis(low, high, step):
    return Axis("gain in dB", low, high, spaced(low, high, step))


def echolan(lab):
    (out,) = lab.render("Echolan", [signals.impulse(2 * RATE)], {"feedback": 0.8, "delay": 0.25})
    echoes = [(i / RATE, value) for i, value in enumerate(out) if value > 0.005]
    seconds = Axis("time in s", -0.05, 2, spaced(0, 2, 0.25))
    return plot("Echoes of an impulse", seconds, Axis("amplitude", 0, 1.05, spaced(0, 1, 0.2)),
                [Curve("feedback 0.8, delay 0.25 s", echoes, stems=True)])


def squeezel(lab):
    at_once = {"attack": 0, "release": 0, "rmslength": 0, "threshold": 0.4, "ratio": 1.5, "kneesize": 0.6, "maximize": 0}
    levels = [-36 + i / 3 for i in range(109)]
    curves = [Curve("input", [(-36, -36), (0, 0)], dashed=True)]
    for knee in ("Hard", "Linear", "Soft"):
        (out,) = lab.render("Squeezel", [[10 ** (level / 20) for level in levels]], at_once | {"kneemode": knee})
        curves.append(Curve(f"{knee} knee", list(zip(levels, map(decibels, out)))))
    axes = [Axis(f"{name} level in dB", -36, 0, spaced(-36, 0, 6)) for name in ("input", "output")]
    return plot("Static curve: threshold -15.9 dB, ratio 1.5, knee size 60%", *axes, curves)


def tonebench(lab):
    cases = {
        "low shelf, peak, high shelf": (("LowShelf", 100, 6, 0.7), ("Peak", 1000, -9, 2), ("HighShelf", 6000, 6, 0.7)),
        "high-pass, notch, low-pass": (("HighPass", 60, 0, 0.7), ("Notch", 700, 0, 2), ("LowPass", 8000, 0, 0.7)),
    }
    curves = [Curve(name, response(lab, "Tonebench", points=bands(*case))) for name, case in cases.items()]
    return plot("Response of bands in a row", frequency_axis(), gain_axis(-24, 12, 6), curves)


def slotter(lab):
    curves = []
    for resonance in (1, 0.5, 0.1):
        values = {"lowenable": 1, "lowfreq": "3000 Hz", "lowresonance": resonance,
                  "highenable": 1, "highfreq": "200 Hz", "highresonance": resonance}
        curves.append(Curve(f"resonance {resonance}", response(lab, "Slotter", values)))
    return plot("Response with corners at 200 Hz and 3 kHz", frequency_axis(), gain_axis(-36, 24, 12), curves)


def slidebench(lab):
    """The answer to an impulse that comes back with every block: it has all bins, and leaks nowhere."""
    size = 4096
    train = [1.0 if i % size == 0 else 0.0 for i in range(8 * size)]
    low, high = 10 * math.log10(2), 20000 * math.log10(2)
    points = [(low, 1), (3.3, 1.5), (3.7, 0.5), (4.1, 1.25), (high, 1.25)]
    curves = []
    for depth in (1, 0.5):
        (out,) = lab.render("Slidebench", [train], {"depth": depth}, [{"x": x, "y": y} for x, y in points])
        spectrum = signals.fft(out[-size:])
        bins = sorted({min(size // 2 - 1, max(2, round(f * size / RATE))) for f in frequencies()})
        curves.append(Curve(f"depth {depth}", [(k * RATE / size, decibels(abs(spectrum[k]))) for k in bins]))
    return plot("Response of a drawn curve", frequency_axis(), gain_axis(-18, 12, 6), curves)


def widenor(lab):
    """The gain of the side signal: an impulse with opposite signs in both channels."""
    curves = []
    impulse = signals.impulse(LEAD + 8192, LEAD)
    for depth in (1, 0.3, -0.3, -0.5):
        left, right = lab.render("Widenor", [impulse, [-value for value in impulse]], {"depth": depth})
        side = [(l - r) / 2 for l, r in zip(left, right)][LEAD:]
        curves.append(Curve(f"depth {depth}", [(f, decibels(signals.fourier(side, f))) for f in frequencies()]))
    return plot("Gain of the side signal", frequency_axis(), gain_axis(-24, 12, 6), curves)


def imprinta(lab):
    cases = {
        "as new: line from 1 to -1, 16 taps": ([(0, 1), (1, -1)], 16),
        "constant, 16 taps": ([(0, 1), (1, 1)], 16),
        "constant, 4 taps": ([(0, 1), (1, 1)], 4),
    }
    curves, size = [], 512
    for name, (points, length) in cases.items():
        points = [{"x": x, "y": y} for x, y in points]
        (out,) = lab.render("Imprinta", [signals.impulse(LEAD + size, LEAD)], {"length": length}, points)
        spectrum = signals.fft(out[LEAD:])[: size // 2 + 1]
        curves.append(Curve(name, [(k * RATE / size, decibels(abs(value))) for k, value in enumerate(spectrum)]))
    hertz = Axis("frequency in kHz", 0, RATE / 2, [(1000 * k, str(k)) for k in range(0, 25, 3)])
    return plot("Response of drawn impulses", hertz, gain_axis(-48, 6, 6), curves)


def transfer(lab, effect, cases, title, low):
    """Output over input, from a lowest level to 1.2, of effects without memory."""
    levels = [low + (1.2 - low) * i / 144 for i in range(145)]
    curves = []
    for name, values, points in cases:
        (out,) = lab.render(effect, [levels], values, points)
        curves.append(Curve(name, list(zip(levels, out))))
    ticks = [tick for tick in spaced(-1, 1, 0.25) if tick >= low]
    axes = [Axis(f"{name} sample", low, 1.2, ticks) for name in ("input", "output")]
    return plot(title, *axes, curves)


def clampet(lab):
    modes = ("Soft 1", "Soft 2", "Soft 3", "Soft 4", "Clip 1", "Clip 2", "Clip 3")
    cases = [(mode, {"threshold": 0.5, "mode": mode}, None) for mode in modes]
    return transfer(lab, "Clampet", cases, "Transfer of the seven knees: threshold -12 dB", 0)


def bendform(lab):
    points = [{"x": x, "y": y} for x, y in ((0, 0), (0.5, 0.8), (0.8, 0.7), (1, 1))]
    cases = [(f"depth {depth}", {"Depth": depth}, points) for depth in (0, 0.5, 1)]
    return transfer(lab, "Bendform", cases, "Transfer of a drawn curve", -1.2)


def over_time(channels, seconds):
    """Points of signals that move slowly."""
    step = int(seconds * RATE) // POINTS
    return [[(i / RATE, channel[i]) for i in range(0, step * POINTS + 1, step)] for channel in channels]


def pulsetta(lab):
    ones = [signals.constant(1, RATE)] * 2
    left, right = lab.render("Pulsetta", ones, {"phasediff": 0.25})
    curves = [Curve(name, points) for name, points in zip(("left", "right"), over_time((left, right), 0.6))]
    return plot("Gain over time: depth 40%, 4 Hz, phase difference 25%", Axis("time in s", 0, 0.6, spaced(0, 0.6, 0.1)),
                Axis("gain", 0, 2, spaced(0, 2, 0.5)), curves)


def roamplex(lab):
    ones = signals.constant(1, RATE)
    curves = []
    for name, channels in (("left", [ones, [0.0] * RATE]), ("right", [[0.0] * RATE, ones])):
        for side, points in zip(("left", "right"), over_time(lab.render("Roamplex", channels, {"depth": 0.8}), 0.6)):
            curves.append(Curve(f"{name} to {side}", points, dashed=name == "right"))
    return plot("Gain over time: depth 80%, 4 Hz", Axis("time in s", 0, 0.6, spaced(0, 0.6, 0.1)),
                Axis("gain", 0, 1.1, spaced(0, 1, 0.25)), curves)


def spectrum(signal, size):
    """(hertz, decibels) of the end of a signal by a Hann window; a sine of amplitude 1 in the middle of a bin has 0 dB."""
    part = signal[-size:]
    windowed = [value * (1 - math.cos(2 * math.pi * i / size)) / 2 for i, value in enumerate(part)]
    return [(k * RATE / size, decibels(abs(value) * 4 / size)) for k, value in enumerate(signals.fft(windowed)[: size // 2])]


def bellwarp(lab):
    size = 2048
    tone = signals.sine(3000, 4 * size)
    curves = [Curve("input, 3 kHz", spectrum(tone, size)[64:193], dashed=True)]
    for depth in (1, 0.4):
        (out,) = lab.render("Bellwarp", [tone], {"depth1": depth, "frequency1": "750 Hz"})
        curves.append(Curve(f"750 Hz, depth {depth}", spectrum(out, size)[64:193]))
    hertz = Axis("frequency in Hz", 1500, 4500, spaced(1500, 4500, 750))
    return plot("Spectrum of a tone", hertz, Axis("level in dB", -60, 6, spaced(-60, 0, 12)), curves)


def lumascope(lab):
    """Levels as the analyzer counts them: a sine of amplitude 1 has half of that. What it draws itself needs an editor."""
    size = 4096
    loud, soft = (signals.sine(k * RATE / size, 4 * size, amplitude) for k, amplitude in ((84, 0.5), (512, 0.05)))
    tone = [a + b for a, b in zip(loud, soft)]
    (out,) = lab.render("Lumascope", [tone])
    kept = [k for k in range(18, 1706) if k % 16 == 0 or min(abs(k - 84), abs(k - 512)) < 16]
    points = [(hertz, level + decibels(0.5)) for k, (hertz, level) in enumerate(spectrum(out, size)) if k in kept]
    return plot("Spectrum of two tones that have passed: amplitude 0.5 at 984 Hz and 0.05 at 6 kHz", frequency_axis(200),
                Axis("level in dB", -84, 0, spaced(-84, 0, 12)), [Curve("output, Hann window of 4096 samples", points)])


def quaverly(lab):
    tone = signals.sine(1000, RATE)
    curves = []
    for depth in (0.4, 1):
        (out,) = lab.render("Quaverly", [tone], {"depth": depth})
        pitches = [(time / RATE - 0.1, 1200 * math.log2(pitch / 1000)) for time, pitch in signals.pitches(out, 2)]
        times = [i / 200 for i in range(121)]
        curves.append(Curve(f"depth {depth}", [(time, at(pitches, time)) for time in times]))
    return plot("Pitch of a 1 kHz tone over time, 4 Hz", Axis("time in s", 0, 0.6, spaced(0, 0.6, 0.1)),
                Axis("pitch in cents", -240, 240, spaced(-240, 240, 60)), curves)


def at(points, x):
    """Between the points by straight lines."""
    i = next(i for i, point in enumerate(points) if point[0] >= x)
    (x0, y0), (x1, y1) = points[i - 1], points[i]
    return y0 + (y1 - y0) * (x - x0) / (x1 - x0)


def swirlo(lab):
    """Standing still at three places of a sweep."""
    curves = []
    for hertz in (400, 800, 1600):
        values = {"Depth": 0.5, "feedback": 0.5, "delays": 6, "MinFreq": f"{hertz} Hz", "MaxFreq": f"{hertz} Hz"}
        curves.append(Curve(f"at {hertz} Hz", response(lab, "Swirlo", values)))
    title = "Response without a sweep: depth 50%, 6 stages, feedback -12 dB"
    return plot(title, frequency_axis(), gain_axis(-24, 6, 6), curves)


PICTURES = {
    "Echolan": echolan,
    "Squeezel": squeezel,
    "Tonebench": tonebench,
    "Lumascope": lumascope,
    "Imprinta": imprinta,
    "Clampet": clampet,
    "Bendform": bendform,
    "Roamplex": roamplex,
    "Pulsetta": pulsetta,
    "Swirlo": swirlo,
    "Quaverly": quaverly,
    "Bellwarp": bellwarp,
    "Widenor": widenor,
    "Slotter": slotter,
    "Slidebench": slidebench,
}
