"""mkvmux --repair finishes a recording that was cut off, in the file itself."""

import os
import random
import shutil
import signal
import time

from whole_files import ebml_clusters
from whole_files.mkvmux_case import MkvmuxCase, long_mkv
from whole_files.profiles import in_both_profiles

KILL_AFTER_BYTES = 20_000_000
HEAD_BYTES = 4096  # far more than the head of these files
CLUSTER_ID = b"\x1f\x43\xb6\x75"
LONG_CLUSTERS = 9000
LONG_BLOCK_BYTES = 4_000_000
CUTS = int(os.environ.get("QRX_CUTS", "5"))


@in_both_profiles
class Repair(MkvmuxCase):
    def recording(self):
        """What a run leaves that was killed."""
        output = self.directory / "recording.mkv"
        process = self.start("-o", output, long_mkv())
        self.wait_for_bytes(output, KILL_AFTER_BYTES, process)
        process.signal(signal.SIGKILL)
        process.wait()
        return output

    def repair(self, path):
        run = self.mkvmux("--repair", path, "--progress", "never")
        self.assertEqual((run.status, run.error_lines), (0, []), f"it was not repaired: {run}")
        return run.output

    def assert_whole(self, path, frames):
        self.assertEqual(ebml_clusters.frames_in_whole_clusters(path), frames)
        self.identify(path)
        self.assert_decodes(path)
        for stream in (0, 1):
            expected = self.packets(long_mkv(), stream)[: frames[stream + 1]]
            self.assertEqual(self.packets(path, stream), expected)

    def test_recordings_cut_at_random_bytes_become_whole_files(self):
        recording = self.recording()
        size = recording.stat().st_size
        seed = int(os.environ.get("QRX_SEED", time.time_ns()))
        print(f"cut with seed {seed}")
        places = random.Random(seed)
        for cut in [size - 1] + [places.randrange(HEAD_BYTES, size) for _ in range(CUTS)]:
            with self.subTest(cut=cut):
                path = self.directory / "cut.mkv"
                shutil.copy(recording, path)
                os.truncate(path, cut)
                frames = ebml_clusters.frames_in_whole_clusters(path)
                if not frames:
                    self.assert_fails(self.mkvmux("--repair", path), "it holds no whole cluster")
                    continue
                self.assertIn("repaired: ", self.repair(path))
                self.assert_whole(path, frames)
                if cut == size - 1:
                    self.save_for_judges(path)

    def test_what_is_repaired_is_whole_and_left_alone(self):
        path = self.recording()
        self.repair(path)
        before = path.read_bytes()
        self.assertIn(f"{path.name}: is whole already; nothing is changed", self.repair(path))
        self.assertEqual(path.read_bytes(), before)

    def test_a_player_can_seek_in_it(self):
        path = self.recording()
        self.repair(path)
        found = self.run_ffprobe(path, "-read_intervals", "3%+#1", "-select_streams", "0", "-show_entries",
                                 "packet=pts_time,flags", "-of", "csv=p=0")
        start, flags = found.strip().strip(",").split(",")[:2]
        self.assertTrue(flags.startswith("K"))
        self.assertTrue(0 < float(start) <= 3, f"the keyframe in front of the third second is at {start}")

    def long_recording(self):
        """Over 32 GiB of keyframes, a second each, that were never stored: the file has holes in their place."""
        with open(self.recording(), "rb") as recording:
            head = recording.read(HEAD_BYTES)
        path = self.directory / "long.mkv"
        with open(path, "wb") as file:
            file.write(head[: head.index(CLUSTER_ID)])
            for second in range(LONG_CLUSTERS):
                time = b"\xe7\x84" + (1000 * second).to_bytes(4, "big")
                block = b"\xa3\x01" + LONG_BLOCK_BYTES.to_bytes(7, "big") + b"\x81\0\0\x80"
                size = len(time) + len(block) - 4 + LONG_BLOCK_BYTES
                file.write(CLUSTER_ID + b"\x01" + size.to_bytes(7, "big") + time + block)
                file.seek(LONG_BLOCK_BYTES - 4, os.SEEK_CUR)
            file.truncate(file.tell())
        return path

    def test_a_file_of_many_gigabytes_is_not_read_as_a_whole_nor_copied(self):
        path = self.long_recording()
        stored = path.stat().st_blocks
        output = self.repair(path)
        self.assertIn(f"repaired: 02:29:59.040 in {LONG_CLUSTERS} clusters, {LONG_CLUSTERS} cue points; 0 torn", output)
        self.assertGreater(path.stat().st_size, 1 << 35)
        self.assertLess(path.stat().st_blocks - stored, (1 << 20) / 512, "more than the index was written")
        self.assertIn("is whole already", self.repair(path), "although its Segment has no size that fits")
        found = self.run_ffprobe(path, "-read_intervals", "7000%+#1", "-show_entries", "packet=pts_time", "-of",
                                 "csv=p=0")
        self.assertEqual(found.strip().strip(","), "7000.000000", "the index leads there")

    def test_what_is_no_recording_of_ours_is_refused(self):
        path = self.directory / "other.mkv"
        shutil.copy(long_mkv(), path)
        before = path.read_bytes()
        run = self.mkvmux("--repair", path)
        self.assert_fails(run, "cannot be repaired: it is no recording of this muxer", "mkvmux -o NEW.mkv FILE")
        self.assertEqual(path.read_bytes(), before)

    def test_a_file_that_is_not_there_or_still_recorded_is_refused(self):
        self.assert_fails(self.mkvmux("--repair", self.directory / "none.mkv"), "none.mkv: cannot be opened")
        output = self.directory / "running.mkv"
        process = self.start("-o", output, long_mkv())
        self.wait_for_bytes(output, 1_000_000, process)
        run = self.mkvmux("--repair", output)
        if process.is_running():
            self.assert_fails(run, "running.mkv: cannot be opened for writing")
        process.wait()
        self.identify(output)
