"""Toneloom 4NN: four oscillators and two noises. Key 60 plays middle C."""

import math

from states.curves import add, add_curve, state

C4 = 261.6255653005986
TRIANGLE, SINE, HARMONICS, RECTANGLE, FULL_SAW = 1, 5, 6, 11, 13
ADD, RING, FREQUENCY = 0, 1, 2


def chain(volume, seconds, envelope, pan=0, mode=ADD, low=None, high=None):
    """What oscillators and noises have in common; `low` and `high` are the cut-offs of the filters that are on."""
    values = {"enabled": 1, "volume": volume, "pan": pan, "mixermode": mode, "length": seconds}
    if low:
        values |= {"lpenable": 1, "lpcutoff": low}
    if high:
        values |= {"hpenable": 1, "hpcutoff": high}
    return values, envelope


def oscillator(ratio, shape, *common, glide=(0, 0), **options):
    """`glide`: octaves above the pitch, at the beginning and at the end."""
    return ratio, shape, glide, chain(*common, **options)


def toneloom(*chains):
    """Oscillators and noises, in this order. All others are off."""
    root, counts = state(), {"envelope": 0, "BandPass": 0}
    for part in chains:
        values, envelope = part[-1] if isinstance(part[0], (int, float)) else part
        tag = "BandPass" if part[0] is values else "envelope"
        counts[tag] += 1
        item = add(root, f"{tag}{counts[tag]}", **values)
        if tag == "envelope":
            ratio, shape, glide, _ = part
            add(item, "shape", value=shape)
            low, high = (math.log10(C4 * ratio * 2**octaves) for octaves in glide)
            add_curve(item, "frequency", [(0, low, -0.8), (1, high)] if low != high else [(0, low), (1, low)])
        add_curve(item, "volume", envelope)
    if counts["envelope"] == 0:
        add(root, "envelope1", enabled=0)
    return root


STRUCK = [(0, 0), (0.002, 1, -0.7), (0.35, 0.25, -0.4), (1, 0)]
HELD = [(0, 0), (0.02, 1), (0.3, 0.8), (0.85, 0.7), (1, 0)]
SWELL = [(0, 0), (0.25, 0.9), (0.4, 1), (0.7, 0.9), (1, 0)]
BREATH = [(0, 0), (0.06, 1), (0.15, 0.6), (0.85, 0.5), (1, 0)]

TONELOOM = {
    "Round bass": toneloom(
        oscillator(1, SINE, 0.55, 1.4, [(0, 0), (0.006, 1), (0.2, 0.7), (0.8, 0.4), (1, 0)]),
        oscillator(1, TRIANGLE, 0.2, 1.4, [(0, 0), (0.004, 1, -0.5), (0.5, 0.2), (1, 0)], low=1100),
        oscillator(2, SINE, 0.1, 0.4, STRUCK)),
    "Glass bell": toneloom(
        oscillator(1, SINE, 0.35, 3, STRUCK),
        oscillator(2.756, SINE, 0.22, 1.8, STRUCK, pan=0.3),
        oscillator(5.404, SINE, 0.14, 0.9, STRUCK, pan=-0.3),
        oscillator(8.933, SINE, 0.08, 0.4, STRUCK)),
    "Warm pad": toneloom(
        oscillator(1.003, FULL_SAW, 0.24, 5, SWELL, pan=-0.4, low=1300),
        oscillator(0.997, FULL_SAW, 0.24, 5, SWELL, pan=0.4, low=1300),
        oscillator(0.5, SINE, 0.2, 5, SWELL)),
    "Breathy flute": toneloom(
        oscillator(1, HARMONICS, 0.5, 2.5, HELD, glide=(-0.03, 0), low=2500),
        chain(0.3, 2.5, BREATH, low=3200, high=1500)),
    "Ring gong": toneloom(
        oscillator(1, SINE, 0.4, 4, STRUCK),
        oscillator(1.414, SINE, 0.9, 4, [(0, 1), (1, 0.3)], mode=RING),
        oscillator(0.5, SINE, 0.15, 4, SWELL)),
    "Wire piano": toneloom(
        oscillator(1, RECTANGLE, 0.3, 2, STRUCK, low=2600),
        oscillator(2.003, TRIANGLE, 0.2, 1.5, STRUCK, low=5000),
        oscillator(1, SINE, 0.05, 2, [(0, 1, -0.5), (1, 0)], mode=FREQUENCY)),
}
