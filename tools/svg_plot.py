"""Draws curves as SVG: axes with units, a grid, a legend; colours for light and for dark ground. The same curves give the same
bytes.
"""

import math
import re
from dataclasses import dataclass
from html import escape

WIDTH, HEIGHT = 640, 360
LEFT, RIGHT, TOP, BOTTOM = 62, 624, 34, 312  # of the field with the grid
BEYOND = 8  # how far a curve may leave the field, where it is cut off
NUMBER = re.compile(r"-?\d+(?:\.\d+)?")

# The card, the frame, the grid, the text, then the curves, each on light and on dark ground.
COLOURS = {
    "card": ("#ffffff", "#16191d"),
    "frame": ("#8a9099", "#7d848d"),
    "grid": ("#e3e6ea", "#2b3036"),
    "text": ("#24292f", "#d6dade"),
    "c0": ("#0b62c4", "#5aa7ff"),
    "c1": ("#c4480b", "#ff9a5a"),
    "c2": ("#1a7f37", "#4cc66a"),
    "c3": ("#8a3fc7", "#c58bff"),
    "c4": ("#a80f5a", "#ff7ab5"),
    "c5": ("#7a6200", "#e0c040"),
    "c6": ("#0e7c86", "#45cdd9"),
}


@dataclass
class Axis:
    """`ticks` are (value, label) or values; a logarithmic axis has only values above 0."""

    name: str
    low: float
    high: float
    ticks: list
    log: bool = False

    def part(self, value):
        """0 at the low end, 1 at the high one, and no infinities in between."""
        if self.log:
            return math.log(max(value, self.low / 1e3) / self.low) / math.log(self.high / self.low)
        return (value - self.low) / (self.high - self.low)

    def labels(self):
        return [tick if isinstance(tick, tuple) else (tick, label(tick)) for tick in self.ticks]


@dataclass
class Curve:
    """Points (x, y), joined by a line, or as stems from the low end of the y axis."""

    name: str
    points: list
    stems: bool = False
    dashed: bool = False


def label(value):
    return f"{value:g}".replace("-", "\u2212")


def frequency_axis(low=20, high=20000):
    hertz = [step * decade for decade in (10, 100, 1000, 10000) for step in (1, 2, 5)]
    marks = [(mark, f"{mark // 1000}k" if mark >= 1000 else str(mark)) for mark in hertz if low <= mark <= high]
    return Axis("frequency in Hz", low, high, marks, log=True)


def spaced(low, high, step):
    """The ticks low, low + step, ... up to high."""
    return [low + step * i for i in range(int((high - low) / step + 1.001))]


def pixel(value):
    text = f"{value:.1f}"
    return "0.0" if text == "-0.0" else text


def place(x_axis, y_axis, point):
    x = LEFT + (RIGHT - LEFT) * x_axis.part(point[0])
    y = BOTTOM - (BOTTOM - TOP) * y_axis.part(point[1])
    return min(max(x, LEFT - BEYOND), RIGHT + BEYOND), min(max(y, TOP - BEYOND), BOTTOM + BEYOND)


def style():
    def rules(ground):
        filled = ("card", "text")
        return "".join(f".{name}{{{'fill' if name in filled else 'stroke'}:{pair[ground]}}}" for name, pair in COLOURS.items())

    base = "text{font:12px sans-serif}.curve{fill:none;stroke-width:1.8;stroke-linejoin:round}.frame{fill:none}"
    return f"<style>{base}{rules(0)}@media(prefers-color-scheme:dark){{{rules(1)}}}</style>"


def grid(x_axis, y_axis):
    parts = []
    for value, text in x_axis.labels():
        x = pixel(place(x_axis, y_axis, (value, y_axis.low))[0])
        parts.append(f'<path class="grid" d="M{x} {TOP}V{BOTTOM}"/>')
        parts.append(f'<text class="text" x="{x}" y="{BOTTOM + 17}" text-anchor="middle">{escape(text)}</text>')
    for value, text in y_axis.labels():
        y = place(x_axis, y_axis, (x_axis.low, value))[1]
        parts.append(f'<path class="grid" d="M{LEFT} {pixel(y)}H{RIGHT}"/>')
        parts.append(f'<text class="text" x="{LEFT - 7}" y="{pixel(y + 4)}" text-anchor="end">{escape(text)}</text>')
    turned = f'transform="translate(16 {(TOP + BOTTOM) // 2}) rotate(-90)"'
    upright = f'x="{(LEFT + RIGHT) // 2}" y="{HEIGHT - 10}"'
    for axis, where in ((x_axis, upright), (y_axis, turned)):
        parts.append(f'<text class="text" {where} text-anchor="middle">{escape(axis.name)}</text>')
    parts.append(f'<rect class="frame" x="{LEFT}" y="{TOP}" width="{RIGHT - LEFT}" height="{BOTTOM - TOP}"/>')
    return parts


def drawn(x_axis, y_axis, curve, number):
    dashes = ' stroke-dasharray="5 4"' if curve.dashed else ""
    places = [tuple(map(pixel, place(x_axis, y_axis, point))) for point in curve.points]
    if curve.stems:
        path = "".join(f"M{x} {BOTTOM}V{y}" for x, y in places)
    else:
        path = "M" + "L".join(f"{x} {y}" for x, y in places)
    return f'<path class="curve c{number}" clip-path="url(#field)"{dashes} d="{path}"/>'


def legend(curves):
    """One row above the field; names take the room of their letters."""
    parts, x = [], float(LEFT)
    for number, curve in enumerate(curves):
        dashes = ' stroke-dasharray="5 4"' if curve.dashed else ""
        parts.append(f'<path class="curve c{number}"{dashes} d="M{pixel(x)} 18h18"/>')
        parts.append(f'<text class="text" x="{pixel(x + 23)}" y="22">{escape(curve.name)}</text>')
        x += 23 + 6.6 * len(curve.name) + 14
    return parts


def plot(title, x_axis, y_axis, curves):
    """The text of a picture with up to seven curves."""
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" viewBox="0 0 {WIDTH} {HEIGHT}" role="img">',
        f"<title>{escape(title)}</title>",
        style(),
        f'<clipPath id="field"><path d="M{LEFT} {TOP}H{RIGHT}V{BOTTOM}H{LEFT}z"/></clipPath>',
        f'<rect class="card" width="{WIDTH}" height="{HEIGHT}" rx="6"/>',
        *grid(x_axis, y_axis),
        *(drawn(x_axis, y_axis, curve, number) for number, curve in enumerate(curves)),
        *legend(curves),
        "</svg>\n",
    ]
    return "\n".join(parts)


def differs(text, other, most=0.2):
    """Whether two pictures are not the same: other words, or a number that is more than `most` away."""
    if NUMBER.split(text) != NUMBER.split(other):
        return True
    return any(abs(float(a) - float(b)) > most + 1e-9 for a, b in zip(NUMBER.findall(text), NUMBER.findall(other)))
