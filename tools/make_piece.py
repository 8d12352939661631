#!/usr/bin/env python3
"""make_piece.py OUT.mid: writes a piece for instruments as a MIDI file: the opening of the Invention in C major, BWV 772, by
Johann Sebastian Bach (1685-1750), arranged here. The two hands play it alone (channels 1 and 2); in the repeat, a little faster,
chords join them (channel 3, with the sustain pedal); a slower bar ends it. The same bytes every time.
"""

import re
import struct
import sys
from pathlib import Path

TICKS = 480  # of a quarter note
BAR = 4 * TICKS
# One bar a line; a note is its name, "'" and "," for the octaves above and below that of middle C, and its length: a 32nd "t",
# a sixteenth (nothing), an eighth "e", a dotted eighth "d", a quarter "q", a half "h". "r" is a rest.
RIGHT = """
r c d e f d e c ge c'e be c'e
d' g a b c' a b g d'e g'e f'e g'e
e' a' g' f' e' g' f' a' g' f' e' d' c' e' d' f'
e' d' c' b a c' b d' c' b a g f# a g b
ae de c'd d' b a g f# e g f# a
g b a c' b d' c' e' d' bt c't d' g' be a g
"""
LEFT = """
rh r c, d, e, f, d, e, c,
g,e g,,e rq r g, a, b, c a, b, g,
ce b,e ce de ee g,e a,e b,e
ce e,e f#,e g,e a,e b,e cq
r d, e, f#, g, e, f#, d, g,e b,,e c,e d,e
e,e f#,e g,e e,e b,,d c, d,e d,,e
"""
# Two chords a bar.
CHORDS = """
c,+e,+g, c,+e,+g,
b,,+d,+g, b,,+f,+g,
c,+e,+g, c,+g,+c
a,,+e,+c a,,+d,+f#,
f#,,+d,+c g,,+d,+b,
e,+g,+b, d,+f#,+c
"""
END = (("g",), ("g,,", "g,"), ("b,", "d"))  # of right hand, left hand and chords
LENGTHS = {"t": 60, "": 120, "e": 240, "d": 360, "q": 480, "h": 960}
STEPS = {"c": 0, "d": 2, "e": 4, "f": 5, "g": 7, "a": 9, "b": 11}


def key_of(name):
    letter, sharp, octave = re.fullmatch(r"([a-g])(#?)('*|,*)", name).groups()
    return 60 + STEPS[letter] + len(sharp) + 12 * (octave.count("'") - octave.count(","))


def notes_of(text):
    """(start, length, key) of a voice, in ticks."""
    notes, at = [], 0
    for number, bar in enumerate(text.strip().splitlines()):
        for word in bar.split():
            name, length = re.fullmatch(r"(r|[a-g]#?[',]*)([tedqh]?)", word).groups()
            if name != "r":
                notes.append((at, LENGTHS[length], key_of(name)))
            at += LENGTHS[length]
        if at != (number + 1) * BAR:
            raise ValueError(f"bar {number + 1} of a voice has {at - number * BAR} ticks")
    return notes


def velocity_of(at, key, loudness):
    """Louder on the beats and where the line climbs."""
    accent = 12 if at % BAR == 0 else 6 if at % TICKS == 0 else 0
    return max(20, min(loudness + accent + (key - 60) // 3, 120))


def play(start, channel, notes, loudness):
    """(tick, order, bytes): releases come in front of what begins at the same tick."""
    events = []
    for at, length, key in notes:
        held = length if length <= LENGTHS[""] else length * 7 // 8
        events.append((start + at, 2, bytes([0x90 | channel, key, velocity_of(at, key, loudness)])))
        events.append((start + at + held, 0, bytes([0x80 | channel, key, 64])))
    return events


def chords(start, channel):
    """Short chords that the pedal holds until the next one."""
    events = []
    for number, chord in enumerate(CHORDS.split()):
        at = number * BAR // 2
        notes = [(at, TICKS, key_of(name)) for name in chord.split("+")]
        events += play(start, channel, notes, 50)
        events.append((start + at, 1, bytes([0xB0 | channel, 64, 0])))
        events.append((start + at + TICKS // 2, 1, bytes([0xB0 | channel, 64, 127])))
    return events + [(start + number * BAR // 2 + BAR // 2, 1, bytes([0xB0 | channel, 64, 0]))]


def voices():
    hands = [notes_of(RIGHT), notes_of(LEFT)]
    bars = len(RIGHT.strip().splitlines())
    repeat, end = bars * BAR, 2 * bars * BAR
    tracks = [play(0, channel, notes, 68) + play(repeat, channel, notes, 82) for channel, notes in enumerate(hands)]
    tracks.append(chords(repeat, 2))
    for channel, names in enumerate(END):
        tracks[channel] += play(end, channel, [(0, BAR, key_of(name)) for name in names], 74)
    # Quarter notes a minute: the repeat is faster, its last bar and the end are slower.
    tempos = [(0, 66), (repeat, 72), (end - BAR, 66), (end - BAR // 2, 56), (end, 50)]
    return tracks, [(at, 0, b"\xff\x51\x03" + round(60e6 / tempo).to_bytes(3, "big")) for at, tempo in tempos]


def variable(number):
    """A number of seven bits a byte, as delta times are written."""
    digits = [number & 0x7F]
    while number := number >> 7:
        digits.insert(0, number & 0x7F | 0x80)
    return bytes(digits)


def track(events, name):
    data, at = b"\x00\xff\x03" + variable(len(name)) + name.encode(), 0
    for tick, _, message in sorted(events):
        data += variable(tick - at) + message
        at = tick
    data += b"\x00\xff\x2f\x00"
    return b"MTrk" + struct.pack(">I", len(data)) + data


def midi():
    tracks, tempos = voices()
    head = b"MThd" + struct.pack(">IHHH", 6, 1, 1 + len(tracks), TICKS)
    return head + track(tempos, "Invention") + b"".join(map(track, tracks, ("Right hand", "Left hand", "Chords")))


def main(arguments):
    if len(arguments) != 1:
        sys.exit("usage: make_piece.py OUT.mid")
    Path(arguments[0]).write_bytes(midi())


if __name__ == "__main__":
    main(sys.argv[1:])
