"""Strict files: what lies between the first picture that is seen and the first sample that is heard, after decoding, is
what it was in the input within a millisecond, whatever the input's starts and delays are; and where the sound ends, too.
"""

import array
import subprocess

from whole_files.mkvmux_case import BIN, RUN_TIMEOUT_SECONDS, MkvmuxCase, input_directory, make_input, run_tool
from whole_files.wine_process import WineProcess

PICTURES = ("-f", "lavfi", "-i", "testsrc=size=64x48:rate=25:duration=2")
SILENCE_SECONDS = 0.25
LOUD = 2000  # of 32767; the sine behind the silence has half of it
MOST_MS = 1.0


def beep(seconds="2.0133"):
    """Silence, then a sine, so that it is known when the first sample is heard."""
    return ("-f", "lavfi", "-i",
            f"aevalsrc='if(lt(t,{SILENCE_SECONDS}),0,0.5*sin(880*PI*t))':sample_rate=48000:duration={seconds}")


AVC = ("-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-x264-params", "open-gop=1:keyint=20")


def film(name, *sound_codec, before_video=(), before_audio=()):
    return make_input(name, *before_video, *PICTURES, *before_audio, *beep(), *AVC, *sound_codec)


def merged(name, *arguments):
    path = input_directory() / name
    done = run_tool(["mkvmerge", "-q", "-o", str(path), *map(str, arguments)])
    if done.returncode != 0:
        raise RuntimeError(f"mkvmerge cannot make {name}: {done.stdout}")
    return path


