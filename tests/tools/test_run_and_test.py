import shutil

from tree_case import TOOLS, TreeCase

# Stands for cmake: configures by making build.ninja, builds a command that copies what it shall render and otherwise prints
# its folder and arguments.
CMAKE = """
echo "cmake $*" >>log
echo chatter; echo chatter >&2
[[ ! -e broken ]] || { echo "FAILED: some.o"; echo "some.cpp:1: error"; exit 1; }
if [[ $1 == --preset ]]; then mkdir -p build/$2 && touch build/$2/build.ninja; fi
if [[ $2 == build/release ]]; then
  cat >build/release/sonvelle <<'END'
#!/bin/bash
if [[ $1 == render ]]; then cp "$3" "$4" && exit; fi
echo "$PWD|$*"
exit 3
END
  chmod +x build/release/sonvelle
fi
"""


class ScriptCase(TreeCase):
    """The scripts in a folder of their own, with commands of ours in the place of the compilers."""

    def setUp(self):
        super().setUp()
        repository = TOOLS.parent
        (self.root / "tools").mkdir()
        for name in ("run", "test", "tools/build-tree", "tools/demo_table.py", "tools/wav.py", "tools/check_headers.py", ".ci/run"):
            (self.root / name).parent.mkdir(exist_ok=True)
            shutil.copy(repository / name, self.root / name)
        self.write("CMakePresets.json", "{}")
        self.write("elsewhere/x", "")
        self.script("tools/install-deps", 'echo "install $*" >>"${0%/*}/../log"\n')
        self.script("bin/cmake", CMAKE)
        self.script("bin/ctest", 'echo "ctest $*" >>log\necho "Total Test time"\nexit 8\n')
        self.path = {"PATH": f"{self.root}/bin:/usr/bin:/bin"}

    def start(self, *command, folder="elsewhere"):
        return self.call(self.root / command[0], *command[1:], cwd=self.root / folder, env=self.path)

    def log(self):
        return (self.root / "log").read_text().splitlines()


class Run(ScriptCase):
    def test_the_command_gets_its_arguments_in_the_folder_of_the_caller(self):
        code, out, err = self.start("run", "list", "a b")
        self.assertEqual((code, out), (3, f"{self.root}/elsewhere|list a b\n"))
        self.assertEqual(err, "Building sonvelle; the first time this takes some minutes.\n")
        jobs = self.log()[2].split("--parallel ")[1].split()[0]
        expected = ["install run", "cmake --preset release"]
        expected += [f"cmake --build build/release --parallel {jobs} --target Sonvelle sonvelle content"]
        self.assertEqual(self.log(), expected)

    def prepare_installation(self):
        self.script("tools/install-user", (TOOLS / "install-user").read_text().split("\n", 1)[1])
        home = self.root / "home"
        home.mkdir()
        self.write("plugins.so", "code")
        for name in ("lv2/Sonvelle.lv2/a.so", "clap/Sonvelle.clap", "vst3/Sonvelle.vst3/Contents/x/a.so"):
            (self.root / "build/release" / name).parent.mkdir(parents=True, exist_ok=True)
            (self.root / "build/release" / name).symlink_to(self.root / "plugins.so")
        self.write("build/release/content/states/a.xml", "state")
        self.path |= {"HOME": str(home)}
        self.path.pop("XDG_DATA_HOME", None)
        return home

    def test_install_builds_the_bundles_and_copies_them_to_the_home_with_what_links_stand_for(self):
        home = self.prepare_installation()
        self.write("home/.lv2/Sonvelle.lv2/old.ttl", "old")
        code, out, err = self.start("run", "install")
        targets = [home / ".lv2/Sonvelle.lv2", home / ".clap/Sonvelle.clap", home / ".vst3/Sonvelle.vst3",
                   home / ".local/share/sonvelle"]
        self.assertEqual((code, out), (0, "".join(f"{target}\n" for target in targets)), err)
        self.assertIn("--target Sonvelle sonvelle content lv2_bundle clap_bundle vst3_bundle", self.log()[-1])
        self.assertEqual([path.name for path in targets[0].iterdir()], ["a.so"])
        for file in (targets[0] / "a.so", targets[1], targets[2] / "Contents/x/a.so"):
            self.assertFalse(file.is_symlink())
            self.assertEqual(file.read_text(), "code")
        self.assertEqual((targets[3] / "states/a.xml").read_text(), "state")

    def test_install_keeps_what_was_imported_to_the_content_and_renews_the_rest(self):
        home = self.prepare_installation()
        self.write("build/release/content/Samples/a b.wav", "new")
        self.write("build/release/content/.made", "")
        self.write("home/.local/share/sonvelle/Samples/a b.wav", "old")
        self.write("home/.local/share/sonvelle/Samples/Imported/home/mine.wav", "mine")
        for _ in range(2):
            self.assertEqual(self.start("run", "install")[0], 0)
            content = home / ".local/share/sonvelle"
            names = sorted(str(path.relative_to(content)) for path in content.rglob("*") if path.is_file())
            self.assertEqual(names, ["Samples/Imported/home/mine.wav", "Samples/a b.wav", "states/a.xml"])
            self.assertEqual((content / "Samples/a b.wav").read_text(), "new")
            self.assertEqual((content / "Samples/Imported/home/mine.wav").read_text(), "mine")

    def test_a_second_call_says_nothing_and_does_not_configure_again(self):
        self.start("run", "list")
        code, out, err = self.start("run", "list")
        self.assertEqual((code, out, err), (3, f"{self.root}/elsewhere|list\n", ""))
        self.assertEqual(sum("--preset" in line for line in self.log()), 1)

    def test_a_build_that_fails_shows_the_errors_and_ends_with_125(self):
        self.start("run", "list")
        self.write("broken", "")
        code, out, err = self.start("run", "list")
        self.assertEqual((code, out), (125, ""))
        self.assertIn("FAILED: some.o\nsome.cpp:1: error\nbuild-tree: building build/release failed", err)
        self.assertNotIn("chatter", err)

    def test_a_build_that_is_killed_shows_the_end_of_its_output(self):
        self.start("run", "list")
        self.script("bin/cmake", 'seq 1000\nkill -KILL $$\n')
        code, out, err = self.start("run", "list")
        self.assertEqual((code, out), (125, ""))
        self.assertIn("999\n1000\nbuild-tree: building build/release failed", err)
        self.assertNotIn("\n980\n", err)

    def test_a_tree_that_cannot_be_configured_is_begun_afresh(self):
        self.script("bin/cmake", '[[ $1 == --build || "$*" == *--fresh ]] || exit 1\n' + CMAKE)
        self.assertEqual(self.start("run", "list")[0], 3)
        self.assertIn("cmake --preset release --fresh", self.log())

    def test_without_arguments_it_shows_what_a_voice_became(self):
        code, out, err = self.start("run")
        self.assertEqual(code, 0, err)
        self.assertIn("sonvelle render Echolan /usr/share/sounds/alsa/Front_Center.wav ", out)
        self.assertRegex(out, "in +48000 Hz +1 +1.43 s")
        self.assertIn("tail: 0.00 s", out)
        self.assertTrue((self.root / "build/demo/echoes.wav").exists())


