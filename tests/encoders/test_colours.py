"""Colours and light of the tracks of strict files, beside what ffprobe and mkvmerge say of the inputs.

Byte streams tell their colours themselves, so ffprobe finds there what the file has to tell; mkvmerge reads the file's
own words alone, and has to say the same. What was in a Matroska file comes out of a remux as it was.
"""

import fractions
import functools
import json

from whole_files.codec_case import CodecCase
from whole_files.mkv_builder import INFO, TRACKS, element, identifier, unsigned
from whole_files.mkvmux_case import input_directory, make_input, run_tool

X264 = "threads=1"
X265 = "log-level=error:frame-threads=1:pools=none:repeat-headers=1"
DISPLAY = "G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)"
HD = "colorprim=bt709:transfer=bt709:colormatrix=bt709"
UHD = "colorprim=bt2020:colormatrix=bt2020nc"
PAL = "colorprim=bt470bg:transfer=bt470bg:colormatrix=bt470bg"
NTSC = "colorprim=smpte170m:transfer=smpte170m:colormatrix=smpte170m"
X265_LIGHT = f"hdr10=1:master-display={DISPLAY}:max-cll=1000,400"
X264_LIGHT = f"mastering-display={DISPLAY}:cll=1000,400"
SVT = "lp=1" # threads
SVT_LIGHT = ("enable-hdr=1:mastering-display=G(0.265,0.69)B(0.15,0.06)R(0.68,0.32)WP(0.3127,0.329)L(1000,0.005):"
             "content-light=1000,400")
# Of each encoder: what its streams are called, its least picture, its parameters of all streams, and how they are given.
ENCODERS = {
    "libx264": ("h264", "64x48", X264, ("-preset", "ultrafast", "-x264-params")),
    "libx265": ("h265", "64x48", X265, ("-preset", "ultrafast", "-x265-params")),
    "libsvtav1": ("ivf", "64x64", SVT, ("-preset", "12", "-svtav1-params")),
}


def told_to_ffmpeg(primaries, transfer, matrix, values="tv"):
    return "-color_primaries", primaries, "-color_trc", transfer, "-colorspace", matrix, "-color_range", values



