#!/usr/bin/env python3
"""check_words.py [ROOT]: words that must not occur in the tracked files, nor in their names.

tools/allowed_words.txt grants exceptions, row by row: path, the word's short name (printed with the finding), reason.
A row that is not needed any more is a finding. The checks of C++ look at the code only, not at comments and texts.

- everywhere: references to the papers that the project was planned with, and paths of one developer's machine;
- src/, hosts/, tests/, bench/, fuzz/: wchar_t, which is 32 bits wide on one system and 16 on another;
- src/, hosts/: the C allocation functions, the global operator new, new of plain types;
- src/: owning standard containers without an allocator. All memory of the library comes from the host's table.
"""

import re
import sys

import checklib

TABLE = "tools/allowed_words.txt"

# This text of the library may say the word, also where it is broken over two lines.
QUOTED_MESSAGE = re.compile("Formatting string ends in an argument specification.".replace(" ", r'[\s/*"]+'))

EVERYWHERE = {
    "paper": re.compile(r"\bspecification\b", re.I),
    "spec-file": re.compile(r"\bspec\.md\b"),
    "part-number": re.compile(r"\bParts? [1-7]\.[0-9]+\b"),
    "rule-number": re.compile(r"\b(?:A-\d{3}|(?:FX|AF|INS|DSP)-\d+)\b|\bD\d{1,2}\)"),
    "workplace-path": re.compile(r"(?<![\w.~-])/(?:(?:work|root)/|home/[\w.-]+/)"),
}
WIDE = {"wchar_t": re.compile(r"\bwchar_t\b|(?<!\w)L[\"']")}

_PLAIN = (
    r"(?:std::)?(?:u?int(?:_fast|_least)?\d+_t|u?intptr_t|size_t|ptrdiff_t|byte|char(?:8|16|32)?(?:_t)?|float|double|int|"
    r"unsigned|signed|short|long|bool|MChar|MWord)\b"
)
ALLOCATION = {
    "malloc": re.compile(r"\b(?:malloc|calloc|realloc|aligned_alloc|posix_memalign|strn?dup)\b"),
    "free": re.compile(r"(?:(?<![\w.>:])|\bstd::|(?<!\w)::)free\s*\(|\bstd::free\b"),
    "operator-new": re.compile(r"(?<![\w>])::\s*operator\s+(?:new|delete)\b"),
    "new": re.compile(r"\bnew\s*(?:\(\s*std::nothrow\s*\))?\s*(?:const\s+)?" + _PLAIN),
}
UNCOUNTED = {
    "make_unique": re.compile(r"\bmake_unique(?:_for_overwrite)?\s*<[^;(){}]*\[\s*\]\s*>"),
    "make_shared": re.compile(r"\bmake_shared\b"),
    "string": re.compile(r"\bstd::(?:u8|u16|u32|w)?string\b|\bstd::o?stringstream\b"),
}
_CONTAINER = re.compile(
    r"\bstd::(vector|deque|list|forward_list|(?:unordered_)?(?:multi)?(?:map|set)|basic_string)\s*(?=<)"
)


def template_arguments(code, start):
    """What stands between the "<" at `start` and its ">"."""
    depth = 0
    for offset in range(start, len(code)):
        depth += {"<": 1, ">": -1}.get(code[offset], 0)
        if depth == 0:
            return code[start + 1 : offset]
    return code[start + 1 :]


def uncounted_containers(code):
    """(word, offset) of standard containers whose own template arguments name no allocator."""
    for match in _CONTAINER.finditer(code):
        arguments = template_arguments(code, match.end())
        if "Allocator" not in checklib.without_groups(arguments, "<", ">"):
            yield match.group(1), match.start()


def words_in(name, text):
    """(word, line, text found) of everything in one file that is not wanted."""
    hidden = QUOTED_MESSAGE.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)
    for word, pattern in EVERYWHERE.items():
        if pattern.search(name):
            yield word, 0, name
        for match in pattern.finditer(hidden):
            yield word, checklib.line_of(text, match.start()), match.group()
    top = name.split("/")[0]
    if top not in ("src", "hosts", "tests", "bench", "fuzz") or not name.endswith(checklib.CPP_SUFFIXES):
        return
    patterns = dict(WIDE)
    if top in ("src", "hosts"):
        patterns.update(ALLOCATION)
    if top == "src":
        patterns.update(UNCOUNTED)
    code = re.sub(r"^[ \t]*#[ \t]*include\b.*$", "", checklib.blank(text), flags=re.M)
    for word, pattern in patterns.items():
        for match in pattern.finditer(code):
            yield word, checklib.line_of(code, match.start()), match.group().strip()
    if top == "src":
        for word, offset in uncounted_containers(code):
            yield word, checklib.line_of(code, offset), f"std::{word} without an allocator"


def check(root):
    findings = []
    allowed = {(path, word): number for number, (path, word, _) in checklib.table_rows(root, TABLE, 3)}
    used = set()
    files = checklib.tracked_files(root)
    for name in files:
        if b"\0" in (root / name).read_bytes():
            continue
        for word, line, found in words_in(name, checklib.read(root, name)):
            if (name, word) in allowed:
                used.add((name, word))
            else:
                findings.append(f"{name}:{line}: {found} ({word})")
    for path, word in sorted(allowed.keys() - used):
        findings.append(f"{TABLE}:{allowed[path, word]}: {path} has no {word}, remove the row")
    return checklib.report(findings, f"{len(files)} files hold no unwanted word")


if __name__ == "__main__":
    sys.exit(check(checklib.repository_root(sys.argv[1:])))
