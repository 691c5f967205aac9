"""Writes the fuzzers' first inputs into DIRECTORY/TARGET: small whole files, and files that play with the limits."""

import struct
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests" / "files"))
import hostile_files  # noqa: E402 (the folder is known only now)

TARGETS = {".mkv": "matroska", ".avi": "avi", ".srt": "text", ".ass": "text"}

AVC = (b"\0\0\0\1\x67\x64\0\x0b\xac\xd9\x42\xc4\xec\x04\x40\0\0\3\0\x40\0\0\x0c\x83\xc5\x0a\x65\x80"
       b"\0\0\0\1\x68\xeb\xe3\xcb\x22\xc0\0\0\0\1\x65\x88\x84\0\x33\xff")
# A sequence header behind the head of its record; a temporal unit with lengths in front of all (annex B).
AV1_RECORD = bytes.fromhex("81000c000a0a0000000337f8e6d7c802")
AV1_LENGTHS = bytes.fromhex("141301100b080000000337f8e6d7c8020430100102")
ASS = (b"[Script Info]\nTitle: t\n[V4+ Styles]\nStyle: Default\n[Events]\n"
       b"Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
       b"Dialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,Hello, {\\b1}world\n")
HDR10 = ("log-level=error:info=0:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc:chromaloc=2:max-cll=1000,400:"
         "master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50):atc-sei=18")
SRT = b"1\n00:00:01,000 --> 00:00:02,500\nHello\nworld\n\n2\n00:00:03,000 --> 00:00:04,000\nagain\n"

CHAPTER_LINES = b"CHAPTER01=00:00:00.000\nCHAPTER01NAME=Intro\nCHAPTER02=00:01:00,5\nCHAPTER02NAME=\n"
CHAPTER_XML = (b'<?xml version="1.0"?><!DOCTYPE Chapters SYSTEM "a.dtd"><!-- c --><Chapters><EditionEntry>'
               b"<EditionFlagDefault>1</EditionFlagDefault><ChapterAtom><ChapterUID>7</ChapterUID><ChapterTimeStart>"
               b"00:00:01.5</ChapterTimeStart><ChapterTimeEnd>2500ms</ChapterTimeEnd><ChapterFlagHidden>0</ChapterFlagHidden>"
               b"<ChapterDisplay><ChapterString>a &amp; &#x20ac;<![CDATA[<b>]]></ChapterString><ChapterLanguage>ger"
               b"</ChapterLanguage></ChapterDisplay><ChapterAtom><ChapterTimeStart>0:2</ChapterTimeStart></ChapterAtom>"
               b"</ChapterAtom></EditionEntry></Chapters>")
TAG_XML = (b"<Tags><Tag><Targets><TargetTypeValue>30</TargetTypeValue><TrackUID>0</TrackUID></Targets><Simple><Name>A</Name>"
           b"<String>X</String><TagLanguageIETF>de</TagLanguageIETF><Simple><Name>B</Name></Simple></Simple></Tag></Tags>")


def encoded(codec, container, *options):
    """Two pictures by ffmpeg, as bytes; nothing when it has not that encoder."""
    done = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "testsrc=size=32x32:rate=2:duration=1",
                           "-c:v", codec, *options, "-f", container, "-"], capture_output=True, check=False)
    return done.stdout


def configuration(rows, options=b""):
    """As the filter saves it: a version text, rows of track settings, the document type, an attachment, and behind it
    the block of options, which the version tells of."""
    text = ("00000000001 " if options else "00000000000 ").encode("utf-16-le")
    row = lambda i: (struct.pack("<BBBIi", 1, 0, 0, i, -1) + struct.pack("<I", 7) + "English".encode("utf-16-le") +
                     struct.pack("<I", 1) + "n".encode("utf-16-le"))
    attachment = b"".join(struct.pack("<I", len(part)) + part for part in (b"a\0", b"", b"text/plain", b"data"))
    return (text + struct.pack("<Q", rows) + b"".join(map(row, range(rows))) + struct.pack("<I", 0) +
            struct.pack("<I", 1) + attachment + struct.pack("<Q", 7) + options)


def counted(text):
    return struct.pack("<I", len(text)) + text.encode("utf-16-le")


