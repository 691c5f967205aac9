"""mkvmux is killed in the middle of a run: every cluster that had reached the file is there for other programs."""

import signal

from whole_files import ebml_clusters
from whole_files.mkvmux_case import MkvmuxCase, long_avi, run_tool

KILL_AFTER_BYTES = 20_000_000


class KilledRun(MkvmuxCase):
    def killed_file(self):
        source = long_avi()
        output = self.directory / "killed.mkv"
        process = self.start("-o", output, source)
        self.wait_for_bytes(output, KILL_AFTER_BYTES, process)
        process.signal(signal.SIGKILL)
        process.wait()
        self.assertLess(output.stat().st_size, source.stat().st_size, "the run was over before it was killed")
        return source, output

    def test_mkvmerge_and_ffmpeg_recover_every_flushed_cluster(self):
        source, output = self.killed_file()
        flushed = ebml_clusters.frames_in_whole_clusters(output)
        self.assertGreater(flushed.get(1, 0), 10, "too little was flushed to say anything")

        rescued = self.directory / "rescued.mkv"
        done = run_tool(["mkvmerge", "-o", str(rescued), str(output)])
        self.assertIn(done.returncode, (0, 1), f"mkvmerge cannot read the file: {done.stdout}")
        for judge, path in (("ffmpeg", output), ("mkvmerge", rescued)):
            for track, stream in ((1, 0), (2, 1)):
                with self.subTest(judge=judge, track=track):
                    packets = self.packets(path, stream)
                    self.assertGreaterEqual(len(packets), flushed[track], "frames of flushed clusters are lost")
                    count = flushed[track]
                    self.assertEqual(packets[:count], self.packets(source, stream)[:count])
