"""Files that play with limits: small ones that ask for much memory or time, and ones with forged texts.

Each function gives the bytes of one file, or writes a sparse one. `python3 hostile_files.py DIRECTORY` writes the small
ones, as seeds for the fuzzers.
"""

import functools
import struct
import sys
import zlib
from pathlib import Path

MIB = 1 << 20

# ---- Matroska

EBML, DOC_TYPE, SEGMENT, TRACKS, CLUSTER = 0x1a45dfa3, 0x4282, 0x18538067, 0x1654ae6b, 0x1f43b675
ENTRY, NUMBER, UID, KIND, CODEC, PRIVATE = 0xae, 0xd7, 0x73c5, 0x83, 0x86, 0x63a2
TIMESTAMP, SIMPLE_BLOCK = 0xe7, 0xa3
ENCODINGS, ENCODING, ORDER, SCOPE, COMPRESSION, ALGORITHM, SETTINGS = (
    0x6d80, 0x6240, 0x5031, 0x5032, 0x5034, 0x4254, 0x4255)
ATTACHMENTS, ATTACHED, FILE_NAME, FILE_DATA, MIME_TYPE = 0x1941a469, 0x61a7, 0x466e, 0x465c, 0x4660
VIDEO, AUDIO, SUBTITLE = 1, 2, 17
XIPH, FIXED = 2, 4