def options_block():
    """A field of each tag, and one that nobody knows."""
    fields = [(1, struct.pack("<I", 1)), (2, "t".encode("utf-16-le")), (3, struct.pack("<Q", 5)), (4, b"\0"),
              (5, struct.pack("<IBBBBB", 1, 1, 0, 255, 1, 255)), (99, b"later"),
              (7, struct.pack("<iqqQBB", 0, 5, -1, 77, 1, 0) + counted("t") + counted("de")),
              (7, struct.pack("<iqqQBB", -1, 0, -1, 0, 0, 0) + counted("u") + counted("")),
              (8, struct.pack("<iiI", -1, 0, 30) + b"".join(map(counted, ("SONG", "ARTIST", "X", "en"))))]
    body = b"".join(struct.pack("<II", tag, len(value)) + value for tag, value in fields)
    return b"QRXO" + struct.pack("<II", 1, len(body)) + body


def track(kind, size):
    """The media type of a kind with a block of zeros, and a name of three characters in front."""
    return bytes([3, kind, kind, kind, 0, 0]) + bytes(size)


# The kinds of a schedule's inputs, as fuzz/schedule_feeder.h numbers them.
VFW, BYTE_STREAM, PCM, AAC, PLAIN_TEXT, STYLED_TEXT, MP3, REFUSED = range(8)
RUNS_TO_ITS_END, IS_STOPPED, STARTS_BY_RUN = 0, 3, 12
FLUSH, RESTART, RECONNECT, CHANGE = 3, 4, 5, 6


def samples(count, choices=1, step_ms=40, size=20):
    """One after the other; choices: bit 0 a sync point, from bit 3 on the times (8 * 24: none)."""
    return bytes([count]) + bytes([0, choices, size, step_ms, 16 + step_ms]) * count


def schedule_round(kinds, feeders, how=RUNS_TO_ITS_END, faults=(), steps=(), asks=()):
    """As fuzz/schedule.cpp reads it: kinds of new inputs, and for each feeder what samples() gives."""
    changes = sum(1 << 2 * i for i in range(len(kinds)))
    return (bytes([0, changes, *kinds, 4 + len(faults) if faults else 0]) + b"".join(map(bytes, faults)) +
            bytes([how, len(steps)]) + b"".join(map(bytes, steps)) + bytes([len(asks)]) + b"".join(map(bytes, asks)) +
            b"".join(feeders) + bytes(4 - len(feeders)))


def schedules():
    film = [samples(12), samples(20, step_ms=20), samples(3, step_ms=200)]
    yield "film", schedule_round([VFW, PCM, PLAIN_TEXT], film)
    yield "two_films", schedule_round([BYTE_STREAM, AAC, STYLED_TEXT], film) + schedule_round([], film, how=STARTS_BY_RUN)
    yield "untimed", schedule_round([VFW, MP3], [samples(2), samples(9, choices=8 * 24)])
    yield "refused", schedule_round([REFUSED, PCM], film[:2]) + schedule_round([VFW], film[:2])
    yield "stopped", schedule_round([VFW, PCM, PLAIN_TEXT], film, how=IS_STOPPED, steps=[(2, 200)])
    for step in (FLUSH, RESTART, RECONNECT, CHANGE):
        yield f"step_{step}", schedule_round([VFW, PCM], film[:2], steps=[(step, 0), (step, 1)])
    for ask in range(7):
        yield f"ask_{ask}", schedule_round([VFW, PCM], film[:2], asks=[(ask, 1), (ask, 230)])
    for operation, first, how in ((0, 3, 64), (0, 1, 65), (0, 4, 66), (0, 5, 67), (3, 2, 64), (0, 3, 192), (4, 0, 64)):
        yield (f"fault_{operation}_{first}_{how}",
               schedule_round([VFW, PCM], film[:2], faults=[(operation, first, how, 9)]) + schedule_round([], film[:2]))
    yield "large", schedule_round([VFW, PCM], [samples(6, choices=5, size=250), samples(9, choices=3, size=90)])
    # A block that ends in the millisecond behind its start: its cue is one before it.
    yield "fraction", schedule_round([PLAIN_TEXT], [bytes([2, 0, 1, 20, 0, 56, 0, 1 + 8 * 5, 20, 40, 17])])
    yield "far", schedule_round([PCM, PLAIN_TEXT], [samples(9, choices=1 + 8 * 5), samples(4, choices=1 + 8 * 4)])


def laced(lacing, sizes):
    """Three frames of one block behind their sizes."""
    return hostile_files.matroska(
        [hostile_files.track(1, hostile_files.AUDIO, hostile_files.PCM)],
        [(0, hostile_files.block(1, 0, bytes([2]) + sizes + b"abbccc", lacing))])


