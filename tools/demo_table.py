#!/usr/bin/env python3
"""demo_table.py IN OUT: a small table of what went into an effect and what came out, from two WAV files.

Reads PCM of 16, 24 and 32 bits and float of 32 bits (the `wave` module of Debian 12 knows no floats).
"""

import array
import math
import struct
import sys
from pathlib import Path

PCM, FLOAT, EXTENSIBLE = 1, 3, 0xFFFE


def chunks(data, path):
    if data[:4] != b"RIFF" or data[8:12] != b"WAVE":
        sys.exit(f"{path}: no WAV file")
    found, offset = {}, 12
    while offset + 8 <= len(data):
        name, size = struct.unpack_from("<4sI", data, offset)
        found.setdefault(name, data[offset + 8 : offset + 8 + size])
        offset += 8 + size + size % 2
    return found


def samples(data, code, bits, path):
    """All channels interleaved, full scale 1."""
    data = data[: len(data) - len(data) % (bits // 8)]
    if code == PCM and bits == 24:
        data = b"".join(b"\0" + data[i : i + 3] for i in range(0, len(data), 3))
        bits = 32
    kinds = {(PCM, 16): ("h", 32768.0), (PCM, 32): ("i", 2147483648.0), (FLOAT, 32): ("f", 1.0)}
    if (code, bits) not in kinds:
        sys.exit(f"{path}: format {code} with {bits} bits is not known here")
    kind, full_scale = kinds[code, bits]
    values = array.array(kind, data)
    if sys.byteorder == "big":
        values.byteswap()
    return [value / full_scale for value in values]


def measure(path):
    """(rate, channels, frames, peak, RMS) of a WAV file."""
    found = chunks(Path(path).read_bytes(), path)
    if b"fmt " not in found or b"data" not in found or len(found[b"fmt "]) < 16:
        sys.exit(f"{path}: no fmt or no data chunk")
    code, channels, rate, _, _, bits = struct.unpack_from("<HHIIHH", found[b"fmt "])
    if code == EXTENSIBLE and len(found[b"fmt "]) >= 26:
        (code,) = struct.unpack_from("<H", found[b"fmt "], 24)
    values = samples(found[b"data"], code, bits, path)
    peak = max(map(abs, values), default=0.0)
    rms = math.sqrt(math.fsum(value * value for value in values) / max(1, len(values)))
    return rate, channels, len(values) // max(1, channels), peak, rms


def decibels(amplitude):
    return f"{20 * math.log10(amplitude):.1f} dB" if amplitude > 0 else "-inf dB"


def main(arguments):
    if len(arguments) != 2:
        sys.exit("usage: demo_table.py IN OUT")
    rows = [measure(path) for path in arguments]
    print(f"{'':4}{'rate':>10}{'channels':>10}{'duration':>11}{'peak':>11}{'RMS':>11}")
    for label, (rate, channels, frames, peak, rms) in zip(("in", "out"), rows):
        duration = f"{frames / rate:.2f} s"
        print(f"{label:4}{f'{rate} Hz':>10}{channels:>10}{duration:>11}{decibels(peak):>11}{decibels(rms):>11}")
    seconds = [frames / rate for rate, _, frames, _, _ in rows]
    print(f"tail: {seconds[1] - seconds[0]:.2f} s")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
