import re
import shutil

from tree_case import TOOLS, TreeCase


class InstallDeps(TreeCase):
    """The script sees only the commands of a folder of ours: a dpkg-query that knows the files below have/."""

    def setUp(self):
        super().setUp()
        for name in ("bash", "env", "mktemp", "rm", "cat", "sed", "grep"):
            (self.root / "bin").mkdir(exist_ok=True)
            (self.root / "bin" / name).symlink_to(shutil.which(name))
        self.write("have/none", "")
        query = 'shift 2\nfor p in "$@"; do [[ -e ' + f"{self.root}/have/$p ]] && printf 'installed=%s ' $p; done\nexit 1\n"
        self.script("bin/dpkg-query", query)
        self.script("bin/id", "echo 0\n")
        self.script("bin/apt-get", f'echo "$DEBIAN_FRONTEND $*" >>{self.root}/apt.log\necho chatter\n')

    def install(self, *groups):
        return self.call("/bin/bash", TOOLS / "install-deps", *groups, env={"PATH": f"{self.root}/bin"})

    def apt_calls(self):
        log = self.root / "apt.log"
        return log.read_text().splitlines() if log.exists() else []

    def have_all_but(self, *missing):
        packages = re.search('^run="(.*)"$', (TOOLS / "install-deps").read_text(), re.M).group(1)
        for name in packages.split():
            if name not in missing:
                self.write("have/" + name, "")

    def test_it_is_silent_and_calls_nothing_when_nothing_is_missing(self):
        self.have_all_but()
        self.assertEqual(self.install("run"), (0, "", ""))
        self.assertEqual(self.apt_calls(), [])

    def test_it_installs_only_what_is_missing_and_keeps_standard_output_clean(self):
        self.have_all_but("cmake", "alsa-utils")
        code, out, err = self.install("run", "run")
        self.assertEqual((code, out, err), (0, "", "install-deps: installing cmake alsa-utils\n"))
        update, install = self.apt_calls()
        self.assertTrue(update.startswith("noninteractive ") and update.endswith(" update"), update)
        self.assertTrue(install.endswith(" install --no-install-recommends cmake alsa-utils"), install)
        self.assertIn("Acquire::Retries=3", install)

    def test_a_group_for_tests_brings_what_running_needs(self):
        self.have_all_but("cmake")
        self.install("test")
        self.assertIn(" cmake g++-multilib ", self.apt_calls()[1])

    def test_the_group_for_slow_tests_brings_hosts_and_what_the_other_tests_need(self):
        self.have_all_but("cmake")
        self.install("slow")
        self.assertRegex(self.apt_calls()[1], " cmake g\\+\\+-multilib .* jackd2 ardour ")
        self.install("test")
        self.assertNotIn("ardour", self.apt_calls()[3])

    def test_a_failing_apt_shows_its_output_and_what_is_missing(self):
        self.have_all_but("cmake")
        self.script("bin/apt-get", "echo E: no network\nexit 100\n")
        code, out, err = self.install("run")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("E: no network\ninstall-deps: apt-get ", err)
        self.assertTrue(err.endswith("missing: cmake\n"), err)

    def test_without_root_it_uses_sudo_or_says_in_one_line_what_is_missing(self):
        self.have_all_but("cmake")
        self.script("bin/id", "echo 1000\n")
        code, out, err = self.install("run")
        self.assertEqual((code, out), (1, ""))
        self.assertEqual(err, "install-deps: missing: cmake (install them as root, or install sudo)\n")
        self.script("bin/sudo", f'echo sudo >>{self.root}/apt.log\n"$@"\n')
        self.assertEqual(self.install("run")[0], 0)
        self.assertEqual(self.apt_calls()[0], "sudo")
        self.assertIn("noninteractive ", self.apt_calls()[1])

    def test_an_unknown_group_is_refused(self):
        self.assertEqual(self.install("all")[0], 1)
        self.assertEqual(self.install()[0], 1)
