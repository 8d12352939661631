"""Measurements of the instruments, all on one tone: what keys, volumes, lengths and releases do, and a whole piece."""

import cmath
import json
import math
from pathlib import Path
from xml.etree import ElementTree

import make_piece
import wav
from measure import piece, signals
from measure.lab import Lab, Row, exact
from measure.piece import FADE_FRAMES, NOTE_RATE
from measure.signals import decibels
from states.curves import add_curve
from states.samplers import layerbox, playbox, vinylrake
from states.spectra import grainloom
from states.synthesizer import C4, SINE, oscillator, toneloom

SECONDS = 10  # of the tone, which all notes of the piece are shorter than
LEVEL = 0.25
FLAT = [(0, 1), (1, 1)]
EARLY = [(0, 1), (0.25, 1), (0.5, 0), (1, 0)]  # an envelope that is over in the middle
PIECE = "piece"
TONE = f"sine, {SECONDS} s"


RISE = NOTE_RATE // 100  # frames of the tone: an edge would ring when it is read between its samples


def tone(ratio, frames):
    """The tone at a speed: a sine of middle C, by turning a pointer."""
    turn, pointer, out = cmath.rect(1, 2 * math.pi * C4 * ratio / NOTE_RATE), complex(LEVEL, 0), []
    for _ in range(frames):
        out.append(pointer.imag)
        pointer *= turn
    for i in range(min(frames, math.ceil(RISE / ratio))):
        out[i] *= math.sin(math.pi / 2 * i * ratio / RISE) ** 2
    return out


def table_sine(ratio, frames):
    """Toneloom's: straight lines between 8192 samples of a quarter wave that is turned round."""
    quarter = [math.sin(2 * math.pi * i / 8192) for i in range(2048)]
    half = quarter + quarter[::-1]
    table = half + [-value for value in half]
    step, place, out = C4 * ratio / NOTE_RATE * 8192, 0.0, []
    for _ in range(frames):
        i = int(place)
        out.append(LEVEL * (table[i] + (place - i) * (table[(i + 1) % 8192] - table[i])))
        place = (place + step) % 8192
    return out


class InstrumentLab(Lab):
    """With content of its own: the tone as a sample, as a multisample and as a library of spectra."""

    def __enter__(self):
        super().__enter__()
        self.content = Path(self.folder.name) / "content"
        for name in ("Samples", "MultiSamples", "SubSampleLibraries/Natural"):
            (self.content / name).mkdir(parents=True)
        settings = ElementTree.Element("SonvelleCfg", GlobalPath=str(self.content))
        path = Path(self.folder.name) / "Tessaron" / "SonvelleConfiguration.cfg"
        path.parent.mkdir()
        path.write_bytes(ElementTree.tostring(settings))
        make_piece.main([self.path("piece.mid")])
        return self

    def path(self, name):
        return Path(self.folder.name) / name

    def instruments(self):
        return [row["name"] for row in json.loads(self.run("list", "--json")) if row["kind"] == "instrument"]

    def play(self, instrument, state, *options):
        """(the first channel, what became of the notes)"""
        self.path("state.xml").write_bytes(ElementTree.tostring(state))
        printed = self.run("render", instrument, self.path("out.wav"), "--state", self.path("state.xml"), "--rate", NOTE_RATE,
                           "--channels", 1, *options)
        return wav.read(self.path("out.wav"))[1][0], json.loads(printed)["notes"]

    def note(self, instrument, state, key=60, volume=1.0, start=0.0, seconds=1.0, tail=0.0):
        return self.play(instrument, state, "--note", f"{key}:{volume}:{start}:{seconds}", "--tail", tail)[0]

    def write_tone(self):
        path = self.content / "Samples" / "Tone.wav"
        wav.write(path, NOTE_RATE, [tone(1, SECONDS * NOTE_RATE)])
        return path


def last_sound(signal):
    """Milliseconds to behind the last sample that is not zero."""
    return 1e3 / NOTE_RATE * max((i + 1 for i, value in enumerate(signal) if value), default=0)