# name: encoder, pixel format, its parameters, more arguments of ffmpeg
STREAMS = {
    "hevc_hdr10": ("libx265", "yuv420p10le", f"{UHD}:transfer=smpte2084:chromaloc=2:{X265_LIGHT}"),
    "hevc_hlg": ("libx265", "yuv420p10le", f"{UHD}:transfer=arib-std-b67"),
    "hevc_hlg_for_others": ("libx265", "yuv420p10le", f"{UHD}:transfer=bt2020-10:atc-sei=18"),
    "hevc_2020": ("libx265", "yuv420p10le", f"{UHD}:transfer=bt2020-10"),
    "hevc_709": ("libx265", "yuv420p", HD),
    "hevc_601_pal": ("libx265", "yuv420p", PAL),
    "hevc_601_ntsc": ("libx265", "yuv420p", NTSC),
    "hevc_full_range": ("libx265", "yuv420p", f"{HD}:range=full", "-color_range", "pc"),
    "hevc_says_nothing": ("libx265", "yuv420p10le", ""),
    "avc_hdr10": ("libx264", "yuv420p10le", f"{UHD}:transfer=smpte2084:chromaloc=2:{X264_LIGHT}"),
    "avc_hlg": ("libx264", "yuv420p10le", f"{UHD}:transfer=arib-std-b67"),
    "avc_709": ("libx264", "yuv420p", HD),
    "avc_601_pal": ("libx264", "yuv420p", PAL),
    "avc_601_ntsc": ("libx264", "yuv420p", NTSC),
    "avc_full_range": ("libx264", "yuv420p", HD, "-color_range", "pc"),
    "avc_444": ("libx264", "yuv444p", HD),
    "avc_says_nothing": ("libx264", "yuv420p", ""),
    "av1_hdr10": ("libsvtav1", "yuv420p10le", SVT_LIGHT, *told_to_ffmpeg("bt2020", "smpte2084", "bt2020nc")),
    "av1_hlg": ("libsvtav1", "yuv420p10le", "", *told_to_ffmpeg("bt2020", "arib-std-b67", "bt2020nc")),
    "av1_709": ("libsvtav1", "yuv420p", "", *told_to_ffmpeg("bt709", "bt709", "bt709")),
    "av1_601_pal": ("libsvtav1", "yuv420p", "", *told_to_ffmpeg("bt470bg", "smpte170m", "bt470bg")),
    "av1_601_ntsc": ("libsvtav1", "yuv420p", "", *told_to_ffmpeg("smpte170m", "smpte170m", "smpte170m")),
    "av1_full_range": ("libsvtav1", "yuv420p", "", *told_to_ffmpeg("bt709", "bt709", "bt709", "pc")),
    "av1_says_nothing": ("libsvtav1", "yuv420p", ""),
}
# ffprobe's names, and what mkvmerge says of the file.
NUMBERS = {
    "color_primaries": ("color_primaries", {"bt709": 1, "bt470bg": 5, "smpte170m": 6, "bt2020": 9}),
    "color_transfer": ("color_transfer_characteristics",
                       {"bt709": 1, "bt470bg": 5, "smpte170m": 6, "bt2020-10": 14, "smpte2084": 16, "arib-std-b67": 18}),
    "color_space": ("color_matrix_coefficients", {"bt709": 1, "bt470bg": 5, "smpte170m": 6, "bt2020nc": 9}),
    "color_range": ("color_range", {"tv": 1, "pc": 2}),
}
WORDS = ("color", "chroma", "max_", "min_", "white_")  # that mkvmerge's properties of colours begin with
HDR10 = ("--color-matrix-coefficients", "0:9", "--color-range", "0:1", "--color-transfer-characteristics", "0:16",
         "--color-primaries", "0:9", "--chroma-siting", "0:1,1", "--color-bits-per-channel", "0:10",
         "--chroma-subsample", "0:1,1", "--max-content-light", "0:1000", "--max-frame-light", "0:400",
         "--chromaticity-coordinates", "0:0.708,0.292,0.17,0.797,0.131,0.046", "--white-color-coordinates",
         "0:0.3127,0.329", "--max-luminance", "0:1000", "--min-luminance", "0:0.005")
# Version 1.0, profile 8, level 6, a base layer and its metadata, compatible with HDR10.
DOLBY_VISION = bytes([1, 0, 8 << 1, 6 << 3 | 5, 1 << 4]) + bytes(19)
DVVC = 0x64767643


@functools.lru_cache(maxsize=None)
def stream(name):
    encoder, pixels, parameters, *more = STREAMS[name]
    extension, size, common, options = ENCODERS[encoder]
    joined = ":".join(part for part in (common, parameters) if part)
    return make_input(f"{name}.{extension}", "-f", "lavfi", "-i", f"testsrc2=size={size}:rate=25:duration=1",
                      "-frames:v", "3", "-pix_fmt", pixels, *more, "-c:v", encoder, *options, joined)


def copied_by_mkvmerge(source, name, *options):
    path = input_directory() / name
    done = run_tool(["mkvmerge", "-q", "-o", str(path), *options, str(source)])
    if done.returncode != 0:
        raise RuntimeError(f"mkvmerge cannot write {name}: {done.stdout}")
    return path


@functools.lru_cache(maxsize=None)
def vp9():
    """What its stream does not tell, the file does."""
    plain = make_input("plain_vp9.webm", "-f", "lavfi", "-i", "testsrc2=size=64x48:rate=25:duration=1", "-frames:v", "4",
                       "-pix_fmt", "yuv420p10le", "-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8")
    return copied_by_mkvmerge(plain, "vp9_hdr10.mkv", *HDR10)


