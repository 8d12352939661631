"""What is in the file of the shared library. SONVELLE_LIBRARY names it; SONVELLE_SANITIZE is empty for what is shipped."""

import os
import re
import subprocess
import unittest

LIBRARY = os.environ["SONVELLE_LIBRARY"]
SHIPPED = unittest.skipIf(os.environ.get("SONVELLE_SANITIZE"), "sanitizers bring libraries and code of their own")


def output(*command):
    return subprocess.run([*command, LIBRARY], check=True, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout


class LibraryFile(unittest.TestCase):
    @SHIPPED
    def test_it_needs_no_library_but_those_of_the_compiler_of_compression_and_of_mpeg_audio(self):
        needed = set(re.findall(r"\(NEEDED\).*\[([\w+-]*)[^\]]*\]", output("readelf", "-dW")))
        self.assertLessEqual(
            needed, {"libstdc++", "libm", "libgcc_s", "libc", "ld-linux-x86-64", "libz", "libbz2", "libmpg123"})

    @SHIPPED
    def test_no_symbol_is_missing_in_the_libraries_that_it_needs(self):
        self.assertNotIn("undefined symbol", output("ldd", "-r"))

    def test_no_symbol_or_flag_keeps_it_loaded(self):
        self.assertNotRegex(output("readelf", "--dyn-syms", "-W"), r"\bUNIQUE\b")
        self.assertNotRegex(output("readelf", "-dW"), r"\bNODELETE\b")

    def test_no_object_of_a_thread_is_destroyed_when_the_thread_ends(self):
        self.assertNotRegex(output("nm", "-D", "--undefined-only"), r"\b__cxa_thread_atexit")

    def test_it_needs_no_relocated_code_and_no_room_for_static_thread_data(self):
        self.assertNotRegex(output("readelf", "-dW"), r"\b(TEXTREL|STATIC_TLS)\b")

    @SHIPPED
    def test_no_code_of_ours_runs_while_it_is_loaded(self):
        # The one entry in each table is the compiler's own.
        word = 8 if "ELF64" in output("readelf", "-h") else 4
        sizes = dict(re.findall(r"(\.init_array|\.fini_array)\s+\w+\s+\w+\s+\w+\s+(\w+)", output("readelf", "-SW")))
        self.assertEqual({name: int(size, 16) for name, size in sizes.items()}, {".init_array": word, ".fini_array": word})


if __name__ == "__main__":
    unittest.main()
