"""mkvmux's options and its answers when all goes well."""

import os
import pty
import re
import select
import signal
import subprocess
import time

from whole_files.mkvmux_case import MkvmuxCase, cinepak_avi, long_mkv, long_video_avi, make_input, pcm_wave, raw_avi, sound
from whole_files.wine_process import BUILD, HOST_NOISE, WAIT_SECONDS


class CommandLine(MkvmuxCase):
    def test_version_and_help(self):
        version = self.mkvmux("--version")
        self.assertEqual(version.status, 0)
        self.assertRegex(version.output, r"^mkvmux \d+\.\d+\.\d+\.\d+\s*$")
        help_text = self.mkvmux("--help")
        self.assertEqual(help_text.status, 0)
        for option in ("--output", "--webm", "--identify", "--no-register", "--quiet", "--progress"):
            self.assertIn(option, help_text.output)

    def test_identify_lists_streams_types_and_codecs_and_writes_nothing(self):
        before = set(self.directory.iterdir())
        run = self.mkvmux("--identify", cinepak_avi(), pcm_wave(), cwd=self.directory)
        self.assertEqual(run.status, 0, run)
        self.assertRegex(run.output, r"track 0 \(Stream 00\): video 'cvid', 160x120, 25 fps: V_MS/VFW/FOURCC")
        self.assertRegex(run.output, r"track 1 \(Stream 01\): audio wave tag 0x0001, 44100 Hz, 1 channel, 16 bits: "
                                     r"A_PCM/INT/LIT")
        self.assertRegex(run.output, r"track 2 \(.*\): audio wave tag 0x0001")
        self.assertEqual(set(self.directory.iterdir()), before)

    def test_progress_is_plain_lines_outside_a_terminal(self):
        run = self.mux(self.directory / "out.mkv", raw_avi())
        self.assertIn("Progress: 0%\n", run.output)
        self.assertIn("Progress: 100%\n", run.output)
        self.assertNotIn("\r[", run.output)

    def test_progress_is_a_bar_on_a_terminal(self):
        master, slave = pty.openpty()
        process = self.start("-o", self.directory / "out.mkv", raw_avi(), stdin=slave, stdout=slave)
        os.close(slave)
        text = self.read_terminal(master, process)
        self.assertEqual(process.wait().status, 0, text)
        self.assertRegex(text, r"\[=+\] 100%")
        self.assertNotIn("Progress:", text)

    def read_terminal(self, master, process):
        """All that is shown until nobody has the terminal open any more, which the host keeps for a while after the
        program has ended; without the sequences that move the cursor."""
        shown = b""
        deadline = time.monotonic() + WAIT_SECONDS
        while (piece := self.read_waiting(master)) is not None:
            self.assertLess(time.monotonic(), deadline, shown)
            shown += piece
        os.close(master)
        self.assertFalse(process.wait().status)
        return re.sub(r"\x1b\[[0-9;?]*[A-Za-z]", "", shown.decode("utf-8", "replace"))

    @staticmethod
    def read_waiting(master):
        try:
            return os.read(master, 4096) if select.select([master], [], [], 0.1)[0] else b""
        except OSError:  # nobody has the other side open any more
            return None

    def test_quiet_says_nothing(self):
        run = self.mkvmux("-q", "-o", self.directory / "out.mkv", raw_avi())
        self.assertEqual((run.status, run.output, run.error_lines), (0, "", []))
        self.assert_decodes(self.directory / "out.mkv")

    def test_quiet_keeps_the_build_tool_quiet_too(self):
        output, said = self.directory / "out.mkv", self.directory / "said.txt"
        for quiet in ("-q", "--quiet"):
            with said.open("wb") as file:  # no pipe, which the host's services would keep open
                status = subprocess.call([BUILD.parent / "dev", "mkvmux", quiet, "-y", "-o", output, pcm_wave()],
                                         stdin=subprocess.DEVNULL, stdout=file, stderr=file)
            lines = [line for line in said.read_text().splitlines() if not HOST_NOISE.search(line)]
            self.assertEqual((status, lines), (0, []))
            self.assert_decodes(output)

    def test_progress_never_and_always(self):
        never = self.mkvmux("--progress", "never", "-o", self.directory / "a.mkv", pcm_wave())
        self.assertEqual(never.status, 0, never)
        self.assertNotIn("Progress", never.output)
        always = self.mkvmux("-q", "--progress", "always", "-o", self.directory / "b.mkv", pcm_wave())
        self.assertIn("Progress: 100%", always.output)

    def test_an_existing_output_is_overwritten_only_when_allowed(self):
        output = self.directory / "out.mkv"
        output.write_bytes(b"precious" * 1_000_000)
        self.assert_fails(self.mkvmux("-o", output, pcm_wave()), "out.mkv", "exists", "-y")
        self.assertEqual(output.read_bytes()[:8], b"precious")
        run = self.mkvmux("-y", "-o", output, pcm_wave())
        self.assertEqual(run.status, 0, run)
        self.assertLess(output.stat().st_size, 1_000_000)
        self.assert_decodes(output)

    def test_file_names_of_every_script(self):
        source = make_input("töne €日本\U0001F3B5.wav", *sound(1), "-c:a", "pcm_s16le")
        output = self.directory / "ausgäbe \U0001F3AC 出力.mkv"
        run = self.mux(output, source)
        self.assertIn("töne €日本\U0001F3B5.wav", run.output)
        self.assert_decodes(output)

    def test_relative_paths(self):
        (self.directory / "in.wav").write_bytes(pcm_wave().read_bytes())
        run = self.mkvmux("-o", "out.mkv", "./in.wav", cwd=self.directory)
        self.assertEqual(run.status, 0, run)
        self.assert_decodes(self.directory / "out.mkv")

    def interrupt(self, source):
        """The output of a run that Ctrl-C ends in the middle."""
        output = self.directory / "out.mkv"
        process = self.start("-o", output, source)
        self.wait_for_bytes(output, 5_000_000, process)
        process.signal(signal.SIGINT)
        run = process.wait()
        self.assertEqual(run.status, 1, f"an interrupted run is done with warnings: {run}")
        self.assertEqual(len(run.error_lines), 1, run)
        self.assertIn("interrupted", run.error_lines[0])
        self.assertLess(output.stat().st_size, source.stat().st_size, "the run was over before it was interrupted")
        return output

    def check_finalised(self, output, source, tracks):
        """The sizes, the duration and the index are there, and every stream is the beginning of the input's."""
        self.assertGreater(self.identify(output)["container"]["properties"]["duration"], 0)
        self.assert_decodes(output)
        for track in range(tracks):
            after = self.packets(output, track)
            self.assertGreater(len(after), 0)
            self.assertEqual(after, self.packets(source, track)[: len(after)])

    def test_ctrl_c_finalises_the_file(self):
        self.check_finalised(self.interrupt(long_video_avi()), long_video_avi(), 1)

    def test_ctrl_c_finalises_a_file_of_two_streams(self):
        self.check_finalised(self.interrupt(long_mkv()), long_mkv(), 2)


class DocumentType(MkvmuxCase):
    """The document type follows the option or the name of the output."""

    def check_webm(self, output, *options):
        run = self.mkvmux(*options, "-o", output, pcm_wave())
        self.assertEqual(run.status, 0)
        self.assertIn(b"\x42\x82\x84webm", output.read_bytes()[:64])
        self.save_for_judges(output)

    def test_webm_by_option(self):
        self.check_webm(self.directory / "out.mkv", "--webm")

    def test_webm_by_the_name_of_the_output(self):
        self.check_webm(self.directory / "out.webm")

    def test_matroska_otherwise(self):
        output = self.directory / "out.mkv"
        self.mux(output, pcm_wave())
        self.assertIn(b"\x42\x82\x88matroska", output.read_bytes()[:64])
