"""Standard MIDI Files, put together byte by byte."""

import struct


def variable(number):
    parts = [number & 0x7F]
    while number := number >> 7:
        parts.insert(0, number & 0x7F | 0x80)
    return bytes(parts)


def track(*events, end=True):
    """Events are pairs of a distance in ticks and the event's bytes."""
    events += ((0, [0xFF, 0x2F, 0]),) if end else ()
    data = b"".join(variable(ticks) + bytes(event) for ticks, event in events)
    return chunk(b"MTrk", data)


def chunk(name, data):
    return name + struct.pack(">I", len(data)) + data


def midi(*chunks, division=100, kind=1, count=None):
    count = len(chunks) if count is None else count
    return chunk(b"MThd", struct.pack(">HHH", kind, count, division & 0xFFFF)) + b"".join(chunks)


def tempo(microseconds):
    """The length of a quarter note."""
    return [0xFF, 0x51, 3, *microseconds.to_bytes(3, "big")]


def press(key=60, velocity=127, channel=0):
    return [0x90 | channel, key, velocity]


def release(key=60, channel=0):
    return [0x80 | channel, key, 64]


def control(number, value, channel=0):
    return [0xB0 | channel, number, value]
