#!/usr/bin/env python3
"""measure_effects.py [--check] [--command SONVELLE] [--recordings FOLDER] [EFFECT...]: measures what the effects do, against
what their formulas promise, and writes their part of docs/measurements.md. All sound goes through the command `sonvelle render`.

With names of effects it only prints their rows. --check writes nothing: it fails when docs/measurements.md tells of other
effects or other measurements than there are, or of a result that does not hold.

Exit code 1: something does not hold (printed, with the difference), or is missing.
"""

import sys

from measure import MEASUREMENTS
from measure.document import EFFECTS_PART, read_arguments
from measure.lab import Lab


def main(arguments):
    options = read_arguments(arguments, __doc__)
    with Lab(options.command, options.recordings) as lab:
        return EFFECTS_PART.run(lab, options, lab.effects(), MEASUREMENTS)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
