"""The bench that effects are measured on: the built command, sounds for it, and rows of a table."""

import json
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass
from pathlib import Path

import wav

RATE = 48000  # of all sounds here
RECORDINGS = Path("/usr/share/sounds/alsa")  # of the package alsa-utils
# Silence around a recording: in front, because some effects draw their first block up from silence; behind, so that all that
# an effect answers to the last word is there.
LEAD, TAIL = 2048, 16384


@dataclass
class Row:
    """One measurement. `tolerance` is the greatest difference that is right, in `unit`."""

    signal: str
    setting: str
    quantity: str
    measured: float
    expected: float
    tolerance: float
    unit: str = ""
    digits: int = 2

    def holds(self):
        return abs(self.measured - self.expected) <= self.tolerance

    def show(self, value):
        text = f"{value:.{self.digits}f}" if self.digits >= 0 else f"{value:.0e}"
        text = text if float(text) else text.lstrip("-").replace("0e+00", "0")
        return " ".join(filter(None, (text, self.unit)))

    def verdict(self):
        return "yes" if self.holds() else f"no, {self.measured - self.expected:+.3g} {self.unit}".rstrip()


def exact(signal, setting, quantity, difference, tolerance=0.0):
    """A row for the greatest difference between samples, which is to be nothing, or nothing but rounding."""
    return Row(signal, setting, quantity, difference, 0.0, tolerance, digits=-1)


def setting(values, curve=""):
    """The text of a setting: {"delay": 0.25} is "delay=0.25"."""
    return ", ".join([f"{key}={value}" for key, value in values.items()] + [curve] * bool(curve)) or "as new"


class Lab:
    """Renders through the command, within a temporary folder that goes with it (a context manager)."""

    def __init__(self, command, recordings=RECORDINGS):
        self.command, self.recordings = Path(command).resolve(), Path(recordings)
        if not os.access(self.command, os.X_OK):
            sys.exit(f"{command}: there is no such command; build the targets Sonvelle and sonvelle, or name it with --command")

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory()
        return self

    def __exit__(self, *_):
        self.folder.cleanup()

    def run(self, *arguments):
        # The library keeps its settings in that folder: never in the user's.
        environment = os.environ | {"XDG_DATA_HOME": self.folder.name}
        done = subprocess.run([str(self.command), *map(str, arguments)], capture_output=True, text=True, env=environment)
        if done.returncode:
            sys.exit(f"sonvelle {' '.join(map(str, arguments))}: exit code {done.returncode}\n{done.stderr.rstrip()}")
        return done.stdout

    def effects(self):
        return [row["name"] for row in json.loads(self.run("list", "--json")) if row["kind"] == "effect"]

    def state(self, effect, points):
        """A file with the effect's state, whose drawn points are these (attributes that are not told are those of its own)."""
        root = ElementTree.fromstring(self.run("state", effect).encode())
        graph = root.find("graph")
        own = list(graph)
        for point in own:
            graph.remove(point)
        for point in points:
            ElementTree.SubElement(graph, own[0].tag, {**own[0].attrib, **{key: str(value) for key, value in point.items()}})
        path = Path(self.folder.name) / "state.xml"
        ElementTree.ElementTree(root).write(path, encoding="utf-8", xml_declaration=True)
        return path

    def render(self, effect, channels, values=None, points=None):
        """What comes out for these channels, as many frames as go in."""
        source, target = Path(self.folder.name) / "in.wav", Path(self.folder.name) / "out.wav"
        wav.write(source, RATE, channels)
        options = ["--state", self.state(effect, points)] if points else []
        for key, value in (values or {}).items():
            options += ["--set", f"{key}={value}"]
        self.run("render", effect, source, target, *options)
        return wav.read(target)[1]

    def recording(self, name):
        """A channel of a recording that is there, with silence around it."""
        path = self.recordings / name
        if not path.is_file():
            sys.exit(f"no recording {path} (package alsa-utils; --recordings names another folder)")
        rate, channels = wav.read(path)
        if rate != RATE:
            sys.exit(f"{path}: {rate} Hz, the measurements need {RATE} Hz")
        return [0.0] * LEAD + channels[0] + [0.0] * TAIL

    def voice(self):
        return self.recording("Front_Center.wav")

    def two_voices(self):
        """Two channels with different words."""
        left, right = self.recording("Front_Left.wav"), self.recording("Front_Right.wav")
        frames = min(len(left), len(right))
        return [left[:frames], right[:frames]]
