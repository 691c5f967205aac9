"""What the judges say of an input and of the output that mkvmux makes of it.

(a) ffprobe: payloads, keyframes and times of the packets are those of the input. (b) ffmpeg decodes the output without
an error and to the same frames. (c) mkvmerge remuxes it without a remark.

Of the strict profile more is asked: times and flags are exactly the input's, rounded to the millisecond, and the tags
with a track's statistics are those that mkvmerge writes.
"""

import decimal
import functools
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


STATISTICS = ("tag_bps", "tag_duration", "tag_number_of_frames", "tag_number_of_bytes")


def remarks(done, same_uids_are_fine=True):
    """What mkvmerge has against a file, but for track UIDs that are there twice."""
    lines = [line for line in done.stdout.splitlines() if line.startswith(("Warning:", "Error:"))]
    same_uids = [line for line in lines if same_uids_are_fine and SAME_UID.match(line)]
    status = [] if done.returncode == (1 if lines else 0) else [f"exit status {done.returncode}"]
    return [line for line in lines if line not in same_uids] + status


def once_a_file(function):
    """What is asked of an input is asked once, whichever profile is tried: a file is known by its path and its time."""
    answers = functools.lru_cache(maxsize=None)(lambda _, path, *arguments: function(path, *arguments))

    @functools.wraps(function)
    def answer(path, *arguments):
        info = Path(path).stat()
        return answers((info.st_mtime_ns, info.st_size), path, *arguments)
    return answer


def milliseconds(packet):
    """The packet's time, to the nearest."""
    return int((1000 * decimal.Decimal(packet["pts_time"])).to_integral_value(decimal.ROUND_HALF_UP))


@once_a_file
def tracks_of(path):
    """mkvmerge's words on each track."""
    return json.loads(run_tool(["mkvmerge", "-J", str(path)]).stdout)["tracks"]


@once_a_file
def packets_of(path, stream):
    """ffprobe's words on each packet."""
    return json.loads(run_tool(
        ["ffprobe", "-v", "error", "-select_streams", str(stream), "-show_packets", "-show_data_hash", "MD5",
         "-show_entries", "packet=pts_time,duration_time,size,flags,data_hash", "-of", "json", str(path)]).stdout)["packets"]


@once_a_file
def decoded(path, kind, *more):
    """ffmpeg's run that gives the hash of each frame."""
    return run_tool(["ffmpeg", "-v", "error", "-xerror", "-nostdin", *DECODER_OPTIONS, "-i", str(path), "-map",
                     f"0:{kind}:0", *more, "-f", "framehash", "-hash", "md5", "-"])


class CodecCase(MkvmuxCase):
    identified_files = {}  # of all cases

    def remux(self, source, *options, ending=".mkv"):
        output = self.directory / ("remuxed_" + Path(source).stem + ending)
        self.mux(output, *options, source)
        return output

    @staticmethod
    def report(path):
        """mkvmerge's words on the first track."""
        return tracks_of(path)[0]

    @staticmethod
    def probe(path, stream=0):
        return packets_of(path, stream)

    def assert_same_stream(self, source, output, stream=0, source_stream=None, keys=True):
        source_stream = stream if source_stream is None else source_stream
        before = self.probe(source, source_stream)
        after = self.probe(output, stream)
        self.assertGreater(len(before), 0, f"ffprobe finds no packet in {source}")
        self.assertEqual([p["data_hash"] for p in after], [p["data_hash"] for p in before], "payloads")
        if self.is_strict:
            self.assertEqual([p["flags"] for p in after], [p["flags"] for p in before], "flags")
            self.assertEqual([milliseconds(p) for p in after], [milliseconds(p) for p in before], "times")
            return
        if keys:
            self.assertEqual(["K" in p["flags"] for p in after], ["K" in p["flags"] for p in before], "keyframes")
        self.assert_near_times(before, after, self.codec_delay_s(source, source_stream))

    def assert_near_times(self, before, after, delay):
        for number, (a, b) in enumerate(zip(after, before)):
            difference = abs(float(a["pts_time"]) - float(b["pts_time"]) - delay)
            self.assertLessEqual(difference, TOLERANCE_S + 1e-6, f"time of packet {number}")

    @staticmethod
    def codec_delay_s(path, stream):
        """ffprobe takes it off the times; the compatible profile has no place for it, so that its blocks keep the times
        of the input's blocks and ffprobe shows them later by as much."""
        return tracks_of(path)[stream]["properties"].get("codec_delay", 0) / 1e9

    def frames(self, path, kind, *more):
        """The hash of each decoded frame. An error of the decoder ends the test."""
        done = decoded(path, kind, *more)
        self.assertEqual((done.returncode, done.stderr), (0, ""), f"ffmpeg cannot decode {path} without an error")
        lines = [line for line in done.stdout.splitlines() if line and not line.startswith("#")]
        self.assertGreater(len(lines), 0, f"ffmpeg decodes no frame of {path}")
        return [line.split(",")[-1].strip() for line in lines]

    def assert_decodes_alike(self, source, output, kind, *more):
        self.assertEqual(self.frames(output, kind, *more), self.frames(source, kind, *more), "decoded frames")

    def assert_remuxes(self, output):
        remuxed = self.directory / "judged.mkv"
        done = run_tool(["mkvmerge", "--ui-language", "en_US", "-o", str(remuxed), str(output)])
        self.assertEqual(remarks(done, same_uids_are_fine=not self.is_strict), [], done.stdout)
        if self.is_strict:
            self.assertEqual(self.statistics(output), self.statistics(remuxed), "statistics")

    @staticmethod
    def statistics(path):
        return [{name: track["properties"].get(name) for name in STATISTICS} for track in tracks_of(path)]

    def identified(self, source):
        """The tracks of one input as mkvmux lists them, with the codecs of the case's profile."""
        info = Path(source).stat()
        known = (source, info.st_mtime_ns, info.st_size, self.profile)
        if known not in self.identified_files:
            self.identified_files[known] = json.loads(self.mkvmux("--identify", "--json", source).output)
        return self.identified_files[known]["inputs"][0]["tracks"]
