#!/usr/bin/env python3
"""make_states.py [--check] [--command SONVELLE]: writes the states of tools/states as resources/states/INSTRUMENT/TITLE.xml, in
the form that `sonvelle state` prints, on the content that lies beside the command.

--check writes nothing: it fails when a file says otherwise, is missing, or is none of these states.
"""

import argparse
import os
import subprocess
import sys
import tempfile
from pathlib import Path
from xml.etree import ElementTree

from states import STATES

ROOT = Path(__file__).resolve().parent.parent
FILES = ROOT / "resources" / "states"


def texts(command):
    """{path: text of the file}"""
    found, command = {}, Path(command).resolve()
    with tempfile.TemporaryDirectory() as folder:
        environment = os.environ | {"XDG_DATA_HOME": folder}
        subprocess.run([command, "register"], check=True, stdout=subprocess.DEVNULL, env=environment)
        file = Path(folder) / "state.xml"
        for instrument, states in STATES.items():
            for title, root in states.items():
                file.write_bytes(ElementTree.tostring(root, encoding="utf-8", xml_declaration=True))
                done = subprocess.run([command, "state", instrument, "--state", file], check=True, capture_output=True, env=environment)
                found[FILES / instrument / f"{title}.xml"] = done.stdout
    return found


def main(arguments):
    parser = argparse.ArgumentParser(prog="make_states.py", usage="make_states.py [--check] [--command SONVELLE]")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--command", default=ROOT / "build" / "release" / "sonvelle")
    options = parser.parse_args(arguments)
    wanted = texts(options.command)
    there = {path: path.read_bytes() for path in FILES.glob("*/*.xml")}
    wrong = sorted(path for path in wanted.keys() | there.keys() if wanted.get(path) != there.get(path))
    if not options.check:
        for path in wrong:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(wanted[path]) if path in wanted else path.unlink()
        wrong = []
    for path in wrong:
        print(f"{path.relative_to(ROOT)}: not what tools/states says", file=sys.stderr)
    print(f"{len(wanted)} states, {len(wrong)} not right")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
