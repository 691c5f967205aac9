"""One line for each codec that the muxer maps: how the input is made, and what the output has to say of it.

The encoders and the containers of the inputs are ffmpeg's and mkvmerge's. What no encoder makes stands in
tests/encoders/test_built_packets.py.
"""

import os
from dataclasses import dataclass, field

from whole_files.mkvmux_case import make_input

SECONDS = 60 if os.environ.get("QRX_ENCODERS_FULL") else 2
SIZE = (160, 120)
RATE = 25
SAMPLING = 48000

PICTURE = ("-f", "lavfi", "-i", f"testsrc=size={SIZE[0]}x{SIZE[1]}:rate={RATE}")
SOUND = ("-f", "lavfi", "-i", f"sine=frequency=440:sample_rate={SAMPLING}")


@dataclass(frozen=True)
class Line:
    name: str  # "h264"; the input's file name begins with it
    container: str  # the ending of the input
    encoder: str  # as ffmpeg names it
    media_type: str  # the subtype that the source offers, as --identify shows it
    codec_id: str  # in compatible files; "": they do not hold it
    # "carried": as in the input; "none"; "built": by the muxer, judged by what decoders make of it; "behind": strict
    # files have what the input has behind the structure of Windows; "windows": that structure, and none in strict files
    private: str = "carried"
    options: tuple = ()  # of the encoder
    source: tuple = PICTURE
    # what mkvmerge reports of the track, by its own names
    fields: dict = field(default_factory=dict)
    strict_codec_id: str = ""  # where it is another one

    def codec_id_in(self, is_strict):
        return self.strict_codec_id if is_strict and self.strict_codec_id else self.codec_id


