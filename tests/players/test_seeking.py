"""ffmpeg seeks by the cues of a file of ten minutes."""

import concurrent.futures
import json
import os

from whole_files.mkvmux_case import BIN, MkvmuxCase, make_input, run_tool
from whole_files.profiles import in_both_profiles
from whole_files.wine_process import WineProcess

SECONDS = 10 * 60
RATE = 2
GROUP_OF_PICTURES = 10  # frames; 5 s
KEYFRAMES = SECONDS * RATE // GROUP_OF_PICTURES


def ten_minutes():
    """Noise makes every frame another."""
    picture = f"testsrc=size=64x48:rate={RATE}:duration={SECONDS},noise=alls=30:allf=t"
    sound = f"sine=frequency=440:sample_rate=8000:duration={SECONDS}"
    return make_input("ten_minutes.mkv", "-f", "lavfi", "-i", picture, "-f", "lavfi", "-i", sound, "-c:v", "libx264",
                      "-preset", "ultrafast", "-g", str(GROUP_OF_PICTURES), "-keyint_min", str(GROUP_OF_PICTURES),
                      "-sc_threshold", "0", "-c:a", "libmp3lame", "-b:a", "8k")


@in_both_profiles
class Seeking(MkvmuxCase):
    def cue_times_ms(self, path):
        process = WineProcess(BIN / "mkvlayout.exe", path)
        self.addCleanup(process.end)
        layout = json.loads(process.wait().output)
        self.assertEqual(layout["findings"], [])
        return [round(cue["timeNs"] / 10**6) for cue in layout["cues"] if cue["track"] == 1]

    def keyframe_hashes(self, path):
        """By their times in milliseconds: MD5 of the packet, and of the picture that it decodes to."""
        text = self.run_ffprobe(path, "-select_streams", "v", "-show_packets", "-show_data_hash", "MD5",
                                "-show_entries", "packet=pts_time,flags,data_hash", "-of", "json")
        keys = [packet for packet in json.loads(text)["packets"] if packet["flags"].startswith("K")]
        pictures = self.hashes("-skip_frame", "nokey", "-i", path, "-map", "0:v", "-fps_mode", "passthrough")
        self.assertEqual(len(keys), len(pictures))
        return {round(1000 * float(key["pts_time"])): (key["data_hash"].removeprefix("MD5:"), picture)
                for key, picture in zip(keys, pictures)}

    def hashes(self, *arguments):
        done = run_tool(["ffmpeg", "-v", "error", "-nostdin", *map(str, arguments), "-f", "framehash", "-hash", "md5",
                         "-"])
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return [line.split(",")[-1].strip() for line in done.stdout.splitlines() if line and not line.startswith("#")]

    def land(self, path, time_ms):
        """The first packet and the first picture after a jump to that time."""
        jump = ("-ss", f"{time_ms / 1000:.3f}", "-i", path, "-map", "0:v", "-frames:v", "1")
        return self.hashes(*jump, "-c", "copy")[0], self.hashes(*jump)[0]

    def test_from_each_cue_ffmpeg_lands_on_its_keyframe(self):
        source, output = ten_minutes(), self.directory / "out.mkv"
        self.mux(output, source)
        expected = self.keyframe_hashes(source)
        self.assertEqual(len(set(expected.values())), KEYFRAMES, "the keyframes differ")
        cues = self.cue_times_ms(output)
        self.assertEqual(cues, list(expected), "a cue for each keyframe")
        start = self.start_ms(output)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            landed = list(pool.map(lambda time: self.land(output, time - start), cues))
        self.assertEqual(dict(zip(cues, landed)), expected)

    def test_a_moment_before_a_cue_lands_on_the_keyframe_before(self):
        source, output = ten_minutes(), self.directory / "out.mkv"
        self.mux(output, source)
        expected = list(self.keyframe_hashes(source).items())
        for (_, before), (time, _) in list(zip(expected, expected[1:]))[::17]:
            with self.subTest(time=time):
                packet, _ = self.land(output, time - 1 - self.start_ms(output))
                self.assertEqual(packet, before[0])

    def start_ms(self, path):
        """ffmpeg counts the times of jumps from there."""
        return round(1000 * float(self.run_ffprobe(path, "-show_entries", "format=start_time", "-of", "csv=p=0")))
