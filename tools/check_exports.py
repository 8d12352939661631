#!/usr/bin/env python3
"""check_exports.py LIBRARY TABLE: the shared library exports exactly the entry points that the table's rows give.

A row M_PLUGIN(Echolan, AudioEffect, "...") gives EcholanAudioEffectPluginInterface, M_EXPORT(Name) gives Name.
"""

import re
import subprocess
import sys
from pathlib import Path

import checklib

ROW = re.compile(r"\b(M_[A-Z_]+)\s*\(\s*(\w+)\s*(?:,\s*(\w+)\s*,)?")


def expected_names(table):
    code = checklib.blank(Path(table).read_text(encoding="utf-8"))
    code = re.sub(r"^[ \t]*#(?:\\\n|[^\n])*", "", code, flags=re.M)
    names = set()
    for macro, name, kind in ROW.findall(code):
        if macro == "M_PLUGIN" and kind:
            names.add(f"{name}{kind}PluginInterface")
        elif macro == "M_EXPORT" and not kind:
            names.add(name)
        else:
            sys.exit(f"{table}: {macro}({name}...) is no known row")
    if not names:
        sys.exit(f"{table}: no rows")
    return names


def exported_names(library):
    """Every defined dynamic symbol; version names (type A) are no symbols."""
    result = subprocess.run(["nm", "-D", "--defined-only", library], text=True, capture_output=True)
    if result.returncode:
        sys.exit(result.stderr.strip())
    rows = (line.split() for line in result.stdout.splitlines())
    return {row[2].split("@")[0] for row in rows if len(row) == 3 and row[1] != "A"}


def main(arguments):
    if len(arguments) != 2:
        sys.exit("usage: check_exports.py LIBRARY TABLE")
    library, table = arguments
    expected, exported = expected_names(table), exported_names(library)
    findings = [f"{library} exports {name}, which no row of {table} gives" for name in sorted(exported - expected)]
    findings += [f"{library} does not export {name}" for name in sorted(expected - exported)]
    return checklib.report(findings, f"{len(expected)} names are exported")


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
