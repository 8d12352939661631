"""Where the output goes: it is complete under its name or not there."""

import os
import resource
import shutil
import stat
import subprocess
import threading
import unittest

from command_case import DONE, OUTPUT, CommandCase, UserCase, Wav, float_wav

SOUND = float_wav([[0.25] * 20000, [-0.5] * 20000])


def permissions(path):
    return stat.S_IMODE(os.stat(path).st_mode)


class OutputCase(CommandCase):
    def setUp(self):
        super().setUp()
        self.write("in.wav", SOUND)

    def expect_sound(self, path):
        self.assertEqual(Wav(path).frames, 20000)

    def refuse(self, output, *says, **options):
        before = self.names()
        self.fail_with(OUTPUT, "render", "Echolan", "in.wav", output, says=(str(output), *says), **options)
        self.assertEqual(self.names(), before)


class File(OutputCase):
    def test_is_plain_wav_without_anything_that_changes_with_time(self):
        out = self.render("in.wav")
        self.assertEqual(set(out.chunks) - {b"PAD "}, {b"fmt ", b"fact", b"data"})
        self.assertEqual((out.code, out.channel_count, out.rate, out.bits, out.align), (3, 2, 48000, 32, 8))
        self.assertEqual(out.chunks[b"fact"], (20000).to_bytes(4, "little"))

    @unittest.skipUnless(shutil.which("file"), "the command file is not installed")
    def test_is_known_to_others(self):
        self.render("in.wav")
        text = subprocess.run(["file", "-b", self.path("out.wav")], capture_output=True, text=True).stdout
        self.assertIn("WAVE audio, IEEE Float, stereo 48000 Hz", text)

    def test_of_a_stream_without_a_length_is_a_wav_file_without_the_time(self):
        stream = b".snd" + b"".join(n.to_bytes(4, "big") for n in (24, 2**32 - 1, 3, 22050, 2)) + b"\x40\0\x20\0" * 1000
        for options in ([], ["--tail", "auto"]):
            self.succeed("render", "Echolan", "/dev/stdin", "out.wav", *options, stdin=None, input=stream)
            out = Wav(self.path("out.wav"))
            self.assertEqual((out.channel_count, out.rate, out.bits, list(out.interleaved[:2])), (2, 22050, 32, [0.5, 0.25]))
            self.assertNotIn(b"PEAK", out.chunks)
            self.assertFalse(any(out.chunks[b"JUNK"]))  # where the time of day has been
        self.assertGreater(out.frames, 1000)

    def test_two_renders_are_identical(self):
        for options in ([], ["--tail", "auto"]):
            self.render("in.wav", *options, output="one.wav")
            self.render("in.wav", *options, output="two.wav")
            self.assertTrue(self.path("one.wav").read_bytes() == self.path("two.wav").read_bytes())

    def test_has_the_permissions_of_a_new_file(self):
        for mask in (0o022, 0o077, 0o002):
            before = os.umask(mask)
            try:
                self.render("in.wav", output=f"{mask}.wav")
            finally:
                os.umask(before)
            self.assertEqual(permissions(self.path(f"{mask}.wav")), 0o666 & ~mask)

    def test_replaces_an_old_one_and_keeps_its_permissions(self):
        self.write("out.wav", b"old").chmod(0o641)
        self.render("in.wav")
        self.expect_sound(self.path("out.wav"))
        self.assertEqual(permissions(self.path("out.wav")), 0o641)
        self.assertEqual(self.names(), ["in.wav", "out.wav"])

    def test_behind_a_link_is_replaced_and_the_link_stays(self):
        self.path("folder").mkdir()
        old = self.write("folder/old.wav", b"old")
        self.path("middle").symlink_to("folder/old.wav")
        self.path("out.wav").symlink_to(self.path("middle"))
        self.render("in.wav")
        self.expect_sound(old)
        self.assertTrue(self.path("out.wav").is_symlink() and self.path("middle").is_symlink())

    def test_behind_a_link_that_leads_to_nothing_yet_is_made_there(self):
        self.path("folder").mkdir()
        self.path("out.wav").symlink_to("folder/new.wav")
        self.render("in.wav")
        self.expect_sound(self.path("folder/new.wav"))
        self.assertTrue(self.path("out.wav").is_symlink())

    def test_may_have_any_name(self):
        for name in ("mit Leerzeichen und \u00fcml\u00e4ut \u97f3.wav", "no extension", "[a,b].wav", "a=b", "{}", "x" * 255, os.fsdecode(b"\xff\xfe.wav")):
            with self.subTest(name):
                self.render("in.wav", output=name)
                self.expect_sound(self.path(name))

    def test_may_begin_with_a_hyphen_behind_two(self):
        self.write("-in.wav", SOUND)
        self.write("-", SOUND)
        self.succeed("render", "--tail", "0", "Echolan", "--", "-in.wav", "-out.wav")
        self.expect_sound(self.path("-out.wav"))
        self.succeed("render", "Echolan", "--", "-", "--set")
        self.expect_sound(self.path("--set"))


