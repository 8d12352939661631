#!/usr/bin/env python3
"""measure_instruments.py [--check] [--command SONVELLE] [INSTRUMENT...]: measures what the instruments do with notes and with a
whole piece, against what their formulas promise, and writes their part of docs/measurements.md. All sound goes through the
command `sonvelle render`.

With names of instruments it only prints their rows. --check writes nothing: it fails when docs/measurements.md tells of other
instruments or other measurements than there are, or of a result that does not hold.

Exit code 1: something does not hold (printed, with the difference), or is missing.
"""

import sys

from measure.document import INSTRUMENTS_PART, read_arguments
from measure.instruments import MEASUREMENTS, InstrumentLab


def main(arguments):
    options = read_arguments(arguments, __doc__)
    with InstrumentLab(options.command) as lab:
        return INSTRUMENTS_PART.run(lab, options, lab.instruments(), MEASUREMENTS)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