def keys(lab, name, state, power, tolerance):
    """The pitch goes with the note's ratio, or a power of it."""
    rows = []
    for key in (48, 60, 72):
        signal = lab.note(name, state(FLAT), key)
        measured = NOTE_RATE / signals.period(signal[NOTE_RATE // 4 :])
        rows.append(Row(TONE, f"key {key}", "pitch", measured, C4 * 2 ** (power * (key - 60) / 12), tolerance, "Hz", 3))
    return rows


def volumes(lab, name, state, power):
    full, rows = signals.peak(lab.note(name, state(FLAT))), []
    for volume in (0.5, 0.1):
        level = signals.peak(lab.note(name, state(FLAT), volume=volume)) / full
        rows.append(Row(TONE, f"volume {volume}", "level, against volume 1", decibels(level), power * decibels(volume), 0.001, "dB", 3))
    return rows


def ends(lab, name, state, power):
    """`power`: how the ratio shortens a sound."""
    frame, rows = 1e3 / NOTE_RATE, []
    cut = lab.note(name, state(FLAT), start=0.1, seconds=0.25, tail=0.1)
    rows.append(Row(TONE, "start 0.1 s, length 0.25 s", "last sound", last_sound(cut), 350.0, 2 * frame, "ms"))
    first = next(i for i, value in enumerate(cut) if value) * frame
    rows.append(Row(TONE, "start 0.1 s, length 0.25 s", "first sound", first, 100.0, 2 * frame, "ms"))
    for key in (60, 72):
        sound = lab.note(name, state(EARLY), key, seconds=SECONDS)
        expected = SECONDS / 2 * 1e3 / 2 ** (power * (key - 60) / 12)
        rows.append(Row(TONE, f"key {key}, envelope over in the middle", "last sound", last_sound(sound), expected, 1.0, "ms"))
    return rows


def release(lab, name, state):
    """A key that is released, against the same note that is held."""
    quarter, ticks = b"\xff\x51\x03" + (500000).to_bytes(3, "big"), make_piece.TICKS
    events = [(0, 0, quarter), (0, 1, bytes([0x90, 60, 127])), (ticks, 2, bytes([0x80, 60, 64]))]
    head = b"MThd" + bytes([0, 0, 0, 6, 0, 0, 0, 1]) + ticks.to_bytes(2, "big")
    lab.path("key.mid").write_bytes(head + make_piece.track(events, "key"))
    played, _ = lab.play(name, state(FLAT), "--midi", lab.path("key.mid"))
    half = NOTE_RATE // 2
    held = lab.note(name, state(FLAT))[: half + FADE_FRAMES]
    line = held[:half] + [value * (1 - (i + 1) / FADE_FRAMES) for i, value in enumerate(held[half:])]
    return [
        Row(TONE, "key released after 500 ms", "length", len(played) * 1e3 / NOTE_RATE, 520.0, 0.0, "ms"),
        exact(TONE, "key released after 500 ms", "greatest difference from a line down to zero in 20 ms",
              signals.greatest_difference(played + [0.0] * (len(line) - len(played)), line), 1e-6),
    ]


def whole_piece(lab, name, state, sound, power, tolerance):
    """`sound` makes a note of the volume 1, `power` is that of the volume."""
    played = piece.voices()
    for voice in played:
        voice.volume **= power
    options = "--midi", lab.path("piece.mid")
    out, notes = lab.play(name, state(FLAT), *options)
    again, _ = lab.play(name, state(FLAT), *options)
    model = piece.mix(played, sound)
    made, length = sum(note["made"] for note in notes), len(out) / NOTE_RATE
    difference = signals.greatest_difference(out + [0.0] * (len(model) - len(out)), model + [0.0] * (len(out) - len(model)))
    return [
        Row(PIECE, TONE, "notes that were made", made, len(played), 0.0, digits=0),
        Row(PIECE, TONE, "length", length, piece.length(played) / NOTE_RATE, 0.0, "s", 4),
        Row(PIECE, TONE, "peak", decibels(signals.peak(out)), decibels(signals.peak(model)), 0.01, "dB", 3),
        exact(PIECE, TONE, "greatest difference from the sum of its notes", difference, tolerance),
        exact(PIECE, TONE, "difference of a second render", signals.greatest_difference(out, again)),
    ]


def measure(lab, name, state, sound, pitch=1, level=1, shortening=1, tolerance=1e-5, hertz=0.01):
    """All rows; pitch, level and shortening are the powers of the ratio and the volume that the instrument goes by."""
    return (keys(lab, name, state, pitch, hertz) + volumes(lab, name, state, level) + ends(lab, name, state, shortening) +
            release(lab, name, state) + whole_piece(lab, name, state, sound, level, tolerance))


def toneloom_4nn(lab):
    return measure(lab, "Toneloom4NN", lambda envelope: toneloom(oscillator(1, SINE, LEVEL, SECONDS, envelope)), table_sine,
                   shortening=0)


def playbox_rows(lab):
    lab.write_tone()
    return measure(lab, "Playbox", lambda envelope: playbox("Tone", envelope), tone)


def vinylrake_rows(lab):
    """The ratio acts on the length and on the time."""
    lab.write_tone()
    return measure(lab, "Vinylrake", lambda envelope: vinylrake("Tone", SECONDS, [(0, 0), (1, 1)], envelope),
                   lambda ratio, frames: tone(ratio**2, frames), pitch=2, shortening=2)


MEASUREMENTS = {
    "Toneloom4NN": toneloom_4nn,
    "Playbox": playbox_rows,
    "Vinylrake": vinylrake_rows,
}
