"""The program lv2file, which applies plug-ins to sound files, with presets."""

import shutil

from place import OK, Failure, Host, expect_sound, read_wav


class Lv2File(Host):
    name, format, package = "lv2file", "LV2", "lv2file"
    meaning = "as lv2apply; instruments, which get no notes there, load each of their presets and are silent"

    def program(self):
        return shutil.which("lv2file")

    def check(self, place, plugin):
        samples = self.render(place, plugin)
        if not plugin.is_instrument:
            expect_sound(samples)
            return OK
        listed = place.succeed(self.program(), "-L", plugin.uri).stdout.splitlines()
        presets = [line.split(": ", 1)[1] for line in listed if line.startswith("Preset: ")]
        if sorted(presets) != [path.stem for path in place.states(plugin)]:
            raise Failure(f"its presets are {presets}")
        for preset in presets:
            if any(self.render(place, plugin, "-P", preset)):
                raise Failure(f"{preset} sounds without notes")
        return OK

    def render(self, place, plugin, *options):
        result = place.folder / "out.wav"
        result.unlink(missing_ok=True)
        place.succeed(self.program(), "-i", place.folder / "in.wav", "-o", result, *options, plugin.uri)
        return read_wav(result)
