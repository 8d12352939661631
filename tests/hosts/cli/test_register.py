"""The registry that `register` writes."""

import os
import shutil
import unittest
import xml.etree.ElementTree as ElementTree

from command_case import COMMAND, OUTPUT, PLUGIN, USAGE, CommandCase, FakeCase, InstalledCase, UserCase, Wav, float_wav


class Register(CommandCase):
    def files(self):
        return [self.data / "Tessaron" / name for name in ("MAudioEffects.mps", "MAudioStreams.mps")]

    def rows(self, file):
        root = ElementTree.parse(file).getroot()
        self.assertEqual(root.tag, "pluginsystem")
        return {row.get("name"): row.attrib for row in root}

    def test_prints_both_files_one_a_line(self):
        self.assertEqual(self.succeed("register"), "".join(f"{file}\n" for file in self.files()))

    def test_writes_the_absolute_path_of_the_library_for_every_plugin(self):
        self.succeed("register")
        effects, streams = map(self.rows, self.files())
        self.assertEqual((len(effects), len(streams)), (14, 5))
        self.assertEqual({row["library"] for row in (effects | streams).values()}, {str(COMMAND.parent / "Sonvelle.so")})
        self.assertEqual(effects["Echolan"]["interfacefname"], "EcholanAudioEffectPluginInterface")

    def test_twice_keeps_one_row_each(self):
        self.succeed("register")
        before = [file.read_bytes() for file in self.files()]
        self.succeed("register")
        self.assertEqual([file.read_bytes() for file in self.files()], before)

    def test_replaces_a_broken_registry(self):
        self.files()[0].parent.mkdir()
        self.files()[0].write_text("broken")
        self.succeed("register")
        self.assertEqual(len(self.rows(self.files()[0])), 14)

    def test_keeps_what_other_libraries_have_there(self):
        self.files()[0].parent.mkdir()
        self.files()[0].write_text('<pluginsystem><plugin name="Other" library="/x.so"/></pluginsystem>')
        self.succeed("register")
        self.assertEqual(self.rows(self.files()[0])["Other"]["library"], "/x.so")

    def test_takes_no_arguments(self):
        self.fail_with(USAGE, "register", "x", says=("see: sonvelle help",))


class Unwritable(UserCase):
    def test_gives_code_4_and_names_the_file(self):
        folder = self.data / "Tessaron"
        folder.mkdir()
        folder.chmod(0o555)
        file = folder / "MAudioStreams.mps"
        self.fail_with(OUTPUT, "register", says=("the registry could not be written",),
                       last=f'File "{file}" could not be created. Make sure there is no write-protected file already existing.')
        self.assertEqual(os.listdir(folder), [])


