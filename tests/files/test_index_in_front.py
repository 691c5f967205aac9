"""mkvmux --cues front: the index stands in front of the clusters, where players find it first."""

import re
import shutil
import signal

from whole_files import ebml_clusters
from whole_files.mkvmux_case import MkvmuxCase, long_mkv, make_input, picture, sound
from whole_files.profiles import STRICT

CUES_ID = b"\x1c\x53\xbb\x6b"
CLUSTER_ID = b"\x1f\x43\xb6\x75"
TEXT = re.compile(r"the index is at the end of the file: it takes (\d+) bytes, and room was kept for (\d+)")


def keyframes_each_second():
    return make_input("keyframes.mkv", *picture(20), *sound(20), "-c:v", "libx264", "-preset", "ultrafast", "-g", "25",
                      "-c:a", "libmp3lame")


def only_keyframes():
    return make_input("intra.mkv", *picture(20), *sound(20), "-c:v", "ffv1", "-g", "1", "-c:a", "libmp3lame")


class IndexInFront(MkvmuxCase):
    profile = STRICT

    def setUp(self):
        super().setUp()
        self.output = self.directory / "out.mkv"

    def mux_front(self, source, *options):
        run = self.mkvmux("-o", self.output, *options, source)
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        self.save_for_judges(self.output)
        self.identify(self.output)
        for stream in (0, 1):
            self.assert_same_packets(source, stream, self.output, stream)

    def test_the_room_is_estimated_from_the_length_of_the_input(self):
        for source in (keyframes_each_second(), only_keyframes()):
            with self.subTest(source=source.name):
                self.mux_front(source, "-y", "--cues", "front")
                cues, clusters = self.places_by_seek_head()
                self.assertLess(cues, clusters)

    def places_by_seek_head(self):
        """The seek head names the cues, too: the element is what comes behind."""
        content = self.output.read_bytes()
        cluster = content.index(CLUSTER_ID)
        cues = [found.start() for found in re.finditer(re.escape(CUES_ID), content)]
        self.assertEqual(len(cues), 2, "the entry and the element")
        return cues[1], cluster

    def test_at_the_end_when_nothing_is_said(self):
        self.mux_front(keyframes_each_second())
        cues, clusters = self.places_by_seek_head()
        self.assertGreater(cues, clusters)
        self.mux_front(keyframes_each_second(), "-y", "--cues", "end")
        cues, clusters = self.places_by_seek_head()
        self.assertGreater(cues, clusters)

    def test_ffmpeg_seeks_to_the_same_packets(self):
        self.mux_front(keyframes_each_second(), "--cues", "front")
        for second in (3, 12.5, 19):
            landed = self.run_ffprobe(self.output, "-select_streams", "v", "-read_intervals", f"{second}%+#1",
                                      "-show_entries", "packet=pts_time,flags", "-of", "csv=p=0")
            expected = self.run_ffprobe(keyframes_each_second(), "-select_streams", "v", "-read_intervals",
                                        f"{second}%+#1", "-show_entries", "packet=pts_time,flags", "-of", "csv=p=0")
            self.assertEqual(landed, expected)

    def test_an_index_that_does_not_fit_is_at_the_end_and_that_is_said(self):
        run = self.mkvmux("-o", self.output, "--reserve-index-space", "100", keyframes_each_second())
        self.assertEqual(run.status, 1, run)
        self.assertEqual(len(run.error_lines), 1, run)
        said = TEXT.search(run.error_lines[0])
        self.assertTrue(said, run)
        self.assertEqual(said[2], "100")
        self.save_for_judges(self.output)
        cues, clusters = self.places_by_seek_head()
        self.assertGreater(cues, clusters)
        self.assertEqual(self.output.stat().st_size - cues, int(said[1]) + self.bytes_of_tags())
        exact = self.directory / "exact.mkv"
        run = self.mkvmux("-o", exact, "--reserve-index-space", said[1], keyframes_each_second())
        self.assertEqual((run.status, run.error_lines), (0, []), "so many bytes suffice")

    def bytes_of_tags(self):
        content = self.output.read_bytes()
        return len(content) - content.rindex(b"\x12\x54\xc3\x67")

    def test_the_trace_log_says_it_too(self):
        self.mkvmux("-o", self.output, "--log", self.directory, "--reserve-index-space", "100",
                    keyframes_each_second())
        self.assertIn("the index is at the end", (self.directory / "QRX_MKVMuxer.log").read_text("latin-1"))

    def test_what_cannot_be(self):
        for options, texts in ((("-o", "-", "--cues", "front"), ["--cues front goes with a file"]),
                               (("-o", self.output, "--cues", "middle"), ["'middle' is not front or end"]),
                               (("-o", self.output, "--cues", "end", "--reserve-index-space", "5000"), ["exclude"]),
                               (("-o", self.output, "--reserve-index-space", "0"), ["--reserve-index-space"]),
                               (("-o", self.output, "--reserve-index-space", "16777217"), ["--reserve-index-space"])):
            with self.subTest(options=options):
                self.assert_fails(self.mkvmux(*options, keyframes_each_second()), *texts)

    def test_a_saved_configuration_keeps_the_room(self):
        configuration = self.directory / "settings.cfg"
        self.mux_front(keyframes_each_second(), "--cues", "front", "--save-config", configuration)
        self.mux_front(keyframes_each_second(), "-y", "--load-config", configuration)
        cues, clusters = self.places_by_seek_head()
        self.assertLess(cues, clusters)
        self.mux_front(keyframes_each_second(), "-y", "--load-config", configuration, "--cues", "end")
        cues, clusters = self.places_by_seek_head()
        self.assertGreater(cues, clusters)

    def test_a_recording_that_was_killed_gets_its_index_in_front(self):
        process = self.start("-o", self.output, "--cues", "front", long_mkv())
        self.wait_for_bytes(self.output, 20_000_000, process)
        process.signal(signal.SIGKILL)
        process.wait()
        frames = ebml_clusters.frames_in_whole_clusters(self.output)
        cut = self.directory / "cut.mkv"
        shutil.copy(self.output, cut)
        run = self.mkvmux("--repair", self.output, "--progress", "never")
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        self.save_for_judges(self.output)
        self.assertEqual(ebml_clusters.frames_in_whole_clusters(self.output), frames)
        self.identify(self.output)
        self.assert_decodes(self.output)
        cues, clusters = self.places_by_seek_head()
        self.assertLess(cues, clusters)


class CompatibleIndex(MkvmuxCase):
    def test_it_stays_at_the_end_and_the_user_is_told(self):
        for options, name in ((("--cues", "front"), "--cues"),
                              (("--reserve-index-space", "5000"), "--reserve-index-space")):
            run = self.mkvmux("-y", "-o", self.directory / "out.mkv", *options, keyframes_each_second())
            self.assertEqual((run.status, run.error_lines),
                             (1, [f"mkvmux: warning: {name}: no effect with the compatible profile"]), run)
