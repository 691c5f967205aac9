"""The decoder configuration records of H.264 and H.265 beside those of ffmpeg and mkvmerge, byte for byte.

Each stream is encoded into a bare byte stream once. ffmpeg and mkvmerge put it into a file without touching it, and so
does mkvmux; the records of the three are compared. Where another muxer's record is another one, the difference has a
name below, a reason, and a function that makes exactly that difference: what it makes of our record is their record.
"""

import functools
import re
import struct

from whole_files.codec_case import CodecCase
from whole_files.mkvmux_case import input_directory, make_input, run_tool

HEVC_SEI = 39  # prefix messages
HEVC_HEAD_BYTES = 23
X264 = "threads=1"
X265 = "log-level=error:frame-threads=1:pools=none"


# ---- streams

def encoded(name, ending, encoder, pixels, parameters, *more, size="64x48", frames=4):
    option = "-x264-params" if encoder == "libx264" else "-x265-params"
    common = X264 if encoder == "libx264" else X265
    joined = ":".join(part for part in (common, parameters) if part)
    return make_input(f"{name}.{ending}", "-f", "lavfi", "-i", f"testsrc2=size={size}:rate=25:duration=1", "-frames:v",
                      str(frames), "-pix_fmt", pixels, "-c:v", encoder, "-preset", "ultrafast", option, joined, *more)


def joined(name, ending, *parts):
    path = input_directory() / f"{name}.{ending}"
    path.write_bytes(b"".join(part.read_bytes() for part in parts))
    return path


# name: pixel format, x264's parameters, more arguments of ffmpeg
AVC = {
    "baseline": ("yuv420p", "", "-profile:v", "baseline"),
    "baseline_with_slices": ("yuv420p", "slices=3", "-profile:v", "baseline"),
    "main": ("yuv420p", "cabac=1:bframes=2", "-profile:v", "main"),
    "main_top_field_first": ("yuv420p", "tff=1:cabac=1", "-profile:v", "main"),
    "main_bottom_field_first": ("yuv420p", "bff=1:cabac=1", "-profile:v", "main"),
    "main_intra": ("yuv420p", "keyint=1:cabac=1", "-profile:v", "main"),
    "high": ("yuv420p", "8x8dct=1"),
    "high_delimiters": ("yuv420p", "8x8dct=1:aud=1"),
    "high_interlaced": ("yuv420p", "8x8dct=1:interlaced=1"),
    "high_hrd_vbr": ("yuv420p", "8x8dct=1:nal-hrd=vbr:bitrate=200:vbv-maxrate=300:vbv-bufsize=300"),
    "high_hrd_cbr": ("yuv420p", "8x8dct=1:nal-hrd=cbr:bitrate=200:vbv-maxrate=200:vbv-bufsize=200"),
    "high_hrd_interlaced": ("yuv420p", "8x8dct=1:tff=1:aud=1:nal-hrd=vbr:bitrate=200:vbv-maxrate=300:vbv-bufsize=300"),
    "high_picture_structure": ("yuv420p", "8x8dct=1:pic-struct=1"),
    "high_colours": ("yuv420p", "8x8dct=1:colorprim=bt709:transfer=bt709:colormatrix=bt709:range=pc:videoformat=pal"),
    "high_aspect": ("yuv420p", "8x8dct=1:sar=16/11"),
    "high_overscan": ("yuv420p", "8x8dct=1:overscan=show:chromaloc=2"),
    "high_open_gop": ("yuv420p", "8x8dct=1:open-gop=1:bframes=2:b-pyramid=normal:keyint=3"),
    "high_level_51": ("yuv420p", "8x8dct=1:level=5.1"),
    "high_intra": ("yuv420p", "8x8dct=1:keyint=1"),
    "high_sps_5": ("yuv420p", "8x8dct=1:sps-id=5"),
    "high_matrices": ("yuv420p", "8x8dct=1:cqm=jvt"),
    "high_grey": ("gray", "8x8dct=1"),
    "high10": ("yuv420p10le", "8x8dct=1"),
    "high10_intra": ("yuv420p10le", "keyint=1", "-profile:v", "high10"),
    "high10_grey": ("gray10le", "8x8dct=1"),
    "high422": ("yuv422p", "8x8dct=1"),
    "high422_10": ("yuv422p10le", "8x8dct=1:aud=1"),
    "high422_10_intra": ("yuv422p10le", "keyint=1"),
    "high422_10_hrd": ("yuv422p10le", "nal-hrd=cbr:bitrate=200:vbv-maxrate=200:vbv-bufsize=200:tff=1"),
    "high444": ("yuv444p", "8x8dct=1"),
    "high444_lossless": ("yuv420p", "qp=0"),
    "high444_10": ("yuv444p10le", "8x8dct=1"),
}

