"""Multisamples that the command makes: from the names of files, from SFZ files, in every compression."""

import array
import json
import math
import struct
import unittest

from command_case import DONE, FILE, OUTPUT, USAGE, CommandCase, Wav, flac_bytes, float_wav, wav_bytes
from libraries import LargeFile

OUT = "out.qxMultiSample"


def tone(level, length=400, pitch=0.05):
    return [level * math.sin(pitch * i) for i in range(length)]


def rms(*tracks):
    return math.sqrt(sum(sum(x * x for x in track) for track in tracks) / max(len(track) for track in tracks))


class Multisamples(CommandCase):
    def take(self, name, *channels, rate=48000):
        self.path(name).parent.mkdir(exist_ok=True)
        return self.write(name, float_wav(channels, rate))

    def make(self, source="kick", *options, err=""):
        """What the command tells of the file `self.file` that it makes."""
        result = self.run_command("make-multisample", source, OUT, *options)
        self.assertEqual((result.code, result.err), (DONE, err))
        self.file = LargeFile(self.path(OUT))
        self.samples = self.file.root.findall("sample")
        return json.loads(result.out)

    def refuse(self, *says, source="kick"):
        self.fail_with(FILE, "make-multisample", source, OUT, says=says)
        self.assertFalse(self.path(OUT).exists())

    def floats(self, take, track=0):
        return list(array.array("f", self.file.read(self.samples[take].findall("file")[track])))


class Folder(Multisamples):
    def test_gives_takes_from_soft_to_loud_with_layers_of_a_decibel_and_a_half(self):
        levels = {"a_1": 0.5, "a_2": 0.1, "a_3": 0.11, "a_4": 0.12, "a_5": 0.45}
        for name, level in levels.items():
            self.take(f"kick/{name}.wav", tone(level))
        made = self.make()
        self.assertEqual([(take["name"], take["layer"]) for take in made["takes"]],
                         [("a_2", 1), ("a_3", 1), ("a_4", 2), ("a_5", 3), ("a_1", 3)])
        self.assertEqual((made["layers"], made["tracks"], made["rate"]), (3, ["main"], 48000))
        self.assertEqual([take.get("group") for take in self.samples], ["1", "1", "2", "3", "3"])
        for take, level in zip(self.samples, sorted(levels.values())):
            self.assertAlmostEqual(float(take.get("rms")), rms(tone(level)), 6)
        info = json.loads(self.succeed("info", OUT))
        self.assertEqual(info, {"kind": "multisample", "rate": 48000, "takes": 5, "layers": 3, "length": 400,
                                "tracks": [{"name": "main", "volume": 1.0, "pan": 0.0}]})

    def test_has_tracks_behind_the_last_number_of_a_name(self):
        for take, level in (("1", 0.1), ("2", 0.12), ("3", 0.4)):
            self.take(f"kick/kick {take} close.wav", tone(level))
            self.take(f"kick/kick {take} OH.wav", tone(2 * level, 300), tone(-level, 300))
        made = self.make()
        self.assertEqual(made["tracks"], ["OH", "close"])
        self.assertEqual([track.attrib for track in self.file.root.findall("track")],
                         [{"name": "OH", "volume": "1", "pan": "0"}, {"name": "close", "volume": "1", "pan": "0"}])
        self.assertEqual([(take.get("length"), take.get("maxrmsindex")) for take in self.samples], [("400", "0")] * 3)
        files = self.samples[0].findall("file")
        self.assertEqual([(file.get("channels"), file.get("length"), file.get("bps")) for file in files],
                         [("2", "300", "32"), ("1", "400", "32")])
        self.assertEqual(self.floats(0, 1), list(array.array("f", tone(0.1))))
        energy = sum(x * x for x in tone(0.2, 300) + tone(0.1, 300)) / 2 + sum(x * x for x in tone(0.1))
        self.assertAlmostEqual(float(self.samples[0].get("rms")), math.sqrt(energy / 400), 6)

    def test_has_the_layers_that_names_tell(self):
        for name, level in (("v1_1", 0.1), ("v1_2", 0.25), ("v2_1", 0.26), ("v10_1", 0.9)):
            self.take(f"kick/k_{name}_oh.wav", tone(level))
        made = self.make()
        self.assertEqual([(take["name"], take["layer"]) for take in made["takes"]],
                         [("k_v1_1", 1), ("k_v1_2", 1), ("k_v2_1", 2), ("k_v10_1", 3)])

    def test_takes_the_order_of_named_layers_for_loudness_where_that_does_not_rise(self):
        for name in ("v1_1", "v2_1", "v2_2", "v3_1"):
            self.take(f"kick/k_{name}.wav", tone(0.5))
        self.make(err=f"sonvelle: warning: {OUT}: the layers are not louder one by one, so that their order counts "
                      "instead of their loudness\n")
        self.assertEqual([round(float(take.get("rms")), 6) for take in self.samples], [0.333333, 0.666667, 0.666667, 1])

    def test_keeps_samples_as_they_are_in_every_compression(self):
        shorts = [0, 1, -1, 32767, -32768, 12345] * 50
        threes = [0, 1, -1, 8388607, -8388608, 1234567] * 50
        floats = array.array("f", [0, 0.1, -0.1, 1.5, -1e-9, 1] * 50)
        packed = b"".join(number.to_bytes(3, "little", signed=True) for number in threes)
        self.path("kick").mkdir()
        self.write("kick/1.wav", wav_bytes(struct.pack("<300h", *shorts)))
        self.write("kick/2.wav", wav_bytes(packed, bits=24))
        self.write("kick/3.wav", wav_bytes(floats.tobytes(), code=3, bits=32))
        self.write("kick/4.flac", flac_bytes(shorts))
        self.write("kick/5.wav", wav_bytes(bytes([128, 129, 127, 255, 0, 128] * 50), bits=8))
        self.write("kick/6.wav", wav_bytes(bytes([0xFF, 0x80, 0x00] * 100), code=7, bits=8))
        eights = struct.pack("<6h", 0, 256, -256, 32512, -32768, 0) * 50
        wanted = {"1": (16, struct.pack("<300h", *shorts)), "2": (24, packed), "3": (32, floats.tobytes()),
                  "4": (16, struct.pack("<300h", *shorts)), "5": (16, eights),
                  "6": (16, struct.pack("<3h", 0, 32124, -32124) * 100)}
        for compression, flags in ((None, 0), ("none", 0), ("zlib", 3), ("bzip2", 7)):
            made = self.make("kick", *(["--compress", compression] if compression else []))
            self.assertEqual(self.file.flags, flags)
            for take, told in zip(self.samples, made["takes"]):
                (file,) = take.findall("file")
                bits, data = wanted[told["name"]]
                self.assertEqual((int(file.get("bps")), self.file.read(file)), (bits, data))

    def test_plays_as_it_was_recorded(self):
        self.path("MultiSamples").mkdir()
        for name, level in (("1", 0.125), ("2", 0.25), ("3", 1.0)):
            self.take(f"kick/{name}.wav", tone(level))
        for compression in ("none", "zlib", "bzip2"):
            self.make("kick", "--compress", compression)
            self.path(OUT).rename(self.path("MultiSamples") / OUT)
            self.write("state.xml", f'<state plugin="Layerbox" filename="{OUT}" subpath=""/>'.encode())
            self.succeed("render", "Layerbox", "out.wav", "--state", "state.xml", "--rate", 48000, "--note", "60:1:0:1")
            self.assertEqual(list(Wav(self.path("out.wav")).channels[0][:400]), list(array.array("f", tone(1.0))))

    def test_passes_over_what_is_no_sound_file(self):
        self.take("kick/1.WAV", tone(0.5))
        self.write("kick/notes.txt", b"hello")
        self.write("kick/._1.wav", b"x")
        self.assertEqual(len(self.make()["takes"]), 1)


