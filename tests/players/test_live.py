"""Chromium plays what a server is still receiving from mkvmux -o -."""

import os
from pathlib import Path

from browser import Browser
from live_server import LiveServer
from whole_files.mkvmux_case import MkvmuxCase, make_input
from whole_files.profiles import in_both_profiles

PAGE = Path(__file__).resolve().parent / "page.html"
SECONDS = 8
FRAMES_PER_SECOND = 20
# What a pipe holds, and far more than the program does beside it: with so much left the run cannot have ended.
LEFT_BYTES = 1 << 20


def noisy(name, *codecs):
    """Noise makes the pictures large."""
    picture = f"testsrc=size=320x240:rate={FRAMES_PER_SECOND}:duration={SECONDS},noise=alls=60:allf=t"
    return make_input(name, "-f", "lavfi", "-i", picture, "-f", "lavfi", "-i",
                      f"sine=frequency=440:sample_rate=48000:duration={SECONDS}", "-g", str(FRAMES_PER_SECOND), "-b:v",
                      "4M", "-minrate", "4M", "-maxrate", "4M", *codecs)


@in_both_profiles
class LiveChromium(MkvmuxCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        super().setUp()
        # The host's own services, which the first program starts, would hold the pipe open.
        self.assertEqual(self.mkvmux("--version").status, 0)

    def check(self, source):
        read_end, write_end = os.pipe()
        process = self.start("-q", "-o", "-", "--webm", source, stdout=write_end)
        os.close(write_end)
        with os.fdopen(read_end, "rb") as pipe:
            size = source.stat().st_size
            self.assertGreater(size, 2 * LEFT_BYTES)
            server = LiveServer(PAGE, pipe, size - LEFT_BYTES)
            self.addCleanup(server.close)
            self.browser.open(f"{server.address}/page.html")
            state = self.browser.call("playLive", "live.webm", 1.0)
            self.assertTrue(process.is_running(), "it plays while the file is written")
            self.assertEqual((state["width"], state["height"], state["error"]), (320, 240, None))
            self.assertGreater(state["frames"], 0)
            self.assertGreater(state["audioBytes"], 0)
            server.go_on()
            self.assertEqual(self.browser.call("playToEnd")["error"], None)
            run = process.wait()
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        state = self.browser.call("state")
        self.assertTrue(state["ended"])
        self.assertEqual(state["corrupted"], 0)
        self.assertAlmostEqual(state["time"], SECONDS, delta=2 / FRAMES_PER_SECOND)

    def test_vp8_and_vorbis(self):
        self.check(noisy("live_vp8.webm", "-c:v", "libvpx", "-deadline", "realtime", "-cpu-used", "8", "-c:a",
                         "libvorbis"))

    def test_vp9_and_opus(self):
        self.check(noisy("live_vp9.webm", "-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-c:a",
                         "libopus"))
