#!/usr/bin/env python3
"""make_filter_pictures.py [FOLDER]: draws the pictures of the seven equalizer shapes, by default into resources/filters.

Each is a 32-bit TGA image of 26 x 16 pixels, straight alpha, rows from the bottom up, with the format's footer: 18 + 26 * 16
* 4 + 26 = 1708 bytes. The curve is the magnitude of the analogue prototype (second order, frequency 1 in the middle) in
decibels over octaves; a fainter tint fills the side of the curve that passes, or what is between the curve and 0 dB.
"""

import math
import struct
import sys
from pathlib import Path

WIDTH, HEIGHT = 26, 16
SAMPLES = 8  # per pixel and direction
LEFT, RIGHT, TOP, BOTTOM = 1.0, 25.0, 2.5, 13.5  # where the middle of the line may go
LINE = 0.85  # half of its width
BLUE, GREEN, RED = 0xE6, 0x96, 0x32  # seen on light and on dark ground
FILL = 0.30  # alpha


def low_pass(s, q=0.9):
    return 1 / (s * s + s / q + 1)


def high_pass(s, q=0.9):
    return s * s / (s * s + s / q + 1)


def band_pass(s, q=1.4):
    return (s / q) / (s * s + s / q + 1)


def notch(s, q=0.7):
    return (s * s + 1) / (s * s + s / q + 1)


def peak(s, q=1.3, a=10 ** (18 / 40)):
    return (s * s + s * a / q + 1) / (s * s + s / (a * q) + 1)


def low_shelf(s, q=0.75, a=10 ** (18 / 40)):
    root = math.sqrt(a) / q
    return a * (s * s + root * s + a) / (a * s * s + root * s + 1)


def high_shelf(s, q=0.75, a=10 ** (18 / 40)):
    root = math.sqrt(a) / q
    return a * (a * s * s + root * s + 1) / (s * s + root * s + a)


# Name: prototype, octaves shown on both sides, decibels at the bottom and at the top, level that the fill goes to (None:
# the bottom).
SHAPES = {
    "eqbandpass": (band_pass, 2.4, -19, 1.5, None),
    "eqhighpass": (high_pass, 2.6, -24, 3, None),
    "eqhighshelf": (high_shelf, 3.2, -3, 21, 0),
    "eqlowpass": (low_pass, 2.6, -24, 3, None),
    "eqlowshelf": (low_shelf, 3.2, -3, 21, 0),
    "eqnotch": (notch, 2.8, -22, 1.5, None),
    "eqpeak": (peak, 2.8, -2, 18.5, 0),
}


def curve(shape):
    """Points (x, y) in pixels, y downwards, at most a sixteenth of a pixel apart in either direction."""
    function, octaves, low, high, _ = shape
    steps = int((RIGHT - LEFT) * 16)
    points = []
    for step in range(steps + 1):
        frequency = 2 ** (octaves * (2 * step / steps - 1))
        decibels = 20 * math.log10(max(abs(function(1j * frequency)), 1e-9))
        x, y = LEFT + (RIGHT - LEFT) * step / steps, level(decibels, low, high)
        from_x, from_y = points[-1] if points else (x, y)
        parts = max(1, math.ceil(16 * abs(y - from_y)))
        points += [(from_x + (x - from_x) * i / parts, from_y + (y - from_y) * i / parts) for i in range(1, parts + 1)]
    return points


def level(decibels, low, high):
    """The height of a level in pixels; what is below the bottom leaves the picture there."""
    return BOTTOM - (BOTTOM - TOP) * (max(decibels, low - 6) - low) / (high - low)


def draw(shape):
    """Alpha 0 to 255 of each pixel, row by row from the top."""
    _, _, low, high, ground = shape
    base = BOTTOM + LINE / 2 if ground is None else level(ground, low, high)
    points = [(x, y) for x, y in curve(shape) if y <= BOTTOM + LINE]
    return [[pixel(points, column, row, base) for column in range(WIDTH)] for row in range(HEIGHT)]


def pixel(points, column, row, base):
    """The mean over the pixel: 1 on the line, FILL between curve and base."""
    near = [p for p in points if abs(p[0] - column - 0.5) < 0.5 + LINE]
    total = 0.0
    for i in range(SAMPLES * SAMPLES):
        x = column + (i % SAMPLES + 0.5) / SAMPLES
        y = row + (i // SAMPLES + 0.5) / SAMPLES
        if any((x - px) ** 2 + (y - py) ** 2 <= LINE * LINE for px, py in near):
            total += 1.0
        elif any(abs(x - px) < 0.1 and min(py, base) <= y <= max(py, base) for px, py in near):
            total += FILL
    return round(255 * total / (SAMPLES * SAMPLES))


def tga(rows):
    header = struct.pack("<3B2HB4H2B", 0, 0, 2, 0, 0, 0, 0, 0, WIDTH, HEIGHT, 32, 8)
    pixels = b"".join(bytes((BLUE, GREEN, RED, alpha)) for row in reversed(rows) for alpha in row)
    return header + pixels + bytes(8) + b"TRUEVISION-XFILE.\0"


def main(arguments):
    if len(arguments) > 1:
        sys.exit("usage: make_filter_pictures.py [FOLDER]")
    folder = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent / "resources" / "filters"
    folder.mkdir(parents=True, exist_ok=True)
    for name, shape in SHAPES.items():
        (folder / f"{name}.tga").write_bytes(tga(draw(shape)))


if __name__ == "__main__":
    main(sys.argv[1:])
