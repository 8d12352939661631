#!/usr/bin/env python3
"""check_headers.py [ROOT]: every header below src/ and hosts/ compiles alone, and a second time behind itself."""

import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

import checklib

# The C headers of CLAP and VST3 lie where hosts/CMakeLists.txt finds them.
FORMAT_HEADERS = "/usr/share/dpf/distrho/src"
COMMAND = (
    f"g++ -std=c++20 -fsyntax-only -Wall -Wextra -Werror -D_FILE_OFFSET_BITS=64 -Isrc -I. -isystem {FORMAT_HEADERS} -x c++ -"
COMMAND = (
    "g++ -std=c++20 -fsyntax-only -Wall -Wextra -Werror -D_FILE_OFFSET_BITS=64 -Isrc -I. "
    "-isystem /usr/share/dpf/distrho/src -x c++ -"  # the C headers of the formats
).split()
JOBS = 2


def compile_alone(root, name):
    """What the compiler says about a source that includes only this header, twice."""
    source = f'#include "{name}"\n' * 2
    result = subprocess.run(COMMAND, cwd=root, input=source, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    said = result.stdout or f"g++ ended with {result.returncode}"
    return f"{name} does not compile alone:\n{said}" if result.returncode else ""


def check(root):
    headers = checklib.cpp_files(root, "src", "hosts", suffixes=(".h", ".hpp"))
    with ThreadPoolExecutor(JOBS) as pool:
        findings = [text for text in pool.map(lambda name: compile_alone(root, name), headers) if text]
    return checklib.report(findings, f"{len(headers)} headers compile alone")


if __name__ == "__main__":
    sys.exit(check(checklib.repository_root(sys.argv[1:])))
