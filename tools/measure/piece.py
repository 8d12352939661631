"""The piece of tools/make_piece.py as frames and voices, and what an instrument is to make of it."""

import math
from dataclasses import dataclass

import make_piece
from measure.lab import RATE

# Of all sounds of instruments: a model of a whole piece takes its time.
NOTE_RATE = RATE // 2
FADE_FRAMES = NOTE_RATE // 50  # 20 ms, behind the release of a key


@dataclass
class Voice:
    start: int  # frames
    key: int
    volume: float
    released: int  # frame where the fade begins

    def end(self):
        return self.released + FADE_FRAMES


def frames_of(seconds):
    return math.floor(seconds * NOTE_RATE + 0.5)


def seconds_of(tempos):
    """A function from ticks to seconds."""
    changes, at, seconds, pace = [], 0, 0.0, 0.5 / make_piece.TICKS
    for tick, _, message in tempos:
        seconds += (tick - at) * pace
        at, pace = tick, int.from_bytes(message[3:], "big") * 1e-6 / make_piece.TICKS
        changes.append((tick, seconds, pace))

    def convert(tick):
        start, before, speed = [change for change in changes if change[0] <= tick][-1]
        return before + (tick - start) * speed

    return convert


def voices():
    """All notes of the piece, in the order of their beginning."""
    tracks, tempos = make_piece.voices()
    seconds, found = seconds_of(tempos), []
    for track in tracks:
        pressed, held, is_pedal_down = {}, [], False
        for tick, _, (status, first, second) in sorted(track):
            frame = frames_of(seconds(tick))
            if status & 0xF0 == 0x90:
                found.append(Voice(frame, first, second / 127, 0))
                pressed[first] = found[-1]
            elif status & 0xF0 == 0x80:
                voice = pressed.pop(first)
                voice.released = frame
                held += [voice] * is_pedal_down
            else:
                is_pedal_down = second >= 64
                for voice in held if not is_pedal_down else []:
                    voice.released = frame
                held = held if is_pedal_down else []
    return sorted(found, key=lambda voice: voice.start)


def length(played):
    return max(voice.end() for voice in played)


def mix(played, sound):
    """The sum of all voices; sound(ratio, frames) is a note of the volume 1, and may be shorter."""
    out, notes = [0.0] * length(played), {}
    for voice in played:
        frames = voice.end() - voice.start
        note = notes.get(voice.key, [])
        if len(note) < frames:
            note = notes[voice.key] = sound(2 ** ((voice.key - 60) / 12), frames)
        for i, value in enumerate(note[: frames - FADE_FRAMES], voice.start):
            out[i] += voice.volume * value
        for i, value in enumerate(note[frames - FADE_FRAMES : frames]):
            out[voice.released + i] += voice.volume * value * (1 - (i + 1) / FADE_FRAMES)
    return out
