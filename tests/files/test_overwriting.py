"""No file that a run reads is written by the same run, whatever it is read for, written as and called."""

import json
import os

from whole_files.mkvmux_case import MkvmuxCase, pcm_wave


class Overwriting(MkvmuxCase):
    def setUp(self):
        super().setUp()
        self.source = self.write("in.wav", pcm_wave(1).read_bytes())
        self.logs = self.directory / "logs"
        self.logs.mkdir()
        # Each is a valid one of its kind, so that nothing else refuses it.
        self.saved = self.directory / "saved.cfg"
        run = self.mkvmux("-o", self.directory / "first.mkv", "--save-config", self.saved, self.source)
        self.assertEqual(run.status, 0, run)

    def write(self, name, content):
        path = self.directory / name
        path.write_bytes(content)
        return path

    def readers(self, path):
        """How a run is told to read the file, what the file holds then, and the run's other input."""
        options = json.dumps(["--track-name", "0:x"]).encode()
        return {
            "input": ([path], self.source.read_bytes()),
            "attachment": (["--attach", path, self.source], b"a picture"),
            "configuration": (["--load-config", path, self.source], self.saved.read_bytes()),
            "options": (["@" + str(path), self.source], options),
        }

    def writers(self):
        """How a run is told to write a file, and the file."""
        output = self.directory / "out.mkv"
        config = self.directory / "new.cfg"
        return {
            "the output": (["-o", output], output),
            "the saved configuration": (["-o", self.directory / "x.mkv", "--save-config", config], config),
            "the trace log": (["-o", self.directory / "x.mkv", "--log", self.logs], self.logs / "QRX_MKVMuxer.log"),
        }

    def check_refused(self, arguments, read, purpose, content):
        run = self.mkvmux("-y", *arguments)
        self.assert_fails(run, read.name, f"is an input and cannot be {purpose}")
        self.assertEqual(read.read_bytes(), content)

    def test_what_is_read_is_never_written(self):
        for purpose, (writing, path) in self.writers().items():
            for kind, (reading, content) in self.readers(path).items():
                with self.subTest(written_as=purpose, read_as=kind):
                    path.write_bytes(content)
                    self.check_refused([*writing, *reading], path, purpose, content)
                    path.unlink()

    def test_another_name_of_the_same_file_is_the_same_file(self):
        cover = self.write("cover.jpg", b"a picture")
        os.link(cover, self.directory / "linked.mkv")
        (self.directory / "link.mkv").symlink_to(cover)
        for name in ("linked.mkv", "link.mkv", "logs/../cover.jpg"):
            with self.subTest(name=name):
                self.check_refused(["-o", self.directory / name, "--attach", cover, self.source], cover, "the output",
                                   b"a picture")

    def test_what_is_not_read_is_overwritten_when_allowed(self):
        cover = self.write("notes.dat", b"a note")
        output = self.write("out.mkv", b"old")
        config = self.write("new.cfg", b"old")
        arguments = ["-o", output, "--save-config", config, "--attach", cover, self.source]
        self.assert_fails(self.mkvmux(*arguments), "out.mkv", "exists already")
        self.assertEqual((output.read_bytes(), config.read_bytes()), (b"old", b"old"))
        run = self.mkvmux("-y", *arguments)
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        self.assert_decodes(output)
