"""The small hosts of these tests: lv2_render, clap_render, vst3_render."""

import array

from place import FRAMES, OK, RATE, Failure, Host, expect_sound

NOTES = "100 midi 144 60 100\n4000 midi 144 67 80\n9000 midi 128 60 0\n"


class OwnHost(Host):
    package = "sonvelle"
    meaning = "noise, or two notes with the first of the instrument's states, come out finite and are no silence"

    def __init__(self, format, build):
        self.format, self.name, self.build = format, f"{format.lower()}_render", build

    def program(self):
        program = self.build / self.name
        return program if program.exists() else None

    def version(self):
        return "of this tree"

    def module(self, place):
        if self.format == "VST3":
            return next(place.vst3.glob("Contents/*/Sonvelle.so"), place.vst3)
        return {"LV2": place.lv2, "CLAP": place.clap}[self.format]

    def check(self, place, plugin):
        (place.folder / "notes").write_text(NOTES)
        result = place.folder / "out.f32"
        result.unlink(missing_ok=True)
        options = ["--in", "in.f32"]
        if plugin.is_instrument:
            options = ["--state", place.states(plugin)[0], "--events", "notes", "--offline"]
        done = place.succeed(self.program(), self.module(place), plugin.name, result, "--rate", RATE, "--channels", 2,
                             "--block", 256, "--frames", FRAMES, *options)
        if done.stderr:
            raise Failure(done.stderr.splitlines()[-1])
        expect_sound(array.array("f", result.read_bytes()))
        return OK
