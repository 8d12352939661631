#!/usr/bin/env python3
"""check_layers.py [ROOT]: every include of src/ and hosts/ is allowed by tools/layers.txt.

Checked, inside #if too:
- each folder with sources has a row, each row a folder, and the folders' graph has no cycle;
- an include in quotes names a file of the repository, written from src/ ("core/MString.h") or from the root
  ("hosts/bridge/PluginLibrary.h"), never relative; it lies in the own folder or in what the row lists (a listed
  folder brings all that its own row lists; of a file that is listed alone, its includes must be allowed as well);
- headers of the operating system only in *_posix.cpp and *_win32.cpp, X11 only in *_x11.cpp, SIMD only in *_simd.cpp;
- every other header in angle brackets is of the C or C++ library, or of a third party: then one file of src/ and one
  of hosts/ may include it.
"""

import re
import sys
from collections import defaultdict

import checklib

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^">\n]*)[">]', re.M)
ANY_INCLUDE = re.compile(r"^[ \t]*#[ \t]*include\b.*$", re.M)

LIBRARY = set(
    """algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
    cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint cstdio
    cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
    memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore
    set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view strstream
    syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
    variant vector version
    assert.h complex.h ctype.h errno.h fenv.h float.h inttypes.h iso646.h limits.h math.h setjmp.h stdarg.h stdatomic.h
    stdbool.h stddef.h stdint.h stdio.h stdlib.h string.h tgmath.h time.h uchar.h wchar.h wctype.h""".split()
)
# <clocale> is here because it brings what <locale.h> brings.
OS = set(
    """aio.h alloca.h byteswap.h clocale cpio.h cxxabi.h direct.h dirent.h dlfcn.h elf.h endian.h err.h execinfo.h fcntl.h
    features.h fnmatch.h ftw.h getopt.h glob.h grp.h iconv.h ifaddrs.h io.h langinfo.h libgen.h libintl.h link.h locale.h
    malloc.h monetary.h mqueue.h ndbm.h netdb.h nl_types.h objbase.h poll.h process.h pthread.h pty.h pwd.h sched.h
    search.h semaphore.h shellapi.h shlobj.h shlwapi.h signal.h spawn.h strings.h syscall.h sysexits.h syslog.h tar.h
    termios.h threads.h ucontext.h ulimit.h unistd.h utime.h utmpx.h values.h wait.h winbase.h windef.h windows.h
    winsock2.h winuser.h wordexp.h xlocale.h""".split()
)
FORMATS = {"lv2/": "hosts/lv2/", "clap/": "hosts/clap/", "travesty/": "hosts/vst3/"}
OS_FOLDERS = ("sys/", "linux/", "asm/", "bits/", "net/", "netinet/", "arpa/", "mach/", "ext/", "experimental/")
SIMD = re.compile(r"(?:\w*mmintrin|immintrin|x86intrin|x86gprintrin|intrin|cpuid|arm_\w+)\.h")


class Layers:
    """The table, and what a folder may include by it."""

    def __init__(self, root, findings):
        self.rows = {}
        for number, line in enumerate(checklib.read(root, "tools/layers.txt").splitlines(), 1):
            if line.startswith("#") or not line.strip():
                continue
            folder, colon, dependencies = line.partition(":")
            if not colon or folder in self.rows:
                findings.append(f"tools/layers.txt:{number}: not a row of its own, \"folder: dependencies\"")
            else:
                self.rows[folder] = dependencies.split()
        for folder, dependencies in self.rows.items():
            for name in dependencies:
                if name not in self.rows and not (is_file_name(name) and (root / name).is_file()):
                    findings.append(f"tools/layers.txt: {folder}: {name} is neither a row nor a file")

    def allowed(self, folder):
        """The folders and the single files that `folder` may include."""
        seen, todo = set(), [folder]
        while todo:
            name = todo.pop()
            if name not in seen:
                seen.add(name)
                todo += self.rows.get(name, [])
        return seen

    def single_files(self, folder):
        return [name for name in self.rows[folder] if is_file_name(name)]

    def cycle(self):
        """The folders of one cycle, or nothing. A file that is listed alone counts as its folder."""
        done = set()

        def visit(folder, path):
            if folder in path:
                return path[path.index(folder) :] + [folder]
            if folder in done:
                return []
            for name in self.rows.get(folder, []):
                found = visit(folder_of(name) if is_file_name(name) else name, path + [folder])
                if found:
                    return found
            done.add(folder)
            return []

        for folder in self.rows:
            found = visit(folder, [])
            if found:
                return found
        return []