def number(value):
    return value.to_bytes(max(1, (value.bit_length() + 7) // 8), "big")


def size_field(size):
    length = next(n for n in range(1, 9) if size < (1 << 7 * n) - 1)
    return (size | 1 << 7 * length).to_bytes(length, "big")


def element(identifier, *parts):
    content = b"".join(parts)
    return number(identifier) + size_field(len(content)) + content


def head():
    return element(EBML, element(DOC_TYPE, b"matroska"))


def zlib_layer(order=0, scope=1):
    return element(ENCODING, element(ORDER, number(order)), element(SCOPE, number(scope)), element(COMPRESSION))


def stripping_layer(header, order=0):
    return element(ENCODING, element(ORDER, number(order)),
                   element(COMPRESSION, element(ALGORITHM, number(3)), element(SETTINGS, header)))


def track(which, kind, codec, *more):
    return element(ENTRY, element(NUMBER, number(which)), element(KIND, number(kind)), element(CODEC, codec), *more)


def block(which, ticks, payload, lacing=0):
    return element(SIMPLE_BLOCK, bytes([0x80 | which]), struct.pack(">h", ticks), bytes([0x80 | lacing]), payload)


def matroska(tracks, clusters, *more):
    return head() + element(SEGMENT, element(TRACKS, *tracks), *more,
                            *(element(CLUSTER, element(TIMESTAMP, number(ticks)), *blocks)
                              for ticks, *blocks in clusters))


@functools.lru_cache(maxsize=None)
def deflated(zeros, layers=1):
    """So many zero bytes behind so many layers of zlib."""
    stream = zlib.compressobj(9)
    content = b"".join(stream.compress(bytes(MIB)) for _ in range(zeros // MIB))
    content += stream.compress(bytes(zeros % MIB)) + stream.flush()
    for _ in range(layers - 1):
        content = zlib.compress(content, 9)
    return content


AVC_OF_SHORT_LENGTHS = bytes([1, 100, 0, 11, 0xfc, 0xe0, 0])  # one byte in front of each unit
PCM = b"A_PCM/INT/LIT"


def widened_zeros():
    """Each zero is a unit of length 0, whose length becomes four bytes long: 1 GiB."""
    layers = element(ENCODINGS, *(zlib_layer(order) for order in range(3)))
    return matroska([track(1, VIDEO, b"V_MPEG4/ISO/AVC", element(PRIVATE, AVC_OF_SHORT_LENGTHS), layers)],
                    [(0, block(1, 0, deflated(256 * MIB, 3)))])


def one_layer_of_widened_zeros():
    """What a single layer reaches at just under the ratio that is taken for damage."""
    content = deflated(60 * MIB) + bytes(2048)  # zlib ignores what follows its stream
    return matroska([track(1, VIDEO, b"V_MPEG4/ISO/AVC", element(PRIVATE, AVC_OF_SHORT_LENGTHS),
                           element(ENCODINGS, zlib_layer()))], [(0, block(1, 0, content))])


def widened_zeros_of(frames, zeros, padding):
    """Frames that become four times as large again behind one layer: far below every bound on a frame."""
    frame = deflated(zeros) + bytes(padding)
    content = bytes([frames - 1]) + frames * frame
    return matroska([track(1, VIDEO, b"V_MPEG4/ISO/AVC", element(PRIVATE, AVC_OF_SHORT_LENGTHS),
                           element(ENCODINGS, zlib_layer()))], [(0, block(1, 0, content, FIXED))])


def laced_bomb(layers=3):
    """Four frames of one block."""
    frame = deflated(255 * MIB, layers)
    count = bytes([3])
    encodings = element(ENCODINGS, *(zlib_layer(order) for order in range(layers)))
    return matroska([track(1, AUDIO, PCM, encodings)], [(0, block(1, 0, count + 4 * frame, FIXED))])


def private_bomb(layers=3, tracks=4):
    content = deflated(255 * MIB, layers)
    encodings = element(ENCODINGS, *(zlib_layer(order, 3) for order in range(layers)))
    return matroska([track(i + 1, SUBTITLE, b"S_TEXT/ASS", element(PRIVATE, content), encodings)
                     for i in range(tracks)], [(0, block(1, 0, b"x"))])


def many_waiting_bombs(layers=3, tracks=20):
    """Laced frames without a duration, which wait for the next block of their track."""
    frame = deflated(120 * MIB, layers)
    encodings = element(ENCODINGS, *(zlib_layer(order) for order in range(layers)))
    return matroska([track(i + 1, AUDIO, PCM, encodings) for i in range(tracks)],
                    [(0, *(block(i + 1, i, bytes([1]) + 2 * frame, FIXED) for i in range(tracks)))])


def stripped_headers():
    """256 empty frames a block, each of which gets its header back."""
    layers = element(ENCODINGS, *(stripping_layer(bytes(65536), order) for order in range(16)))
    return matroska([track(1, AUDIO, PCM, layers)],
                    [(0, *(block(1, i, bytes([255]), FIXED) for i in range(40)))])


def one_large_stripped_header():
    layers = element(ENCODINGS, stripping_layer(bytes(65536)))
    return matroska([track(1, AUDIO, PCM, layers)], [(0, *(block(1, i, bytes([255]), FIXED) for i in range(2000)))])


def steady_bomb(frames=60):
    """Each frame stays below the ratio that is damage, all together do not."""
    frame = deflated(8 * MIB) + bytes(300)
    return matroska([track(1, AUDIO, PCM, element(ENCODINGS, zlib_layer()))],
                    [(i, block(1, 0, frame)) for i in range(frames)])


def tiny_keyframes(blocks, silent_tracks=0):
    """256 frames of one byte a block, all of them keyframes and at the same time; and tracks that never have a block."""
    tracks = [track(1, VIDEO, b"V_VP8")] + [track(2 + n, AUDIO, PCM) for n in range(silent_tracks)]
    return matroska(tracks, [(0, *[block(1, 0, bytes([255]) + bytes(256), FIXED)] * blocks)])


def attachment(name, data):
    return element(ATTACHED, element(FILE_NAME, name), element(MIME_TYPE, b"text/plain"), element(FILE_DATA, data))


FORGED = b"a\r\nmkvmux: error: forged\r\n\x1b[2J\x1b]0;forged\x07\xc2\x9b31m\xe2\x80\xae.txt"


def attachment_longer_than_its_parent(name=b"lost.txt"):
    data = number(FILE_DATA) + size_field(5000) + b"short"
    broken = element(ATTACHED, element(FILE_NAME, name), element(MIME_TYPE, b"text/plain"), data)
    return matroska([track(1, SUBTITLE, b"S_TEXT/UTF8")], [(0, block(1, 0, b"text"))],
                    element(ATTACHMENTS, broken, attachment(b"kept.txt", b"kept")))


def forged_names():
    """Line breaks and escape sequences wherever a file may bring a text."""
    name = element(0x536e, FORGED)
    data = number(FILE_DATA) + size_field(5000) + b"short"
    broken = element(ATTACHED, element(FILE_NAME, FORGED), data)
    return matroska([track(1, SUBTITLE, b"S_TEXT/UTF8", name, element(0x22b59c, FORGED)),
                     track(2, SUBTITLE, FORGED, name)],
                    [(0, block(1, 0, b"text"))], element(ATTACHMENTS, broken))


# ---- AVI


def chunk(identifier, content):
    return identifier + struct.pack("<I", len(content)) + content + bytes(len(content) % 2)


def riff_list(kind, content, identifier=b"LIST"):
    return chunk(identifier, kind + content)


def avi_video(scale=1, rate=25):
    header = b"vids" + bytes(16) + struct.pack("<II", scale, rate) + bytes(28)
    bitmap = struct.pack("<IiiHHIIiiII", 40, 8, 4, 1, 24, 0x64697663, 0, 0, 0, 0, 0)
    return riff_list(b"strl", chunk(b"strh", header) + chunk(b"strf", bitmap))


def avi(movie, behind=b"", scale=1, rate=25):
    headers = riff_list(b"hdrl", chunk(b"avih", bytes(56)) + avi_video(scale, rate))
    return riff_list(b"AVI ", headers + riff_list(b"movi", movie) + behind, b"RIFF")


def impossible_time_base(frames=300):
    return avi(chunk(b"00dc", b"picture!") * frames, scale=0xFFFFFFFF, rate=1)


def many_indexes(chunks=80_000, indexes=80_000):
    return avi(chunk(b"00dc", b"x") * chunks, chunk(b"idx1", b"01wb" + bytes(12)) * indexes)


def write_huge_avi(path, size, is_there=True):
    """One chunk that says so many bytes; those are a hole in the file, or are not there at all."""
    content = bytearray(avi(chunk(b"00dc", b"good") + chunk(b"00dc", b"")))
    at = content.rindex(b"00dc")
    movie = content.rindex(b"movi")
    content[at + 4:at + 8] = struct.pack("<I", size)
    content[movie - 4:movie] = struct.pack("<I", min(at + 8 + size - movie, 0xFFFFFFFF))
    content[4:8] = struct.pack("<I", min(at + size, 0xFFFFFFFF))
    with open(path, "wb") as file:
        file.write(content[:at + 8])
        if is_there:
            file.truncate(at + 8 + size)


# ---- text


def ass_of_many_fields(fields=100_000, events=40_000):
    """Each event is looked at field by field."""
    return (b"[Events]\nFormat: " + b"x," * fields + b"Start,End,Text\n" + b"Dialogue: \n" * events +
            b"Dialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,a\n")


def srt_of_line_ends(size=64 * MIB):
    event = b"0:00:01,0 --> 0:00:02,0\na\n"
    return event + b"\n" * (size - len(event))


def ass_of_line_ends(size=64 * MIB):
    return b"[Events]\n" + b"\n" * (size - 9)


SMALL = {
    "widened_zeros.mkv": widened_zeros,
    "laced_bomb.mkv": laced_bomb,
    "private_bomb.mkv": private_bomb,
    "many_waiting_bombs.mkv": many_waiting_bombs,
    "stripped_headers.mkv": stripped_headers,
    "lost_attachment.mkv": attachment_longer_than_its_parent,
    "forged_names.mkv": forged_names,
    "impossible_time_base.avi": lambda: impossible_time_base(3),
    "many_indexes.avi": lambda: many_indexes(4, 4),
    "many_fields.ass": lambda: ass_of_many_fields(20, 4),
    "line_ends.srt": lambda: srt_of_line_ends(64),
}


def main():
    directory = Path(sys.argv[1])
    directory.mkdir(parents=True, exist_ok=True)
    for name, make in SMALL.items():
        (directory / name).write_bytes(make())


if __name__ == "__main__":
    main()
