"""The host jalv on a JACK server of its own, which has no sound card."""

import os
import re
import shutil
import subprocess
import time
from contextlib import contextmanager
from pathlib import Path

from place import OK, Failure, Host

# What jalv says when all is well.
EXPECTED = re.compile(r"UI: +None|Comm buffers: \d+ bytes|Update rate: +\d+\.\d Hz|Exiting\.\.\.|")


@contextmanager
def jack_server(place):
    """Gives the server's name."""
    name = f"sonvelle{os.getpid()}"
    command = ["jackd", "-n", name, "-r", "-d", "dummy", "-r", "48000", "-p", "256"]
    with open(place.folder / "jackd.log", "w", encoding="utf-8") as log:
        process = subprocess.Popen(command, env=place.environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
    try:
        end = time.monotonic() + 10
        while not list(Path("/dev/shm").glob(f"jack_{name}_*_0")):
            if process.poll() is not None or time.monotonic() > end:
                raise Failure("jackd: " + (place.folder / "jackd.log").read_text().strip().splitlines()[-1])
            time.sleep(0.02)
        yield name
    finally:
        process.terminate()
        process.wait(10)


class Jalv(Host):
    name, format, package = "jalv", "LV2", "jalv"
    meaning = ("the plug-in runs for half a second on a JACK server, lists its presets, is given each, takes a value, and ends "
               "without a complaint")

    def program(self):
        return shutil.which("jackd") and shutil.which("jalv")

    def run(self, place, plugins):
        try:
            with jack_server(place) as self.server:
                return super().run(place, plugins)
        except Failure as failure:
            return {plugin.name: f"failed: {failure}" for plugin in plugins}

    def check(self, place, plugin):
        presets = [path.stem for path in place.states(plugin)]
        symbol, value = ("hostOneShot", "1.000000") if plugin.is_instrument else ("enabled", "0.000000")
        words = ["presets"]
        for preset in presets:
            words.append(f"preset {plugin.uri}/presets/{re.sub('[^A-Za-z0-9]', '_', preset)}")
        words += [f"{symbol} = {value}", "controls"]
        out = self.talk(place, plugin, words)
        listed = re.findall(rf"{plugin.uri}/presets/\S+ \((.*)\)$", out, re.M)
        if sorted(listed) != presets:
            raise Failure(f"its presets are {listed}")
        controls = re.findall(r"^(?:> )?(\w+) = ([-\d.]+)$", out, re.M)
        if dict(controls).get(symbol) != value:  # of each the last
            raise Failure(f"{symbol} did not become {value}")
        return OK

    def talk(self, place, plugin, words):
        """What jalv prints, with these words typed one after the other in half a second."""
        environment = place.environment | {"JACK_DEFAULT_SERVER": self.server, "JACK_NO_START_SERVER": "1"}
        process = subprocess.Popen([self.program(), "-x", plugin.uri], env=environment, cwd=place.folder, text=True,
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        with process:
            try:
                for word in words:
                    time.sleep(0.5 / len(words))
                    process.stdin.write(word + "\n")
                    process.stdin.flush()
                time.sleep(0.1)
            except BrokenPipeError:
                pass  # it has ended, and says why
            try:
                out, err = process.communicate(timeout=20)
            except subprocess.TimeoutExpired:
                process.kill()
                said = " / ".join("".join(process.communicate()).splitlines()[-5:])
                raise Failure(f"it does not end; the last that it said is: {said}") from None
        wrong = [line for line in err.splitlines() if not EXPECTED.fullmatch(line)]
        if process.returncode != 0 or wrong:
            raise Failure(f"exit code {process.returncode}: {' / '.join(wrong)}")
        return out
