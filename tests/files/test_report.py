"""mkvmux --report: a page about a Matroska file, of other writers too; and what a run tells with --verbose."""

import html.parser
import re
import shutil

from whole_files.mkvmux_case import MkvmuxCase, long_mkv, make_input, picture, sound
from whole_files.profiles import in_both_profiles

VOID_ELEMENTS = {"meta"}
HOSTILE = "<script>alert('x')</script>"


class Page(html.parser.HTMLParser):
    """The elements of a page with their attributes; whatever is not closed in order is an error."""

    def __init__(self, path):
        super().__init__()
        self.elements, self.open, self.texts = [], [], []
        self.feed(path.read_text(encoding="utf-8"))
        self.close()
        if self.open:
            raise AssertionError(f"not closed: {self.open}")

    def handle_starttag(self, tag, attrs):
        self.elements.append((tag, dict(attrs)))
        if tag not in VOID_ELEMENTS:
            self.open.append(tag)

    def handle_startendtag(self, tag, attrs):
        self.elements.append((tag, dict(attrs)))

    def handle_endtag(self, tag):
        if self.open.pop() != tag:
            raise AssertionError(f"</{tag}> closes something else")

    def handle_data(self, data):
        self.texts.append(data)

    def count(self, tag, css_class=None):
        return sum(1 for name, attributes in self.elements
                   if name == tag and css_class in (None, *attributes.get("class", "").split()))

    def has_id(self, name):
        return any(attributes.get("id") == name for _, attributes in self.elements)


def two_streams():
    """Of another writer."""
    return make_input("report.mkv", *picture(6), *sound(6), "-c:v", "mpeg4", "-g", "12", "-bf", "2", "-c:a", "flac",
                      "-metadata", f"title={HOSTILE}", "-metadata:s:a:0", f"title={HOSTILE}")


class Report(MkvmuxCase):
    def report(self, path, *arguments, status=0):
        page = self.directory / "page.html"
        run = self.mkvmux("--report", page, path, *arguments)
        self.assertEqual(run.status, status, f"there is no report: {run}")
        return Page(page), run

    def test_of_a_file_of_another_writer(self):
        page, run = self.report(two_streams())
        self.assertEqual(run.error_lines, [])
        self.assertEqual(page.count("path", "rate"), 2)
        self.assertEqual(page.count("path", "key"), 1, "keyframes of the picture; all of the sound are")
        self.assertEqual(page.count("path", "cluster"), 1)
        self.assertEqual(page.count("path", "cue"), 1)
        self.assertFalse(page.has_id("damage"))
        # Titles are text; nothing runs and nothing is fetched.
        self.assertEqual(page.count("script"), 0)
        self.assertIn(HOSTILE, " ".join(page.texts))
        for _, attributes in page.elements:
            self.assertFalse({"src", "href", "onload", "onerror", "onclick"} & set(attributes))

    def test_packets_and_keyframes_are_those_that_ffprobe_counts(self):
        page, _ = self.report(two_streams())
        flags = self.run_ffprobe(two_streams(), "-select_streams", "0", "-show_entries", "packet=flags", "-of", "csv=p=0")
        packets = flags.split()
        keyframes = sum(1 for line in packets if line.startswith("K"))
        text = " ".join(part.replace("\u202f", "") for part in page.texts)
        self.assertRegex(text, rf"track 1: video V_MPEG4/ISO/ASP .*? {len(packets)} {keyframes} ")

    def test_of_a_cut_file_it_says_where_it_ends(self):
        cut = self.directory / "cut.mkv"
        shutil.copy(two_streams(), cut)
        size = cut.stat().st_size
        with open(cut, "r+b") as file:
            file.truncate(size * 2 // 3)
        page, run = self.report(cut, status=1)
        self.assertTrue(page.has_id("damage"))
        self.assertEqual(len(run.error_lines), 1)
        begin = int(re.search(r"is damaged from byte (\d+) on", run.error_lines[0])[1])
        self.assertLessEqual(begin, size * 2 // 3)
        self.assertGreater(begin, size // 3)

    def test_of_a_damaged_file_it_says_where_damage_begins(self):
        damaged = self.directory / "damaged.mkv"
        content = bytearray(two_streams().read_bytes())
        second = content.index(b"\x1f\x43\xb6\x75", content.index(b"\x1f\x43\xb6\x75") + 4)
        content[second:second + 2000] = bytes(2000)
        damaged.write_bytes(content)
        page, run = self.report(damaged, status=1)
        self.assertIn(f"is damaged from byte {second} on", run.error_lines[0])
        self.assertEqual(page.count("rect", "damage"), 1)
        self.assertEqual(page.count("path", "rate"), 2)

    def test_an_existing_page_is_left_alone_and_the_input_is_never_written(self):
        page = self.directory / "page.html"
        page.write_text("mine")
        self.assert_fails(self.mkvmux("--report", page, two_streams()), "exists already (-y overwrites it)")
        self.assertEqual(page.read_text(), "mine")
        self.assertEqual(self.mkvmux("-y", "--report", page, two_streams()).status, 0)
        Page(page)
        copy = self.directory / "copy.mkv"
        shutil.copy(two_streams(), copy)
        self.assert_fails(self.mkvmux("-y", "--report", copy, copy), "is an input and cannot be the report")
        self.assertEqual(copy.read_bytes(), two_streams().read_bytes())

    def test_what_is_no_matroska_file_leaves_no_page(self):
        other = self.directory / "other.mkv"
        other.write_bytes(b"RIFF" + bytes(1000))
        page = self.directory / "page.html"
        self.assert_fails(self.mkvmux("--report", page, other), "has no report: it is no Matroska file")
        self.assertEqual([path.name for path in self.directory.iterdir()], ["other.mkv"])
        self.assert_fails(self.mkvmux("--report", page, self.directory / "none.mkv"), "cannot be opened")


@in_both_profiles
class Verbose(MkvmuxCase):
    def test_the_table_at_the_end_counts_what_is_in_the_file(self):
        output = self.directory / "out.mkv"
        run = self.mkvmux("-o", output, "--verbose", long_mkv())
        self.assertEqual((run.status, run.error_lines), (0, []), f"{run}")
        rows = [line.split() for line in run.output.splitlines() if re.match(r" +\d+ +\d+ ", line)]
        self.assertEqual([row[0] for row in rows], ["0", "1"])
        for row in rows:
            sizes = [size for size, _ in self.packets(output, int(row[0]))]
            self.assertEqual(int(row[1]), len(sizes), "packets")
            self.assertEqual(int(row[2]), sum(sizes), "bytes")
            self.assertEqual(row[-3:], ["0", "0", "0"], "late, dropped, silences")
        last = run.output.splitlines()[-1]
        clusters = output.read_bytes().count(b"\x1f\x43\xb6\x75")
        self.assertGreaterEqual(clusters, int(last.split()[0]))
        self.assertRegex(last, r"^\d+ clusters in [\d.]+ s; \d+ writes took [\d.]+ s, the longest [\d.]+ s$")

    def test_without_a_terminal_a_short_run_has_no_line_of_it(self):
        run = self.mkvmux("-o", self.directory / "out.mkv", "-v", make_input("tiny.mkv", *sound(1), "-c:a", "flac"))
        self.assertEqual(run.status, 0)
        self.assertNotIn("\r", run.output.replace("\r\n", "\n"))
        self.assertNotIn("queued", run.output)

    def test_quiet_and_verbose_exclude_each_other(self):
        run = self.mkvmux("-o", self.directory / "out.mkv", "-v", "-q", long_mkv())
        self.assert_fails(run, "--quiet and --verbose exclude each other")
