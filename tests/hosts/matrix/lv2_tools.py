"""The tools of lilv and LV2: lv2_validate, lv2apply, lv2bench."""

import re
import shutil

from place import NOT_APPLICABLE, OK, Failure, Host, expect_sound, read_wav


class Validate(Host):
    name, format, package = "lv2_validate", "LV2", "lv2-dev"
    meaning = "the texts of the bundle hold what LV2's own vocabulary asks, without a warning"

    def program(self):
        return shutil.which("lv2_validate")

    def run(self, place, plugins):
        report = place.run(self.program(), *sorted(place.lv2.glob("*.ttl")))
        self.lines = re.findall("(?i).*(?:warning|error): .*", report.stdout + report.stderr)
        if not self.lines and (report.returncode != 0 or "Found 0 errors among" not in report.stdout + report.stderr):
            self.lines = [report.stderr.strip() or "it said nothing"]
        return super().run(place, plugins)

    def check(self, place, plugin):
        # What names no plug-in is said of all.
        wrong = [line for line in self.lines if plugin.name in line or not re.search("plugins/[A-Z]|[A-Z][a-z]+4?N?N?\\.ttl", line)]
        if wrong:
            raise Failure(wrong[0])
        return OK


class Apply(Host):
    name, format, package = "lv2apply", "LV2", "lilv-utils"
    meaning = "noise of a file comes out finite and is no silence; effects only"

    def program(self):
        return shutil.which("lv2apply")

    def check(self, place, plugin):
        if plugin.is_instrument:
            return NOT_APPLICABLE
        result = place.folder / "out.wav"
        result.unlink(missing_ok=True)
        place.succeed(self.program(), "-i", place.folder / "in.wav", "-o", result, plugin.uri)
        expect_sound(read_wav(result))
        return OK


class Bench(Host):
    name, format, package = "lv2bench", "LV2", "lilv-utils"
    meaning = "the plug-in runs for a second of silence"

    def program(self):
        return shutil.which("lv2bench")

    def check(self, place, plugin):
        done = place.succeed(self.program(), "-n", 48000, plugin.uri)
        if not re.match(rf"\d+\.\d+ {plugin.uri}\n", done.stdout):
            raise Failure((done.stdout + done.stderr).strip() or "it said nothing")
        return OK
