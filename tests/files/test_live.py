"""mkvmux -o -: the file goes into a pipe, for programs that read it while it is written."""

import os
import pty
import re
import subprocess

from whole_files.mkvmux_case import RUN_TIMEOUT_SECONDS, MkvmuxCase, cinepak_avi, long_mkv, make_input, run_tool, \
    picture, sound
from whole_files.profiles import in_both_profiles

CUES_ID = b"\x1c\x53\xbb\x6b"
SEEK_HEAD_ID = b"\x11\x4d\x9b\x74"
HEAD_BYTES = 4096
BUFFER = re.compile(r"chain +\*+ \(\w+:sink\)")


def matroska():
    return make_input("live.mkv", *picture(4), *sound(4), "-c:v", "libx264", "-g", "25", "-bf", "2", "-c:a",
                      "libmp3lame")


@in_both_profiles
class Live(MkvmuxCase):
    def setUp(self):
        super().setUp()
        # The host's own services, which the first program starts, would hold the pipe open.
        self.assertEqual(self.mkvmux("--version").status, 0)

    def pipe_from(self, *arguments):
        """A run that writes into a pipe, whose reading end is in .output_pipe."""
        read_end, write_end = os.pipe()
        process = self.start("-o", "-", *arguments, stdout=write_end)
        os.close(write_end)
        process.output_pipe = os.fdopen(read_end, "rb")
        self.addCleanup(process.output_pipe.close)
        return process

    def piped(self, *arguments, name="piped.mkv"):
        """A run whose output a program took that copies it."""
        path = self.directory / name
        process = self.pipe_from(*arguments)
        path.write_bytes(process.output_pipe.read())
        run = process.wait()
        self.assertEqual(run.status, 0, run)
        return path, run

    def save_cut(self, path):
        if directory := os.environ.get("QRX_JUDGE_DIR"):
            strict = ".strict" if self.is_strict else ""
            name = self.id().replace("test_", "", 1) + strict + ".cut" + path.suffix
            (type(path)(directory) / name).write_bytes(path.read_bytes())

    def check_live(self, path, source):
        self.identify(path)
        self.assert_decodes(path)
        for stream in (0, 1):
            self.assert_same_packets(source, stream, path, stream)
        content = path.read_bytes()
        self.assertNotIn(CUES_ID, content)
        self.assertNotIn(SEEK_HEAD_ID, content[:HEAD_BYTES])
        self.assertEqual(self.run_ffprobe(path, "-show_entries", "format=nb_streams", "-of", "csv=p=0").strip(), "2")

    def test_the_bytes_of_the_file_go_into_the_pipe_and_the_words_beside_it(self):
        path, run = self.piped(matroska())
        self.check_live(path, matroska())
        self.save_cut(path)
        self.assertIn("track 0: ", run.errors)
        self.assertIn(f"standard output: {path.stat().st_size} bytes written", run.errors)

    def test_quiet_says_nothing(self):
        _, run = self.piped("-q", matroska())
        self.assertEqual(run.error_lines, [])

    def test_what_the_systems_splitter_reads(self):
        path, _ = self.piped("-q", cinepak_avi())
        self.check_live(path, cinepak_avi())

    def test_webm(self):
        source = make_input("live.webm", *picture(4), *sound(4, 48000), "-c:v", "libvpx", "-g", "25", "-c:a",
                            "libopus")
        path, _ = self.piped("-q", "--webm", source, name="piped.webm")
        self.check_live(path, source)
        self.save_cut(path)
        self.assertIn(b"\x42\x82\x84webm", path.read_bytes()[:100])

    def test_ffmpeg_reads_from_the_pipe(self):
        process = self.pipe_from("-q", matroska())
        done = subprocess.run(["ffmpeg", "-v", "error", "-xerror", "-i", "-", "-map", "0", "-c", "copy", "-f",
                               "framehash", "-hash", "md5", "-"], stdin=process.output_pipe, capture_output=True,
                              text=True, timeout=RUN_TIMEOUT_SECONDS)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(process.wait().status, 0)
        hashes = sorted(line.split(",")[-1].strip() for line in done.stdout.splitlines() if not line.startswith("#"))
        expected = sorted(packet[1] for stream in (0, 1) for packet in self.packets(matroska(), stream))
        self.assertEqual(hashes, expected)

    def test_gstreamer_reads_from_the_pipe(self):
        process = self.pipe_from("-q", matroska())
        done = subprocess.run(["gst-launch-1.0", "-v", "fdsrc", "!", "matroskademux", "!", "video/x-h264", "!",
                               "fakesink", "silent=false", "sync=false"], stdin=process.output_pipe,
                              capture_output=True, text=True, timeout=RUN_TIMEOUT_SECONDS)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(process.wait().status, 0)
        self.assertEqual(len(BUFFER.findall(done.stdout)), len(self.packets(matroska(), 0)))

    def test_a_file_that_standard_output_goes_into_gets_the_same_bytes(self):
        path = self.directory / "redirected.mkv"
        with path.open("wb") as output:
            run = self.mkvmux("-o", "-", "-q", "--deterministic", "x", matroska(), stdout=output)
        self.assertEqual(run.status, 0 if self.is_strict else 1, run)
        piped, _ = self.piped_with_any_words("-q", "--deterministic", "x", matroska())
        self.assertEqual(len(path.read_bytes()), len(piped.read_bytes()))
        if self.is_strict:
            self.assertEqual(path.read_bytes(), piped.read_bytes())

    def piped_with_any_words(self, *arguments):
        process = self.pipe_from(*arguments)
        path = self.directory / "piped.mkv"
        path.write_bytes(process.output_pipe.read())
        return path, process.wait()

    def test_a_reader_that_leaves_ends_the_run_with_one_line(self):
        process = self.pipe_from("-q", long_mkv())
        self.assertEqual(process.output_pipe.read(4), b"\x1a\x45\xdf\xa3")
        process.output_pipe.close()
        self.assert_fails(process.wait(), "standard output: cannot be written: ")

    def test_a_console_is_refused(self):
        terminal, console = pty.openpty()
        self.addCleanup(os.close, terminal)
        run = self.mkvmux("-o", "-", matroska(), stdin=console, stdout=console)
        os.close(console)
        self.assert_fails(run, "standard output is a console")

    def test_no_input_is_taken_for_it(self):
        """The name of a file, beside the one that means standard output."""
        source = self.directory / "-"
        source.write_bytes(matroska().read_bytes())
        path, run = self.piped("-q", source)
        self.assertEqual(run.error_lines, [])
        self.check_live(path, source)

    def test_it_is_refused_by_repair_and_stays_as_it_is(self):
        path, _ = self.piped("-q", matroska())
        before = path.read_bytes()
        self.assert_fails(self.mkvmux("--repair", path), "it is no recording of this muxer")
        self.assertEqual(path.read_bytes(), before)

    def test_it_can_be_written_anew_as_a_whole_file(self):
        path, _ = self.piped("-q", matroska())
        output = self.directory / "anew.mkv"
        self.mux(output, path)
        for stream in (0, 1):
            self.assert_same_packets(matroska(), stream, output, stream)
        self.assertIn(CUES_ID, output.read_bytes())