# name: pixel format, x265's parameters, more arguments of ffmpeg
LAYERS = "temporal-layers=1:b-adapt=0:bframes=3:b-pyramid=1"
HRD = "hrd=1:vbv-maxrate=500:vbv-bufsize=500:bitrate=400"
HEVC = {
    "main": ("yuv420p", ""),
    "main_delimiters": ("yuv420p", "aud=1"),
    "main_hrd": ("yuv420p", HRD),
    "main_layers": ("yuv420p", LAYERS),
    "main_layers_hrd": ("yuv420p", LAYERS + ":" + HRD),
    "main_high_tier": ("yuv420p", "level-idc=5.1:high-tier=1"),
    "main_low_tier": ("yuv420p", "level-idc=5.1:high-tier=0"),
    "main_colours": ("yuv420p", "colorprim=bt709:transfer=bt709:colormatrix=bt709:range=full:videoformat=pal"),
    "main_aspect": ("yuv420p", "sar=4"),
    "main_overscan": ("yuv420p", "overscan=show:chromaloc=2"),
    "main_fields": ("yuv420p", "interlace=tff"),
    "main_intra": ("yuv420p", "keyint=1"),
    "main_matrices": ("yuv420p", "scaling-list=default"),
    "main_wavefronts": ("yuv420p", "wpp=1:pools=2"),
    "main_slices": ("yuv420p", "slices=2"),
    "main_lossless": ("yuv420p", "lossless=1"),
    "main_open_gop": ("yuv420p", "open-gop=1:keyint=3:bframes=2"),
    "main10": ("yuv420p10le", ""),
    "main10_hdr": ("yuv420p10le", "hdr10=1:master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)"
                                  "L(10000000,1):max-cll=1000,400:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc"),
    "main10_layers_hrd": ("yuv420p10le", LAYERS + ":" + HRD + ":aud=1"),
    "main12": ("yuv420p12le", ""),
    "main_422_8": ("yuv422p", ""),
    "main_422_10": ("yuv422p10le", ""),
    "main_422_10_intra": ("yuv422p10le", "keyint=1"),
    "main_422_12": ("yuv422p12le", ""),
    "main_444_8": ("yuv444p", ""),
    "main_444_10": ("yuv444p10le", ""),
    "main_444_12": ("yuv444p12le", "aud=1"),
    "grey": ("gray", ""),
    "grey12": ("gray12le", ""),
}


@functools.lru_cache(maxsize=None)
def avc_streams():
    streams = {name: encoded(name, "h264", "libx264", *stream) for name, stream in AVC.items()}
    streams["high_then_sps_5"] = joined("high_then_sps_5", "h264", streams["high"], streams["high_sps_5"])
    return streams


@functools.lru_cache(maxsize=None)
def hevc_streams():
    return {name: encoded(name, "h265", "libx265", *stream) for name, stream in HEVC.items()}


# ---- records

def copied_by_ffmpeg(stream):
    return make_input(stream.name + ".mp4", "-i", str(stream), "-c", "copy")


@functools.lru_cache(maxsize=None)
def copied_by_mkvmerge(stream):
    path = stream.with_name(stream.name + ".mkv")
    done = run_tool(["mkvmerge", "-o", str(path), str(stream)])
    if done.returncode != 0:
        raise RuntimeError(f"mkvmerge cannot copy {stream}: {done.stdout}")
    return path


def record_of_ffmpeg(stream):
    content = copied_by_ffmpeg(stream).read_bytes()
    kind = b"avcC" if stream.suffix == ".h264" else b"hvcC"
    at = content.index(kind)
    size, = struct.unpack(">I", content[at - 4:at])
    return content[at + 4:at - 4 + size]


class HevcRecord:
    def __init__(self, record):
        self.head = bytearray(record[:HEVC_HEAD_BYTES])
        self.arrays = []  # (first byte, units)
        at = HEVC_HEAD_BYTES
        for _ in range(record[HEVC_HEAD_BYTES - 1]):
            first, count = struct.unpack(">BH", record[at:at + 3])
            at += 3
            units = []
            for _ in range(count):
                size, = struct.unpack(">H", record[at:at + 2])
                units.append(record[at + 2:at + 2 + size])
                at += 2 + size
            self.arrays.append((first, units))
        assert at == len(record), "the arrays fill the record"

    def bytes(self):
        content = bytes(self.head[:-1]) + bytes([len(self.arrays)])
        for first, units in self.arrays:
            content += struct.pack(">BH", first, len(units))
            content += b"".join(struct.pack(">H", len(unit)) + unit for unit in units)
        return content


# ---- differences, each made from our record

def without_chroma(record, *_):
    """mkvmerge leaves the chroma format and the bit depths out, which ISO/IEC 14496-15 asks for in high profiles."""
    return record if record[1] in (66, 77) else record[:-4]


