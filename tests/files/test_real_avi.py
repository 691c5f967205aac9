"""Real files, made by encoders that nobody here wrote, through mkvmux, judged by mkvmerge and ffmpeg."""

import struct

from whole_files.mkvmux_case import MkvmuxCase, cinepak_avi, make_input, pcm_wave, picture, raw_avi, sound


class RealFiles(MkvmuxCase):
    def check_copy(self, source, expected_codecs, own_reader=True):
        output = self.directory / "out.mkv"
        run = self.mux(output, source)
        self.assertEqual("own AVI reader" in run.output, own_reader, run)
        self.assertEqual(self.codecs(output), expected_codecs)
        self.assert_decodes(output)
        for stream in range(len(expected_codecs)):
            self.assert_same_packets(source, stream, output, stream)
        return output

    def test_cinepak_and_pcm_keep_every_packet(self):
        output = self.check_copy(cinepak_avi(), [("video", "V_MS/VFW/FOURCC"), ("audio", "A_PCM/INT/LIT")])
        report = self.identify(output)
        video, audio = (track["properties"] for track in report["tracks"])
        self.assertEqual(report["container"]["properties"]["duration"], 4_000_000_000)
        self.assertEqual(video["pixel_dimensions"], "160x120")
        self.assertEqual(video["default_duration"], 40_000_000)
        self.assertEqual((audio["audio_sampling_frequency"], audio["audio_channels"], audio["audio_bits_per_sample"]),
                         (44100, 1, 16))
        self.assertEqual(self.times(output, 0), [40 * frame for frame in range(100)])

    def test_uncompressed_video_through_the_systems_own_splitter(self):
        output = self.check_copy(raw_avi(), [("video", "V_MS/VFW/FOURCC"), ("audio", "A_PCM/INT/LIT")],
                                 own_reader=False)
        self.assertEqual(self.times(output, 0), [40 * frame for frame in range(100)])

    def test_motion_jpeg_and_mp3(self):
        source = make_input("mjpeg.avi", *picture(2), *sound(2), "-c:v", "mjpeg", "-c:a", "libmp3lame")
        self.check_copy(source, [("video", "V_MS/VFW/FOURCC"), ("audio", "A_MPEG/L3")])

    def test_keyframes_of_a_predictive_codec_are_kept(self):
        source = make_input("mpeg4.avi", *picture(4), "-c:v", "mpeg4", "-g", "20", "-vtag", "XVID")
        output = self.check_copy(source, [("video", "V_MS/VFW/FOURCC")])
        keys = self.keyframes(source)
        self.assertGreater(len(keys), 3)
        self.assertEqual(self.keyframes(output), keys)

    def test_a_wave_file_alone(self):
        self.check_copy_of_audio(pcm_wave(), "A_PCM/INT/LIT")

    def test_an_mp3_file_alone(self):
        self.check_copy_of_audio(make_input("a.mp3", *sound(3), "-c:a", "libmp3lame", "-write_xing", "0",
                                            "-id3v2_version", "0"), "A_MPEG/L3")

    def test_two_inputs_give_the_tracks_of_both_in_order(self):
        output = self.directory / "out.mkv"
        self.mux(output, cinepak_avi(), pcm_wave())
        self.assertEqual(self.codecs(output), [("video", "V_MS/VFW/FOURCC"), ("audio", "A_PCM/INT/LIT"),
                                               ("audio", "A_PCM/INT/LIT")])
        self.assert_decodes(output)
        self.assert_same_packets(cinepak_avi(), 0, output, 0)
        self.assertEqual(self.stream_hash(output, 2), self.stream_hash(pcm_wave(), 0))

    def check_copy_of_audio(self, source, codec):
        """How a splitter cuts a byte stream into packets is its own choice; the bytes are not."""
        output = self.directory / "out.mkv"
        self.mux(output, source)
        self.assertEqual(self.codecs(output), [("audio", codec)])
        self.assert_decodes(output)
        self.assertEqual(self.stream_hash(output, 0), self.stream_hash(source, 0))

    def stream_hash(self, path, stream):
        text = self.run_ffmpeg(path, "-map", f"0:{stream}", "-c", "copy", "-f", "streamhash", "-hash", "md5", "-")
        self.assertIn("MD5=", text)
        return text.split("MD5=")[1]

    def keyframes(self, path):
        """The numbers of the key packets of stream 0."""
        text = self.run_ffprobe(path, "-select_streams", "0", "-show_entries", "packet=flags", "-of", "csv=p=0")
        return [number for number, line in enumerate(text.split()) if line.startswith("K")]

    def test_a_stream_that_starts_late_keeps_its_start(self):
        content = bytearray(cinepak_avi().read_bytes())
        header = content.index(b"strh", content.index(b"strh") + 4) + 8
        self.assertEqual(content[header:header + 4], b"auds")
        scale, rate = struct.unpack_from("<II", content, header + 20)
        struct.pack_into("<I", content, header + 28, rate // scale // 2)  # half a second
        source = self.directory / "late.avi"
        source.write_bytes(content)
        output = self.directory / "out.mkv"
        self.mux(output, source)
        self.assertEqual(self.times(output, 0)[0], 0)
        self.assertEqual(self.times(output, 1)[0], 500)
        self.assert_same_packets(source, 1, output, 1)
