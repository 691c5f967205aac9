"""Each way to fail: exit status 2, one line on standard error that names what and why, no trace left behind."""

import resource
import shutil
import signal

from whole_files.mkvmux_case import BIN, MkvmuxCase, cinepak_avi, long_video_avi, make_input, pcm_wave, picture, sound
from whole_files.wine_process import WineProcess


class Failures(MkvmuxCase):
    def setUp(self):
        super().setUp()
        self.output = self.directory / "out.mkv"

    def assert_fails_without_output(self, run, *texts):
        self.assert_fails(run, *texts)
        self.assertFalse(self.output.exists(), "a run that cannot start leaves no file")

    def test_a_missing_input(self):
        run = self.mkvmux("-o", self.output, self.directory / "missing.avi")
        self.assert_fails_without_output(run, "missing.avi", "cannot be opened")

    def test_an_input_that_is_a_directory(self):
        run = self.mkvmux("-o", self.output, self.directory)
        self.assert_fails_without_output(run, "is a directory")

    def test_the_second_of_two_inputs_is_missing(self):
        run = self.mkvmux("-o", self.output, pcm_wave(), self.directory / "missing.avi")
        self.assert_fails_without_output(run, "missing.avi")

    def test_an_input_that_no_splitter_takes(self):
        text = self.directory / "notes.txt"
        text.write_text("no media here\n")
        self.assert_fails_without_output(self.mkvmux("-o", self.output, text), "notes.txt", "no splitter takes it")

    def test_damaged_inputs(self):
        whole = cinepak_avi().read_bytes()
        for size in (0, 1, 12, 100, 2000):
            damaged = self.directory / f"cut{size}.avi"
            damaged.write_bytes(whole[:size])
            with self.subTest(size=size):
                self.assert_fails_without_output(self.mkvmux("-o", self.output, damaged), damaged.name)

    def test_a_stream_whose_type_the_muxer_does_not_take(self):
        source = make_input("wma.avi", *picture(1), *sound(1), "-c:v", "cinepak", "-c:a", "wmav2")
        run = self.mkvmux("-o", self.output, source)
        self.assert_fails_without_output(run, "wma.avi: stream 'Stream 01'", "wave tag 0x0161", "does not take")

    def test_an_empty_input(self):
        empty = self.directory / "empty.avi"
        empty.touch()
        for options in (["-o", self.output], ["--identify"]):
            run = self.mkvmux(*options, pcm_wave(), empty)
            self.assert_fails_without_output(run, "empty.avi: is empty")
            self.assertNotIn("GStreamer-CRITICAL", run.errors, "nobody tries to read it")

    def test_an_output_in_a_folder_that_is_missing_is_told_before_an_input_is_opened(self):
        missing = self.directory / "no" / "such"
        for options in (["-o", missing / "out.mkv"], ["-o", self.output, "--save-config", missing / "out.mkv"]):
            run = self.mkvmux(*options, pcm_wave())
            self.assert_fails_without_output(run, "out.mkv: cannot be created: there is no directory", str(missing))
            self.assertEqual(run.output, "", "no input was opened")

    def test_an_output_that_is_a_directory_is_told_so_with_and_without_leave_to_overwrite(self):
        for options in ([], ["-y"]):
            run = self.mkvmux(*options, "-o", self.directory, pcm_wave())
            self.assert_fails(run, f"{self.directory}: cannot be created: it is a directory")
            self.assertEqual(run.output, "", "no input was opened")

    def test_a_name_that_is_too_long(self):
        name = "x" * 256
        for arguments in (["-o", self.output, name], ["-o", name, pcm_wave()], [f"@{name}"],
                          ["-o", self.output, "--attach", name, pcm_wave()],
                          ["-o", self.output, "--load-config", name, pcm_wave()]):
            with self.subTest(arguments=arguments):
                self.assert_fails_without_output(self.mkvmux(*arguments), name, "the name is too long")

    def test_the_output_is_an_input(self):
        source = self.directory / "same.wav"
        source.write_bytes(pcm_wave().read_bytes())
        run = self.mkvmux("-y", "-o", source, source)
        self.assert_fails(run, "same.wav", "is an input")
        self.assertEqual(source.read_bytes(), pcm_wave().read_bytes())

    def test_a_disk_that_is_full_from_the_start(self):
        run = self.mkvmux("-y", "-o", "/dev/full", pcm_wave())
        self.assert_fails(run, "/dev/full", "cannot be written", "unfinished")

    def test_a_file_that_can_grow_no_further(self):
        """The limit is set on the running program alone: Wine's server must not inherit it."""
        limit = 20_000_000
        process = self.start("-o", self.output, long_video_avi(),
                             preexec_fn=lambda: signal.signal(signal.SIGXFSZ, signal.SIG_IGN))
        self.wait_for_bytes(self.output, 1_000_000, process)
        resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (limit, limit))
        self.assert_fails(process.wait(), "out.mkv", "cannot be written", "unfinished")
        self.assertLessEqual(self.output.stat().st_size, limit)
        packets = self.packets(self.output, 0)
        self.assertGreater(len(packets), 10, "what was written before the error is readable")
        self.assertEqual(packets, self.packets(long_video_avi(), 0)[: len(packets)])

    def test_command_lines_that_cannot_be_followed(self):
        for arguments in ([], ["-o", self.output], [pcm_wave()], ["--no-such-option", pcm_wave()],
                          ["--progress", "sometimes", "-o", self.output, pcm_wave()]):
            with self.subTest(arguments=arguments):
                self.assert_fails_without_output(self.mkvmux(*arguments))


class Registration(MkvmuxCase):
    """With the module registered, and with the registration taken back."""

    def setUp(self):
        super().setUp()
        self.output = self.directory / "out.mkv"

    def regsvr32(self, *arguments):
        module = "Z:" + str(BIN / "QRX_MKVMuxer.ax").replace("/", "\\")
        process = WineProcess("regsvr32", "/s", *arguments, module)
        self.addCleanup(process.end)
        run = process.wait()
        self.assertEqual(run.status, 0, f"regsvr32 {arguments} failed: {run}")

    def test_the_registered_module_is_used_and_an_unregistered_one_is_named(self):
        self.regsvr32()
        try:
            run = self.mkvmux("-o", self.output, cinepak_avi(), registered=True)
        finally:
            self.regsvr32("/u")
        self.assertEqual(run.status, 0, run)
        self.assert_decodes(self.output)
        unregistered = self.mkvmux("-y", "-o", self.output, cinepak_avi(), registered=True)
        self.assert_fails(unregistered, "is not registered", "--no-register")

    def test_a_module_that_is_missing_beside_the_program_is_named(self):
        alone = self.directory / "mkvmux.exe"
        shutil.copy(BIN / "mkvmux.exe", alone)
        process = WineProcess(alone, "--no-register", "-o", self.output, pcm_wave())
        self.addCleanup(process.end)
        self.assert_fails(process.wait(), "QRX_MKVMuxer.ax: cannot be loaded")
        self.assertFalse(self.output.exists())
