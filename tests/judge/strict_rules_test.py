"""Each rule of strict_rules.py, on a file that keeps all of them but one."""

import os
import pathlib
import struct
import sys
import tempfile
import unittest

import complaints
import our_layout
import strict_rules

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
from whole_files.mkv_builder import CLUSTER, EBML, INFO, SEGMENT, TRACKS, block_group, element, floating, simple_block, text, unsigned  # noqa: E402

# Identifiers, by the names of their elements.
DOC_TYPE, DOC_TYPE_VERSION, DOC_TYPE_READ_VERSION = 0x4282, 0x4287, 0x4285
SCALE, MUXING_APP, WRITING_APP, DATE, UUID, DURATION = 0x2AD7B1, 0x4D80, 0x5741, 0x4461, 0x73A4, 0x4489
NUMBER, UID, TYPE, ENABLED, DEFAULT, FORCED, LANGUAGE, BCP47 = 0xD7, 0x73C5, 0x83, 0xB9, 0x88, 0x55AA, 0x22B59C, 0x22B59D
CODEC, PRIVATE, DELAY, PRE_ROLL, VIDEO, AUDIO, NAME = 0x86, 0x63A2, 0x56AA, 0x56BB, 0xE0, 0xE1, 0x536E
WIDTH, HEIGHT, DISPLAY_WIDTH, DISPLAY_HEIGHT, DISPLAY_UNIT = 0xB0, 0xBA, 0x54B0, 0x54BA, 0x54B2
FLAG_INTERLACED, FIELD_ORDER, FREQUENCY, CHANNELS, BIT_DEPTH = 0x9A, 0x9D, 0xB5, 0x9F, 0x6264
TAGS, TAG, TARGETS, TAG_UID, SIMPLE_TAG, TAG_NAME, TAG_STRING = 0x1254C367, 0x7373, 0x63C0, 0x63C5, 0x67C8, 0x45A3, 0x4487
TARGET_TYPE = 0x68CA
CHAPTERS, EDITION, ATOM, CHAPTER_UID, CHAPTER_START, DISPLAY = 0x1043A770, 0x45B9, 0xB6, 0x73C4, 0x91, 0x80
CHAP_STRING, CHAP_LANGUAGE, CHAP_BCP47 = 0x85, 0x437C, 0x437D

AVC = bytes.fromhex("0164001fffe100036764000100026801fdf8f800")
HEVC = bytes.fromhex("01" + "00" * 12 + "f000fcfdf8f8" + "00000f00")
OPUS = b"OpusHead" + struct.pack("<BBHIHB", 1, 1, 312, 48000, 0, 0)


def track(number, kind, codec, private):
    return {NUMBER: number, UID: (number << 60) + 1, TYPE: kind, ENABLED: 1, DEFAULT: 1, FORCED: 0, LANGUAGE: "und",
            BCP47: "und", CODEC: codec, PRIVATE: private}


def master(fields):
    """Of numbers, texts, bytes and masters; None is left out."""
    content = b""
    for number, value in fields.items():
        if isinstance(value, dict):
            value = master(value)
        if isinstance(value, bytes):
            content += element(number, value)
        elif isinstance(value, float):
            content += floating(number, value)
        elif value is not None:
            content += text(number, value) if isinstance(value, str) else unsigned(number, value)
    return content


