"""The page of mkvmux --report as Chromium shows it: what is there, that it can be seen, and that nothing runs."""

from browser import Browser
from whole_files.mkvmux_case import MkvmuxCase, make_input, picture, run_tool, sound
from range_server import RangeServer

HOSTILE = "<script>document.title = 'taken over'</script>"
FIRST_TRACK = (47, 111, 221)  # as the style of a light page has it
LIGHT, DARK = "rgb(251, 251, 250)", "rgb(21, 24, 28)"
CLOSE = 60  # colours are mixed with what lies behind them


def two_streams():
    return make_input("shown.mkv", *picture(6), *sound(6), "-c:v", "mpeg4", "-g", "12", "-c:a", "flac", "-metadata",
                      f"title={HOSTILE}")


class ReportPage(MkvmuxCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)
        cls.browser.resize(1300, 1400)

    def setUp(self):
        super().setUp()
        server = RangeServer(self.directory)
        self.addCleanup(server.close)
        run = self.mkvmux("--report", self.directory / "page.html", two_streams())
        self.assertEqual((run.status, run.error_lines), (0, []), f"there is no report: {run}")
        self.browser.emulate_colour_scheme("light")
        self.browser.open(f"{server.address}/page.html")

    def ask(self, expression):
        return self.browser.call(f"(() => {expression})")

    def pixels(self, selector):
        shot, raw = self.directory / "shot.png", self.directory / "shot.raw"
        shot.write_bytes(self.browser.screenshot_of(selector))
        done = run_tool(["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", str(shot), "-pix_fmt", "rgb24", "-f",
                         "rawvideo", str(raw)])
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        content = raw.read_bytes()
        return [tuple(content[at:at + 3]) for at in range(0, len(content), 3)]

    def test_the_time_line_is_drawn_and_its_labels_lie_inside(self):
        width, height = self.ask("[document.querySelector('#timeline').getBoundingClientRect()]"
                                 ".map(box => [box.width, box.height])[0]")
        self.assertGreater(width, 700)
        self.assertGreater(height, 150)
        outside = self.ask("[...document.querySelectorAll('#timeline text')].filter(text => {"
                           "const box = text.getBoundingClientRect();"
                           "const all = document.querySelector('#timeline').getBoundingClientRect();"
                           "return box.left < all.left - 1 || box.right > all.right + 1 || box.width < 3; })"
                           ".map(text => text.textContent)")
        self.assertEqual(outside, [], "texts that are cut off")
        pixels = self.pixels("#timeline")
        drawn = sum(1 for pixel in pixels if max(abs(a - b) for a, b in zip(pixel, FIRST_TRACK)) < CLOSE)
        self.assertGreater(drawn, len(pixels) / 400, "the bitrate of the first track")
        self.assertGreater(len(set(pixels)), 20, "colours")

    def test_tracks_clusters_cues_and_elements_are_there(self):
        self.assertEqual(self.ask("document.querySelectorAll('#timeline .rate').length"), 2)
        for name in ("cluster", "cue", "key"):
            self.assertEqual(self.ask(f"document.querySelectorAll('#timeline .mark.{name}').length"), 1, name)
        self.assertEqual(self.ask("document.querySelectorAll('#tracks tr').length"), 3)
        self.assertIn("kbit/s", self.ask("document.querySelector('#timeline .pointer title').textContent"))
        self.assertGreater(self.ask("document.querySelectorAll('#bytes rect').length"), 3)
        self.assertIn("Segment", self.ask("document.querySelector('#elements').textContent"))

    def test_elements_open_without_a_script(self):
        height = "document.querySelector('#elements').getBoundingClientRect().height"
        before = self.ask(height)
        self.ask("[...document.querySelectorAll('#elements details:not([open]) > summary')]"
                 ".find(line => line.textContent.startsWith('Tracks')).click()")
        self.assertGreater(self.ask(height), before)

    def test_titles_of_the_file_are_text(self):
        self.assertEqual(self.ask("document.querySelector('#title').textContent"), HOSTILE)
        self.assertEqual(self.ask("document.scripts.length"), 0)
        self.assertEqual(self.ask("document.title"), "shown.mkv")
        self.assertEqual(self.ask("performance.getEntriesByType('resource').map(entry => entry.name)"
                                  ".filter(name => !name.endsWith('favicon.ico'))"), [])

    def test_it_is_light_or_dark_as_the_reader_likes(self):
        background = "getComputedStyle(document.body).backgroundColor"
        self.assertEqual(self.ask(background), LIGHT)
        self.browser.emulate_colour_scheme("dark")
        self.assertEqual(self.ask(background), DARK)