class Test(ScriptCase):
    def test_four_trees_are_built_and_ctest_speaks_last(self):
        code, out, err = self.start("test", "-R", "Echolan x")
        self.assertEqual((code, out.splitlines()[-1]), (8, "Total Test time"))
        trees = [line.split()[2] for line in self.log() if "--preset" in line]
        self.assertEqual(trees, ["asan", "release", "tsan", "fuzz"])
        self.assertRegex(self.log()[-1], "^ctest --test-dir build/suite -j2 .* -LE \\^slow\\$ -R Echolan x$")
        suite = (self.root / "build/suite/CTestTestfile.cmake").read_text()
        self.assertIn('subdirs("../asan" "../release" "../tsan" "../fuzz")', suite)

    def test_slow_tests_run_when_they_are_wanted(self):
        self.start("test")
        self.assertEqual(self.log()[0], "install test")
        self.start("test", "--slow")
        self.assertIn("install slow", self.log())
        self.assertNotIn("slow", self.log()[-1])

    def test_a_build_that_fails_ends_the_run_before_any_test(self):
        self.write("broken", "")
        code, out, err = self.start("test")
        self.assertEqual(code, 125)
        self.assertTrue(err.endswith("test: building asan failed\n"), err)
        self.assertFalse(any(line.startswith("ctest") for line in self.log()))

    def test_each_check_that_lies_in_tools_is_in_the_suite(self):
        self.write("tools/check_more.py", "")
        self.write("tools/check_exports.py", "")
        self.start("test")
        suite = (self.root / "build/suite/CTestTestfile.cmake").read_text()
        self.assertIn(f"add_test([==[more]==] [==[python3]==] [==[-B]==] [==[{self.root}/tools/check_more.py]==])", suite)
        self.assertIn("add_test([==[headers]==]", suite)
        self.assertNotIn("exports", suite)

    def test_help_builds_nothing(self):
        code, out, err = self.start("test", "--help")
        self.assertEqual((code, err), (0, ""))
        self.assertIn("--slow", out)
        self.assertFalse((self.root / "log").exists())

    def test_the_continuous_integration_runs_the_same_command(self):
        self.assertEqual(self.start(".ci/run")[0], 8)
        self.assertTrue(self.log()[-1].startswith("ctest "))