class Sample:
    """A file of three tracks that keeps to all rules."""

    def __init__(self):
        self.head = {DOC_TYPE: "matroska", DOC_TYPE_VERSION: 4, DOC_TYPE_READ_VERSION: 2}
        self.info = {SCALE: 10**6, MUXING_APP: "libebml v1.4.4 + libmatroska v1.7.1", WRITING_APP: "w", DATE: bytes(7) + b"\1",
                     UUID: bytes(range(16)), DURATION: 40.0}
        self.pictures = track(1, 1, "V_MPEG4/ISO/AVC", AVC) | {VIDEO: {WIDTH: 320, HEIGHT: 240}}
        self.sound = track(2, 2, "A_OPUS", OPUS) | {DELAY: 6_500_000, PRE_ROLL: 80_000_000,
                                                    AUDIO: {FREQUENCY: 48000.0, CHANNELS: 1}}
        self.text = track(3, 17, "S_TEXT/UTF8", None)
        self.blocks = [simple_block(1, 0, b"abc"), simple_block(2, 0, b"ab"), simple_block(2, 20, b"abc"),
                       block_group(3, 20, b"a", 20)]
        self.statistics = {1: (1, 3), 2: (2, 5), 3: (1, 1)}
        self.uid_error = 0  # of the tags
        self.atoms = [(1, "eng"), (2, "ger")]  # identifiers and languages of the chapters
        self.parts = [3]  # identifiers of parts of the last of them
        self.editions = 1
        self.global_tags = element(TAG, element(TARGETS, unsigned(TARGET_TYPE, 50)) +
                                   element(SIMPLE_TAG, master({TAG_NAME: "DURATION", TAG_STRING: "long"})))

    def tag(self, number, uid):
        frames, size = self.statistics[number]
        values = {"BPS": "8", "DURATION": "00:00:00.040000000", "NUMBER_OF_FRAMES": str(frames), "NUMBER_OF_BYTES": str(size)}
        simple = b"".join(element(SIMPLE_TAG, master({TAG_NAME: n, TAG_STRING: v})) for n, v in values.items())
        return element(TAG, element(TARGETS, unsigned(TAG_UID, uid)) + simple)

    def chapters(self):
        parts = b"".join(element(ATOM, unsigned(CHAPTER_UID, uid) + unsigned(CHAPTER_START, 0)) for uid in self.parts)
        atoms = b"".join(
            element(ATOM, unsigned(CHAPTER_UID, uid) + unsigned(CHAPTER_START, 0) +
                    element(DISPLAY, master({CHAP_STRING: "a", CHAP_LANGUAGE: language, CHAP_BCP47: "en"})) + parts *
                    (uid == self.atoms[-1][0]))
            for uid, language in self.atoms)
        return element(CHAPTERS, element(EDITION, atoms) * self.editions) if self.editions else b""

    def content(self):
        entries = [entry for entry in (self.pictures, self.sound, self.text) if entry]
        tracks = b"".join(element(0xAE, master(entry)) for entry in entries)
        tags = b"".join(self.tag(number, entry[UID] + self.uid_error) for number, entry in enumerate(entries, 1) if number in self.statistics)
        segment = (element(INFO, master(self.info)) + element(TRACKS, tracks)
                   + element(CLUSTER, unsigned(0xE7, 0) + b"".join(self.blocks))
                   + self.chapters() + element(TAGS, self.global_tags + tags))
        return element(EBML, master(self.head)) + element(SEGMENT, segment)


class KnowsNothing:
    @staticmethod
    def is_known(*_):
        return False


