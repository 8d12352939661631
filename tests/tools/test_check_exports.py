from tree_case import TreeCase

TABLE = """// M_PLUGIN(Comment, AudioEffect, "not a row")
#ifndef M_PLUGIN
#define M_PLUGIN(name, kind, text)
#endif
M_EXPORT(Initialize)
M_PLUGIN(Echo, AudioEffect, "one, (line)")
M_PLUGIN(Tone, Generator,
         "another")
"""
NAMES = ["Initialize", "EchoAudioEffectPluginInterface", "TonePluginInterface", "ToneGeneratorPluginInterface"]


class CheckExports(TreeCase):
    def run_check(self, names, table=TABLE):
        source = "".join(f'extern "C" void {name}() {{}}\n' for name in names) + "static int hidden;\nint* F();\n"
        self.write("lib.cpp", source)
        library = self.root / "lib.so"
        code, _, err = self.call("g++", "-shared", "-fPIC", "-o", library, self.root / "lib.cpp")
        self.assertEqual(code, 0, err)
        return self.check("check_exports.py", library, self.write("plugins.def", table))

    def test_a_library_with_exactly_the_names_of_the_table_passes(self):
        code, output = self.run_check([NAMES[0], NAMES[1], NAMES[3]])
        self.assertEqual(code, 0, output)
        self.assertIn("3 names", output)

    def test_a_missing_name_and_a_surplus_name_are_found(self):
        code, output = self.run_check(NAMES[:3])
        self.assertEqual(code, 1)
        self.assertIn("exports TonePluginInterface, which no row", output)
        self.assertIn("does not export ToneGeneratorPluginInterface", output)
        self.assertIn("\n2 findings", output)

    def test_an_unknown_row_and_an_empty_table_are_refused(self):
        code, output = self.run_check(NAMES, TABLE + "M_OTHER(Echo)\n")
        self.assertEqual(code, 1)
        self.assertIn("M_OTHER(Echo...) is no known row", output)
        code, output = self.run_check(NAMES, "// nothing\n")
        self.assertEqual(code, 1)
        self.assertIn("no rows", output)

    def test_a_library_that_is_not_there_is_named(self):
        code, output = self.check("check_exports.py", self.root / "none.so", self.write("plugins.def", TABLE))
        self.assertEqual(code, 1)
        self.assertIn("none.so", output)
        self.assertNotIn("Traceback", output)
