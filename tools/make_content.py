#!/usr/bin/env python3
"""make_content.py --command SONVELLE OUT: makes the content that Sonvelle brings along, all of it from synthesis:

  OUT/Samples                                              WAV files for samplers
  OUT/MultiSamples/Sonvelle Drum.qxMultiSample             a drum, three loudnesses of three takes, two tracks
  OUT/SubSampleLibraries/Natural/Natural Bass.qxSubSampleLib   eight bass tones

The libraries are made by the command SONVELLE. The same bytes every time; what else is in OUT stays.
"""

import argparse
import os
import subprocess
import sys
import tempfile
from pathlib import Path

from content import bass, drum, sounds, synthesis


def write_samples(out):
    for name, make in sounds.SOUNDS.items():
        synthesis.write(out / f"{name}.wav", synthesis.scaled(make()))


def write_drum(folder):
    for layer, take, tracks in drum.recordings():
        for track, channels in tracks.items():
            synthesis.write(folder / f"{layer} {take} {track}.wav", channels)


def write_bass(folder):
    for name, channels in bass.tones().items():
        synthesis.write(folder / f"{name}.wav", channels)


def main(arguments):
    parser = argparse.ArgumentParser(prog="make_content.py", usage="make_content.py --command SONVELLE OUT")
    parser.add_argument("--command", required=True, type=Path)
    parser.add_argument("out", type=Path)
    options = parser.parse_args(arguments)
    write_samples(options.out / "Samples")


if __name__ == "__main__":
    main(sys.argv[1:])
