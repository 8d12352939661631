"""What hosts with a window do first: their scanners, which load the plug-ins in a process without one."""

from pathlib import Path
from xml.etree import ElementTree

from place import OK, Failure, Host


class ArdourScanner(Host):
    name, format, package = "Ardour's scanner", "VST3", "ardour"
    meaning = "the plug-in is made, its buses are read (two channels in and out, or notes in and two channels out)"

    def program(self):
        return max(map(str, Path("/usr/lib").glob("ardour*/ardour-vst3-scanner")), default=None)

    def run(self, place, plugins):
        self.found = {}
        try:
            done = place.succeed(self.program(), "-f", "-v", place.vst3,
                                 environment={"LD_LIBRARY_PATH": str(Path(self.program()).parent)})
            self.wrong = [line for line in (done.stdout + done.stderr).splitlines() if line.startswith("[") and
                          not line.startswith("[Info]")]
            for cache in (place.folder / "cache").glob("ardour*/vst/*.v3i"):
                self.found |= {row.get("name"): row.attrib for row in ElementTree.parse(cache).getroot()}
        except (Failure, ElementTree.ParseError) as failure:
            self.wrong = [str(failure)]
        return super().run(place, plugins)

    def check(self, place, plugin):
        if self.wrong:
            raise Failure(self.wrong[0])
        if plugin.name not in self.found:
            raise Failure("it is not found")
        row = self.found[plugin.name]
        ports = tuple(int(row[key]) for key in ("n_inputs", "n_outputs", "n_midi_inputs", "n_midi_outputs"))
        if ports != ((0, 2, 1, 0) if plugin.is_instrument else (2, 2, 0, 0)):
            raise Failure(f"its ports are {ports}")
        if row["category"].startswith("Instrument") != plugin.is_instrument:
            raise Failure(f"its category is {row['category']}")
        return OK


class QtractorScanner(Host):
    name, format, package = "qtractor's scanner", "CLAP", "qtractor"
    meaning = "the plug-in is made, its ports are as they should be, its parameters as many as above"

    def program(self):
        places = [*Path("/usr/lib").glob("*/qtractor/qtractor_plugin_scan"), Path("/usr/lib/qtractor/qtractor_plugin_scan")]
        return next((path for path in places if path.exists()), None)

    def run(self, place, plugins):
        self.rows, self.wrong = {}, None
        try:
            done = place.succeed(self.program(), input=f"CLAP:{place.clap}\n", environment={"QT_QPA_PLATFORM": "offscreen"})
            rows = [line.split("|") for line in done.stdout.splitlines()]
            self.rows = {row[1]: row[2:] for row in rows if row[0] == "CLAP"}
        except Failure as failure:
            self.wrong = failure
        return super().run(place, plugins)

    def check(self, place, plugin):
        if self.wrong:
            raise self.wrong
        if plugin.name not in self.rows:
            raise Failure("it is not found")
        expected = (["0:2", "1:0"] if plugin.is_instrument else ["2:2", "0:0"]) + [f"{plugin.parameters}:0"]
        if self.rows[plugin.name][:3] != expected:
            raise Failure(f"audio, MIDI, controls: {self.rows[plugin.name][:3]} instead of {expected}")
        return OK
