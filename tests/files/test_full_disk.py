"""A disk that fills up under a run: one line that says so, and a file that plays to its end.

The disk is a small file system in memory, mounted where this machine's other programs do not see it. That takes root, as
in a container, or user namespaces; where there is neither, the tests are skipped, and the summary says so. What a limit
on the file's size does is tested everywhere (test_cli_errors.py).
"""

import json
import os
import subprocess
import unittest
from pathlib import Path

from whole_files import ebml_clusters
from whole_files.mkvmux_case import MkvmuxCase, make_input, picture, run_tool, sound

DISK_FULL = "0x80070070"


class SmallDisk:
    """The process that lives in the file system's own namespace; its path leads there from everywhere."""

    def __init__(self, case, size):
        place = case.directory / "disk"
        place.mkdir()
        as_root = [] if os.geteuid() == 0 else ["--user", "--map-root-user"]
        script = f"mount -t tmpfs -o size={size} none '{place}' && echo ready && exec cat"
        self.holder = subprocess.Popen(["unshare", "--mount", *as_root, "sh", "-c", script], stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        case.addCleanup(self.end)
        said = self.holder.stdout.readline().strip()
        if said != "ready":
            raise unittest.SkipTest(f"no file system can be mounted here: {said}")
        self.path = Path(f"/proc/{self.holder.pid}/root{place}")

    def windows_path(self, name):
        """With a drive's letter: otherwise the host would resolve the way into the namespace itself, and miss it."""
        return "Z:" + str(self.path / name).replace("/", "\\")

    def end(self):
        self.holder.stdin.close()
        self.holder.stdout.close()
        self.holder.wait()


def segment_end(path):
    """Where the Segment's own size says that it ends; None when the size is unknown."""
    data = Path(path).read_bytes()
    at = 0
    while at < len(data):
        identifier, at = ebml_clusters.read_number(data, at, keep_marker=True)
        size, start = ebml_clusters.read_number(data, at, keep_marker=False)
        if identifier == ebml_clusters.SEGMENT:
            return None if size is None else start + size
        at = start + size
    return None


class FullDisk(MkvmuxCase):
    def last_packet(self, path):
        """When it begins and ends, in seconds."""
        text = run_tool(["ffprobe", "-v", "error", "-show_entries", "packet=pts_time,duration_time", "-of", "json",
                         str(path)]).stdout
        packets = [(float(packet["pts_time"]), float(packet.get("duration_time", 0)))
                   for packet in json.loads(text)["packets"]]
        return max(start for start, _ in packets), max(start + duration for start, duration in packets)

    def check_run(self, source, size, least_packets):
        disk = SmallDisk(self, size)
        output = disk.path / "out.mkv"
        self.assert_fails(self.mkvmux("-o", disk.windows_path("out.mkv"), source), "out.mkv: cannot be written", DISK_FULL)
        self.assertEqual([entry.name for entry in disk.path.iterdir()], ["out.mkv"])
        report = self.identify(output)
        self.assert_decodes(output)
        for stream in range(len(report["tracks"])):
            packets = self.packets(output, stream)
            self.assertGreater(len(packets), least_packets)
            # Behind a cluster that did not fit, a smaller one may.
            rest = iter(self.packets(source, stream))
            self.assertTrue(all(packet in rest for packet in packets), "packets are the source's, in their order")
        self.assertLess(len(self.packets(output, 0)), len(self.packets(source, 0)), "the disk was not full")
        self.assertEqual(segment_end(output), output.stat().st_size, "the Segment's size is what is there")
        duration = report["container"]["properties"]["duration"] / 1e9
        start, end = self.last_packet(output)
        self.assertTrue(start < duration <= end + 0.001, f"the duration is what is there: {start} {duration} {end}")
        self.save_for_judges(output)

    def test_many_small_packets(self):
        source = make_input("disk_small.mkv", *picture(20), *sound(20), "-c:v", "mpeg4", "-g", "10", "-q:v", "2",
                            "-c:a", "pcm_s16le")
        self.check_run(source, "2m", 100)

    def test_large_packets(self):
        source = make_input("disk_large.mkv", *picture(8, "640x480"), *sound(8), "-vf", "noise=alls=90:allf=t", "-c:v",
                            "mpeg4", "-g", "5", "-q:v", "1", "-c:a", "pcm_s16le")
        self.check_run(source, "9m", 10)

    def test_the_last_part_of_a_split(self):
        """Its end is written when the streams have ended already."""
        source = make_input("disk_small.mkv", *picture(20), *sound(20), "-c:v", "mpeg4", "-g", "10", "-q:v", "2",
                            "-c:a", "pcm_s16le")
        self.assertEqual(self.mkvmux("-o", self.directory / "out.mkv", "--split", "6s", source).status, 0)
        parts = sorted(self.directory.glob("out-*.mkv"))
        pages = sum(-(-part.stat().st_size // 4096) for part in parts)
        disk = SmallDisk(self, (pages - 8) * 4096)
        run = self.mkvmux("-o", disk.windows_path("out.mkv"), "--split", "6s", source)
        self.assert_fails(run, f"{parts[-1].name}: cannot be written", DISK_FULL)
        for part in parts[:-1]:
            self.assertEqual((disk.path / part.name).stat().st_size, part.stat().st_size)