class Moved(InstalledCase):
    def setUp(self):
        super().setUp()
        shutil.copy(COMMAND.parent / "Sonvelle.so", self.bin)
        self.settings = self.data / "Tessaron/SonvelleConfiguration.cfg"

    def content(self):
        """The folder of content that the library uses from now on."""
        return ElementTree.parse(self.settings).getroot().get("GlobalPath")

    def fail_without_a_folder(self, what, file):
        self.write("file", b"")
        folder = self.path("file/data")
        self.fail_with(OUTPUT, "register", says=(f"the {what} could not be written",),
                       last=f'File "{folder}/Tessaron/{file}" could not be created. Make sure there is no '
                       "write-protected file already existing.", env=os.environ | {"XDG_DATA_HOME": str(folder)})

    def test_names_the_library_that_was_opened(self):
        self.succeed("register")
        self.assertIn(f'library="{self.bin}/Sonvelle.so"', (self.data / "Tessaron/MAudioEffects.mps").read_text())

    def test_where_no_folder_can_be_made_gives_code_4_and_the_librarys_message(self):
        self.fail_without_a_folder("registry", "MAudioStreams.mps")

    def test_chooses_the_content_beside_the_program(self):
        (self.bin / "content").mkdir()
        self.path("share/sonvelle").mkdir(parents=True)
        self.succeed("register", cwd="/")
        self.assertEqual(self.content(), str(self.bin / "content"))
        self.assertEqual(sorted(os.listdir(self.data / "Tessaron")),
                         ["MAudioEffects.mps", "MAudioStreams.mps", "SonvelleConfiguration.cfg"])

    def test_else_the_content_that_is_installed_with_it(self):
        self.write("bin/content", b"no folder")
        self.path("share/sonvelle").mkdir(parents=True)
        self.succeed("register", cwd="/")
        self.assertEqual(self.content(), str(self.path("share/sonvelle")))

    def test_without_content_leaves_the_choice_to_the_library_which_takes_the_current_folder(self):
        self.succeed("register")
        self.assertEqual(self.content(), str(self.folder))

    def test_leaves_settings_that_are_there(self):
        (self.bin / "content").mkdir()
        self.succeed("list")
        self.assertEqual(self.content(), str(self.folder))
        before = self.settings.read_bytes()
        self.succeed("register", cwd="/")
        self.assertEqual(self.settings.read_bytes(), before)

    def test_finds_a_sample_of_the_content_by_its_name_in_a_state(self):
        (self.bin / "content/Samples").mkdir(parents=True)
        self.write("bin/content/Samples/tone.wav", float_wav([[0.5] * 100]))
        self.write("state.xml", b'<state filename="tone.wav"/>')
        self.succeed("register", cwd="/")
        self.succeed("render", "Playbox", "out.wav", "--state", "state.xml", "--note", "60:1:0:0.001", "--channels", "1",
                     "--rate", "48000")
        self.assertEqual(list(Wav(self.path("out.wav")).interleaved), [0.5] * 48)

    def test_settings_that_cannot_be_written_give_code_4_and_the_librarys_message(self):
        (self.bin / "content").mkdir()
        self.fail_without_a_folder("settings", "SonvelleConfiguration.cfg")


class ReadOnlyContent(UserCase):
    """That the user may not write to, as where it is installed for all."""

    def setUp(self):
        super().setUp()
        self.samples = self.bin / "content/Samples"
        self.samples.mkdir(parents=True)
        self.write("bin/content/Samples/tone.wav", float_wav([[0.5] * 100]))
        self.write("mine.wav", float_wav([[0.25] * 100]))
        for folder in (self.samples, self.samples.parent):
            folder.chmod(0o555)
            self.addCleanup(folder.chmod, 0o755)

    def test_is_linked_to_a_folder_of_the_user_where_samples_can_be_imported(self):
        self.write("state.xml", b'<state filename="tone.wav"/>')
        for _ in range(2):
            self.succeed("register")
            for option, level in (("--state=state.xml", 0.5), ("--sample=mine.wav", 0.25)):
                self.succeed("render", "Playbox", "out.wav", option, "--note", "60:1:0:0.001", "--channels", "1", "--rate", "48000")
                self.assertEqual(list(Wav(self.path("out.wav")).interleaved), [level] * 48)
        own = self.data / "sonvelle/Samples"
        self.assertEqual((own / "tone.wav").resolve(), self.samples / "tone.wav")
        self.assertTrue((own / f"Imported{self.folder}/mine.wav").is_file())
        self.assertEqual(os.listdir(self.samples), ["tone.wav"])

    def test_is_linked_anew_where_a_link_leads_nowhere_and_what_is_the_users_stays(self):
        own = self.data / "sonvelle/Samples"
        own.mkdir(parents=True)
        for folder in (own, own.parent):
            folder.chmod(0o777)
        (own / "tone.wav").symlink_to("/nowhere/tone.wav")
        (own / "other.wav").write_bytes(b"other")
        self.succeed("register")
        self.assertEqual((own / "tone.wav").resolve(), self.samples / "tone.wav")
        self.assertEqual((own / "other.wav").read_bytes(), b"other")


class WithoutServices(FakeCase):
    def test_a_library_cannot_be_registered(self):
        self.fail_with(PLUGIN, "register", says=(f"{self.bin}/Sonvelle.so: the library has no services",))
        self.assertEqual(list(self.data.rglob("*")), [])


if __name__ == "__main__":
    unittest.main()