class StrictOffsets(MkvmuxCase):
    profile = "strict"

    @classmethod
    def command(cls, *arguments, registered=False):
        return [BIN / "mkvmux.exe", *([] if registered else ["--no-register"]), "--profile", "strict", *arguments]

    # ---- what ffmpeg decodes

    def frame_times(self, path, stream):
        """Of each decoded frame, in milliseconds, in the order they are shown."""
        text = self.run_ffprobe(path, "-select_streams", stream, "-show_entries", "frame=pts_time", "-of", "csv=p=0")
        times = [1000 * float(line.strip(",")) for line in text.split() if line.strip(",") not in ("", "N/A")]
        self.assertGreater(len(times), 0, f"ffmpeg decodes nothing of {path}")
        return sorted(times)

    def samples(self, path):
        """Of the first channel; as they are, without anything put in or left out for the times' sake."""
        done = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-copyts", "-i", str(path), "-map", "0:a:0", "-ac",
                               "1", "-ar", "48000", "-f", "s16le", "-"], capture_output=True, check=True,
                              timeout=RUN_TIMEOUT_SECONDS)
        return array.array("h", done.stdout)

    def heard_at(self, path):
        """When the first sample is heard, in milliseconds."""
        first = next((i for i, value in enumerate(self.samples(path)) if abs(value) > LOUD), None)
        self.assertIsNotNone(first, f"nothing is heard of {path}")
        return self.frame_times(path, "a:0")[0] + first / 48

    def described(self, path):
        """The elements of the file, a line each."""
        text = run_tool(["mkvinfo", "-v", "-v", str(path)]).stdout
        self.assertIn("Cluster timestamp", text, f"mkvinfo cannot read {path}")
        return text

    # ---- checks

    def measured(self, path):
        """From the first picture to the first sample, in milliseconds."""
        return self.heard_at(path) - self.frame_times(path, "v:0")[0]

    def check(self, source, expected_ms=None, most_ms=MOST_MS):
        """The output against the input, or against what the input is made for where ffmpeg cannot tell."""
        output = self.directory / f"{source.stem}_out.mkv"
        self.mux(output, source)
        self.assertAlmostEqual(self.measured(output), self.measured(source) if expected_ms is None else expected_ms,
                               delta=most_ms)
        self.assertEqual(len(self.packets(output, 0)), len(self.packets(source, 0)), "pictures")
        self.assertEqual(len(self.samples(output)), len(self.samples(source)), "samples")
        return output

    # ---- starts

    def test_both_from_zero(self):
        self.check(film("beep.mkv", "-c:a", "pcm_s16le"))

    def test_what_is_measured_is_what_is_meant(self):
        self.check(film("beep.mkv", "-c:a", "pcm_s16le"), 1000 * SILENCE_SECONDS)

    def before(self, video_ms, audio_ms):
        """The film with its streams moved, below zero, too."""
        whole = str(film("beep.mkv", "-c:a", "pcm_s16le"))
        source = make_input(f"moved_{video_ms}_{audio_ms}.mkv", "-itsoffset", f"{video_ms}ms", "-i", whole,
                            "-itsoffset", f"{audio_ms}ms", "-i", whole, "-map", "0:v", "-map", "1:a", "-c", "copy",
                            "-avoid_negative_ts", "disabled", "-copyts")
        self.assert_begins(source, video_ms, audio_ms)
        return source

    def assert_begins(self, source, video_ms, audio_ms):
        """The input is as it is meant: these are the times of its first blocks."""
        for track, time_ms in (1, video_ms), (2, audio_ms):
            sign = "-" if time_ms < 0 else ""
            first = next(line for line in self.described(source).splitlines() if f"track number {track}," in line)
            self.assertIn(f"timestamp {sign}00:00:00.{abs(time_ms):03d}", first)

    def test_below_zero(self):
        for video_ms, audio_ms in ((0, -80), (-130, 0), (-130, -80), (-80, -130), (-40, 333), (417, -60)):
            with self.subTest(video_ms=video_ms, audio_ms=audio_ms):
                self.check(self.before(video_ms, audio_ms), 1000 * SILENCE_SECONDS + audio_ms - video_ms)

    def test_late_sound(self):
        self.check(film("beep_late.mkv", "-c:a", "aac", before_audio=("-itsoffset", "333ms")))

    def test_late_pictures(self):
        self.check(film("pictures_late.mkv", "-c:a", "libvorbis", before_video=("-itsoffset", "417ms")))

    def test_a_film_that_was_cut_in_front(self):
        """Copied from between two keyframes: sound begins first, pictures at the next keyframe or before zero."""
        whole = film("beep.mkv", "-c:a", "pcm_s16le")
        for start in ("0.1", "0.95"):
            with self.subTest(start=start):
                self.check(make_input(f"cut_{start}.mkv", "-ss", start, "-i", str(whole), "-c", "copy"))

    def test_delays_by_another_muxer(self):
        whole = film("beep.mkv", "-c:a", "pcm_s16le")
        for track, delay_ms in ((0, 250), (1, 111), (1, -40)):
            with self.subTest(track=track, delay_ms=delay_ms):
                name = f"sync_{track}_{delay_ms}.mkv"
                self.check(merged(name, "--sync", f"{track}:{delay_ms}", whole))

    # ---- Opus

    def test_opus_of_one_muxer(self):
        self.check(film("opus.mkv", "-c:a", "libopus"))

    def test_opus_of_another_muxer_with_laces(self):
        self.check(merged("opus_merged.mkv", film("opus.mkv", "-c:a", "libopus")))

    def test_opus_that_is_late(self):
        self.check(film("opus_late.mkv", "-c:a", "libopus", before_audio=("-itsoffset", "250ms")))

    def test_opus_beside_pictures_below_zero(self):
        whole = str(film("opus.mkv", "-c:a", "libopus"))
        source = make_input("opus_moved.mkv", "-itsoffset", "-107ms", "-i", whole, "-i", whole, "-map", "0:v", "-map",
                            "1:a", "-c", "copy", "-avoid_negative_ts", "disabled", "-copyts")
        self.assert_begins(source, -100, -7)  # ffmpeg takes the delay off, and does not put it back
        self.check(source, self.measured(film("opus.mkv", "-c:a", "libopus")) + 100)

    def test_opus_without_a_codec_delay(self):
        """As this muxer's compatible files have it."""
        source = self.directory / "compatible.mkv"
        process = WineProcess(BIN / "mkvmux.exe", "--no-register", "--profile", "compatible", "-o", source,
                              film("opus.mkv", "-c:a", "libopus"))
        self.addCleanup(process.end)
        self.assertEqual(process.wait().status, 0)
        self.assertNotIn("Codec-inherent delay", self.described(source), "the input is as it is meant")
        self.check(source)

    def test_opus_ends_at_the_same_sample(self):
        for seconds in ("0.5", "0.7133", "1.0001"):
            for other in (False, True):
                with self.subTest(seconds=seconds, other=other):
                    source = make_input(f"end_{seconds}.mka", *beep(seconds), "-c:a", "libopus")
                    if other:
                        source = merged(f"end_{seconds}_merged.mka", source)
                    output = self.directory / f"end_{seconds}_{other}.mkv"
                    self.mux(output, source)
                    self.assertEqual(self.samples(output), self.samples(source))
                    self.assertEqual("Discard padding" in self.described(output),
                                     "Discard padding" in self.described(source))