def video(name, container, encoder, media_type, codec_id, private="carried", options=(), display=None, strict=""):
    fields = {"pixel_dimensions": f"{SIZE[0]}x{SIZE[1]}", "default_duration": 1_000_000_000 // RATE}
    if display is not None:
        fields["display_dimensions"] = display
    return Line(name, container, encoder, media_type, codec_id, private, tuple(options), PICTURE, fields, strict)


def uncompressed(name, container, fourcc, pixels):
    return video(name, container, "rawvideo", f"'{fourcc}'", "V_MS/VFW/FOURCC", "windows", ("-pix_fmt", pixels),
                 strict="V_UNCOMPRESSED")


def audio(name, container, encoder, media_type, codec_id, private="none", options=(), strict="", **fields):
    fields = {"audio_sampling_frequency": SAMPLING, "audio_channels": 1, **fields}
    return Line(name, container, encoder, media_type, codec_id, private, tuple(options), SOUND, fields, strict)


EXPERIMENTAL = ("-strict", "-2")
GOP = ("-g", "25")

VIDEO = [
    video("mpeg1", "mkv", "mpeg1video", "{E436EB81-524F-11CE-9F53-0020AF0BA770}", "V_MPEG1", options=(*GOP, "-bf", "2")),
    video("theora", "mkv", "libtheora", "'THEO'", "V_THEORA", options=GOP),
    video("mpeg2", "mkv", "mpeg2video", "{E06D8026-DB46-11CF-B4D1-00805F6CBBEA}", "V_MPEG2",
          options=(*GOP, "-bf", "2")),
    video("mpeg4", "mkv", "mpeg4", "'MP4V'", "V_MPEG4/ISO/ASP", options=(*GOP, "-bf", "2")),
    video("h264", "mkv", "libx264", "'AVC1'", "V_MPEG4/ISO/AVC", "built", (*GOP, "-bf", "3")),
    video("hevc", "mkv", "libx265", "'HVC1'", "V_MPEGH/ISO/HEVC", "carried",
          ("-x265-params", "log-level=error:keyint=25:bframes=3")),
    video("vp8", "webm", "libvpx", "'VP80'", "V_VP8", "none", GOP),
    video("vp9", "webm", "libvpx-vp9", "'VP90'", "V_VP9", "carried", (*GOP, "-deadline", "realtime", "-cpu-used", "8")),
    video("msmpeg4", "mkv", "msmpeg4v2", "'MP42'", "V_MS/VFW/FOURCC", options=GOP),
    # What belongs to the codec follows its structure of Windows: only the larger format block carries it.
    video("huffyuv", "mkv", "huffyuv", "'HFYU'", "V_MS/VFW/FOURCC"),
    video("cinepak", "avi", "cinepak", "'cvid'", "V_MS/VFW/FOURCC", "built", GOP),
    video("mjpeg", "avi", "mjpeg", "'MJPG'", "V_MS/VFW/FOURCC", "built"),
    uncompressed("raw", "avi", "I420", "yuv420p"),
    uncompressed("i420", "mkv", "I420", "yuv420p"),
    uncompressed("yuy2", "mkv", "YUY2", "yuyv422"),
    uncompressed("uyvy", "mkv", "UYVY", "uyvy422"),
    uncompressed("nv12", "mkv", "NV12", "nv12"),
    uncompressed("grey", "mkv", "Y800", "gray"),
    video("ffv1", "mkv", "ffv1", "'FFV1'", "V_MS/VFW/FOURCC", "behind", ("-level", "3"), strict="V_FFV1"),
    video("ffv1_old", "mkv", "ffv1", "'FFV1'", "V_MS/VFW/FOURCC", "behind", ("-level", "1"), strict="V_FFV1"),
    video("prores", "mkv", "prores_ks", "'apch'", "V_MS/VFW/FOURCC", "built", ("-profile:v", "3"), strict="V_PRORES"),
    video("prores4444", "mkv", "prores_ks", "'ap4h'", "V_MS/VFW/FOURCC", "built",
          ("-profile:v", "4", "-pix_fmt", "yuva444p10le"), strict="V_PRORES"),
]

AUDIO = [
    audio("ac3", "mkv", "ac3", "{E06D802C-DB46-11CF-B4D1-00805F6CBBEA}", "A_AC3"),
    audio("eac3", "mkv", "eac3", "{A7FB87AF-2D02-42FB-A4D4-05CD93843BDD}", "A_EAC3"),
    audio("truehd", "mkv", "truehd", "{EB27CEC4-163E-4CA3-8B74-8E25F91B517E}", "A_TRUEHD",
          options=(*EXPERIMENTAL, "-ac", "2"), audio_channels=2),
    audio("mp3", "mkv", "libmp3lame", "wave tag 0x0055", "A_MPEG/L3"),
    audio("mp2", "mkv", "mp2", "wave tag 0x0050", "A_MPEG/L2"),
    audio("dts", "mkv", "dca", "{E06D8033-DB46-11CF-B4D1-00805F6CBBEA}", "A_DTS", options=(*EXPERIMENTAL, "-ac", "2"), audio_channels=2),
    audio("pcm", "mkv", "pcm_s16le", "wave tag 0x0001", "A_PCM/INT/LIT", audio_bits_per_sample=16),
    audio("pcm24", "mkv", "pcm_s24le", "wave tag 0x0001", "A_PCM/INT/LIT", audio_bits_per_sample=24),
    audio("float", "mkv", "pcm_f32le", "wave tag 0x0003", "A_PCM/FLOAT/IEEE", audio_bits_per_sample=32),
    audio("tta", "mkv", "tta", "wave tag 0x77A1", "A_TTA1", "carried", audio_bits_per_sample=16),
    audio("wavpack", "mkv", "wavpack", "wave tag 0x5756", "A_WAVPACK4", "carried"),
    audio("opus", "webm", "libopus", "'OPUS'", "A_OPUS", "carried"),
    audio("vorbis", "webm", "libvorbis", "{8D2FD10B-5841-4A6B-8905-588FEC1ADED9}", "A_VORBIS", "carried"),
    audio("flac", "mkv", "flac", "{1541C5C0-CDDF-477D-BC0A-86F8AE7F8354}", "A_FLAC", "carried",
          audio_bits_per_sample=16),
    audio("aac", "mkv", "aac", "wave tag 0x00FF", "A_AAC", "carried"),
    audio("pcm_be", "mkv", "pcm_s16be", "'twos'", "", strict="A_PCM/INT/BIG", audio_bits_per_sample=16),
    audio("pcm24_be", "mkv", "pcm_s24be", "'in24'", "", strict="A_PCM/INT/BIG", audio_bits_per_sample=24),
    audio("pcm32_be", "mkv", "pcm_s32be", "'in32'", "", strict="A_PCM/INT/BIG", audio_bits_per_sample=32),
    audio("alac", "mkv", "alac", "wave tag 0x6C61", "", "carried", strict="A_ALAC", audio_bits_per_sample=16),
    audio("mulaw", "mkv", "pcm_mulaw", "wave tag 0x0007", "A_MS/ACM", "carried", audio_bits_per_sample=8),
]

SRT = """1
00:00:00,500 --> 00:00:01,250
First line
<i>second</i> line

2
00:00:01,500 --> 00:00:02,000
Käse €
"""


def subtitle(name, encoder, media_type, codec_id, private, options=()):
    return Line(name, "mkv", encoder, media_type, codec_id, private, tuple(options), (), {})


# The source is a file with SRT; the encoder is ffmpeg's.
SUBTITLES = [
    subtitle("srt", "srt", "{87C0B230-03A8-4FDF-8010-B27A5848200D}", "S_TEXT/UTF8", "none"),
    subtitle("ass", "ass", "{326444F7-686F-47FF-A4B2-C8C96307B4C2}", "S_TEXT/ASS", "carried"),
]


def encoded(line, kind):
    """The line's input, for one of ffmpeg's kinds of streams ("v", "a")."""
    return make_input(f"{line.name}.{line.container}", *line.source, "-t", str(SECONDS), f"-c:{kind}", line.encoder,
                      *line.options)
