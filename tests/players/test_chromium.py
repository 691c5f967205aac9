"""Chromium plays the WebM files that mkvmux writes: length, time that runs, seeking, and the very frame."""

import shutil
from pathlib import Path

from browser import Browser
from whole_files.mkvmux_case import MkvmuxCase, make_input, run_tool
from whole_files.profiles import in_both_profiles
from range_server import RangeServer

HERE = Path(__file__).resolve().parent
# One colour a second, far apart, so that the nearest one tells the second.
COLOURS = [(255, 0, 0), (0, 255, 0), (0, 0, 255), (255, 255, 0), (255, 0, 255), (0, 255, 255), (255, 255, 255),
           (0, 0, 0)]
FRAMES_PER_SECOND = 10
SECONDS = len(COLOURS)
GROUP_OF_PICTURES = 2 * FRAMES_PER_SECOND
FRAME_SECONDS = 1 / FRAMES_PER_SECOND
FURTHEST_COLOUR = 60  # what coding and the way to the screen change


def coloured_video(name, *codecs):
    """Solid colours; a keyframe every two seconds, so that most seconds begin between two of them."""
    inputs, labels = [], ""
    for index, (red, green, blue) in enumerate(COLOURS):
        inputs += ["-f", "lavfi", "-i", f"color=0x{red:02x}{green:02x}{blue:02x}:s=320x240:r={FRAMES_PER_SECOND}:d=1"]
        labels += f"[{index}]"
    inputs += ["-f", "lavfi", "-i", f"sine=frequency=440:sample_rate=48000:duration={SECONDS}"]
    return make_input(name, *inputs, "-filter_complex", f"{labels}concat=n={SECONDS}[v]", "-map", "[v]", "-map",
                      f"{SECONDS}:a", "-g", str(GROUP_OF_PICTURES), *codecs)


def distance(one, other):
    return max(abs(a - b) for a, b in zip(one, other))


@in_both_profiles
class Chromium(MkvmuxCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        super().setUp()
        server = RangeServer(self.directory)
        self.addCleanup(server.close)
        self.address = server.address
        shutil.copy(HERE / "page.html", self.directory)

    def centre_colour(self):
        picture = self.directory / "screen.png"
        picture.write_bytes(self.browser.screenshot_of("video"))
        raw = self.directory / "pixel.raw"
        done = run_tool(["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", str(picture), "-vf", "crop=1:1", "-pix_fmt",
                         "rgb24", "-f", "rawvideo", str(raw)])
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return tuple(raw.read_bytes())

    def assert_shows_second(self, second):
        colour = self.centre_colour()
        nearest = min(range(SECONDS), key=lambda index: distance(COLOURS[index], colour))
        self.assertEqual(nearest, second, f"the second whose colour is nearest to {colour}")
        self.assertLess(distance(COLOURS[nearest], colour), FURTHEST_COLOUR, f"the colour is {colour}")

    def assert_seeks(self, time, second):
        state = self.browser.call("seek", time)
        self.assertIsNone(state["error"])
        self.assertAlmostEqual(state["time"], time, delta=1e-3)
        self.assert_shows_second(second)

    def check(self, source):
        output = self.directory / "played.webm"
        self.mux(output, source)
        length = float(self.run_ffprobe(output, "-show_entries", "format=duration", "-of", "csv=p=0"))
        self.assertAlmostEqual(length, SECONDS, delta=FRAME_SECONDS)
        self.browser.open(f"{self.address}/page.html")
        state = self.browser.call("load", "played.webm")
        self.assertEqual((state["width"], state["height"], state["error"]), (320, 240, None))
        self.assertAlmostEqual(state["duration"], length, delta=1e-3)
        self.assertEqual(state["seekable"], [0, state["duration"]])
        self.assert_plays()
        # The middle, back, the last frame before a keyframe and the keyframe itself, the end.
        middle, last = (frame * FRAMES_PER_SECOND + FRAMES_PER_SECOND // 2 for frame in (SECONDS // 2, SECONDS - 1))
        keyframe = GROUP_OF_PICTURES
        starts = [time / 1000 for time in self.times(output, 0)]
        for frame in (middle, 5, keyframe - 1, keyframe, keyframe + 11, last, len(starts) - 1):
            with self.subTest(frame=frame):
                self.assert_seeks(starts[frame], frame // FRAMES_PER_SECOND)
        self.assert_ends(state["duration"])

    def assert_plays(self):
        before = self.browser.call("playUntil", 0.3)
        after = self.browser.call("playUntil", before["time"] + 0.5)
        self.assertGreater(after["time"], before["time"])
        self.assertGreater(after["frames"], before["frames"])
        self.assertGreater(after["audioBytes"], 0)
        self.assertEqual((after["corrupted"], after["error"]), (0, None))
        self.browser.call("pause")

    def assert_ends(self, duration):
        state = self.browser.call("seek", duration)
        self.assertAlmostEqual(state["time"], duration, delta=1e-3)
        self.assert_shows_second(SECONDS - 1)
        self.browser.call("seek", duration - 0.5)
        state = self.browser.call("playToEnd")
        self.assertTrue(state["ended"])
        self.assertIsNone(state["error"])
        self.assertAlmostEqual(state["time"], duration, delta=1e-3)
        self.assert_shows_second(SECONDS - 1)

    def test_vp8_and_vorbis(self):
        self.check(coloured_video("colours_vp8.webm", "-c:v", "libvpx", "-b:v", "500k", "-c:a", "libvorbis"))

    def test_vp9_and_opus(self):
        self.check(coloured_video("colours_vp9.webm", "-c:v", "libvpx-vp9", "-b:v", "500k", "-deadline", "realtime",
                                  "-cpu-used", "8", "-c:a", "libopus"))

    def test_a_damaged_file_is_seen_as_one(self):
        """So that the tests above can fail."""
        (self.directory / "damaged.webm").write_bytes(b"\x1a\x45\xdf\xa3" + bytes(1000))
        self.browser.open(f"{self.address}/page.html")
        with self.assertRaisesRegex(RuntimeError, "media error"):
            self.browser.call("load", "damaged.webm")


def play_av1_and_opus(self):
    self.check(coloured_video("colours_av1.webm", "-c:v", "libsvtav1", "-preset", "10", "-c:a", "libopus"))


# Compatible files have no codec identifier for it that a browser knows.
globals()["StrictChromium"].test_av1_and_opus = play_av1_and_opus
