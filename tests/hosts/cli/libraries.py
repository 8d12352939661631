"""Multisamples and subsample libraries, read and written byte by byte."""

import bz2
import hashlib
import struct
import xml.etree.ElementTree
import zlib

BANDS = 10


def large_file(index, items=b"", flags=0):
    """A large resource library; the index is compressed as the flags say."""
    stored = index if not flags & 2 else bz2.compress(index) if flags & 4 else zlib.compress(index)
    return items + stored + hashlib.md5(index).digest() + struct.pack("<QI", len(stored), flags)


class LargeFile:
    """What such a file holds: flags, the root of the index, all bytes in front of the index."""

    def __init__(self, path):
        data = path.read_bytes()
        digest, length, self.flags = struct.unpack("<16sQI", data[-28:])
        self.items, index = data[: -28 - length], data[-28 - length : -28]
        index = self._unpack(index) if self.flags & 2 else index
        assert hashlib.md5(index).digest() == digest
        self.root = xml.etree.ElementTree.fromstring(index)

    def _unpack(self, data):
        """What the first compressed stream in the data holds."""
        return (bz2.BZ2Decompressor() if self.flags & 4 else zlib.decompressobj()).decompress(data)

    def read(self, file):
        """The bytes of an element "file"."""
        start, size = int(file.get("filestart")), int(file.get("filesize"))
        data = self.items[start:]
        return self._unpack(data)[:size] if self.flags & 1 else data[:size]


def subsample_file(rate=44100, bands=((0, 1, ()),) * BANDS, data=b""):
    """A band is (first, bins, sounds), a sound (frames, length, channels, offset)."""
    head = struct.pack("<i72x", rate)
    for first, bins, sounds in bands:
        head += struct.pack("<iii8x", first, bins, len(sounds))
        head += b"".join(struct.pack("<iiiq8x", *sound) for sound in sounds)
    return head + data


class SubSampleFile:
    def __init__(self, path):
        self.bytes = path.read_bytes()
        (self.rate,) = struct.unpack_from("<i", self.bytes)
        self.name = self.bytes[4:68].rstrip(b"\0")
        self.bands, place = [], 76
        for _ in range(BANDS):
            first, bins, count = struct.unpack_from("<iii", self.bytes, place)
            place += 20
            sounds = [struct.unpack_from("<iiiq", self.bytes, place + 28 * i) for i in range(count)]
            place += 28 * count
            self.bands.append((first, bins, sounds))
        self.data = self.bytes[place:]

    def spectra(self, band, sound, channel=0):
        """Rows of the band's bins, one per frame."""
        _, bins, sounds = self.bands[band]
        frames, _, _, offset = sounds[sound]
        values = struct.unpack_from(f"<{frames * bins}f", self.data, offset + 4 * channel * frames * bins)
        return [values[i * bins : (i + 1) * bins] for i in range(frames)]
