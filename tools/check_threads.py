#!/usr/bin/env python3
"""check_threads.py [ROOT]: every class of src/ and hosts/ that is derived from MThread has a destructor that calls
StopAndJoin(), so that no thread runs on while the members that it uses are destroyed.

A class counts that has MThread, or a class that counts, among its bases; each needs a destructor of its own, in the class
or out of it in any file. Names are compared without namespaces; a class in another class is known by both names.
"""

import re
import sys

import checklib

ROOT_CLASS = "MThread"
JOIN = re.compile(r"\bStopAndJoin\s*\(\s*\)")

_PREFIX = r"(?:(?:\[\[[^\]]*\]\]|\w+(?:\([^()]*\))?)\s+)*?"
_CLASS = re.compile(r"(?<!enum )\b(?:class|struct)\s+" + _PREFIX + r"([\w:]+)\s*(?:\bfinal\s*)?(?::(?!:)([^{};]*))?\{")
_DESTRUCTOR = r"~\s*{0}\s*\(\s*(?:void)?\s*\)[^;{{}}=]*\{{"


class Class:
    def __init__(self, file, line, names, bases, body):
        self.file, self.line, self.names, self.bases, self.body = file, line, names, bases, body

    def destructors(self, texts):
        """The bodies of its destructor, in the class and in all files."""
        name = self.names[-1]
        qualified = "".join(re.escape(n) + r"\s*(?:<[^<>{};]*>\s*)?::\s*" for n in self.names)
        inside = re.compile(r"(?<!:)(?<!:\s)" + _DESTRUCTOR.format(re.escape(name)))
        found = [self.body[m.end() :] for m in inside.finditer(self.body)]
        outside = re.compile(r"\b" + qualified + _DESTRUCTOR.format(re.escape(name)))
        for text in texts.values():
            found += [text[m.end() :] for m in outside.finditer(text)]
        return [rest[: closing(rest)] for rest in found]


def closing(text):
    """The offset of the brace that closes the one in front of `text`."""
    depth = 1
    for match in re.finditer(r"[{}]", text):
        depth += 1 if match.group() == "{" else -1
        if depth == 0:
            return match.start()
    return len(text)


def base_names(text):
    """The bases of a class without access, namespaces and template arguments."""
    names = (re.findall(r"\w+", base) for base in checklib.without_groups(text or "", "<", ">").split(","))
    return {words[-1] for words in names if words}


def classes_of(file, text):
    found, spans = [], []
    for match in _CLASS.finditer(text):
        end = match.end() + closing(text[match.end() :])
        outer = [name for start, stop, name in spans if start < match.start() < stop]
        names = outer + match.group(1).split("::")
        spans.append((match.end(), end, names[-1]))
        line = checklib.line_of(text, match.start())
        found.append(Class(file, line, names, base_names(match.group(2)), text[match.end() : end]))
    return found


def check(root):
    texts = {name: checklib.blank(checklib.read(root, name)) for name in checklib.cpp_files(root, "src", "hosts")}
    classes = [c for name, text in texts.items() for c in classes_of(name, text)]
    threads, count = {ROOT_CLASS}, 0
    while len(threads) != count:
        count = len(threads)
        threads |= {c.names[-1] for c in classes if c.bases & threads}
    derived = [c for c in classes if c.bases & threads]
    findings = [
        f"{c.file}:{c.line}: {'::'.join(c.names)} is derived from MThread and needs a destructor that calls StopAndJoin()"
        for c in derived
        if not any(JOIN.search(body) for body in c.destructors(texts))
    ]
    return checklib.report(findings, f"{len(derived)} classes of threads join in their destructors")


if __name__ == "__main__":
    sys.exit(check(checklib.repository_root(sys.argv[1:])))
