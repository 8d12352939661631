#!/usr/bin/env python3
"""make_effect_pictures.py [--check] [--command SONVELLE]: draws docs/plugins/NAME.svg for each effect, from what it makes of
test signals that go through the command `sonvelle render`.

--check writes nothing: it fails when a picture is missing, too large, not shown by the effect's page, or has a number that is
more than 0.2 pixels away from what the library gives now (another processor may round elsewhere).
"""

import argparse
import sys
from pathlib import Path

import svg_plot
from measure.lab import Lab
from measure.pictures import PICTURES

ROOT = Path(__file__).resolve().parent.parent
FOLDER = ROOT / "docs" / "plugins"
MOST_BYTES = 40000


def findings(name, text, folder):
    """What is wrong with a picture that is there, and with its page."""
    picture, page = folder / f"{name}.svg", folder / f"{name}.md"
    if len(text.encode()) > MOST_BYTES:
        yield f"{picture.name}: {len(text.encode())} bytes, more than {MOST_BYTES}"
    if not page.is_file() or f"]({picture.name})" not in page.read_text(encoding="utf-8"):
        yield f"{page.name} does not show {picture.name}"
    if not picture.is_file():
        yield f"{picture.name} is missing: run tools/make_effect_pictures.py"
    elif svg_plot.differs(picture.read_text(encoding="utf-8"), text):
        yield f"{picture.name} is not what the library gives: run tools/make_effect_pictures.py"


def read_arguments(arguments):
    parser = argparse.ArgumentParser(prog="make_effect_pictures.py", usage=__doc__.split("\n")[0].split(":")[0])
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--command", default=ROOT / "build" / "release" / "sonvelle")
    return parser.parse_args(arguments)


def main(arguments):
    options, wrong = read_arguments(arguments), []
    with Lab(options.command) as lab:
        there = lab.effects()
        texts = {effect.lower(): PICTURES[effect](lab) for effect in there if effect in PICTURES}
    for effect in sorted(PICTURES.keys() - set(there)):
        print(f"warning: {effect} is not in the library", file=sys.stderr)
    wrong += [f"{effect}: nothing is known to draw of it" for effect in there if effect not in PICTURES]
    for name, text in texts.items():
        if not options.check:
            (FOLDER / f"{name}.svg").write_text(text, encoding="utf-8")
        wrong += findings(name, text, FOLDER)
    for text in wrong:
        print(text, file=sys.stderr)
    print(f"{len(texts)} pictures, {len(wrong)} findings")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
