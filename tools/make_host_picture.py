#!/usr/bin/env python3
"""make_host_picture.py [--tree TREE] [--out FILE.png]: takes docs/pictures/ardour.png: Ardour with a voice that goes through
plug-ins of the library, one of them in the host's generic editor.

The plug-ins of TREE (build/release) are installed into a temporary home, and Ardour runs there, on a display in memory and
without sound hardware. Needed are the packages ardour, xvfb, openbox, xdotool, imagemagick and alsa-utils (for the voice).
"""

import argparse
import contextlib
import os
import shutil
import subprocess
import sys
import tempfile
import time
import wave
import xml.etree.ElementTree as xml
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
URI = "https://sonvelle.example/plugins/"
PLUGINS = ("Squeezel", "Tonebench", "Echolan")
SHOWN = "Squeezel"
WIDTH, HEIGHT = 1200, 840
EDITOR_AT = 500, 440
RATE = 48000
SAMPLES_PER_PIXEL = 700
TIME_UNITS = 282240000 // RATE  # of Ardour's file format, per frame
SECONDS_TO_START = 60
SECONDS_TO_DRAW = 5
COMMANDS = ("ardour", "ardour7-lua", "Xvfb", "openbox", "xdotool", "import")
# The first start and the choice of a sound card have been answered.
CONFIG = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour>
  <Config><Option name="hide-dummy-backend" value="0"/><Option name="try-autostart-engine" value="1"/></Config>
  <Extra><AudioMIDISetup><EngineStates>
    <State backend="None (Dummy)" driver="Normal Speed" device="Silence" input-device="" output-device="" sample-rate="48000"
           buffer-size="1024" n-periods="0" input-latency="0" output-latency="0" lm-input="" lm-output="" active="1"
           use-buffered-io="0" midi-option="1 in, 1 out, Silence" lru="1"><MIDIDevices/></State>
  </EngineStates></AudioMIDISetup></Extra>
</Ardour>
"""
LOOK = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour><UI>
  <Option name="show-mini-timeline" value="0"/>
  <Option name="show-toolbar-cuectrl" value="0"/>
  <Option name="show-toolbar-recpunch" value="0"/>
</UI></Ardour>
"""
LAYOUT = f"""<?xml version="1.0" encoding="UTF-8"?>
<instant>
  <Main x="0" y="0" w="{WIDTH - 2}" h="{HEIGHT}" current-tab="editor"/>
  <Editor id="52" zoom="{SAMPLES_PER_PIXEL}" show-editor-mixer="1" show-editor-list="0" mixer-width="Wide"/>
</instant>
"""


