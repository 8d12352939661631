"""Ardour without a display, in a home of its own with the plug-ins installed for the user."""

import array
import os
import re
import shutil
import struct
import subprocess
from pathlib import Path

HERE = Path(__file__).parent
SOURCES = HERE.parents[2]
SECOND = 282240000  # in Ardour's units of time


def samples(path):
    """Of an exported WAV file of 16 bits."""
    data = path.read_bytes()
    offset = 12
    while data[offset : offset + 4] != b"data":
        offset += 8 + struct.unpack_from("<I", data, offset + 4)[0]
    size = struct.unpack_from("<I", data, offset + 4)[0]
    return array.array("h", data[offset + 8 : offset + 8 + size])


class Ardour:
    def __init__(self, home, build):
        self.home = home
        self.environment = os.environ | {"HOME": str(home), "XDG_CONFIG_HOME": str(home / "config"),
                                         "XDG_CACHE_HOME": str(home / "cache"), "XDG_DATA_HOME": str(home / ".local/share")}
        self.run(SOURCES / "tools/install-user", build)
        scripts = home / "config/ardour7/scripts"
        scripts.mkdir(parents=True)
        shutil.copy(HERE / "ardour_notes.lua", scripts)
        # It finds VST3 plug-ins by what its scanner has written, if the file is older than that by a second and more.
        for file in (home / ".vst3").rglob("*.so"):
            os.utime(file, (1e9, 1e9))
        scanner = "/usr/lib/ardour7/ardour-vst3-scanner"
        said = self.run(scanner, "-v", home / ".vst3/Sonvelle.vst3", LD_LIBRARY_PATH="/usr/lib/ardour7")
        self.vst3 = dict(reversed(pair) for pair in re.findall(r'uid="(\w+)" name="(\w+)"', said))

    def id(self, name, format):
        return "https://sonvelle.example/plugins/" + name if format == "LV2" else self.vst3[name]

    def run(self, *command, **environment):
        """What the command says; it has to succeed."""
        done = subprocess.run(list(map(str, command)), env=self.environment | environment, capture_output=True, text=True,
                              timeout=60)
        said = done.stdout + done.stderr
        assert done.returncode == 0, f"{command[0]} ended with {done.returncode}: {said}"
        return said

    def make(self, folder, *names, format="LV2", automated=True):
        """A session of two seconds with these effects."""
        ids = [self.id(name, format) for name in names]
        task = "make" if automated else "plain"
        said = self.run("ardour7-lua", HERE / "ardour_session.lua", task, folder, format, *ids)
        assert said.count("automated ") == len(ids) * automated, said
        self.give_length(folder)

    def play(self, folder, name, preset, format):
        """A session of two seconds in which an instrument plays notes."""
        self.run("ardour7-lua", HERE / "ardour_session.lua", "play", folder, format, self.id(name, format), preset)
        self.give_length(folder)

    def give_length(self, folder):
        # A session that nothing was recorded in has no length.
        place = f'<Location id="99999" name="session" start="a0" end="a{2 * SECOND}" flags="IsSessionRange" locked="0"/>'
        self.edit(folder, lambda text: text.replace("<Locations/>", f"<Locations>{place}</Locations>"))

    def save_again(self, folder):
        self.run("ardour7-lua", HERE / "ardour_session.lua", "same", folder)

    def edit(self, folder, change):
        path = folder / "session.ardour"
        path.write_text(change(path.read_text()))

    def export(self, folder, out):
        """Ardour 7.3 itself ends by a signal now and then when it exports, also a session without any plug-in (it frees a buffer of
        its PortExportChannel twice), or waits for its own disk thread for ever: what fails each time is a failure."""
        for attempt in range(5):
            try:
                self.run("ardour7-export", "-o", out, folder, "session")
                return samples(out)
            except (AssertionError, subprocess.TimeoutExpired) as failure:
                if attempt == 4 or not re.search("ended with -(6|11)|timed out", str(failure)):
                    raise