class Refused(Multisamples):
    def test_are_takes_that_do_not_fit(self):
        self.take("kick/k_1_oh.wav", tone(0.5))
        self.take("kick/k_2_oh.wav", tone(0.5), rate=44100)
        self.refuse("kick/k_2_oh.wav", "44100 hertz", "48000")
        self.take("kick/k_2_oh.wav", tone(0.5))
        self.take("kick/k_2_close.wav", tone(0.5))
        self.refuse("kick/k_2_close.wav", "other tracks")
        self.path("kick/k_2_close.wav").unlink()
        self.take("kick/k_v2_3_oh.wav", tone(0.5))
        self.refuse("kick/k_", "only some of the names tell a layer")
        self.path("kick/k_v2_3_oh.wav").unlink()
        self.take("kick/k_1_oh.aif", tone(0.5))
        self.refuse("kick/k_1_oh", 'track "oh"')

    def test_are_files_that_cannot_be_used(self):
        for data, says in ((b"junk", "cannot be read as a sound file"), (b"", "empty"),
                           (wav_bytes(b""), "no samples"), (float_wav([[math.nan]]), "no numbers"),
                           (float_wav([[0.5]] * 9), "eight channels")):
            self.path("kick").mkdir(exist_ok=True)
            self.write("kick/1.wav", data)
            self.refuse("kick/1.wav", says)

    def test_are_files_that_change_between_the_two_times_that_they_are_read(self):
        soft = [0.1 * x for x in tone(1)]
        for changed in (float_wav([soft[:-1]]), float_wav([soft, soft]), wav_bytes(bytes(2 * len(soft))),
                        float_wav([soft], 44100)):
            self.take("kick/k 1.wav", soft)
            self.fail_with_change(FILE, "kick/k 2.wav", float_wav([tone(0.5)], 48000),
                                  lambda: self.write("kick/k 1.wav", changed), "make-multisample", "kick", OUT,
                                  says="kick/k 1.wav: the file has changed while it was read")
            self.assertEqual(self.names(), ["kick"])

    def test_are_sources_without_sounds(self):
        self.path("kick").mkdir()
        self.refuse("kick", "no sound file")
        self.refuse("none.sfz", "No such file", source="none.sfz")

    def test_are_more_than_sixteen_tracks(self):
        for track in range(17):
            self.take(f"kick/1 t{track:02}.wav", [0.5])
        self.refuse("sixteen tracks")

    def test_is_wrong_usage(self):
        self.take("kick/1.wav", tone(0.5))
        for words in ([], ["kick"], ["kick", OUT, "x"], ["kick", OUT, "--compress", "rar"]):
            self.fail_with(USAGE, "make-multisample", *words, says=["see: sonvelle help make-multisample"])
        self.fail_with(USAGE, "make-multisample", "kick", "kick/1.wav", says=["the same file"])
        self.fail_with(OUTPUT, "make-multisample", "kick", "no folder/" + OUT, says=["no folder"])
        self.fail_with(OUTPUT, "make-multisample", "kick", "/dev/full", says=["/dev/full"])
        self.assertEqual(self.names(), ["kick"])


if __name__ == "__main__":
    unittest.main()
