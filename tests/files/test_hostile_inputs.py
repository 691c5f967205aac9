"""Files that play with limits: a message of one line, and neither the memory nor the disk is filled."""

import json
import os
import time

import hostile_files
from whole_files.mkvmux_case import MkvmuxCase
from whole_files.wine_process import WAIT_SECONDS

MOST_MEMORY = 512 << 20
MOST_WRITTEN = 512 << 20


class HostileInputs(MkvmuxCase):
    def run_bounded(self, *arguments):
        """A run of which the kernel tells the most memory that it ever held."""
        process = self.start(*arguments)
        deadline = time.monotonic() + WAIT_SECONDS
        while True:
            pid, status, usage = os.wait4(process.pid, os.WNOHANG)
            if pid:
                break
            self.assertLess(time.monotonic(), deadline, f"still running: {process.so_far()}")
            time.sleep(0.02)
        process.process.returncode = os.waitstatus_to_exitcode(status)
        run = process.so_far()
        self.assertLessEqual(usage.ru_maxrss << 10, MOST_MEMORY, run)
        return run

    def check(self, name, content=None):
        """The file is refused or its damage told, in one line."""
        path = self.directory / name
        if content is not None:
            path.write_bytes(content)
        output = self.directory / (name + ".out.mkv")
        run = self.run_bounded("-y", "-o", output, path)
        self.assertIn(run.status, (1, 2), run)
        self.assertEqual(len(run.error_lines), 1, run)
        self.assertTrue(run.error_lines[0].startswith("mkvmux: "), run)
        if output.exists():
            self.assertLess(output.stat().st_size, MOST_WRITTEN, run)
        return run

    def test_zeros_that_are_inflated_and_widened(self):
        self.assertIn("compressed or encrypted more than once",
                      self.check("layers.mkv", hostile_files.widened_zeros()).error_lines[0])
        self.check("one_layer.mkv", hostile_files.one_layer_of_widened_zeros())

    def test_widening_counts_as_what_decompression_makes(self):
        self.check("one_frame.mkv", hostile_files.widened_zeros_of(1, 31 << 20, 2048))
        self.check("three_frames.mkv", hostile_files.widened_zeros_of(3, 20 << 20, 600))

    def test_frames_of_one_block(self):
        for layers in (1, 3):
            self.check(f"laced{layers}.mkv", hostile_files.laced_bomb(layers))

    def test_private_data(self):
        for layers in (1, 3):
            content = hostile_files.private_bomb(layers)
            self.check(f"private{layers}.mkv", content)
            run = self.run_bounded("--identify", self.directory / f"private{layers}.mkv")
            self.assertEqual(run.status, 0, run)

    def test_frames_of_many_tracks_that_wait(self):
        for layers in (1, 3):
            self.check(f"waiting{layers}.mkv", hostile_files.many_waiting_bombs(layers))

    def test_stripped_headers(self):
        self.check("many_headers.mkv", hostile_files.stripped_headers())
        self.check("large_header.mkv", hostile_files.one_large_stripped_header())

    def test_many_frames_below_the_ratio(self):
        self.check("steady.mkv", hostile_files.steady_bomb())

    def test_tiny_frames_cost_little(self):
        path = self.directory / "tiny.mkv"
        for blocks, silent_tracks in ((4000, 0), (16_000, 1)):
            path.write_bytes(hostile_files.tiny_keyframes(blocks, silent_tracks))
            run = self.run_bounded("-y", "-o", self.directory / "out.mkv", path)
            self.assertEqual((run.status, run.error_lines), (0, []), run)

    def test_huge_chunks(self):
        for size in (0x50000000, 0x7F700000, 0x90000000):
            for is_there in (True, False):
                path = self.directory / f"{size:x}{is_there}.avi"
                hostile_files.write_huge_avi(path, size, is_there)
                self.check(path.name)

    def test_a_time_base_that_cannot_be(self):
        self.check("time.avi", hostile_files.impossible_time_base())

    def test_an_attachment_longer_than_its_parent_is_named(self):
        run = self.check("lost.mkv", hostile_files.attachment_longer_than_its_parent())
        self.assertIn("the attachment 'lost.txt' is damaged or too large, and left out", run.error_lines[0])

    def test_many_indexes_and_line_ends_cost_little(self):
        (self.directory / "indexes.avi").write_bytes(hostile_files.many_indexes(4000, 80_000))
        (self.directory / "lines.srt").write_bytes(hostile_files.srt_of_line_ends())
        (self.directory / "fields.ass").write_bytes(hostile_files.ass_of_many_fields())
        for name, status in (("indexes.avi", 0), ("lines.srt", 0), ("fields.ass", 1)):
            run = self.run_bounded("-y", "-o", self.directory / "out.mkv", self.directory / name)
            self.assertEqual(run.status, status, run)

    def test_texts_of_a_file_forge_no_line_and_command_no_terminal(self):
        path = self.directory / "forged.mkv"
        path.write_bytes(hostile_files.forged_names())
        output = self.directory / "out.mkv"
        log = self.directory / "log"
        runs = [self.run_bounded("--disable", "1", "--log", log, "-y", "-o", output, path),
                self.run_bounded("-y", "-o", output, path), self.run_bounded("--identify", path),
                self.run_bounded("--identify", "--json", path)]
        texts = [text for run in runs for text in (run.output, run.errors)]
        names = [track.get("name", "") for track in json.loads(runs[-1].output)["inputs"][0]["tracks"]]
        self.assertTrue(any("forged" in name for name in names), names)
        texts += [file.read_text("utf-8", "replace") for file in log.iterdir()] + names
        for text in texts:
            self.assertNotRegex(text, "(?m)^mkvmux: error: forged")
            self.assertNotRegex(text, "[\x1b\x07\x9b\u202e]")
        self.assertNotRegex("".join(names), "[\r\n]")