class NoFile(OutputCase):
    def test_in_a_folder_that_is_not_there(self):
        self.refuse("missing/out.wav", "the folder missing: No such file or directory")
        self.refuse("missing/", "No such file or directory")
        self.refuse("", "No such file or directory")
        self.path("link.wav").symlink_to("missing/out.wav")
        self.refuse("link.wav", "the folder missing")

    def test_below_a_file(self):
        self.refuse("in.wav/out.wav", "Not a directory")

    def test_that_is_a_folder(self):
        self.path("folder").mkdir()
        for name in (".", "folder", "folder/", self.folder):
            self.refuse(name, "Is a directory")

    def test_with_a_name_that_is_too_long(self):
        self.refuse("x" * 256, "File name too long")
        self.refuse("x/" * 3000 + "x", "File name too long")

    def test_behind_links_that_lead_around(self):
        self.path("around").symlink_to("around")
        self.refuse("around", "Too many levels of symbolic links")


class Forbidden(UserCase):
    def setUp(self):
        super().setUp()
        self.write("in.wav", SOUND)

    def test_folder_is_named(self):
        self.folder.chmod(0o555)
        self.fail_with(OUTPUT, "render", "Echolan", "in.wav", "out.wav", says=("out.wav", "Permission denied"))
        self.folder.chmod(0o755)
        self.assertEqual(self.names(), ["bin", "in.wav"])

    def test_old_file_is_not_replaced(self):
        self.write("out.wav", b"old").chmod(0o444)
        self.fail_with(OUTPUT, "render", "Echolan", "in.wav", "out.wav", says=("out.wav: Permission denied",))
        self.assertEqual(self.path("out.wav").read_bytes(), b"old")
        self.assertEqual(self.names(), ["bin", "in.wav", "out.wav"])


class FullDisk(OutputCase):
    """A limit of the size of files stands for the disk; it strikes in the header, between and at the end."""

    def refuse_limited(self, limit):
        def limited():
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

        self.refuse("out.wav", "File too large", preexec_fn=limited)

    def test_leaves_nothing(self):
        for limit in (0, 10, 60, 1000, 100000, len(SOUND) - 1):
            with self.subTest(limit):
                self.refuse_limited(limit)

    def test_leaves_an_old_file_as_it_was(self):
        self.write("out.wav", b"old")
        self.refuse_limited(1000)
        self.assertEqual(self.path("out.wav").read_bytes(), b"old")


class Device(UserCase):
    def setUp(self):
        super().setUp()
        self.write("in.wav", SOUND)

    def refuse(self, output, *says, **options):
        before = self.names()
        self.fail_with(OUTPUT, "render", "Echolan", "in.wav", output, says=(str(output), *says), **options)
        self.assertEqual(self.names(), before)

    def expect_piped(self, data):
        self.write("piped", data)
        self.assertEqual(Wav(self.path("piped")).frames, 20000)
        self.assertFalse([name for name in self.names() if name.startswith(".")])

    def test_that_is_full(self):
        self.refuse("/dev/full", "No space left on device")
        self.path("full").symlink_to("/dev/full")
        self.refuse("full", "No space left on device")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/full").st_mode))

    def test_that_takes_everything_stays_a_device(self):
        self.succeed("render", "Echolan", "in.wav", "/dev/null")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))

    def test_a_pipe_gets_a_whole_file(self):
        self.path("link").symlink_to("/dev/stdout")
        for name in ("/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "link"):
            with self.subTest(name):
                done = subprocess.run([self.command, "render", "Echolan", "in.wav", name], cwd=self.folder,
                                      capture_output=True, **self.user)
                self.assertEqual((done.returncode, done.stderr), (DONE, b""))
                self.expect_piped(done.stdout)

    def test_a_named_pipe_gets_a_whole_file_and_stays(self):
        os.mkfifo(self.path("pipe"))
        self.path("pipe").chmod(0o666)
        got = []
        reader = threading.Thread(target=lambda: got.append(self.path("pipe").read_bytes()))
        reader.start()
        self.succeed("render", "Echolan", "in.wav", "pipe")
        reader.join()
        self.expect_piped(got[0])
        self.assertTrue(stat.S_ISFIFO(os.stat(self.path("pipe")).st_mode))

    def test_a_redirected_output_is_continued_and_not_replaced(self):
        with open(self.path("log"), "ab") as log:
            log.write(b"before")
            log.flush()
            command = [self.command, "render", "Echolan", "in.wav", "/dev/stdout"]
            done = subprocess.run(command, cwd=self.folder, stdout=log, **self.user)
            log.write(b"behind")
        self.assertEqual(done.returncode, DONE)
        data = self.path("log").read_bytes()
        self.assertEqual((data[:6], data[-6:]), (b"before", b"behind"))
        self.expect_piped(data[6:-6])

    def test_a_pipe_that_nobody_reads(self):
        reading, writing = os.pipe()
        os.close(reading)
        with os.fdopen(writing, "wb") as pipe:
            self.refuse("/dev/stdout", "Broken pipe", capture_output=False, stdout=pipe, stderr=subprocess.PIPE)

    def test_a_descriptor_that_is_not_open(self):
        self.refuse("/dev/fd/99", "Bad file descriptor")

    def test_needs_a_folder_for_temporary_files(self):
        self.fail_with(OUTPUT, "render", "Echolan", "in.wav", "/dev/null", env=os.environ | {"TMPDIR": "/proc"},
                       says=("no temporary file can be made in the folder /proc",))
        environment = os.environ | {"TMPDIR": str(self.path("missing"))}
        self.succeed("render", "Echolan", "in.wav", "/dev/null", env=environment)


if __name__ == "__main__":
    unittest.main()
