"""With the index in front, Chromium and ffmpeg seek in a file on a web server without asking for its end."""

import shutil
import subprocess
from pathlib import Path

from browser import Browser
from range_server import RangeServer
from whole_files.mkvmux_case import RUN_TIMEOUT_SECONDS, MkvmuxCase, make_input
from whole_files.profiles import STRICT

PAGE = Path(__file__).resolve().parent / "page.html"
SECONDS = 20
TARGET = SECONDS / 2


def large_video():
    """Far larger than what a browser reads ahead; noise cannot be made smaller."""
    picture = f"testsrc=size=640x480:rate=10:duration={SECONDS},noise=alls=100:allf=t"
    return make_input("large.webm", "-f", "lavfi", "-i", picture, "-c:v", "libvpx", "-deadline", "realtime",
                      "-cpu-used", "8", "-g", "10", "-b:v", "30M", "-minrate", "30M", "-maxrate", "30M", "-qmax", "10")


class IndexInFront(MkvmuxCase):
    profile = STRICT

    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def parts_asked_for(self, *options):
        """Where the parts begin that a seek to the middle takes, as shares of the file."""
        output = self.directory / "video.webm"
        run = self.mkvmux("-o", output, *options, large_video())
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        self.save_for_judges(output)
        size = output.stat().st_size
        self.assertGreater(size, 40_000_000)
        shutil.copy(PAGE, self.directory)
        server = RangeServer(self.directory)
        self.addCleanup(server.close)
        self.browser.open(f"{server.address}/page.html")
        state = self.browser.call("load", "video.webm")
        self.assertAlmostEqual(state["duration"], SECONDS, delta=0.2)
        state = self.browser.call("seek", TARGET)
        self.assertIsNone(state["error"])
        self.assertAlmostEqual(state["time"], TARGET, delta=1e-3)
        return [first / size for first in server.asked_for("video.webm")]

    def test_in_front_nothing_behind_the_target_is_asked_for(self):
        parts = self.parts_asked_for("--cues", "front")
        self.assertTrue(any(0.3 < part < 0.6 for part in parts), parts)
        self.assertLess(max(parts), 0.6, parts)

    def test_at_the_end_the_end_is_asked_for(self):
        """So that the test above can fail."""
        parts = self.parts_asked_for()
        self.assertGreater(max(parts), 0.9, parts)


class FfmpegIndexInFront(MkvmuxCase):
    """When it opens a file, ffmpeg reads all that the seek head names but the cues, so the statistics tags, too."""

    profile = STRICT

    def parts_asked_for(self, *options):
        output = self.directory / "video.mkv"
        run = self.mkvmux("-o", output, *options, large_video())
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        server = RangeServer(self.directory)
        self.addCleanup(server.close)
        done = subprocess.run(["ffmpeg", "-v", "error", "-ss", str(TARGET), "-i", f"{server.address}/video.mkv",
                               "-frames:v", "1", "-f", "null", "-"], capture_output=True, text=True,
                              timeout=RUN_TIMEOUT_SECONDS)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return [first / output.stat().st_size for first in server.asked_for("video.mkv")]

    def test_without_statistics_tags_it_asks_for_the_head_and_the_target_alone(self):
        parts = self.parts_asked_for("--cues", "front", "--disable-track-statistics-tags")
        self.assertEqual(len(parts), 2, parts)
        self.assertEqual(parts[0], 0)
        self.assertTrue(0.3 < parts[1] < 0.6, parts)

    def test_at_the_end_the_end_is_asked_for(self):
        parts = self.parts_asked_for("--disable-track-statistics-tags")
        self.assertGreater(max(parts), 0.9, parts)