def with_the_first_sets_alone(record, *_):
    """ffmpeg looks at the parameter sets in front of the first picture only; a player that begins with the second
    sequence would miss its own."""
    first_sps = 8 + struct.unpack(">H", record[6:8])[0]
    second_sps = first_sps + 2 + struct.unpack(">H", record[first_sps:first_sps + 2])[0]
    first_pps = second_sps + 3 + struct.unpack(">H", record[second_sps + 1:second_sps + 3])[0]
    return (record[:5] + bytes([record[5] - 1]) + record[6:first_sps] + bytes([record[second_sps] - 1]) +
            record[second_sps + 1:first_pps] + record[-4:])


def as_mkvmerge_has_hevc(record, theirs, stream):
    """mkvmerge says that the arrays are complete, though it leaves the parameter sets in the samples as well; it keeps
    four of the 48 constraint flags, and loses those that tell the profiles of the range extensions apart; and it puts
    the encoder's message about itself into the record, which is in the stream in front of the first picture, too."""
    made = HevcRecord(record)
    made.head[6:12] = bytes([made.head[6] & 0xF0]) + bytes(5)
    made.arrays = [(first | 0x80, units) for first, units in made.arrays]
    for first, units in HevcRecord(theirs).arrays:
        if first & 0x3F == HEVC_SEI:
            assert all(unit in stream.read_bytes() for unit in units), "the message is in the stream"
            made.arrays.append((HEVC_SEI | 0x80, units))
    return made.bytes()


def with_a_spatial_segmentation(record, _, stream):
    """ffmpeg loses its way in the parameters of the reference decoder when there are several temporal layers, and tells
    a segmentation that the stream does not have: its own trace of the headers shows that nothing is said of one."""
    trace = run_tool(["ffmpeg", "-nostdin", "-i", str(stream), "-c", "copy", "-bsf:v", "trace_headers", "-f", "null", "-"])
    assert re.search(r"bitstream_restriction_flag +0 = 0", trace.stderr), "no segmentation in the stream"
    assert "min_spatial_segmentation_idc" not in trace.stderr
    made = HevcRecord(record)
    made.head[14] = 2
    made.head[15] |= 1
    return made.bytes()


FFMPEG_DIFFERS = {
    "high_then_sps_5": with_the_first_sets_alone,
    "main_layers_hrd": with_a_spatial_segmentation,
    "main10_layers_hrd": with_a_spatial_segmentation,
}


class DecoderRecords(CodecCase):
    profile = "strict"

    def records(self, name, sources):
        """The records of one file that holds all of them."""
        output = self.directory / f"{name}.mkv"
        chosen = () if "--profile" in map(str, self.command()) else ("--profile", self.profile)
        self.mux(output, *chosen, *sources)
        tracks = self.identify(output)["tracks"]
        self.assertEqual(len(tracks), len(sources))
        return [bytes.fromhex(track["properties"]["codec_private_data"]) for track in tracks]

    def record_of_mkvmerge(self, stream):
        return bytes.fromhex(self.report(copied_by_mkvmerge(stream))["properties"]["codec_private_data"])

    def assert_record(self, ours, expected, what):
        self.assertEqual(ours.hex(), expected.hex(), what)

    def compare(self, streams, mkvmerge_differs):
        for (name, stream), ours in zip(streams.items(), self.records("raw", streams.values())):
            with self.subTest(stream=name):
                theirs = record_of_ffmpeg(stream)
                make_difference = FFMPEG_DIFFERS.get(name, lambda record, *_: record)
                self.assert_record(make_difference(ours, theirs, stream), theirs, "ffmpeg's record")
                theirs = self.record_of_mkvmerge(stream)
                self.assert_record(mkvmerge_differs(ours, theirs, stream), theirs, "mkvmerge's record")

    def test_there_are_more_than_fifty_streams(self):
        self.assertGreater(len(avc_streams()) + len(hevc_streams()), 50)

    def test_avc(self):
        self.compare(avc_streams(), without_chroma)

    def test_hevc(self):
        self.compare(hevc_streams(), as_mkvmerge_has_hevc)

    def test_an_avc_record_is_made_whole(self):
        """Of mkvmerge's files, whose records lack the chroma format: what we write of the stream itself."""
        streams = avc_streams()
        ours = self.records("again", [copied_by_mkvmerge(stream) for stream in streams.values()])
        for (name, stream), record, whole in zip(streams.items(), ours, self.records("raw", streams.values())):
            with self.subTest(stream=name):
                self.assert_record(record, whole, "the record of the stream itself")

    def test_a_sound_hevc_record_stays_as_it_is(self):
        streams = hevc_streams()
        ours = self.records("again", [copied_by_mkvmerge(stream) for stream in streams.values()])
        for (name, stream), record in zip(streams.items(), ours):
            with self.subTest(stream=name):
                self.assert_record(record, self.record_of_mkvmerge(stream), "mkvmerge's record")