def ffprobe(path, *arguments):
    return json.loads(run_tool(["ffprobe", "-v", "error", "-of", "json", *arguments, str(path)]).stdout)


def measures(side_data):
    """Every number of each kind of side data, whatever it is written as."""
    kinds = ("Mastering display metadata", "Content light level metadata")
    return {kind["side_data_type"]: {name: fractions.Fraction(str(value)) for name, value in kind.items()
                                     if name != "side_data_type"}
            for kind in side_data if kind["side_data_type"] in kinds}


def first_picture(path, stream=0):
    return ffprobe(path, "-show_frames", "-select_streams", str(stream), "-read_intervals", "%+#1")["frames"][0]


def light_of_stream(path):
    """What the first picture carries."""
    return measures(first_picture(path).get("side_data_list", []))


def colours(words):
    return {name: words.get(name) for name in (*NUMBERS, "chroma_location")}


def size_field(content, at):
    """Where the data of the element begin whose size field lies there, and how many they are."""
    count = 9 - content[at].bit_length()
    return at + count, int.from_bytes(content[at:at + count], "big") & (1 << 7 * count) - 1


def enlarged(content, at, more):
    """The element whose size field lies there says so many bytes more."""
    data, size = size_field(content, at)
    field = ((size + more) | 1 << 7 * (data - at)).to_bytes(data - at, "big")
    return content[:at] + field + content[data:]


def with_dolby_vision(source, name):
    """A file of mkvmerge's with a configuration in its track entry; the room behind the tracks becomes smaller."""
    content = source.read_bytes()
    tracks = content.index(identifier(TRACKS), content.index(identifier(INFO), 200)) # behind the seek head
    data, size = size_field(content, tracks + 4)
    entry = content.index(b"\xae", data)
    mapping = element(0x41E4, unsigned(0x41E7, DVVC) + element(0x41ED, DOLBY_VISION))
    end = data + size
    assert content[end] == 0xEC, "room behind the tracks"
    void, room = size_field(content, end + 1)
    content = (content[:end] + mapping + b"\xec" +
               ((room - len(mapping)) | 1 << 7 * (void - end - 1)).to_bytes(void - end - 1, "big") +
               content[void + len(mapping):])
    content = enlarged(enlarged(content, entry + 1, len(mapping)), tracks + 4, len(mapping))
    path = input_directory() / name
    path.write_bytes(content)
    return path


