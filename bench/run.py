#!/usr/bin/env python3
"""Builds and runs every benchmark and prints the table of ratios beside their goals and the committed baseline.

    bench/run.py            print the table
    bench/run.py --write    also write it to docs/benchmarks.md and make it the baseline (bench/baseline.tsv)
    bench/run.py --only X   only benchmarks whose name matches the regular expression X

Each figure is the best of several repetitions. Times are compared as ratios: to the calibration loop of the same run,
or to a benchmark of the same run that does the same job in another way (bench/goals.tsv).
"""
import argparse
import json
import os
import pathlib
import platform
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "bench"
BASELINE = ROOT / "bench" / "baseline.tsv"
REPETITIONS = 9
NOTABLE = 0.05  # a ratio that is worse than the baseline by more than this is marked


def read_rows(path):
    return [line.rstrip("\n").split("\t") for line in path.open() if line.strip() and not line.startswith("#")]


def build():
    for command in (["cmake", "--preset", "bench"], ["cmake", "--build", "--preset", "bench"]):
        done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
        if done.returncode != 0:
            sys.exit(done.stdout + done.stderr)


def run(only):
    """Best time per benchmark in ns: of an item where items are counted, else of an iteration; and the calibration."""
    times, calibration = {}, float("inf")
    for program in sorted((BUILD / "bench").glob("*_bench")):
        done = subprocess.run([program, "--benchmark_format=json", f"--benchmark_repetitions={REPETITIONS}",
                               f"--benchmark_filter={only}", "--benchmark_min_time=0.05",
                               # A loaded spell of the machine falls on no benchmark alone.
                               "--benchmark_enable_random_interleaving=true"],
                              capture_output=True, text=True, check=True)
        if not done.stdout.strip():
            continue  # no benchmark of this program matches
        for entry in json.loads(done.stdout)["benchmarks"]:
            if entry.get("error_occurred"):
                sys.exit(f"{entry['name']}: {entry['error_message']}")
            if entry["run_type"] != "iteration":
                continue
            scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]
            time = 1e9 / entry["items_per_second"] if "items_per_second" in entry else entry["real_time"] * scale
            name = re.sub(r"/(iterations|repeats|real_time|process_time)\b.*", "", entry["run_name"])
            times[name] = min(time, times.get(name, float("inf")))
            calibration = min(calibration, entry.get("calibration", calibration))  # not where a peer is the measure
    return times, calibration


def table(times, calibration, baseline):
    rows = [["benchmark", "ours", "against", "ratio", "goal", "peer", "baseline", "", "note"]]
    ratios = {}
    for name, against, goal, peer, note in read_rows(ROOT / "bench" / "goals.tsv"):
        if name not in times or (against != "calibration" and against not in times):
            continue
        ratio = times[name] / (calibration if against == "calibration" else times[against])
        ratios[name] = ratio
        mark = "missed" if goal and ratio > float(goal) else ""
        if name in baseline and ratio > baseline[name] * (1 + NOTABLE):
            mark += " slower"
        time = f"{times[name]:.2f} ns" if times[name] < 1e6 else f"{times[name] / 1e6:.0f} ms"
        rows.append([name, time, against, f"{ratio:.2f}", goal, peer,
                     f"{baseline[name]:.2f}" if name in baseline else "", mark.strip(), note])
    return rows, ratios


def layout(rows, start, separator, end):
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    lines = [start + separator.join(cell.ljust(width) for cell, width in zip(row, widths)) + end for row in rows]
    return [line.rstrip() for line in lines], widths


def machine():
    with open("/proc/cpuinfo") as info:
        model = re.search(r"model name\s*:\s*(.*)", info.read())
    compiler = subprocess.run(["g++", "-dumpfullversion"], capture_output=True, text=True).stdout.strip()
    return f"{model[1] if model else platform.machine()}, {os.cpu_count()} cores, Linux, g++ {compiler}, Release"


def write(rows, ratios, calibration):
    lines, widths = layout(rows, "| ", " | ", " |")
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    (ROOT / "docs" / "benchmarks.md").write_text(
        "# Benchmarks\n\nWritten by `bench/run.py --write`; `bench/run.py` repeats it. Each figure is the best of "
        f"{REPETITIONS} repetitions.\n\"ours\" is the time per stereo frame of an effect and per call of all else. "
        "\"ratio\" divides it by the calibration\nloop (`bench/calib.h`, a scalar double biquad, per sample), or by "
        "the benchmark that it is measured against, in the\nsame run. \"goal\" is the ratio to reach, \"peer\" that of "
        "the fastest comparable well-known plug-in, measured in the\nsame way.\n\n"
        f"Machine: {machine()}. Calibration loop: {calibration:.2f} ns per sample.\n\n" + "\n".join(lines) + "\n")
    BASELINE.write_text("# Ratios of the last committed run: benchmark, ratio. Written by bench/run.py --write.\n" +
                        "".join(f"{name}\t{ratio:.4f}\n" for name, ratio in ratios.items()))


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--write", action="store_true")
    arguments.add_argument("--only", default=".")
    options = arguments.parse_args()
    subprocess.run([ROOT / "tools" / "install-deps", "bench"], check=True)
    build()
    times, calibration = run(options.only)
    baseline = {row[0]: float(row[1]) for row in read_rows(BASELINE)} if BASELINE.exists() else {}
    rows, ratios = table(times, calibration, baseline)
    print("\n".join(layout(rows, "", "  ", "")[0]))
    print(f"calibration loop: {calibration:.3f} ns per sample")
    if options.write:
        write(rows, ratios, calibration)


if __name__ == "__main__":
    main()
