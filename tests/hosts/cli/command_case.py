"""What the tests of the command share: a temporary folder, the built command, sound files."""

import array
import errno
import os
import shutil
import struct
import subprocess
import tempfile
import time
import unittest
import unittest.mock
from pathlib import Path

COMMAND = Path(os.environ["SONVELLE_COMMAND"])
FAKE_LIBRARY = Path(os.environ["SONVELLE_FAKE_LIBRARY"])
# A memory of the process that is measured tells nothing about the command there.
IS_SANITIZED = bool(os.environ.get("SONVELLE_SANITIZE"))

DONE, FILE, USAGE, PLUGIN, OUTPUT = range(5)


class Result:
    def __init__(self, code, out, err):
        self.code, self.out, self.err = code, out, err


def wav_bytes(data, channels=1, rate=48000, code=1, bits=16, size=None):
    """A WAV file; `size` is what the header says of its data."""
    align = channels * bits // 8
    form = struct.pack("<HHIIHH", code, channels, rate, rate * align & 0xFFFFFFFF, align, bits)
    chunks = b"fmt " + struct.pack("<I", len(form)) + form
    size = len(data) if size is None else size
    chunks += b"data" + struct.pack("<I", size) + data
    return b"RIFF" + struct.pack("<I", 4 + len(chunks) - len(data) + size & 0xFFFFFFFF) + b"WAVE" + chunks


def float_wav(channels, rate=48000):
    """A WAV file of 32-bit floats from a list of channels."""
    frames = array.array("f", (sample for frame in zip(*channels) for sample in frame))
    return wav_bytes(frames.tobytes(), len(channels), rate, 3, 32)


