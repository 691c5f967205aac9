"""Inputs of the tool's own sources that are cut off or damaged: a message and a finished file, or a refusal."""

import random
import subprocess

from whole_files.mkvmux_case import MkvmuxCase, cinepak_avi, make_input, picture, sound

SEED = 20240811
ROUNDS = 6


def film():
    """Matroska: H.264 and AAC, clusters of a second."""
    return make_input("film.mkv", *picture(6), *sound(6), "-c:v", "libx264", "-g", "25", "-c:a", "aac",
                      "-cluster_time_limit", "1000")


def raw_h264():
    return make_input("raw.h264", *picture(4), "-c:v", "libx264", "-g", "25", "-bf", "2")


def raw_h265():
    return make_input("raw.hevc", *picture(2), "-c:v", "libx265", "-x265-params", "log-level=error:keyint=25")


class DamagedInputs(MkvmuxCase):
    def mux_damaged(self, name, content):
        """The run and the output's path; what holds of every damaged input is checked here."""
        source = self.directory / name
        source.write_bytes(content)
        output = self.directory / (name + ".out.mkv")
        run = self.mkvmux("-y", "-o", output, source)
        self.assertIn(run.status, (0, 1, 2), f"no crash: {run}")
        self.assertEqual(len(run.error_lines), 0 if run.status == 0 else 1, f"one line says what is wrong: {run}")
        if run.status == 2:
            self.assertFalse(output.exists(), f"a refusal leaves no file: {run}")
        else:
            self.identify(output)  # a finished file: mkvmerge has nothing to say
        return run, output

    def flipped(self, path, rng):
        content = bytearray(path.read_bytes())
        for _ in range(rng.randint(1, 8)):
            content[rng.randrange(len(content))] ^= 1 << rng.randrange(8)
        return bytes(content)

    def check_kind(self, path, tells_its_length):
        rng = random.Random(SEED)
        whole = path.read_bytes()
        for number in range(ROUNDS):
            length = rng.randrange(len(whole) // 10, len(whole) - 1)
            run, _ = self.mux_damaged(f"cut{number}{path.suffix}", whole[:length])
            if tells_its_length:
                self.assertEqual(run.status, 1, f"a cut at {length} of {len(whole)} is told: {run}")
            self.mux_damaged(f"flipped{number}{path.suffix}", self.flipped(path, rng))

    def test_matroska(self):
        self.check_kind(film(), tells_its_length=True)

    def test_h264(self):
        self.check_kind(raw_h264(), tells_its_length=False)

    def test_h265(self):
        self.check_kind(raw_h265(), tells_its_length=False)

    def test_an_avi_file_that_was_cut_off(self):
        whole = cinepak_avi().read_bytes()
        run, output = self.mux_damaged("cut.avi", whole[:len(whole) // 2])
        self.assertEqual(run.status, 1, run)
        self.assertIn("cut.avi: is damaged", run.error_lines[0])
        kept = self.packets(output, 0)
        self.assertGreater(len(kept), 10)
        self.assertEqual(kept, self.packets(cinepak_avi(), 0)[:len(kept)])

    def test_what_lies_before_the_cut_is_kept(self):
        whole = film().read_bytes()
        run, output = self.mux_damaged("half.mkv", whole[:len(whole) // 2])
        self.assertEqual(run.status, 1, run)
        self.assertIn("half.mkv: is damaged", run.error_lines[0])
        before = self.packets(film(), 0)
        kept = self.packets(output, 0)
        self.assertGreater(len(kept), len(before) // 4)
        self.assertEqual(kept, before[:len(kept)])

    def test_of_several_inputs_the_damaged_ones_are_named(self):
        whole = film().read_bytes()
        halves = [self.directory / name for name in ("a.mkv", "b.mkv")]
        for half in halves:
            half.write_bytes(whole[:len(whole) // 2])
        run = self.mkvmux("-o", self.directory / "out.mkv", halves[0], film(), halves[1])
        self.assertEqual(run.status, 1, run)
        self.assertEqual(len(run.error_lines), 2, run)
        for half in halves:
            self.assertEqual([f"{half}: is damaged" in line for line in run.error_lines].count(True), 1, run)

    def test_what_lies_behind_the_damage_is_kept(self):
        content = bytearray(film().read_bytes())
        clusters = [at for at in range(len(content)) if content[at:at + 4] == b"\x1f\x43\xb6\x75"]
        self.assertGreater(len(clusters), 4)
        at = clusters[2] + 12
        content[at:at + 64] = bytes(64)
        run, output = self.mux_damaged("hole.mkv", bytes(content))
        self.assertEqual(run.status, 1, run)
        kept = self.packets(output, 0)
        self.assertEqual(kept[-25:], self.packets(film(), 0)[-25:])

    def test_names_that_promise_what_the_content_is_not(self):
        for name in ("a.mkv", "a.webm", "a.h264", "a.hevc", "a.srt", "a.ass"):
            run, _ = self.mux_damaged(name, b"hello, world\n" * 100)
            self.assert_fails(run, name)

    def test_subtitles_with_a_broken_line_keep_the_others(self):
        run, output = self.mux_damaged("broken.srt", b"1\n00:00:01,000 --> 00:00:02,000\none\n\n"
                                                     b"2\n00:00:xx --> 00:00:04,000\ntwo\n\n"
                                                     b"3\n00:00:05,000 --> 00:00:06,000\nthree\n")
        self.assertEqual(run.status, 1, run)
        text = subprocess.run(["ffmpeg", "-v", "error", "-i", str(output), "-f", "srt", "-"], capture_output=True,
                              text=True, check=True).stdout
        self.assertIn("00:00:05,000 --> 00:00:06,000\nthree", text)
        self.assertNotIn("two", text)