class Colours(CodecCase):
    profile = "strict"

    def words_of_mkvmerge(self, path):
        return [{name: value for name, value in track["properties"].items() if name.startswith(WORDS)}
                for track in self.identify(path)["tracks"]]

    def streams_of_ffprobe(self, path):
        return ffprobe(path, "-show_streams")["streams"]

    def light_of_file(self, stream_words):
        return measures(stream_words.get("side_data_list", []))

    def test_the_file_tells_what_byte_streams_do(self):
        sources = [stream(name) for name in STREAMS]
        output = self.directory / "streams.mkv"
        self.mux(output, *sources)
        told = self.words_of_mkvmerge(output)
        written = self.streams_of_ffprobe(output)
        for name, source, file, track in zip(STREAMS, sources, written, told, strict=True):
            with self.subTest(stream=name):
                before, = self.streams_of_ffprobe(source)
                # Of a Matroska file ffprobe tells the parameter set's transfer until it has decoded a picture.
                seen = first_picture(output, file["index"]) if name == "hevc_hlg_for_others" else file
                self.assertEqual(colours(seen), colours(before))
                expected = {word: values[before[field]] for field, (word, values) in NUMBERS.items() if field in before}
                self.assertEqual({word: track.get(word) for word, _ in NUMBERS.values() if word in track}, expected)
                # Of H.264 ffprobe does not show these messages; they are the other encoder's.
                light = light_of_stream(stream("hevc_hdr10")) if name == "avc_hdr10" else light_of_stream(source)
                self.assertEqual(self.light_of_file(file), light)
                self.assertEqual("max_content_light" in track, "hdr10" in name)

    def test_light_is_told_without_the_stream(self):
        """mkvmerge reads no message of a stream: what it says comes from the track entry."""
        for name in ("hevc_hdr10", "avc_hdr10"):
            with self.subTest(stream=name):
                output = self.directory / f"{name}.mkv"
                self.mux(output, stream(name))
                track, = self.words_of_mkvmerge(output)
                self.assertEqual((track["max_content_light"], track["max_frame_light"]), (1000, 400))
                self.assertEqual((track["max_luminance"], track["min_luminance"]), (1000, 0.005))
                self.assertEqual(track["chromaticity_coordinates"], "0.68,0.32,0.265,0.69,0.15,0.06")
                self.assertEqual(track["white_color_coordinates"], "0.3127,0.329")
                self.assertEqual(track["chroma_siting"], "1,1")

    def test_light_of_metadata_units_is_told_without_the_stream(self):
        """AV1 has the coordinates in 65536ths."""
        output = self.directory / "av1_light.mkv"
        self.mux(output, stream("av1_hdr10"))
        track, = self.words_of_mkvmerge(output)
        self.assertEqual((track["max_content_light"], track["max_frame_light"]), (1000, 400))
        self.assertEqual(track["max_luminance"], 1000)
        self.assertAlmostEqual(track["min_luminance"], 0.005, delta=1 / 16384)
        told = [float(number) for name in ("chromaticity_coordinates", "white_color_coordinates")
                for number in track[name].split(",")]
        for number, expected in zip(told, (0.68, 0.32, 0.265, 0.69, 0.15, 0.06, 0.3127, 0.329), strict=True):
            self.assertAlmostEqual(number, expected, delta=1 / 65536)

    def test_a_remux_tells_what_the_file_told(self):
        inputs = {
            "vp9_of_mkvmerge": vp9(),
            "hevc_of_mkvmerge": copied_by_mkvmerge(stream("hevc_601_pal"), "hevc.mkv", *HDR10),
            "avc_of_ffmpeg": make_input("avc_of_ffmpeg.mkv", "-i", str(copied_by_mkvmerge(stream("avc_709"), "avc.mkv")),
                                        "-c", "copy"),
        }
        for name, source in inputs.items():
            with self.subTest(input=name):
                output = self.directory / f"{name}.mkv"
                self.mux(output, source)
                self.assertEqual(self.words_of_mkvmerge(output), self.words_of_mkvmerge(source))
                before, = self.streams_of_ffprobe(source)
                after, = self.streams_of_ffprobe(output)
                self.assertEqual(colours(after), colours(before))
                self.assertEqual(self.light_of_file(after), self.light_of_file(before))

    def test_webm_tells_it_too(self):
        output = self.directory / "vp9.webm"
        self.mux(output, vp9())
        self.assertEqual(self.words_of_mkvmerge(output), self.words_of_mkvmerge(vp9()))

    def test_a_remux_keeps_the_configuration_of_dolby_vision(self):
        source = with_dolby_vision(copied_by_mkvmerge(stream("hevc_hdr10"), "hdr10.mkv"), "dolby_vision.mkv")
        configuration = self.configuration_of(source)
        self.assertEqual((configuration["dv_profile"], configuration["dv_level"]), (8, 6))
        output = self.directory / "dolby_vision.mkv"
        self.mux(output, source)
        self.assertEqual(self.configuration_of(output), configuration)

    def configuration_of(self, path):
        words, = self.streams_of_ffprobe(path)
        found, = [kind for kind in words["side_data_list"] if kind["side_data_type"].startswith("DOVI")]
        return found


class CompatibleColours(CodecCase):
    """Files of this profile are what they always were."""

    def test_nothing_is_told(self):
        output = self.directory / "streams.mkv"
        self.mux(output, stream("hevc_hdr10"), vp9())
        for track in self.identify(output)["tracks"]:
            self.assertEqual([name for name in track["properties"] if name.startswith(WORDS)], [])