def crc(data, polynomial, bits):
    value = 0
    for byte in data:
        value ^= byte << bits - 8
        for _ in range(8):
            value = value << 1 ^ (polynomial if value >> bits - 1 else 0)
            value &= (1 << bits) - 1
    return value.to_bytes(bits // 8, "big")


def flac_bytes(numbers, rate=48000, block=4096):
    """A FLAC file, one channel of 16 bits, nothing of it predicted."""
    sizes = struct.pack(">HH", block, block) + bytes(6)
    info = sizes + (rate << 44 | 15 << 36 | len(numbers)).to_bytes(8, "big") + bytes(16)
    data = b"fLaC" + struct.pack(">I", 0x80 << 24 | len(info)) + info
    for number, start in enumerate(range(0, len(numbers), block)):
        samples = numbers[start : start + block]
        header = b"\xff\xf8\x70\x08" + bytes([number]) + struct.pack(">H", len(samples) - 1)
        frame = header + crc(header, 0x07, 8) + b"\x02" + struct.pack(f">{len(samples)}h", *samples)
        data += frame + crc(frame, 0x8005, 16)
    return data


class Wav:
    """A WAV file as written by the command, read without its libraries."""

    def __init__(self, path):
        data = Path(path).read_bytes()
        assert data[:4] == b"RIFF" and data[8:12] == b"WAVE", data[:12]
        assert struct.unpack_from("<I", data, 4)[0] == len(data) - 8
        self.chunks, offset = {}, 12
        while offset < len(data):
            name, size = struct.unpack_from("<4sI", data, offset)
            assert offset + 8 + size <= len(data), f"{name} ends behind the file"
            self.chunks[name] = data[offset + 8 : offset + 8 + size]
            offset += 8 + size + size % 2
        self.code, self.channel_count, self.rate, _, self.align, self.bits = struct.unpack_from(
            "<HHIIHH", self.chunks[b"fmt "]
        )
        self.interleaved = array.array("f", self.chunks[b"data"])
        self.channels = [self.interleaved[c :: self.channel_count] for c in range(self.channel_count)]
        self.frames = len(self.interleaved) // self.channel_count


class CommandCase(unittest.TestCase):
    command = COMMAND

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        # Where the library keeps its registry and its settings: never that of the user.
        data = tempfile.TemporaryDirectory()
        self.addCleanup(data.cleanup)
        self.data = Path(data.name).resolve()
        self.data.chmod(0o777)
        patch = unittest.mock.patch.dict(os.environ, XDG_DATA_HOME=str(self.data))
        patch.start()
        self.addCleanup(patch.stop)

    def path(self, name):
        return self.folder / name

    def write(self, name, data):
        self.path(name).write_bytes(data)
        return self.path(name)

    def names(self):
        return sorted(os.listdir(self.folder))

    def run_command(self, *arguments, **options):
        options = {"cwd": self.folder, "stdin": subprocess.DEVNULL, "capture_output": True, "timeout": 300} | options
        done = subprocess.run([self.command, *map(str, arguments)], **options)
        text = [None if stream is None else os.fsdecode(stream) for stream in (done.stdout, done.stderr)]
        return Result(done.returncode, *text)

    def succeed(self, *arguments, **options):
        """What the command prints when all is well: nothing on standard error."""
        result = self.run_command(*arguments, **options)
        self.assertEqual((result.code, result.err), (DONE, ""))
        return result.out

    def fail_with(self, code, *arguments, says=(), last=None, **options):
        """The command ends with this code and one line that has all of `says`; behind it `last`, the library's text."""
        result = self.run_command(*arguments, **options)
        lines = result.err.split("\n")
        self.assertEqual(result.code, code, result.err)
        self.assertEqual(lines[1:], [""] if last is None else [last, ""], result.err)
        self.assertTrue(lines[0].startswith("sonvelle: "), lines[0])
        for text in says:
            self.assertIn(text, lines[0])
        if result.out is not None:
            self.assertEqual(result.out, "")

    def fail_with_change(self, code, pipe, data, change, *arguments, says):
        """As fail_with; when the command opens the pipe, an input, `change` is called, then the pipe gives `data`."""
        os.mkfifo(self.path(pipe))
        process = subprocess.Popen([self.command, *map(str, arguments)], cwd=self.folder, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        end = None
        while end is None and process.poll() is None:
            try:
                end = os.open(self.path(pipe), os.O_WRONLY | os.O_NONBLOCK)
            except OSError as error:
                self.assertEqual(error.errno, errno.ENXIO)  # nobody reads yet
                time.sleep(0.01)
        self.assertIsNotNone(end, "the command has not opened the pipe")
        change()
        os.set_blocking(end, True)
        with open(end, "wb") as file:
            file.write(data)
        out, err = process.communicate(timeout=60)
        self.path(pipe).unlink()
        self.assertEqual((process.returncode, out), (code, ""), err)
        self.assertEqual(err, f"sonvelle: {says}\n")

    def expect_samples(self, channels, expected):
        """Lists of channels are equal; else says where they are not, which unittest would need minutes for."""
        self.assertEqual([len(channel) for channel in channels], [len(channel) for channel in expected])
        for c, pair in enumerate(zip(channels, expected)):
            for i, (sample, wanted) in enumerate(zip(*pair)):
                if sample != wanted:
                    self.fail(f"channel {c}, frame {i}: {sample} instead of {wanted}")

    def render(self, source, *options, output="out.wav", effect="Echolan"):
        """The output of a render that succeeds."""
        self.succeed("render", effect, source, output, *options)
        return Wav(self.path(output))


class InstalledCase(CommandCase):
    """Runs a copy of the command in a folder of its own, with whatever library the test puts beside it."""

    def setUp(self):
        super().setUp()
        self.bin = self.path("bin")
        self.bin.mkdir()
        self.command = self.bin / "sonvelle"
        shutil.copy(COMMAND, self.command)


class UserCase(InstalledCase):
    """Runs the command as a user without power: nothing is forbidden to the superuser, who could even replace a device."""

    def setUp(self):
        super().setUp()
        shutil.copy(COMMAND.parent / "Sonvelle.so", self.bin)
        self.folder.chmod(0o777)
        self.user = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}

    def run_command(self, *arguments, **options):
        return super().run_command(*arguments, **(self.user | options))


class FakeCase(InstalledCase):
    """Runs the command with the plug-in of FakeLibrary.cpp, which notes what is asked of it."""

    def setUp(self):
        super().setUp()
        shutil.copy(FAKE_LIBRARY, self.bin / "Sonvelle.so")
        self.environment = os.environ | {"SONVELLE_FAKE_NOTES": str(self.path("notes"))}

    def run_command(self, *arguments, **options):
        return super().run_command(*arguments, **({"env": self.environment} | options))

    def notes(self):
        notes = self.path("notes").read_text().split("\n")[:-1]
        self.path("notes").unlink()
        return notes