XML = (b'<?xml version="1.0" encoding="UTF-8"?>\n<preferences><a_b xmlns:dt="urn:schemas-microsoft-com:datatypes">'
       b'<number dt:dt="i4">-7</number><text xml:space="preserve" dt:dt="string"> a &amp; b </text><!-- c --><d/>'
       b'<bytes dt:dt="bin.base64">AQID</bytes></a_b></preferences>')
DOCUMENT_TYPE = b'<?xml version="1.0"?><!-- <!DOCTYPE --><!DOCTYPE a [<!ENTITY b "c">]><a>&b;</a>'


def seeds():
    for name, make in hostile_files.SMALL.items():
        yield TARGETS[Path(name).suffix], name, make()
    yield "matroska", "xiph.mkv", laced(2, bytes([1, 2]))
    yield "matroska", "fixed.mkv", laced(4, b"")
    yield "matroska", "ebml.mkv", laced(6, bytes([0x81, 0xc0]))
    yield "matroska", "film.mkv", encoded("mpeg4", "matroska")
    yield "avi", "film.avi", encoded("mpeg4", "avi")
    yield "annexb", "picture.264", AVC
    yield "annexb", "film.264", encoded("libx264", "h264")
    yield "annexb", "film.265", encoded("libx265", "hevc", "-x265-params", "log-level=error:info=0")
    for container in ("ivf", "obu"):
        yield "av1", f"film.{container}", encoded("libsvtav1", container, "-preset", "12", "-s", "64x64")
    yield "av1", "lengths.obu", AV1_LENGTHS
    yield "av1", "record", AV1_RECORD
    yield "chapters", "lines.txt", CHAPTER_LINES
    yield "chapters", "chapters.xml", CHAPTER_XML
    yield "chapters", "tags.xml", TAG_XML
    yield "text", "whole.ass", ASS
    yield "text", "whole.srt", SRT
    yield "configuration", "two_rows", configuration(2)
    yield "configuration", "options", configuration(2, options_block())
    for number in range(20):
        for size in (0, 18, 40, 88, 140, 300):
            yield "format_blocks", f"{number}_{size}", bytes([number, number, number, 0, 0]) + bytes(size)
            yield "track_entry", f"{number}_{size}", track(number, size)
    for target in ("annexb_payload", "parameter_sets"):
        yield target, "picture", AVC
        yield target, "three_bytes", AVC.replace(b"\0\0\0\1", b"\0\0\1")
        yield target, "no_start_code", AVC[4:]
        yield target, "nothing_between", AVC[:4] * 3 + AVC + AVC[:4]
    yield "parameter_sets", "lengths", b"\0\x19" + AVC[4:29] + b"\0\x06" + AVC[33:39]
    yield "parameter_sets", "hevc", encoded("libx265", "hevc", "-x265-params", "log-level=error:info=0")[:600]
    yield "parameter_sets", "hevc_hdr", encoded("libx265", "hevc", "-pix_fmt", "yuv420p10le", "-x265-params", HDR10)[:600]
    yield "settings_xml", "values.xml", XML
    yield "settings_xml", "document_type.xml", DOCUMENT_TYPE
    yield "settings_xml", "wide.xml", XML.replace(b"UTF-8", b"UTF-16").decode().encode("utf-16")
    yield "settings_xml", "attributes.xml", b"<a " + b"".join(b'b%d="" ' % i for i in range(300)) + b"/>"
    for cut in (b"\0\0", b"\0\x40", b"\1\x00"):
        yield "repair", cut.hex(), cut
        yield "repair", cut.hex() + "_changed", cut + b"\0\x30\xff\2\x80\0"
    for text in (b"-12", b" 1.5e300 ", b"INF", b"QUJD RA==", b"a\\b c/d"):
        yield "settings_xml", text.hex(), text
    for name, script in schedules():
        yield "schedule", name, script


def seeds_of_all():
    for target, name, content in seeds():
        yield target, name, content
        if target == "matroska":
            yield "report", name, content


def main():
    directory = Path(sys.argv[1])
    for target, name, content in seeds_of_all():
        (directory / target).mkdir(parents=True, exist_ok=True)
        if content:
            (directory / target / name).write_bytes(content)


if __name__ == "__main__":
    main()