class Home:
    """A home folder with the plug-ins and Ardour's settings, and a display in memory."""

    def __init__(self, folder):
        self.folder = folder
        self.environment = {key: value for key, value in os.environ.items() if not key.startswith("XDG_")} | {"HOME": str(folder)}
        settings = folder / ".config" / "ardour7"
        settings.mkdir(parents=True)
        (settings / ".a7").touch()
        (settings / "config").write_text(CONFIG)
        (settings / "ui_config").write_text(LOOK)
        (settings / "instant.xml").write_text(LAYOUT)

    def run(self, *command):
        done = subprocess.run(list(map(str, command)), env=self.environment, capture_output=True, text=True, timeout=120)
        if done.returncode != 0:
            raise RuntimeError(f"{command[0]}: {done.stdout}{done.stderr}")
        return done.stdout

    @contextlib.contextmanager
    def running(self, *command, **options):
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "env": self.environment} | options
        process = subprocess.Popen(list(map(str, command)), **quiet)
        try:
            yield process
        finally:
            process.terminate()
            try:
                process.wait(20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    @contextlib.contextmanager
    def display(self):
        reader, writer = os.pipe()
        screen = f"{WIDTH}x{HEIGHT}x24"
        with self.running("Xvfb", "-displayfd", writer, "-screen", "0", screen, pass_fds=[writer]), os.fdopen(reader) as number:
            os.close(writer)
            self.environment["DISPLAY"] = ":" + number.readline().strip()
            with self.running("openbox"):
                yield


def write_voice(path):
    """The recordings of alsa-utils one after the other; returns the count of frames."""
    recordings = sorted(Path("/usr/share/sounds/alsa").glob("*_*.wav"))
    if not recordings:
        raise RuntimeError("no voice recording in /usr/share/sounds/alsa (package alsa-utils)")
    with wave.open(str(path), "wb") as out:
        for recording in recordings:
            with wave.open(str(recording)) as source:
                if out.tell() == 0:
                    out.setparams(source.getparams())
                out.writeframes(source.readframes(source.getnframes()))
        return out.tell()


def add_voice(session, folder):
    frames = write_voice(folder / "interchange" / "session" / "audiofiles" / "Voice.wav")
    common = {"name": "Voice", "type": "audio"}
    source = common | {"name": "Voice.wav", "flags": "", "id": "90001", "channel": "0", "origin": "", "gain": "1", "take-id": ""}
    xml.SubElement(session.find("Sources"), "Source", source)
    region = common | {"id": "90002", "start": "a0", "length": f"a{frames * TIME_UNITS}@a0", "sync-position": "a0", "opaque": "1",
                       "channels": "1", "source-0": "90001", "master-source-0": "90001", "layering-index": "0", "stretch": "1",
                       "shift": "1", "scale-amplitude": "1", "default-fade-in": "1", "default-fade-out": "1", "muted": "0",
                       "locked": "0", "whole-file": "0", "automatic": "0", "hidden": "0", "position-locked": "0"}
    xml.SubElement(session.find("Playlists/Playlist"), "Region", region)


def show_editor(session, track):
    """The window of the plug-in was open when the session was saved."""
    plugin = track.find(f"Processor[@name='{SHOWN}']").get("id")
    extra = session.find("Extra")
    extra = xml.SubElement(session, "Extra") if extra is None else extra
    interface = extra.find("UI")
    interface = xml.SubElement(extra, "UI") if interface is None else interface
    place = {"x-off": str(EDITOR_AT[0]), "y-off": str(EDITOR_AT[1]), "x-size": "-1", "y-size": "-1"}
    xml.SubElement(interface, "Window", {"name": f"P-{track.get('id')}-{plugin}", "visible": "1", "custom-ui": "0"} | place)


def select(session, track):
    """The mixer strip beside the timeline is that of the track."""
    selection = session.find("Selection")
    selection.clear()
    xml.SubElement(selection, "StripableAutomationControl", {"stripable": track.get("id"), "control": "0", "order": "0"})


def make_session(home, folder):
    home.run("ardour7-lua", ROOT / "tools" / "host_picture.lua", folder, *(URI + name for name in PLUGINS))
    path = folder / "session.ardour"
    tree = xml.parse(path)
    session = tree.getroot()
    track = session.find("Routes/Route[@name='Voice']")
    add_voice(session, folder)
    show_editor(session, track)
    select(session, track)
    tree.write(path, encoding="UTF-8", xml_declaration=True)
    (folder / "instant.xml").write_text(LAYOUT)


def wait_for_editor(home):
    search = ["xdotool", "search", "--onlyvisible", "--name", f"Voice: {SHOWN}"]
    until = time.monotonic() + SECONDS_TO_START
    while subprocess.run(search, env=home.environment, capture_output=True).returncode != 0:
        if time.monotonic() > until:
            screen = Path(tempfile.gettempdir()) / "make_host_picture.png"
            home.run("import", "-window", "root", screen)
            raise RuntimeError(f"the window of {SHOWN} does not appear; the screen is in {screen}")
        time.sleep(1)


def take_picture(home, folder, out):
    with home.display(), home.running("ardour", "--no-splash", "--no-announcements", folder):
        home.run("xdotool", "mousemove", WIDTH - 1, HEIGHT - 1)
        wait_for_editor(home)
        time.sleep(SECONDS_TO_DRAW)
        home.run("import", "-window", "root", "-strip", "+dither", "-colors", "256", f"png8:{out}")


def draw(tree, out):
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        home = Home(Path(folder))
        home.run(ROOT / "tools" / "install-user", tree)
        make_session(home, home.folder / "session")
        out.parent.mkdir(parents=True, exist_ok=True)
        take_picture(home, home.folder / "session", out)


def main(arguments):
    parser = argparse.ArgumentParser(prog="make_host_picture.py", usage=__doc__.split("\n")[0].split(":")[0])
    parser.add_argument("--tree", type=Path, default=ROOT / "build" / "release")
    parser.add_argument("--out", type=Path, default=ROOT / "docs" / "pictures" / "ardour.png")
    options = parser.parse_args(arguments)
    missing = [command for command in COMMANDS if not shutil.which(command)]
    if missing:
        print(f"make_host_picture: not installed: {' '.join(missing)}", file=sys.stderr)
        return 1
    try:
        draw(options.tree.resolve(), options.out)
    except (RuntimeError, OSError, subprocess.SubprocessError) as error:
        print(f"make_host_picture: {error}", file=sys.stderr)
        return 1
    print(f"{options.out}: {options.out.stat().st_size} bytes")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
