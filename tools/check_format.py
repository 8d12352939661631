#!/usr/bin/env python3
"""check_format.py [ROOT]: clang-format would change nothing in our C and C++ files. Generated tables are left alone.

Another version of clang-format breaks lines elsewhere, so version 14 is taken where it is installed by that name.
"""

import shutil
import subprocess
import sys

import checklib

# Files that are taken over as they are.
UNCHANGED = {"bench/calib.h"}  # so that figures compare with those of other programs that use the same loop


def check(root):
    program = shutil.which("clang-format-14") or shutil.which("clang-format")
    if not program:
        sys.exit("clang-format is not installed")
    names = checklib.cpp_files(root, suffixes=(".h", ".hpp", ".cpp", ".c", ".inc"))
    names = [name for name in names if name not in UNCHANGED and not checklib.is_generated(checklib.read(root, name))]
    findings = []
    if names:
        command = [program, "--dry-run", "-Werror", "--style=file", *names]
        result = subprocess.run(command, cwd=root, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if result.returncode:
            print(result.stdout)
            bad = sorted({line.split(":", 1)[0] for line in result.stdout.splitlines() if "[-Wclang-format" in line})
            findings = [f"{name}: clang-format -i would change it" for name in bad] or ["clang-format failed"]
    return checklib.report(findings, f"{len(names)} files are formatted")


if __name__ == "__main__":
    sys.exit(check(checklib.repository_root(sys.argv[1:])))
