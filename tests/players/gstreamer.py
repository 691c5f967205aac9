"""GStreamer's command-line player: the buffers that come out of its Matroska demultiplexer, or of a decoder."""

import re
import shutil
import subprocess
from dataclasses import dataclass

TIMEOUT_SECONDS = 600  # a watchdog
SINK = ("fakesink", "silent=false", "sync=false")  # it says what it gets, and as soon as it can
BUFFER = re.compile(r"chain +\*+ \(\w+:sink\) \((?P<size>\d+) bytes, dts: (?P<dts>\S+), pts: (?P<pts>\S+), "
                    r".*flags: [0-9a-f]+ (?P<flags>[^,]*),")
TIME = re.compile(r"^(\d+):(\d\d):(\d\d)\.(\d{9})$")
REMARK = re.compile(r"^(ERROR|WARNING)|CRITICAL|warning: |Additional debug info")


@dataclass(frozen=True)
class Buffer:
    size: int
    time_ns: int  # of decoding where it has no other, as in tracks described by a structure of Windows; or None


def to_ns(text):
    parts = TIME.match(text)
    if parts is None:
        return None
    hours, minutes, seconds, fraction = map(int, parts.groups())
    return ((hours * 60 + minutes) * 60 + seconds) * 10**9 + fraction


def buffer_of(found):
    times = [time for time in (to_ns(found["pts"]), to_ns(found["dts"])) if time is not None]
    return Buffer(int(found["size"]), next(iter(times), None))


class Playback:
    """One run to its end."""

    def __init__(self, *pipeline):
        if shutil.which("gst-launch-1.0") is None:
            raise RuntimeError("gst-launch-1.0 is not installed")
        done = subprocess.run(["gst-launch-1.0", "-v", *map(str, pipeline)], capture_output=True, text=True,
                              errors="replace", timeout=TIMEOUT_SECONDS)
        self.status = done.returncode
        self.lines = (done.stdout + done.stderr).splitlines()
        self.remarks = [line for line in self.lines if REMARK.search(line)]
        self.reached_end = any(line.startswith("Got EOS") for line in self.lines)
        # Those with the codec's own header come from its private data, not from a block.
        self.buffers = [buffer_of(found) for line in self.lines
                        if (found := BUFFER.search(line)) and "header" not in found["flags"]]


def demultiplex(path, pad):
    """One pad, such as video_0. With several sinks at once gst-launch loses some of what they say."""
    return play(path, pad)


def decode(path, pad, container="matroska"):
    return play(path, pad, "decodebin", "!", container=container)


def play(path, pad, *between, container="matroska"):
    return Playback("filesrc", f"location={path}", "!", f"{container}demux", "name=demux", f"demux.{pad}", "!", "queue",
                    "!", *between, *SINK)
