"""Sound files in the WAV format: reads PCM of 16, 24 and 32 bits and float of 32 bits (the `wave` module of Debian 12 knows
no floats), writes float of 32 bits.
"""

import array
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


def read(path):
    """(rate, channels) of a file, each channel a list of samples."""
    found = chunks(Path(path).read_bytes(), path)
    if b"fmt " not in found or b"data" not in found or len(found[b"fmt "]) < 16:
        sys.exit(f"{path}: no fmt or no data chunk")
    code, count, rate, _, _, bits = struct.unpack_from("<HHIIHH", found[b"fmt "])
    if code == EXTENSIBLE and len(found[b"fmt "]) >= 26:
        (code,) = struct.unpack_from("<H", found[b"fmt "], 24)
    if count < 1 or bits < 8:
        sys.exit(f"{path}: {count} channels of {bits} bits")
    values = samples(found[b"data"], code, bits, path)
    frames = len(values) // count
    return rate, [values[channel : frames * count : count] for channel in range(count)]


def write(path, rate, channels):
    """Writes a file of 32-bit floats; all channels have the same length."""
    count = len(channels)
    values = array.array("f", (value for frame in zip(*channels) for value in frame))
    if sys.byteorder == "big":
        values.byteswap()
    data = values.tobytes()
    head = struct.pack("<HHIIHH", FLOAT, count, rate, rate * count * 4, count * 4, 32)
    body = b"WAVEfmt " + struct.pack("<I", len(head)) + head + b"data" + struct.pack("<I", len(data)) + data
    Path(path).write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)
