"""A Matroska file of our own making, for what no encoder and no other multiplexer writes. RFC 8794, RFC 9559."""

import struct

EBML, SEGMENT, INFO, TRACKS, CLUSTER = 0x1A45DFA3, 0x18538067, 0x1549A966, 0x1654AE6B, 0x1F43B675
UNKNOWN = b"\x01\xff\xff\xff\xff\xff\xff\xff"


def identifier(number):
    return number.to_bytes((number.bit_length() + 7) // 8, "big")


def size(count):
    return (count | 1 << 56).to_bytes(8, "big")


def element(number, content):
    return identifier(number) + size(len(content)) + content


def unsigned(number, value):
    return element(number, value.to_bytes(max(1, (value.bit_length() + 7) // 8), "big"))


def text(number, value):
    return element(number, value.encode())


def floating(number, value):
    return element(number, struct.pack(">d", value))


def track_number(number):
    return (number | 0x80).to_bytes(1, "big")


def track_entry(number, kind, codec_id, private=b"", more=b"", uid=None):
    """kind: 1 video, 2 audio, 17 subtitles."""
    content = unsigned(0xD7, number) + unsigned(0x73C5, number if uid is None else uid) + unsigned(0x83, kind) + text(0x86, codec_id)
    return element(0xAE, content + (element(0x63A2, private) if private else b"") + more)


def stripped_headers(header):
    """The bytes that each block of the track begins with, and that are left out."""
    compression = element(0x5034, unsigned(0x4254, 3) + element(0x4255, header))
    return element(0x6D80, element(0x6240, compression))


def audio_fields(frequency, channels, bits=0):
    fields = floating(0xB5, frequency) + unsigned(0x9F, channels) + (unsigned(0x6264, bits) if bits else b"")
    return element(0xE1, fields)


def video_fields(width, height):
    return element(0xE0, unsigned(0xB0, width) + unsigned(0xBA, height))


def simple_block(track, offset, data, flags=0x80):
    return element(0xA3, track_number(track) + struct.pack(">hB", offset, flags) + data)


def block_group(track, offset, data, duration=None, flags=0):
    block = element(0xA1, track_number(track) + struct.pack(">hB", offset, flags) + data)
    return element(0xA0, block + (unsigned(0x9B, duration) if duration is not None else b""))


def cluster(time, *blocks, unknown_size=False):
    content = unsigned(0xE7, time) + b"".join(blocks)
    return identifier(CLUSTER) + (UNKNOWN if unknown_size else size(len(content))) + content


def matroska(tracks, clusters, duration_ms=None, scale_ns=1_000_000, unknown_size=False, doc_type="matroska"):
    head = element(EBML, unsigned(0x4286, 1) + unsigned(0x42F7, 1) + unsigned(0x42F2, 4) + unsigned(0x42F3, 8)
                   + text(0x4282, doc_type) + unsigned(0x4287, 4) + unsigned(0x4285, 2))
    info = unsigned(0x2AD7B1, scale_ns) + text(0x4D80, "test") + text(0x5741, "test")
    if duration_ms is not None:
        info += floating(0x4489, duration_ms * 1_000_000 / scale_ns)
    content = element(INFO, info) + element(TRACKS, b"".join(tracks)) + b"".join(clusters)
    return head + identifier(SEGMENT) + (UNKNOWN if unknown_size else size(len(content))) + content
