"""Sessions of Ardour, without a display."""

import shutil
import sys
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1] / "formats"))
from ardour_case import Ardour
from place import OK, Failure, Host

FORMATS = "LV2", "VST3"


class ArdourSession(Host):
    package = "ardour"
    meaning = ("a session is made, in which a sine goes through the effect and its first parameter is automated, or the instrument "
               "plays notes with its first preset; it is saved, opened, saved again and exported, and is not silent")

    def __init__(self, format):
        self.name, self.format = f"Ardour, {format}", format

    def program(self):
        return shutil.which("ardour7-lua")

    def run(self, place, plugins):
        home = place.folder / f"Ardour {self.format}"
        home.mkdir()
        tree = home / "tree"
        tree.mkdir()
        for kind in ("lv2", "clap", "vst3"):
            (tree / kind).symlink_to(getattr(place, kind).parent)
        (tree / "content").symlink_to(place.build / "content")
        try:
            self.ardour = Ardour(home, tree)
        except AssertionError as failure:
            return {plugin.name: f"failed: {failure}" for plugin in plugins}
        return super().run(place, plugins)

    def check(self, place, plugin):
        session = self.ardour.home / plugin.name
        try:
            if plugin.is_instrument:
                self.ardour.play(session, plugin.name, place.states(plugin)[0].stem, self.format)
            else:
                self.ardour.make(session, plugin.name, format=self.format)
            self.ardour.save_again(session)
            sound = self.ardour.export(session, session.with_suffix(".wav"))
        except KeyError:
            raise Failure("it is not found") from None
        except AssertionError as failure:
            raise Failure(" ".join(str(failure).split())) from failure
        if max(sound, default=0) < 100:
            raise Failure("it is silent")
        return OK
