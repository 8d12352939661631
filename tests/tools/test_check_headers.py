from tree_case import TreeCase

TOOL = "check_headers.py"


class CheckHeaders(TreeCase):
    def setUp(self):
        super().setUp()
        self.write("src/core/Text.h", "#pragma once\n#include <cstdint>\nstruct Text {\n  std::int32_t length = 0;\n};\n")

    def test_headers_that_include_what_they_use_pass(self):
        self.write("hosts/bridge/Bridge.h", '#pragma once\n#include "core/Text.h"\ninline Text gText;\n')
        self.assert_clean(TOOL)

    def test_a_header_that_needs_an_include_before_it_is_found(self):
        self.write("src/core/Needy.h", "#pragma once\ninline Text MakeText() { return {}; }\n")
        self.assert_finds(TOOL, "src/core/Needy.h does not compile alone")

    def test_a_header_that_cannot_be_included_twice_is_found(self):
        self.write("src/core/Once.h", "struct Once {};\n")
        self.assert_finds(TOOL, "src/core/Once.h does not compile alone")