def is_file_name(name):
    return "." in name.rsplit("/", 1)[-1]


def folder_of(name):
    return name.rpartition("/")[0]


def resolve(root, written):
    """The file that an include in quotes means, relative to the root, or None."""
    if written.startswith("src/") or "./" in written:
        return None
    for start in ("src/", ""):
        if (root / (start + written)).is_file():
            return start + written
    return None


def includes_of(root, name):
    """(line, in quotes, text) of each include, comments left out."""
    text = checklib.blank(checklib.read(root, name), strings=False)
    return [(checklib.line_of(text, m.start(1)), m.group(1) == '"', m.group(2)) for m in INCLUDE.finditer(text)]


def check_quoted(root, layers, name, line, written, findings):
    target = resolve(root, written)
    if target is None:
        findings.append(f'{name}:{line}: "{written}" is no file, seen from src/ or from the root')
        return
    folder = folder_of(name)
    if folder in layers.rows and not layers.allowed(folder) & {target, folder_of(target)}:
        findings.append(f'{name}:{line}: {folder} may not include "{written}" (tools/layers.txt)')


def check_angled(root, name, line, header, third_parties, findings):
    if resolve(root, header):
        findings.append(f"{name}:{line}: <{header}> is ours, write it in quotes")
    elif header in OS or header.startswith(OS_FOLDERS):
        if not name.endswith(("_posix.cpp", "_win32.cpp")):
            findings.append(f"{name}:{line}: <{header}> belongs into *_posix.cpp or *_win32.cpp")
    elif header.startswith("X11/"):
        if not name.endswith("_x11.cpp"):
            findings.append(f"{name}:{line}: <{header}> belongs into *_x11.cpp")
    elif SIMD.fullmatch(header):
        if not name.endswith("_simd.cpp"):
            findings.append(f"{name}:{line}: <{header}> belongs into *_simd.cpp")
    elif (adapter := FORMATS.get(header[:header.find("/") + 1])):
        if not name.startswith(adapter):
            findings.append(f"{name}:{line}: <{header}> belongs into {adapter}")
    elif header not in LIBRARY:
        third_parties[name.split("/")[0], header].append(f"{name}:{line}")


def check_single_files(root, layers, findings):
    """Whoever may include one file of a folder gets its includes as well."""
    for folder in layers.rows:
        allowed = layers.allowed(folder)
        todo, seen = layers.single_files(folder), set()
        while todo:
            name = todo.pop()
            if name in seen or not (root / name).is_file():
                continue
            seen.add(name)
            for line, quoted, written in includes_of(root, name):
                target = resolve(root, written) if quoted else None
                if target and allowed & {target, folder_of(target)}:
                    todo.append(target)
                elif target:
                    findings.append(f'{name}:{line}: brings "{written}" to {folder}, which may not include it')


def check(root):
    findings = []
    layers = Layers(root, findings)
    files = checklib.cpp_files(root, "src", "hosts")
    folders = {folder_of(name) for name in files}
    findings += [f"{folder}: no row in tools/layers.txt" for folder in sorted(folders - layers.rows.keys())]
    findings += [f"tools/layers.txt: {folder} has no sources" for folder in sorted(layers.rows.keys() - folders)]
    cycle = layers.cycle()
    if cycle:
        findings.append("tools/layers.txt: a cycle: " + " -> ".join(cycle))
    third_parties = defaultdict(list)
    for name in files:
        text = checklib.blank(checklib.read(root, name), strings=False)
        includes = includes_of(root, name)
        if len(includes) != len(ANY_INCLUDE.findall(text)):
            findings.append(f"{name}: an include that names no file")
        for line, quoted, written in includes:
            if quoted:
                check_quoted(root, layers, name, line, written, findings)
            else:
                check_angled(root, name, line, written, third_parties, findings)
    for (top, header), places in sorted(third_parties.items()):
        if len({place.rpartition(":")[0] for place in places}) > 1:
            findings.append(f"<{header}> is included by more than one file of {top}/: " + ", ".join(places))
    check_single_files(root, layers, findings)
    return checklib.report(findings, f"{len(files)} files in {len(folders)} folders include what they may")


if __name__ == "__main__":
    sys.exit(check(checklib.repository_root(sys.argv[1:])))
