"""A render as a process: signals, progress on a terminal, memory."""

import os
import pty
import re
import signal
import subprocess
import time
import unittest

from command_case import COMMAND, IS_SANITIZED, CommandCase, wav_bytes


class ProcessCase(CommandCase):
    def make_silence(self, name, frames, rate=8000):
        """A sound file of 16 bits that takes no room on the disk."""
        header = wav_bytes(b"", rate=rate, size=2 * frames)
        self.write(name, header)
        os.truncate(self.path(name), len(header) + 2 * frames)

    def start(self, *arguments, **options):
        return subprocess.Popen([COMMAND, *map(str, arguments)], cwd=self.folder, stdin=subprocess.DEVNULL,
                                **({"stdout": subprocess.PIPE, "stderr": subprocess.PIPE} | options))


class Interrupted(ProcessCase):
    FRAMES = 1 << 30  # some seconds of work

    def interrupt(self, number, output="out.wav", **options):
        """Stops a render that has begun to write; returns what the process ended with."""
        before = set(self.names())
        process = self.start("render", "Echolan", "in.wav", output, **options)
        self.addCleanup(process.communicate)
        while process.poll() is None and not self.has_written(before):
            time.sleep(0.01)
        process.send_signal(number)
        process.wait()
        return process.returncode

    def has_written(self, before):
        return any(self.path(name).stat().st_size > 10000 for name in set(self.names()) - before)

    def test_leaves_nothing_and_ends_by_the_signal(self):
        self.make_silence("in.wav", self.FRAMES)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT):
            with self.subTest(number):
                self.assertEqual(self.interrupt(number), -number)
                self.assertEqual(self.names(), ["in.wav"])

    def test_leaves_an_old_output_as_it_was(self):
        self.make_silence("in.wav", self.FRAMES)
        self.write("out.wav", b"old")
        self.assertEqual(self.interrupt(signal.SIGTERM), -signal.SIGTERM)
        self.assertEqual((self.path("out.wav").read_bytes(), self.names()), (b"old", ["in.wav", "out.wav"]))

    def test_goes_on_when_the_caller_ignores_the_signal(self):
        self.make_silence("in.wav", 1 << 24)
        code = self.interrupt(signal.SIGHUP, preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.assertEqual((code, self.names()), (0, ["in.wav", "out.wav"]))


class Progress(ProcessCase):
    def show(self, *arguments):
        """What a terminal gets from standard error, and the seconds that it took."""
        terminal, end = pty.openpty()
        start = time.monotonic()
        process = self.start(*arguments, stderr=end)
        os.close(end)
        got = b""
        try:
            while chunk := os.read(terminal, 4096):
                got += chunk
        except OSError:
            pass  # the other end is closed
        os.close(terminal)
        process.communicate()
        self.assertEqual(process.returncode, 0)
        return got.decode(), time.monotonic() - start

    def show_slow_render(self):
        self.make_silence("in.wav", 1 << (22 if IS_SANITIZED else 24))
        return self.show("render", "Echolan", "in.wav", "out.wav", "--block", 1)

    def test_tells_what_is_done_and_what_remains_at_most_ten_times_a_second(self):
        text, seconds = self.show_slow_render()
        updates = re.findall(r"\r(\d+) %, (\d+):(\d\d) left", text)
        self.assertGreater(len(updates), 0)
        self.assertLessEqual(len(updates), 10 * seconds + 1)
        percents = [int(update[0]) for update in updates]
        self.assertEqual(percents, sorted(percents))
        self.assertTrue(len(percents) == 1 or percents[0] < percents[-1], percents)

    def test_is_erased_at_the_end(self):
        text, _ = self.show_slow_render()
        shown, column = [" "] * 200, 0
        for letter in text:
            if letter == "\r":
                column = 0
            elif letter == "\b":
                column -= 1
            else:
                shown[column], column = letter, column + 1
        self.assertEqual(("".join(shown).strip(), column), ("", 0))

    def test_is_silent_when_there_is_no_terminal(self):
        self.make_silence("in.wav", 1 << 25)
        self.succeed("render", "Echolan", "in.wav", "out.wav")


@unittest.skipIf(IS_SANITIZED, "a sanitizer keeps memory of its own")
class Memory(ProcessCase):
    def peak(self, frames, *options):
        """The greatest size in memory of a render, in bytes."""
        self.make_silence("in.wav", frames)
        process = self.start("render", "Echolan", "in.wav", "out.wav", *options, stdout=None, stderr=None)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        self.assertGreater(self.path("out.wav").stat().st_size, 4 * frames)
        return usage.ru_maxrss * 1024

    def test_of_a_long_render_is_that_of_a_short_one(self):
        short = self.peak(80000)
        self.assertLess(self.peak(60 * 60 * 8000), short + (4 << 20))  # the output has 115 MB


if __name__ == "__main__":
    unittest.main()
