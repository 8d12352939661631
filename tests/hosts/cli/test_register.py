"""The registry that `register` writes."""

import os
import shutil
import unittest
import xml.etree.ElementTree as ElementTree

from command_case import COMMAND, OUTPUT, PLUGIN, USAGE, CommandCase, FakeCase, InstalledCase, UserCase


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

    def test_where_no_folder_can_be_made_gives_code_4_and_the_librarys_message(self):
        self.write("file", b"")
        folder = self.path("file/data")
        self.fail_with(OUTPUT, "register", says=("the registry could not be written",),
                       last=f'File "{folder}/Tessaron/MAudioStreams.mps" could not be created. Make sure there is no '
                       "write-protected file already existing.", env=os.environ | {"XDG_DATA_HOME": str(folder)})

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
    def test_names_the_library_that_was_opened(self):
        shutil.copy(COMMAND.parent / "Sonvelle.so", self.bin)
        self.succeed("register")
        self.assertIn(f'library="{self.bin}/Sonvelle.so"', (self.data / "Tessaron/MAudioEffects.mps").read_text())


class WithoutServices(FakeCase):
    def test_a_library_cannot_be_registered(self):
        self.fail_with(PLUGIN, "register", says=(f"{self.bin}/Sonvelle.so: the library has no services",))
        self.assertEqual(list(self.data.rglob("*")), [])


if __name__ == "__main__":
    unittest.main()
