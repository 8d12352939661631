"""A session of Ardour without a display: plug-ins are inserted and automated, the session is saved, opened, exported."""

import array
import os
import re
import shutil
import struct
import subprocess
import unittest
from pathlib import Path

HERE = Path(__file__).parent
SECOND = 282240000  # in Ardour's units of time


def samples(path):
    """Of an exported WAV file: the bytes of its data."""
    data = path.read_bytes()
    offset = 12
    while data[offset : offset + 4] != b"data":
        offset += 8 + struct.unpack_from("<I", data, offset + 4)[0]
    return data[offset + 8 :]


class Ardour:
    def __init__(self, home):
        self.home = home
        self.environment = os.environ | {"HOME": str(home), "XDG_CONFIG_HOME": str(home / "config"), "XDG_CACHE_HOME": str(home / "cache"),
                                         "XDG_DATA_HOME": str(home / ".local/share")}

    def run(self, *command):
        done = subprocess.run(list(map(str, command)), env=self.environment, capture_output=True, text=True, timeout=300)
        return done.returncode, done.stdout + done.stderr

    def lua(self, *arguments):
        return self.run("ardour7-lua", HERE / "ardour_session.lua", *arguments)

    def give_length(self, folder):
        """A session that nothing was recorded in has no length: two seconds."""
        path = folder / "session.ardour"
        text = path.read_text()
        place = f'<Location id="99999" name="session" start="a0" end="a{2 * SECOND}" flags="IsSessionRange" locked="0"/>'
        path.write_text(re.sub(r"<Locations/>", f"<Locations>{place}</Locations>", text))

    def export(self, folder, out):
        code, text = self.run("ardour7-export", "-o", out, folder, "session")
        assert code == 0, text
        return samples(out)
