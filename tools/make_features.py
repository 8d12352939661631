#!/usr/bin/env python3
"""make_features.py [--check | --check-hosts] [--build FOLDER]: runs every plug-in in the hosts of tests/hosts/matrix, and writes
what came out to docs/features.md, with what the formats offer and what the plug-ins have.

--check writes nothing and starts no host of others: it fails when the document tells otherwise of the plug-ins or the formats.
--check-hosts also compares the table of the hosts, for which all of them have to be installed in the versions it names.
"""

import argparse
import difflib
import os
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/hosts/matrix"))
from latency import report_latency
from matrix import hosts
from place import RATE, Place

DOCUMENT = ROOT / "docs/features.md"
HOSTS = "## In which hosts they run\n"
FORMATS = (Path(__file__).resolve().parent / "formats.md").read_text(encoding="utf-8")


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "".join(f"| {' | '.join(map(str, line))} |\n" for line in lines)


def describe_plugins(place, plugins):
    rows = []
    with tempfile.TemporaryDirectory() as folder:
        os.environ["XDG_DATA_HOME"] = folder  # of the library that is loaded here
        for plugin in plugins:
            latency = "none" if plugin.is_instrument else report_latency(place.lv2, plugin.uri, RATE)
            kind = "instrument" if plugin.is_instrument else "effect"
            rows.append([plugin.name, kind, plugin.parameters, latency or "none", len(place.states(plugin)) or "none"])
    return f"""## The plug-ins

Parameters are those that each format shows: the plug-in's own that are values, then "Bypass" of effects, "Release" and "One shot"
of instruments. VST3 adds "Program" where there are presets. The latency is that of the plug-in as it is made, in samples at
{RATE} Hz.

{table(["plug-in", "kind", "parameters", "latency", "presets"], rows)}"""


def describe_hosts(place, plugins, all_hosts):
    answers = [host.run(place, plugins) if host.program() else {} for host in all_hosts]
    rows = [[plugin.name, *(answer.get(plugin.name, "not tried") for answer in answers)] for plugin in plugins]
    meanings = [[host.name, host.format, host.version() if host.program() else "not installed", host.meaning] for host in all_hosts]
    return f"""{HOSTS}
Every plug-in in each host, without a display, from the bundles as they are built: "ok", "n/a" where the host has no use for
it, or what failed. qtractor's scanner looks at no LV2 and, as Debian builds it, at no VST3. jalv 1.6.6 without a window drops the
port numbers of a preset when a plug-in, as ours, says that it may be restored while it runs.

{table(["plug-in", *(host.name for host in all_hosts)], rows)}
What "ok" says, and the versions:

{table(["host", "format", "version", "what is tried"], meanings)}"""


def split(text):
    """(what needs no hosts of others, their part)"""
    start = text.find(HOSTS)
    return (text[:start], text[start:]) if start >= 0 else (text, "")


def main(arguments):
    parser = argparse.ArgumentParser(prog="make_features.py", usage="make_features.py [--check | --check-hosts] [--build FOLDER]")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--check-hosts", action="store_true")
    parser.add_argument("--build", default=ROOT / "build/release")
    options = parser.parse_args(arguments)
    there = DOCUMENT.read_text(encoding="utf-8") if DOCUMENT.exists() else ""
    with Place(options.build) as place:
        plugins = place.plugins()
        text = f"{FORMATS}\n{describe_plugins(place, plugins)}\n"
        if options.check:
            there = split(there)[0]
        else:
            text += describe_hosts(place, plugins, hosts(place.build))
    if not options.check and not options.check_hosts:
        DOCUMENT.write_text(text, encoding="utf-8")
        there = text
    difference = list(difflib.unified_diff(there.splitlines(), text.splitlines(), "docs/features.md", "what is", lineterm=""))
    print("\n".join(difference) or f"{len(plugins)} plug-ins are as docs/features.md tells")
    return 1 if difference else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
