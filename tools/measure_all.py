#!/usr/bin/env python3
"""measure_all.py [--check] [--command SONVELLE] [--recordings FOLDER]: measures effects and instruments, and writes all of
docs/measurements.md; see measure_effects.py and measure_instruments.py, which do one part each and take the same options.
"""

import sys

import measure_effects
import measure_instruments
from measure.document import read_arguments


def main(arguments):
    if read_arguments(arguments, __doc__).names:
        sys.exit("names of plug-ins go to measure_effects.py and measure_instruments.py")
    return max(measure_effects.main(arguments), measure_instruments.main(arguments))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
