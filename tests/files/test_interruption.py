"""Ctrl-C from the terminal, and the signals that mean the same: one line and status 2 while nothing is written.

Where the program is does not depend on the clock: what it prints goes into a pipe that is smaller, so that it stands
in the middle of its words until somebody reads on.
"""

import fcntl
import os
import signal
import subprocess
import time
from pathlib import Path

from whole_files.mkvmux_case import MkvmuxCase, long_mkv, make_input, sound
from whole_files.wine_process import WAIT_SECONDS, wine_environment

PIPE_BYTES = 4096
LINE = "mkvmux: error: interrupted; no output was written"
DEV = Path(__file__).resolve().parents[2] / "dev"


class NarrowPipe:
    def __init__(self, case):
        self.read_end, self.write_end = os.pipe()
        fcntl.fcntl(self.write_end, fcntl.F_SETPIPE_SZ, PIPE_BYTES)
        self.read = b""
        case.addCleanup(os.close, self.read_end)

    def started(self):
        """The program has its end of it."""
        os.close(self.write_end)

    def read_until(self, text):
        while text not in self.read:
            piece = os.read(self.read_end, 1)
            if not piece:
                raise AssertionError(f"it ended before it said {text}: {self.read}")
            self.read += piece


class InterruptionCase(MkvmuxCase):
    def setUp(self):
        super().setUp()
        self.pipe = NarrowPipe(self)
        self.output = self.directory / "out.mkv"

    def check_nothing_written(self, run):
        self.assertEqual((run.status, run.error_lines), (2, [LINE]), run)
        self.assertFalse(self.output.exists())

    def many_inputs(self):
        """So many tracks that their list does not fit into the pipe; the output is opened after it."""
        source = self.directory / ("x" * 200 + ".mka")
        source.write_bytes(make_input("short.mka", *sound(1), "-c:a", "pcm_s16le").read_bytes())
        return [source] * (PIPE_BYTES // 200 + 2)


class Interruption(InterruptionCase):
    def begin(self, *arguments):
        process = self.start(*arguments, stdout=self.pipe.write_end)
        self.pipe.started()
        return process

    def test_ctrl_c_in_the_first_words(self):
        process = self.begin("--list-languages")
        self.pipe.read_until(b"\n")
        process.signal(signal.SIGINT)
        self.check_nothing_written(process.wait())

    def test_ctrl_c_before_the_output_is_open(self):
        process = self.begin("-o", self.output, *self.many_inputs())
        self.pipe.read_until(b"track 0:")
        process.signal(signal.SIGINT)
        self.check_nothing_written(process.wait())


class DevScript(InterruptionCase):
    """What ./dev mkvmux makes of the signals that no Windows program hears of."""

    def begin(self, *arguments):
        self.errors = open(self.directory / "errors.txt", "w+b")
        self.addCleanup(self.errors.close)
        process = subprocess.Popen([DEV, "mkvmux", *map(str, arguments)], env=wine_environment(),
                                   stdin=subprocess.DEVNULL, stdout=self.pipe.write_end, stderr=self.errors,
                                   start_new_session=True)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.pipe.started()
        return process

    def end_of(self, process):
        status = process.wait(WAIT_SECONDS)
        self.errors.seek(0)
        lines = [line for line in self.errors.read().decode().splitlines() if line.startswith("mkvmux:")]
        return status, lines

    def check_before_the_output(self, send):
        process = self.begin("-o", self.output, *self.many_inputs())
        self.pipe.read_until(b"track 0:")
        send(process.pid)
        self.assertEqual(self.end_of(process), (2, [LINE]))
        self.assertFalse(self.output.exists())

    def check_during_the_run(self, send):
        process = self.begin("-q", "-o", self.output, long_mkv())
        deadline = time.monotonic() + WAIT_SECONDS
        while not (self.output.exists() and self.output.stat().st_size > 5_000_000):
            self.assertIsNone(process.poll(), "it ended before it could be interrupted")
            self.assertLess(time.monotonic(), deadline, "it does not get on")
            time.sleep(0.002)
        send(process.pid)
        status, lines = self.end_of(process)
        self.assertEqual((status, lines), (1, ["mkvmux: warning: interrupted; the file ends here"]))
        self.assert_decodes(self.output)

    def test_ctrl_c_reaches_the_program_once(self):
        self.check_during_the_run(lambda pid: os.killpg(pid, signal.SIGINT))

    def test_sigterm_before_the_output_is_open(self):
        self.check_before_the_output(lambda pid: os.kill(pid, signal.SIGTERM))

    def test_sigterm_to_the_whole_group_finishes_the_file(self):
        self.check_during_the_run(lambda pid: os.killpg(pid, signal.SIGTERM))

    def test_a_closed_terminal_finishes_the_file(self):
        self.check_during_the_run(lambda pid: os.killpg(pid, signal.SIGHUP))