class StrictRules(unittest.TestCase):
    def complaints(self, sample):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "sample.strict.mkv"
            path.write_bytes(sample.content())
            verdict = complaints.Verdict(path.name, KnowsNothing())
            layout = our_layout.read(os.environ["QRX_MKVLAYOUT"], path, False, verdict)
            strict_rules.judge(path, layout, verdict)
        prefix = strict_rules.TOOL + ": "
        return [reason.removeprefix(prefix) for reason in verdict.reasons if reason.startswith(prefix)]

    def assert_finds(self, expected, change):
        sample = Sample()
        change(sample)
        found = self.complaints(sample)
        self.assertEqual([expected in complaint for complaint in found], [True], found)

    def test_a_file_that_keeps_to_all_rules_has_none(self):
        self.assertEqual(self.complaints(Sample()), [])

    def test_a_file_of_the_compatible_profile_is_not_asked(self):
        verdict = complaints.Verdict("sample.mkv", KnowsNothing())
        strict_rules.judge(pathlib.Path("none.mkv"), None, verdict)
        self.assertEqual(verdict.reasons, [])

    def test_versions(self):
        self.assert_finds("DocTypeReadVersion 1 has no SimpleBlock", lambda s: s.head.update({DOC_TYPE_READ_VERSION: 1}))
        self.assert_finds("versions 5/2 are above", lambda s: s.head.update({DOC_TYPE_VERSION: 5}))
        sample = Sample()
        sample.head[DOC_TYPE_VERSION] = 3
        self.assertEqual(self.complaints(sample), [f"DocTypeVersion 3 has no {name}"
                                                   for name in ("ChapLanguageBCP47", "CodecDelay", "LanguageBCP47", "SeekPreRoll")])

    def test_info(self):
        for name, number in (("MuxingApp", MUXING_APP), ("WritingApp", WRITING_APP), ("DateUTC", DATE),
                             ("SegmentUUID", UUID)):
            self.assert_finds(f"Info has no {name}", lambda s, number=number: s.info.update({number: None}))
        self.assert_finds("SegmentUUID is no", lambda s: s.info.update({UUID: bytes(16)}))
        self.assert_finds("SegmentUUID is no", lambda s: s.info.update({UUID: b"\1" * 15}))
        self.assert_finds("Duration is 0", lambda s: s.info.update({DURATION: 0.0}))
        self.assert_finds("MuxingApp is 'libmatroska'", lambda s: s.info.update({MUXING_APP: "libmatroska"}))

    def test_flags_and_identifiers(self):
        for name, number in (("FlagEnabled", ENABLED), ("FlagDefault", DEFAULT), ("FlagForced", FORCED),
                             ("Language", LANGUAGE), ("LanguageBCP47", BCP47)):
            self.assert_finds(f"track 3: there is no {name}", lambda s, number=number: s.text.update({number: None}))
        self.assert_finds("track 3: FlagForced is 2", lambda s: s.text.update({FORCED: 2}))
        self.assert_finds("track 3: TrackUID 77 has not 64", lambda s: s.text.update({UID: 77}))
        self.assert_finds("Name is empty", lambda s: s.text.update({NAME: b""}))

    def test_pictures(self):
        for expected, fields in (("is alone", {DISPLAY_WIDTH: 400}),
                                 ("is the one of the picture", {DISPLAY_WIDTH: 320, DISPLAY_HEIGHT: 240}),
                                 ("is not in pixels", {DISPLAY_UNIT: 3}),
                                 ("FieldOrder 1", {FIELD_ORDER: 1}), ("FieldOrder 1", {FIELD_ORDER: 1, FLAG_INTERLACED: 2}),
                                 ("FieldOrder 3", {FIELD_ORDER: 3, FLAG_INTERLACED: 1})):
            self.assert_finds(expected, lambda s, fields=fields: s.pictures[VIDEO].update(fields))
        sample = Sample()
        sample.pictures[VIDEO].update({DISPLAY_WIDTH: 400, DISPLAY_HEIGHT: 240, FLAG_INTERLACED: 1, FIELD_ORDER: 6})
        self.assertEqual(self.complaints(sample), [])
        self.assert_finds("Video in a track of type 17", lambda s: s.text.update({VIDEO: {WIDTH: 1, HEIGHT: 1}}))

    def test_sound(self):
        for fields in ({DELAY: 6_500_001}, {PRE_ROLL: 0}, {PRIVATE: b"Opus" + OPUS[4:][:6] + bytes(9)}):
            self.assert_finds("with a pre-skip of", lambda s, fields=fields: s.sound.update(fields))
        self.assert_finds("A_AAC without CodecPrivate", lambda s: s.sound.update({CODEC: "A_AAC", PRIVATE: None}))
        self.assert_finds("A_PCM/INT/LIT without BitDepth", lambda s: s.sound.update({CODEC: "A_PCM/INT/LIT"}))
        self.assert_finds("BitDepth or CodecDelay is 0", lambda s: s.sound[AUDIO].update({BIT_DEPTH: 0}))

    def test_decoder_records(self):
        for place, value in ((0, 0), (4, 0x03), (5, 0x01)):
            self.assert_finds("version or reserved bits", self.record(AVC, place, value))
        for place, value in ((1, 66), (16, 0x01), (17, 0x00), (18, 0x00)):
            self.assert_finds("the decoder record of profile", self.record(AVC, place, value))
        self.assert_finds("the decoder record of profile 100", lambda s: s.pictures.update({PRIVATE: AVC[:-4]}))
        sample = Sample()
        sample.pictures.update({CODEC: "V_MPEGH/ISO/HEVC", PRIVATE: HEVC})
        self.assertEqual(self.complaints(sample), [])
        for place, value in ((0, 0), (13, 0), (15, 0), (16, 1), (17, 0), (18, 0)):
            self.assert_finds("version or reserved bits", self.record(HEVC, place, value, "V_MPEGH/ISO/HEVC"))

    @staticmethod
    def record(whole, place, value, codec="V_MPEG4/ISO/AVC"):
        changed = whole[:place] + bytes([value]) + whole[place + 1:]
        return lambda sample: sample.pictures.update({CODEC: codec, PRIVATE: changed})

    @staticmethod
    def add_settings(sample):
        """Three bytes beside the last block, which its track's statistics do not count."""
        addition = element(0x75A1, element(0xA6, element(0xA5, b"a:b")))
        block = element(0xA1, bytes([0x83, 0, 20, 0]) + b"a")
        sample.blocks[-1] = element(0xA0, block + addition + unsigned(0x9B, 20))

    def test_statistics(self):
        self.assert_finds("'NUMBER_OF_FRAMES': '2'", lambda s: s.statistics.update({2: (3, 5)}))
        self.assert_finds("'NUMBER_OF_BYTES': '5'", lambda s: s.statistics.update({2: (2, 6)}))
        self.assert_finds("'NUMBER_OF_BYTES': '4'", self.add_settings)
        self.assert_finds("which there is not", self.lose_track)
        self.assert_finds("2 tags for 3 tracks", lambda s: s.statistics.pop(3))
        sample = Sample()
        sample.statistics.clear()
        self.assertEqual(self.complaints(sample), [])

    def test_tags_of_the_file(self):
        empty = element(TAG, element(TARGETS, unsigned(TARGET_TYPE, 50)))
        self.assert_finds("a Tag without any SimpleTag", lambda s: setattr(s, "global_tags", empty))
        lost = element(TAG, element(TARGETS, unsigned(TAG_UID, 9)) + element(SIMPLE_TAG, text(TAG_NAME, "A")))
        self.assert_finds("with the UID 9, which there is not", lambda s: setattr(s, "global_tags", lost))

    def test_chapters(self):
        sample = Sample()
        sample.editions = 2
        self.assertIn("2 editions, or one without a chapter", self.complaints(sample))
        self.assert_finds("ChapterUIDs are [1, 2, 2]", lambda s: setattr(s, "parts", [2]))
        self.assert_finds("ChapterUIDs are [0, 2, 3]", lambda s: setattr(s, "atoms", [(0, "eng"), (2, "ger")]))
        self.assert_finds("a ChapterDisplay without ChapLanguage", lambda s: setattr(s, "atoms", [(1, None), (2, "ger")]))

    @staticmethod
    def lose_track(sample):
        """Of one track there are statistics, under another's identifier."""
        sample.uid_error = 5
        sample.sound = sample.text = None
        sample.statistics = {1: (1, 3)}
        sample.blocks = sample.blocks[:1]

    def test_webm_has_fewer_elements(self):
        sample = Sample()
        sample.head[DOC_TYPE] = "webm"
        found = self.complaints(sample)
        self.assertEqual(sorted(complaint.split(": ")[1] for complaint in found),
                         2 * ["ChapLanguageBCP47 is no element of WebM"] + 3 * ["LanguageBCP47 is no element of WebM"] +
                         ["SegmentUUID is no element of WebM"])
