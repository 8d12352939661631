import shutil
import sys

from tree_case import TOOLS, TreeCase

REPOSITORY = TOOLS.parent
CHANGELOG = "# Changelog\n\n## Unreleased\n\n### Added\n\n- The first.\n\n### Fixed\n\n- A bug.\n\n## 0.1\n\n### Added\n\n- Old.\n"


class NewEffect(TreeCase):
    def setUp(self):
        super().setUp()
        self.write("src/exports/plugins.def", 'M_PLUGIN(Echo, AudioEffect, "echo")\n')
        self.write("src/effects/CMakeLists.txt", "sonvelle_layer(\n  Echo.cpp\n  Tone.cpp\n)\n")
        self.write("tests/effects/CMakeLists.txt", "sonvelle_test(x SOURCES\n  EchoTest.cpp\n)\nother(\n)\n")
        self.write("tests/golden/parameters.tsv", "Echo\t0\treal\tdelay\tDelay\t0\t1\t0.5\n")
        self.write("CHANGELOG.md", CHANGELOG)
        shutil.copy(REPOSITORY / ".clang-format", self.root)

    def make(self, *arguments):
        return self.call(sys.executable, "-B", TOOLS / "new_effect.py", *arguments, self.root)

    def text(self, name):
        return (self.root / name).read_text()

    def test_it_adds_one_row_to_each_list(self):
        code, out, err = self.make("Slide", "filter bank")
        self.assertEqual(code, 0, err)
        self.assertTrue(self.text("src/exports/plugins.def").endswith('\nM_PLUGIN(Slide, AudioEffect, "filter bank")\n'))
        self.assertEqual(self.text("src/effects/CMakeLists.txt"), "sonvelle_layer(\n  Echo.cpp\n  Slide.cpp\n  Tone.cpp\n)\n")
        self.assertIn("  EchoTest.cpp\n  SlideTest.cpp\n)\nother", self.text("tests/effects/CMakeLists.txt"))
        expected = CHANGELOG.replace("- The first.\n", "- The first.\n- Slide: filter bank.\n")
        self.assertEqual(self.text("CHANGELOG.md"), expected)
        self.assertTrue(self.text("tests/golden/parameters.tsv").endswith("\nSlide\t0\treal\tlevel\tLevel\t0\t1\t0.5\n"))
        self.assertTrue(self.text("tests/golden/states/Slide.xml").endswith('\n<state parameterlevel="0.5000"/>\n'))
        self.assertEqual(len(out.splitlines()), 9)

    def test_what_it_writes_compiles_and_is_formatted(self):
        for name in ("Slide", "SomethingWithALongNameIndeed"):
            self.make(name, "filter bank")
            files = [f"src/effects/{name}.cpp", f"tests/effects/{name}Test.cpp"]
            for file in files:
                includes = [f"-I{self.root}/src", f"-I{REPOSITORY}/src", f"-I{REPOSITORY}"]
                flags = ["-std=c++20", "-Wall", "-Wextra", "-Wconversion", "-Werror", "-fsyntax-only"]
                code, out, err = self.call("g++", *flags, *includes, self.root / file)
                self.assertEqual(code, 0, err)
        self.assert_clean("check_format.py")

    def test_it_overwrites_nothing(self):
        self.write("tests/effects/SlideTest.cpp", "mine")
        code, out, err = self.make("Slide", "filter bank")
        self.assertEqual((code, err), (1, "tests/effects/SlideTest.cpp exists already\n"))
        self.assertFalse((self.root / "src/effects/Slide.h").exists())
        self.assertNotIn("Slide", self.text("src/exports/plugins.def"))

    def test_it_refuses_a_name_that_is_no_class_name_and_a_summary_with_quotes(self):
        for arguments in (("slide", "x"), ("../Slide", "x"), ("Slide Two", "x"), ("Slide", 'a "b"'), ("Slide", "")):
            code, out, err = self.make(*arguments)
            self.assertEqual((code, out), (1, ""), arguments)
        self.assertEqual(self.text("CHANGELOG.md"), CHANGELOG)

    def test_it_asks_for_the_place_in_the_changelog(self):
        self.write("CHANGELOG.md", CHANGELOG.replace("### Added\n\n- The first.\n\n", ""))
        code, out, err = self.make("Slide", "filter bank")
        self.assertEqual((code, err), (1, 'CHANGELOG.md has no "### Added" below "## Unreleased"\n'))
        self.assertFalse((self.root / "src/effects/Slide.h").exists())

    def test_the_lists_of_this_repository_have_the_form_that_it_expects(self):
        for name in ("src/exports/plugins.def", "src/effects/CMakeLists.txt", "tests/effects/CMakeLists.txt",
                     "tests/golden/parameters.tsv", "CHANGELOG.md"):
            shutil.copy(REPOSITORY / name, self.root / name)
        code, out, err = self.make("Zzz", "nothing")
        self.assertEqual(code, 0, err)
        self.assertIn("\n- Zzz: nothing.\n", self.text("CHANGELOG.md"))
        self.assertIn("\n  ZzzTest.cpp\n", self.text("tests/effects/CMakeLists.txt"))
