from tree_case import TreeCase

TOOL = "check_layers.py"
TABLE = "# folders\nsrc/core:\nsrc/plugin: src/core\nsrc/effects: src/plugin\nhosts/bridge: src/core src/plugin/Face.h\n"


class CheckLayers(TreeCase):
    def setUp(self):
        super().setUp()
        self.write("tools/layers.txt", TABLE)
        self.write("src/core/Text.h", "#include <string>\n")
        self.write("src/plugin/Face.h", '#include "core/Text.h"\n')
        self.write("src/plugin/Plugin.h", '#include "core/Text.h"\n')
        self.write("src/effects/Echo.cpp", '#include "plugin/Plugin.h"\n#include "core/Text.h"\n')
        self.write("hosts/bridge/Bridge.cpp", '#include "hosts/bridge/Bridge.h"\n#include "plugin/Face.h"\n')
        self.write("hosts/bridge/Bridge.h", '#pragma once\n#include "core/Text.h"\n')

    def test_a_tree_that_follows_its_table_passes(self):
        self.assert_clean(TOOL)

    def test_an_include_that_the_row_does_not_list_is_found(self):
        self.write("src/core/Text.cpp", '\n#include "plugin/Plugin.h"\n')
        self.assert_finds(TOOL, 'src/core/Text.cpp:2: src/core may not include "plugin/Plugin.h"')

    def test_a_row_of_one_file_grants_no_other_file_of_its_folder(self):
        self.write("hosts/bridge/Other.cpp", '#include "plugin/Plugin.h"\n')
        self.assert_finds(TOOL, 'hosts/bridge may not include "plugin/Plugin.h"')

    def test_a_single_file_brings_no_include_that_the_folder_may_not_have(self):
        self.write("src/plugin/Face.h", '#include "plugin/Plugin.h"\n')
        self.assert_finds(TOOL, 'src/plugin/Face.h:1: brings "plugin/Plugin.h" to hosts/bridge')

    def test_an_include_inside_a_condition_counts(self):
        self.write("src/core/Text.cpp", '#if 0\n#  include "plugin/Plugin.h"\n#endif\n')
        self.assert_finds(TOOL, "src/core/Text.cpp:2:")

    def test_an_include_inside_a_comment_does_not_count(self):
        self.write("src/core/Text.cpp", '/*\n#include "plugin/Plugin.h"\n*/\n// #include <unistd.h>\n')
        self.assert_clean(TOOL)

    def test_relative_includes_and_missing_files_are_found(self):
        lines = '#include "Text.h"\n#include "../core/Text.h"\n#include "src/core/Text.h"\n#include "core/None.h"\n'
        self.write("src/core/Text.cpp", lines)
        self.assert_finds(TOOL, '"Text.h"', '"../core/Text.h"', '"src/core/Text.h"', '"core/None.h"')

    def test_our_header_in_angle_brackets_is_found(self):
        self.write("src/core/Text.cpp", "#include <plugin/Plugin.h>\n")
        self.assert_finds(TOOL, "<plugin/Plugin.h> is ours")

    def test_an_include_by_macro_is_found(self):
        self.write("src/core/Text.cpp", "#include HEADER\n")
        self.assert_finds(TOOL, "src/core/Text.cpp: an include that names no file")

    def test_a_folder_without_a_row_is_found(self):
        self.write("src/core/detail/Deep.h", "\n")
        self.assert_finds(TOOL, "src/core/detail: no row")

    def test_a_row_without_sources_and_an_unknown_dependency_are_found(self):
        self.write("tools/layers.txt", TABLE + "src/empty: src/none\n")
        self.assert_finds(TOOL, "src/empty has no sources", "src/empty: src/none is neither a row nor a file")

    def test_a_cycle_of_folders_is_found(self):
        self.write("tools/layers.txt", TABLE.replace("src/core:", "src/core: src/effects"))
        self.assert_finds(TOOL, "a cycle: src/core -> src/effects -> src/plugin -> src/core")

    def test_a_cycle_through_a_single_file_is_found(self):
        self.write("tools/layers.txt", TABLE.replace("src/core:", "src/core: src/plugin/Face.h"))
        self.assert_finds(TOOL, "a cycle: src/core -> src/plugin -> src/core")

    def test_system_headers_belong_into_files_of_the_system(self):
        self.write("src/core/Lock_posix.cpp", "#include <pthread.h>\n#include <sys/stat.h>\n")
        self.assert_clean(TOOL)
        self.write("src/core/Lock.cpp", "#include <pthread.h>\n#include <sys/stat.h>\n#include <locale.h>\n")
        self.assert_finds(TOOL, "<pthread.h> belongs", "<sys/stat.h> belongs", "<locale.h> belongs")

    def test_simd_headers_belong_into_simd_files(self):
        self.write("src/core/Sum_simd.cpp", "#include <immintrin.h>\n")
        self.assert_clean(TOOL)
        self.write("src/core/Sum.cpp", "#include <immintrin.h>\n#include <arm_neon.h>\n")
        self.assert_finds(TOOL, "<immintrin.h> belongs", "<arm_neon.h> belongs")

    def test_window_headers_belong_into_their_files(self):
        self.write("src/core/Sum.cpp", "#include <X11/Xlib.h>\n")
        self.assert_finds(TOOL, "<X11/Xlib.h> belongs into *_x11.cpp")

    def test_headers_of_a_plugin_format_are_for_its_adapter(self):
        self.write("tools/layers.txt", TABLE + "hosts/clap: hosts/bridge\n")
        for file in ("One", "Two"):
            self.write(f"hosts/clap/{file}.cpp", "#include <clap/entry.h>\n")
        self.assert_clean(TOOL)
        self.write("hosts/bridge/Other.cpp", "#include <clap/entry.h>\n")
        self.assert_finds(TOOL, "hosts/bridge/Other.cpp:1: <clap/entry.h> belongs into hosts/clap/")

    def test_a_third_party_header_has_one_place_in_the_library_and_one_in_the_hosts(self):
        self.write("src/core/Zip.cpp", "#include <zlib.h>\n")
        self.write("hosts/bridge/Zip.cpp", "#include <zlib.h>\n")
        self.assert_clean(TOOL)
        self.write("src/plugin/Zip.cpp", "#include <zlib.h>\n")
        self.assert_finds(TOOL, "<zlib.h> is included by more than one file of src/: src/core/Zip.cpp:1, src/plugin/Zip.cpp:1")
