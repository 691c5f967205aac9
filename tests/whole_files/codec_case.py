"""What the judges say of an input and of the output that mkvmux makes of it.

(a) ffprobe: payloads, keyframes and times of the packets are those of the input. (b) ffmpeg decodes the output without
an error and to the same frames. (c) mkvmerge remuxes it without a remark.
"""

import json
import re
from pathlib import Path

from whole_files.mkvmux_case import MkvmuxCase, run_tool

TOLERANCE_S = 0.001
# What the decoder would cut off at the beginning, because the container says so, is kept.
DECODER_OPTIONS = ("-flags2", "+skip_manual")
# Track UIDs are random numbers of 15 bits, so now and then two tracks of a file have the same: one in seven files of
# 100 tracks.
SAME_UID = re.compile(r"^Warning: .*: Could not keep a track's UID \d+ because it is already allocated for another track\.")


def remarks(done):
    """What mkvmerge has against a file, but for track UIDs that are there twice."""
    lines = [line for line in done.stdout.splitlines() if line.startswith(("Warning:", "Error:"))]
    same_uids = [line for line in lines if SAME_UID.match(line)]
    status = [] if done.returncode == (1 if lines else 0) else [f"exit status {done.returncode}"]
    return [line for line in lines if line not in same_uids] + status


class CodecCase(MkvmuxCase):
    def remux(self, source, *options, ending=".mkv"):
        output = self.directory / ("remuxed_" + Path(source).stem + ending)
        self.mux(output, *options, source)
        return output

    def report(self, path):
        """mkvmerge's words on the first track."""
        return json.loads(run_tool(["mkvmerge", "-J", str(path)]).stdout)["tracks"][0]

    def probe(self, path, stream=0):
        text = self.run_ffprobe(path, "-select_streams", str(stream), "-show_packets", "-show_data_hash", "MD5",
                                "-show_entries", "packet=pts_time,duration_time,size,flags,data_hash", "-of", "json")
        return json.loads(text)["packets"]

    def assert_same_stream(self, source, output, stream=0, source_stream=None, keys=True):
        before = self.probe(source, stream if source_stream is None else source_stream)
        after = self.probe(output, stream)
        self.assertGreater(len(before), 0, f"ffprobe finds no packet in {source}")
        self.assertEqual([p["data_hash"] for p in after], [p["data_hash"] for p in before], "payloads")
        if keys:
            self.assertEqual(["K" in p["flags"] for p in after], ["K" in p["flags"] for p in before], "keyframes")
        delay = self.codec_delay_s(source, stream if source_stream is None else source_stream)
        for number, (a, b) in enumerate(zip(after, before)):
            difference = abs(float(a["pts_time"]) - float(b["pts_time"]) - delay)
            self.assertLessEqual(difference, TOLERANCE_S + 1e-6, f"time of packet {number}")

    @staticmethod
    def codec_delay_s(path, stream):
        """ffprobe takes it off the times; the muxer has no place for it, so that its blocks keep the times of the
        input's blocks and ffprobe shows them later by as much."""
        tracks = json.loads(run_tool(["mkvmerge", "-J", str(path)]).stdout)["tracks"]
        return tracks[stream]["properties"].get("codec_delay", 0) / 1e9

    def frames(self, path, kind, *more):
        """The hash of each decoded frame. An error of the decoder ends the test."""
        done = run_tool(["ffmpeg", "-v", "error", "-xerror", "-nostdin", *DECODER_OPTIONS, "-i", str(path), "-map",
                         f"0:{kind}:0", *more, "-f", "framehash", "-hash", "md5", "-"])
        self.assertEqual((done.returncode, done.stderr), (0, ""), f"ffmpeg cannot decode {path} without an error")
        lines = [line for line in done.stdout.splitlines() if line and not line.startswith("#")]
        self.assertGreater(len(lines), 0, f"ffmpeg decodes no frame of {path}")
        return [line.split(",")[-1].strip() for line in lines]

    def assert_decodes_alike(self, source, output, kind, *more):
        self.assertEqual(self.frames(output, kind, *more), self.frames(source, kind, *more), "decoded frames")

    def assert_remuxes(self, output):
        done = run_tool(["mkvmerge", "--ui-language", "en_US", "-o", str(self.directory / "judged.mkv"), str(output)])
        self.assertEqual(remarks(done), [], done.stdout)

    def identified(self, source):
        """The tracks of one input as mkvmux lists them."""
        return json.loads(self.mkvmux("--identify", "--json", source).output)["inputs"][0]["tracks"]
