"""Ardour without a display, in a home of its own with the plug-ins installed for the user."""

import array
import os
import re
import struct
import subprocess
from pathlib import Path

HERE = Path(__file__).parent
SOURCES = Path(os.environ["SONVELLE_SOURCES"])
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
        # It finds VST3 plug-ins by what its scanner has written, if the file is older than that by a second and more.
        for file in (home / ".vst3").rglob("*.so"):
            os.utime(file, (1e9, 1e9))
        scanner = "/usr/lib/ardour7/ardour-vst3-scanner"
        self.vst3 = self.run(scanner, "-v", home / ".vst3/Sonvelle.vst3", LD_LIBRARY_PATH="/usr/lib/ardour7")

    def run(self, *command, **environment):
        """What the command says; it has to succeed."""
        done = subprocess.run(list(map(str, command)), env=self.environment | environment, capture_output=True, text=True,
                              timeout=300)
        said = done.stdout + done.stderr
        assert done.returncode == 0, f"{command[0]} ended with {done.returncode}: {said}"
        return said

    def make(self, folder, *ids):
        """A session of two seconds with these LV2 plug-ins."""
        said = self.run("ardour7-lua", HERE / "ardour_session.lua", "make", folder, "LV2", *ids)
        assert said.count("automated ") == len(ids), said
        # A session that nothing was recorded in has no length.
        place = f'<Location id="99999" name="session" start="a0" end="a{2 * SECOND}" flags="IsSessionRange" locked="0"/>'
        self.edit(folder, lambda text: text.replace("<Locations/>", f"<Locations>{place}</Locations>"))

    def save_again(self, folder):
        self.run("ardour7-lua", HERE / "ardour_session.lua", "same", folder)

    def edit(self, folder, change):
        path = folder / "session.ardour"
        path.write_text(change(path.read_text()))

    def turn_into_vst3(self, folder, class_ids):
        """The plug-ins of the session become those of the other format, as they are when they are new. The controls of that
        are counted from 0, and go from 0 to 1."""
        def change(text):
            for uri, class_id in class_ids.items():
                start = text.index(f'unique-id="{uri}"')
                start = text.rindex("<Processor", 0, start)
                end = text.index("</Processor>", start)
                processor = text[start:end].replace(uri, class_id).replace('type="lv2"', 'type="vst3"')
                processor = re.sub(r'parameter-\d+', "parameter-0", processor)
                processor = re.sub(r"<events>\s*(\S+) \S+\s+(\S+) \S+\s*</events>", r"<events>\1 0\n\2 1\n</events>", processor)
                processor = re.sub(r"<lv2.*?</lv2>|<lv2[^>]*/>", "", processor, flags=re.S)
                text = text[:start] + processor + text[end:]
            return text
        self.edit(folder, change)

    def export(self, folder, out):
        """Ardour 7.3 itself ends by a signal now and then when it exports, also a session without any plug-in: what fails each
        time is a failure."""
        for attempt in range(5):
            try:
                self.run("ardour7-export", "-o", out, folder, "session")
                return samples(out)
            except AssertionError as failure:
                if attempt == 4 or not re.search("ended with -(6|11)", str(failure)):
                    raise
