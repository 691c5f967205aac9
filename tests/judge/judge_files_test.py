#!/usr/bin/env python3
"""Tests the judge: files by other writers pass, and each kind of damage is found.

The command that runs mkvlayout comes from the environment variable QRX_MKVLAYOUT.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import types
import unittest

import complaints
import format_rules
from strict_rules_test import StrictRules  # noqa: F401, one of the cases that run here

JUDGE = pathlib.Path(__file__).with_name("judge_files.py")
TIMESTAMP_ZERO = bytes.fromhex("e78100")  # a cluster's time
CUE_CLUSTER_POSITION = bytes.fromhex("f182")  # two bytes follow
CUE_RELATIVE_POSITION = bytes.fromhex("f081")  # one byte follows
PADDING = bytes.fromhex("ec")
SEEK_POSITION = bytes.fromhex("53ac82")
SIMPLE_BLOCK_OF_TRACK_1 = bytes.fromhex("81000080")  # at the cluster's time, a keyframe
CUES = bytes.fromhex("1c53bb6b")
BIT_DEPTH_16 = bytes.fromhex("62648110")
TRACK_UID = bytes.fromhex("73c588")  # eight bytes follow
LANGUAGE_UND = bytes.fromhex("22b59c83") + b"und"


def run(*command):
    subprocess.run(command, check=True, capture_output=True)


class KnowsNothing:
    @staticmethod
    def is_known(*_):
        return False


class JudgeTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        folder = pathlib.Path(cls.folder.name)
        source, made = folder / "source.avi", folder / "made.mkv"
        run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=d=1:s=64x48:r=25", "-f", "lavfi", "-i", "sine=d=1",
            "-c:v", "cinepak", "-c:a", "pcm_s16le", str(source))
        run("mkvmerge", "-q", "--disable-language-ietf", "-o", str(made), str(source))
        cls.made = made.read_bytes()
        live = folder / "live.mkv"
        run("ffmpeg", "-v", "error", "-i", str(source), "-c", "copy", "-live", "1", "-f", "matroska", str(live))
        cls.live = live.read_bytes()

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def judge(self, name, content, *options, known=()):
        """With the known complaints given, and no others."""
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / name).write_bytes(content)
            explained = pathlib.Path(folder) / "known.json"
            explained.write_text(json.dumps([{"files": "*", "profile": "compatible", "reason": "a test", "defect": "a test", **entry} for entry in known]))
            outcome = subprocess.run([sys.executable, str(JUDGE), "--mkvlayout", os.environ["QRX_MKVLAYOUT"],
                                      "--known", str(explained), *options, folder],
                                     capture_output=True, text=True, check=False)
        return outcome.returncode, outcome.stdout + outcome.stderr

    def assert_found(self, content, expected):
        status, text = self.judge("damaged.mkv", bytes(content))
        self.assertEqual(status, 1, text)
        self.assertIn("0 passed, 1 failed", text)
        self.assertIn(expected, text)

    def changed(self, pattern, offset, value, start=0):
        content = bytearray(self.made)
        place = content.index(pattern, start) + len(pattern) + offset
        content[place] = value if content[place] != value else value ^ 1
        return content

    def test_a_file_by_another_writer_passes(self):
        status, text = self.judge("made.mkv", self.made)
        self.assertEqual(status, 0, text)
        self.assertIn("1 passed, 0 failed", text)

    def test_a_recording_that_was_cut_passes_where_it_says_so(self):
        cut = self.live[: len(self.live) * 2 // 3]
        known = [{"tool": "ffprobe", "pattern": "File ended prematurely"}]
        status, text = self.judge("recording.cut.mkv", cut, known=known)
        self.assertEqual(status, 0, text)
        status, text = self.judge("recording.mkv", cut)
        self.assertEqual(status, 1, text)

    def test_a_seek_position_that_misses_is_found(self):
        self.assert_found(self.changed(SEEK_POSITION, 1, 0x33), "the seek head puts")

    def test_a_cue_position_that_misses_is_found(self):
        cues = self.made.index(CUES, len(self.made) // 2)
        self.assert_found(self.changed(CUE_CLUSTER_POSITION, 1, 0x33, cues), "where no Cluster begins")

    def test_a_cluster_time_that_fits_no_cue_is_found(self):
        self.assert_found(self.changed(TIMESTAMP_ZERO, -1, 9), "which has no such block")

    def test_a_missing_end_is_found(self):
        self.assert_found(self.made[:-100], "reaches beyond")

    def test_bytes_behind_the_segment_are_found(self):
        self.assert_found(self.made + b"behind", "the Segment ends before the file")

    def test_a_block_of_another_track_is_found(self):
        self.assert_found(self.changed(SIMPLE_BLOCK_OF_TRACK_1, -4, 0x85), "a block of the unknown track 5")

    def test_a_value_that_the_format_forbids_is_found_by_mediaconch(self):
        self.assert_found(self.replaced(BIT_DEPTH_16, BIT_DEPTH_16[:-1] + b"\0"),
                          "mediaconch: EBML-ELEMENT-VALID-RANGE fail")

    def test_a_track_uid_of_zero_is_found(self):
        place = self.made.index(TRACK_UID) + len(TRACK_UID)
        size = self.made[place - 1] & 0x7F
        self.assert_found(self.made[:place] + bytes(size) + self.made[place + size:], "track 1: TrackUID is 0")

    def test_a_track_uid_of_zero_is_explained(self):
        """rand() gives it once in 32768 tracks: every judge's word about it is on the list."""
        place = self.made.index(TRACK_UID) + len(TRACK_UID)
        size = self.made[place - 1] & 0x7F
        content = self.made[:place] + bytes(size) + self.made[place + size:]
        entries = json.loads((pathlib.Path(__file__).parent / "known_complaints.json").read_text())
        about_uids = [entry for entry in entries if "TrackUID" in entry["pattern"]]
        lost = {"tool": "ffprobe", "pattern": "refer to a non-existent track"}  # the tags of the file that was made
        status, text = self.judge("made.mkv", content, known=[*about_uids, lost])
        self.assertEqual(status, 0, text)

    def test_a_track_uid_that_is_there_twice_is_found(self):
        content = bytearray(self.made)
        first = content.index(TRACK_UID) + len(TRACK_UID)
        second = content.index(TRACK_UID, first) + len(TRACK_UID)
        content[second:second + 8] = content[first:first + 8]
        self.assert_found(content, "is there 2 times")

    def test_cues_that_go_back_are_found(self):
        for times, reasons in (([1, 2, 2], []), ([1, 3, 2], ["format rules: cues: their times go back"])):
            verdict = complaints.Verdict("a.mkv", KnowsNothing())
            format_rules.check_cues(types.SimpleNamespace(cues=[{"timeNs": time} for time in times]), verdict)
            self.assertEqual(verdict.reasons, reasons)

    def test_a_language_that_is_no_code_is_found(self):
        self.assert_found(self.replaced(LANGUAGE_UND, LANGUAGE_UND[:-3] + b"u/d"), "track 1: Language is 'u/d'")

    def test_a_codec_that_is_not_registered_is_found(self):
        self.assert_found(self.replaced(b"A_PCM/INT/LIT", b"A_PCM/INT/ODD"), "'A_PCM/INT/ODD' is not registered")

    def test_a_complaint_that_is_explained_passes(self):
        self.assert_explained(True, {})
        self.assert_explained(False, {"files": "other*"})
        self.assert_explained(False, {"tool": "mkvinfo"})
        self.assert_explained(False, {"profile": "strict"})
        self.assert_explained(True, {"profile": "both"})

    def test_an_explanation_is_for_its_profile_alone(self):
        content = self.replaced(LANGUAGE_UND, LANGUAGE_UND[:-3] + b"u/d")
        for profile, is_explained in (("compatible", False), ("strict", True), ("both", True)):
            entry = {"tool": "format rules", "pattern": "Language is 'u/d'$", "profile": profile}
            _, text = self.judge("made.strict.mkv", content, known=[entry])
            self.assertEqual("Language is 'u/d'" not in text, is_explained, text)

    def test_a_strict_file_is_explained_by_a_defect_of_the_judge_only(self):
        known = [{"tool": "mkvinfo", "profile": profile, "files": "*", "pattern": "x", "reason": "on purpose"}
                 for profile in ("compatible", "strict", "both")]
        complaints.check_entry(known[0], "list")
        for entry in known[1:]:
            with self.assertRaisesRegex(ValueError, "lacks defect"):
                complaints.check_entry(entry, "list")
        with self.assertRaisesRegex(ValueError, "lacks profile"):
            complaints.check_entry({key: value for key, value in known[0].items() if key != "profile"} | {"defect": ""}, "list")

    def test_more_is_asked_of_a_strict_file(self):
        self.assertEqual(self.judge("made.mkv", self.made)[0], 0)
        status, text = self.judge("made.strict.mkv", self.made)
        self.assertEqual(status, 1, text)
        self.assertIn("strict rules: track 1: there is no FlagEnabled", text)
        # Its layout is as strict; a cue whose relative position becomes padding is not.
        self.assertNotIn("mkvlayout", text)
        place = self.made.index(CUE_RELATIVE_POSITION, self.made.index(CUES, len(self.made) // 2))
        content = self.made[:place] + PADDING + self.made[place + 1:]
        self.assertEqual(self.judge("made.mkv", content)[0], 0)
        self.assertIn("mkvlayout: ", self.judge("made.strict.mkv", content)[1])

    def assert_explained(self, expected, change):
        entry = {"tool": "format rules", "pattern": "Language is 'u/d'$", **change}
        status, text = self.judge("made.mkv", self.replaced(LANGUAGE_UND, LANGUAGE_UND[:-3] + b"u/d"), known=[entry])
        self.assertEqual(status == 0, expected, text)

    def test_an_explanation_that_nothing_needs_fails_where_all_files_are_there(self):
        entry = {"tool": "mkvinfo", "pattern": "never said"}
        status, text = self.judge("made.mkv", self.made, known=[entry])
        self.assertEqual(status, 0, text)
        status, text = self.judge("made.mkv", self.made, "--whole", known=[entry])
        self.assertEqual(status, 1, text)
        self.assertIn("FAIL never needed: mkvinfo", text)
        status, text = self.judge("made.mkv", self.made, "--whole", known=[{**entry, "by chance": True}])
        self.assertEqual(status, 0, text)

    def replaced(self, old, new):
        self.assertEqual(len(old), len(new))
        self.assertIn(old, self.made)
        return self.made.replace(old, new, 1)

    def test_no_file_is_no_success(self):
        with tempfile.TemporaryDirectory() as folder:
            outcome = subprocess.run([sys.executable, str(JUDGE), "--mkvlayout", "false", folder],
                                     capture_output=True, check=False)
        self.assertEqual(outcome.returncode, 2)

    def test_a_reader_that_does_not_run_is_no_success(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "made.mkv").write_bytes(self.made)
            outcome = subprocess.run([sys.executable, str(JUDGE), "--mkvlayout", "sh -c 'exit 3'", folder],
                                     capture_output=True, text=True, check=False)
        self.assertEqual(outcome.returncode, 1)
        self.assertIn("failed with status 3", outcome.stdout)


def main():
    result = unittest.main(exit=False, verbosity=2).result
    failed = len(result.failures) + len(result.errors)
    print(f"{result.testsRun - failed} passed, {failed} failed")
    return 1 if failed or result.testsRun == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
