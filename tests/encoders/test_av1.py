"""AV1 in strict files: from encoders and containers that nobody here wrote, beside what other muxers make of it."""

from whole_files.codec_case import CodecCase
from whole_files.mkvmux_case import make_input, picture, run_tool
from whole_files.profiles import STRICT

SVT = ("-c:v", "libsvtav1", "-preset", "12", "-g", "25")
AOM = ("-c:v", "libaom-av1", "-cpu-used", "8", "-usage", "realtime", "-g", "10")
RAV1E = ("-c:v", "librav1e", "-speed", "10", "-g", "10")
HDR = ("-pix_fmt", "yuv420p10le", "-color_primaries", "bt2020", "-color_trc", "smpte2084", "-colorspace", "bt2020nc",
       "-svtav1-params", "mastering-display=G(0.265,0.690)B(0.150,0.060)R(0.680,0.320)WP(0.3127,0.3290)"
       "L(1000.0,0.01):content-light=1000,400")


def private_of(track):
    return track["properties"].get("codec_private_data", "")


class Av1Case(CodecCase):
    profile = STRICT

    def assert_like(self, twin, output):
        """The output holds what ffmpeg made a Matroska file of."""
        self.assertEqual(self.codecs(output), [("video", "V_AV1")])
        self.assertEqual(private_of(self.report(output)), private_of(self.report(twin)), "CodecPrivate")
        self.assert_same_stream(twin, output)
        self.assert_remuxes(output)

    def copied(self, source, ending, *options):
        return make_input(f"{source.stem}{ending}", "-i", str(source), "-c", "copy", *options)


class Av1(Av1Case):
    def check(self, source):
        offered = self.identified(source)[0]
        self.assertEqual(offered["subtype"], "'AV01'")
        output = self.remux(source, ending=source.suffix)
        self.assert_like(source, output)
        self.assert_decodes_alike(source, output, "v")

    def test_eight_bits(self):
        self.check(make_input("av1_svt.mkv", *picture(2), *SVT))

    def test_ten_bits_with_mastering_data(self):
        self.check(make_input("av1_hdr.mkv", *picture(1), *HDR, *SVT))

    def test_webm_of_another_encoder(self):
        self.check(make_input("av1_aom.webm", *picture(1), *AOM))

    def test_every_chroma(self):
        for pixels in ("yuv444p", "gray"):
            with self.subTest(pixels=pixels):
                self.check(make_input(f"av1_{pixels}.mkv", *picture(1, rate=5), "-pix_fmt", pixels, *AOM))

    def test_a_level_that_is_not_told(self):
        self.check(make_input("av1_rav1e.mkv", *picture(1, rate=5), *RAV1E))


class StreamsOfUnits(Av1Case):
    """What ffmpeg and mkvmerge make of the same IVF and .obu files."""

    def merged(self, source):
        merged = self.directory / "merged.mkv"
        done = run_tool(["mkvmerge", "--ui-language", "en_US", "-o", str(merged), str(source)])
        self.assertEqual(done.returncode, 0, done.stdout)
        return merged

    def check(self, film, ending):
        stream = self.copied(film, ending)
        twin = make_input(f"{stream.stem}{ending}.mkv", "-i", str(stream), "-c", "copy")
        output = self.directory / f"out_{stream.name}.mkv"
        self.mux(output, stream)
        self.assert_like(twin, output)
        self.assert_decodes_alike(stream, output, "v")
        merged = self.merged(stream)
        self.assertEqual(private_of(self.report(output)), private_of(self.report(merged)), "CodecPrivate")
        self.assertEqual([(p["data_hash"], p["flags"]) for p in self.probe(output)],
                         [(p["data_hash"], p["flags"]) for p in self.probe(merged)])

    def test_streams(self):
        for ending in (".ivf", ".obu"):
            for name, encoder in (("svt", SVT), ("hdr", (*HDR, *SVT)), ("aom", AOM)):
                with self.subTest(ending=ending, encoder=name):
                    self.check(make_input(f"units_{name}.mkv", *picture(1), *encoder), ending)

    def test_a_rate_of_its_own(self):
        stream = self.copied(make_input("units_rate.mkv", *picture(1, rate=50), *SVT), ".obu")
        output = self.directory / "out.mkv"
        self.mux(output, "--fps", "50", stream)
        self.assertEqual(self.report(output)["properties"]["default_duration"], 20_000_000)

    def test_a_still_picture_with_a_reduced_header(self):
        still = make_input("still.avif", *picture(1), "-frames:v", "1", "-pix_fmt", "yuv420p", "-c:v", "libaom-av1",
                           "-cpu-used", "8", "-still-picture", "1")
        stream = self.copied(still, ".obu")
        output = self.remux(stream)
        self.assertEqual(private_of(self.report(output))[:12], "81000c000a06")
        self.assertEqual(["K" in p["flags"] for p in self.probe(output)], [True])
        self.assert_decodes_alike(stream, output, "v")

    def test_vp8_and_vp9_in_ivf(self):
        for encoder, codec in (("libvpx", "V_VP8"), ("libvpx-vp9", "V_VP9")):
            with self.subTest(codec=codec):
                stream = make_input(f"{encoder}.ivf", *picture(1), "-c:v", encoder, "-deadline", "realtime", "-g", "10",
                                    "-cpu-used", "8")
                twin = make_input(f"{encoder}.ivf.mkv", "-i", str(stream), "-c", "copy")
                output = self.remux(stream)
                self.assertEqual(self.codecs(output), [("video", codec)])
                self.assert_same_stream(twin, output)


class Header(Av1Case):
    """An AVI file has the sequence header behind its structure, or nowhere but in the first picture."""

    def check(self, film, avi):
        output = self.remux(avi)
        self.assertEqual(self.codecs(output), [("video", "V_AV1")])
        self.assertEqual(private_of(self.report(output)), private_of(self.report(film)), "CodecPrivate")
        self.assert_decodes_alike(film, output, "v")
        self.assert_remuxes(output)

    def film_and_avi(self):
        # Through units alone, since this encoder tells another header than the one in its pictures.
        units = self.copied(make_input("header_svt.mkv", *picture(1), *SVT), ".obu")
        film = make_input("header.mkv", "-i", str(units), "-c", "copy")
        return film, make_input("header.avi", "-r", "25", "-i", str(film), "-c", "copy")

    def test_behind_the_structure(self):
        self.check(*self.film_and_avi())

    def test_in_the_first_picture(self):
        film, avi = self.film_and_avi()
        header = bytes.fromhex(private_of(self.report(film)))[4:]
        content = avi.read_bytes()
        self.assertIn(header, content[:1000])
        bare = self.directory / "bare.avi"
        bare.write_bytes(content.replace(header, bytes(len(header)), 1))
        self.check(film, bare)
