"""What the hosts of the matrix share: the built bundles, a home of their own, sounds, and how a host answers."""

import array
import json
import math
import os
import random
import struct
import subprocess
import tempfile
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parents[3]
RATE, FRAMES = 48000, 20000
OK, NOT_APPLICABLE = "ok", "n/a"


class Plugin(NamedTuple):
    name: str
    is_instrument: bool
    parameters: int  # that a DAW shows: rows with a value, and those of the host side

    @property
    def uri(self):
        return "https://sonvelle.example/plugins/" + self.name


class Failure(Exception):
    """What a host did not do as it should, in one line."""


class Host:
    """A host: one column of the matrix. `check` raises Failure, or gives OK or NOT_APPLICABLE."""

    name = format = package = meaning = ""

    def program(self):
        """The path of what is run; None: it is not installed."""
        raise NotImplementedError

    def version(self):
        query = ["dpkg-query", "-W", "-f=${Version}", self.package]
        text = subprocess.run(query, capture_output=True, text=True, check=False).stdout
        return text.split(":")[-1].split("+")[0].split("~")[0].split("-")[0] or "unknown"

    def check(self, place, plugin):
        raise NotImplementedError

    def run(self, place, plugins):
        """{name of the plug-in: OK, NOT_APPLICABLE, or "failed: ..."}"""
        return {plugin.name: self.answer(place, plugin) for plugin in plugins}

    def answer(self, place, plugin):
        try:
            return self.check(place, plugin)
        except (Failure, subprocess.TimeoutExpired) as failure:
            return f"failed: {failure}"


class Place:
    """A temporary home beside the bundles of a build folder."""

    def __init__(self, build=None, bundles=None):
        """`bundles`: where lv2/, clap/ and vst3/ lie, if not in the build folder."""
        self.build = Path(build or os.environ.get("SONVELLE_BUILD") or ROOT / "build/release").resolve()
        bundles = Path(bundles or self.build)
        self.lv2, self.clap = bundles / "lv2/Sonvelle.lv2", bundles / "clap/Sonvelle.clap"
        self.vst3 = bundles / "vst3/Sonvelle.vst3"

    def __enter__(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = Path(self.temporary.name).resolve()
        self.environment = os.environ | {"HOME": str(self.folder), "LV2_PATH": f"{self.lv2.parent}:/usr/lib/lv2", "LANG": "C.UTF-8"}
        for kind, folder in (("CONFIG", "config"), ("CACHE", "cache"), ("DATA", "data")):
            self.environment[f"XDG_{kind}_HOME"] = str(self.folder / folder)
        self.succeed(self.build / "sonvelle", "register")  # the instruments' content
        self.write_noise()
        return self

    def __exit__(self, *error):
        self.temporary.cleanup()

    def run(self, *words, timeout=60, **options):
        environment = self.environment | options.pop("environment", {})
        return subprocess.run([*map(str, words)], env=environment, cwd=self.folder, capture_output=True, text=True,
                              errors="replace", timeout=timeout, check=False, **options)

    def succeed(self, *words, **options):
        done = self.run(*words, **options)
        if done.returncode != 0:
            lines = (done.stderr.strip() or done.stdout.strip() or "it said nothing").splitlines()
            raise Failure(f"exit code {done.returncode}: {lines[-1]}")
        return done

    def plugins(self):
        plugins = []
        for row in json.loads(self.succeed(self.build / "sonvelle", "list", "--json").stdout):
            is_instrument = row["kind"] != "effect"
            rows = json.loads(self.succeed(self.build / "sonvelle", "params", row["name"], "--json").stdout)
            count = sum("range" in parameter for parameter in rows)
            plugins.append(Plugin(row["name"], is_instrument, count + (2 if is_instrument else 1)))
        return plugins

    def states(self, plugin):
        return sorted((ROOT / "resources/states" / plugin.name).glob("*.xml"))

    def write_noise(self):
        numbers = random.Random(1)
        samples = array.array("f", (numbers.uniform(-0.5, 0.5) for _ in range(2 * FRAMES)))
        data = samples.tobytes()
        (self.folder / "in.f32").write_bytes(data)
        form = struct.pack("<HHIIHH", 3, 2, RATE, RATE * 8, 8, 32)
        chunks = b"WAVEfmt " + struct.pack("<I", 16) + form + b"data" + struct.pack("<I", len(data)) + data
        (self.folder / "in.wav").write_bytes(b"RIFF" + struct.pack("<I", len(chunks)) + chunks)


def read_wav(path):
    """The samples of a WAV file of 32-bit floats."""
    if not path.exists():
        raise Failure("no file was written")
    data, offset = path.read_bytes(), 12
    while data[offset : offset + 4] not in (b"data", b""):
        if data[offset : offset + 4] == b"fmt " and struct.unpack_from("<H", data, offset + 22)[0] != 32:
            raise Failure("the file is not of 32-bit floats")
        offset += 8 + struct.unpack_from("<I", data, offset + 4)[0]
    data = data[offset + 8 :]
    return array.array("f", data[: len(data) // 4 * 4])


def expect_sound(samples, frames=FRAMES):
    """That many stereo frames, all finite, and not silence."""
    if len(samples) != 2 * frames:
        raise Failure(f"{len(samples)} samples instead of {2 * frames}")
    if not all(map(math.isfinite, samples)):
        raise Failure("the sound is not finite")
    if not any(samples):
        raise Failure("silence")
