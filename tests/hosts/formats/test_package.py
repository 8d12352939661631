"""The Debian package that CPack makes: what it says of itself, what is in it, and that it works from where it is unpacked."""

import array
import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "cli"))
from command_case import CommandCase

BUILD = Path(os.environ["SONVELLE_BUILD"])
SOURCES = Path(os.environ["SONVELLE_SOURCES"])
# What runs a plug-in, and what it loads below the prefix.
FORMATS = {
    "lv2": (os.environ["SONVELLE_LV2_RENDER"], "lib/lv2/Sonvelle.lv2"),
    "clap": (os.environ["SONVELLE_CLAP_RENDER"], "lib/clap/Sonvelle.clap"),
    "vst3": (os.environ["SONVELLE_VST3_RENDER"], f"lib/vst3/Sonvelle.vst3/Contents/{os.uname().machine}-linux/Sonvelle.so"),
}
LIBRARIES = ["libbz2-1.0", "libc6", "libgcc-s1", "libmpg123-0", "libsndfile1", "libstdc++6", "zlib1g"]


def run(*words, **options):
    return subprocess.run(list(map(str, words)), check=True, capture_output=True, text=True, timeout=300, **options).stdout


def files(folder):
    """The paths of its files, but for hidden ones."""
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file() and not path.name.startswith(".")}


class Package(CommandCase):
    def setUp(self):
        super().setUp()
        # The files that other users read are not what somebody's mask makes of them.
        run("cpack", "-G", "DEB", "-B", self.path("made"), "--config", BUILD / "CPackConfig.cmake", cwd=BUILD, umask=0o077)
        self.package = next(self.path("made").glob("*.deb"))
        self.prefix = self.path("root/usr")

    def test_is_complete_and_works_where_it_is_unpacked(self):
        self.expect_fields()
        self.expect_modes()
        run("dpkg-deb", "-x", self.package, self.path("root"))
        self.expect_files()
        self.expect_no_path_of_the_build()
        self.expect_sound()

    def expect_fields(self):
        fields = dict(re.findall(r"^([\w-]+): (.*)$", run("dpkg-deb", "-f", self.package), re.M))
        version = re.search(r"project\(Sonvelle VERSION (\S+)", (SOURCES / "CMakeLists.txt").read_text()).group(1)
        architecture = run("dpkg", "--print-architecture").strip()
        self.assertEqual([fields[key] for key in ("Package", "Version", "Architecture", "Section")],
                         ["sonvelle", version, architecture, "sound"])
        self.assertEqual(self.package.name, f"sonvelle_{version}_{architecture}.deb")
        self.assertEqual([word.split()[0] for word in fields["Depends"].split(", ")], LIBRARIES)

    def expect_modes(self):
        for line in run("dpkg-deb", "-c", self.package).splitlines():
            mode, owner, *_, name = line.split(maxsplit=5)
            self.assertEqual(owner, "root/root", line)
            is_program = re.match(r"\./usr/bin/|.*\.(clap|vst3/.*\.so)$", name)
            self.assertEqual(mode, "drwxr-xr-x" if name.endswith("/") else "-rwxr-xr-x" if is_program else "-rw-r--r--", line)

    def expect_files(self):
        texts = {f"lib/lv2/Sonvelle.lv2/{path.name}" for path in (BUILD / "lv2/Sonvelle.lv2").glob("*.ttl")}
        self.assertEqual(len(texts), 1 + 20 + 5)
        modules = {"lib/lv2/Sonvelle.lv2/sonvelle-plugins.so", FORMATS["clap"][1], FORMATS["vst3"][1]}
        content = {f"share/sonvelle/{name}" for name in files(BUILD / "content")}
        self.assertTrue(any(name.endswith(".xml") for name in content) and any(name.endswith(".wav") for name in content))
        others = {"bin/sonvelle", "share/man/man1/sonvelle.1", "share/doc/sonvelle/copyright", "share/doc/sonvelle/LICENSES.md"}
        library = next(str(path.relative_to(self.prefix)) for path in self.prefix.glob("lib/**/sonvelle/Sonvelle.so"))
        self.assertEqual(files(self.prefix), texts | modules | content | others | {library})
        self.assertEqual(len({(self.prefix / name).read_bytes() for name in modules}), 1)
        self.assertEqual((self.prefix / "share/doc/sonvelle/copyright").read_text(), (SOURCES / "LICENSE").read_text())

    def expect_no_path_of_the_build(self):
        for path in self.prefix.rglob("*"):
            if path.is_file():
                for folder in (BUILD, SOURCES, self.folder):
                    self.assertNotIn(str(folder).encode(), path.read_bytes(), path)

    def expect_sound(self):
        """The command runs, and a preset that names a sample sounds in each format."""
        self.command = self.prefix / "bin/sonvelle"
        self.assertEqual(self.succeed("--version"), run(BUILD / "sonvelle", "--version"))
        self.succeed("register")
        self.assertIn(str(self.prefix), (self.data / "Tessaron/SonvelleConfiguration.cfg").read_text())
        state = self.prefix / "share/sonvelle/states/Playbox/Church bell.xml"
        self.write("notes", b"0 midi 144 60 127\n")
        heard = set()
        for name, (program, bundle) in FORMATS.items():
            out = self.path(name + ".f32")
            said = run(program, self.prefix / bundle, "Playbox", out, "--rate", 48000, "--channels", 2, "--block", 256,
                       "--frames", 9600, "--state", state, "--events", self.path("notes"), "--offline", cwd="/")
            self.assertEqual(said, "")
            self.assertGreater(max(array.array("f", out.read_bytes())), 0.1, name)
            heard.add(out.read_bytes())
        self.assertEqual(len(heard), 1)
        self.expect_a_folder_for_imports()

    def expect_a_folder_for_imports(self):
        """Users who may not write to the content have one."""
        if os.geteuid() != 0:
            return
        (self.data / "Tessaron/SonvelleConfiguration.cfg").unlink()
        for folder in (self.data / "Tessaron", self.folder):
            folder.chmod(0o777)
        program, bundle = FORMATS["clap"]  # that of LV2 holds plug-ins itself, which have the build's content
        own = shutil.copy(program, self.folder)  # the build folder may be nobody else's to look into
        run(own, self.prefix / bundle, "Playbox", self.path("user.f32"), "--rate", 48000, "--channels", 2, "--block", 256,
            "--frames", 256, cwd="/", user=65534, group=65534, extra_groups=[])
        settings = (self.data / "Tessaron/SonvelleConfiguration.cfg").read_text()
        self.assertIn(f'GlobalPath="{self.data}/sonvelle"', settings)


if __name__ == "__main__":
    unittest.main()
