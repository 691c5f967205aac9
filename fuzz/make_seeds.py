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
ASS = (b"[Script Info]\nTitle: t\n[V4+ Styles]\nStyle: Default\n[Events]\n"
       b"Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
       b"Dialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,Hello, {\\b1}world\n")
SRT = b"1\n00:00:01,000 --> 00:00:02,500\nHello\nworld\n\n2\n00:00:03,000 --> 00:00:04,000\nagain\n"


def encoded(codec, container, *options):
    """Two pictures by ffmpeg, as bytes; nothing when it has not that encoder."""
    done = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "testsrc=size=32x32:rate=2:duration=1",
                           "-c:v", codec, *options, "-f", container, "-"], capture_output=True, check=False)
    return done.stdout


def configuration(rows):
    """As the filter saves it: a version text, rows of track settings, the document type, no attachment."""
    text = "00000000000 ".encode("utf-16-le")
    row = lambda i: (struct.pack("<BBBIi", 1, 0, 0, i, -1) + struct.pack("<I", 7) + "English".encode("utf-16-le") +
                     struct.pack("<I", 1) + "n".encode("utf-16-le"))
    attachment = b"".join(struct.pack("<I", len(part)) + part for part in (b"a\0", b"", b"text/plain", b"data"))
    return (text + struct.pack("<Q", rows) + b"".join(map(row, range(rows))) + struct.pack("<I", 0) +
            struct.pack("<I", 1) + attachment + struct.pack("<Q", 7))


def seeds():
    for name, make in hostile_files.SMALL.items():
        yield TARGETS[Path(name).suffix], name, make()
    yield "matroska", "film.mkv", encoded("mpeg4", "matroska")
    yield "avi", "film.avi", encoded("mpeg4", "avi")
    yield "annexb", "picture.264", AVC
    yield "annexb", "film.264", encoded("libx264", "h264")
    yield "annexb", "film.265", encoded("libx265", "hevc", "-x265-params", "log-level=error:info=0")
    yield "text", "whole.ass", ASS
    yield "text", "whole.srt", SRT
    yield "configuration", "two_rows", configuration(2)
    for number in range(20):
        for size in (0, 18, 40, 88, 140, 300):
            yield "format_blocks", f"{number}_{size}", bytes([number, number, number, 0, 0]) + bytes(size)


def main():
    directory = Path(sys.argv[1])
    for target, name, content in seeds():
        (directory / target).mkdir(parents=True, exist_ok=True)
        if content:
            (directory / target / name).write_bytes(content)


if __name__ == "__main__":
    main()
