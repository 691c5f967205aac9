"""What the whole-file tests share: inputs made by ffmpeg, mkvmux run under Wine, and the judges."""

import atexit
import functools
import json
import os
import shutil
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from whole_files.profiles import STRICT
from whole_files.wine_process import BUILD, WAIT_SECONDS, WineProcess

BIN = Path(os.environ.get("QRX_BIN_DIR", BUILD / "windows" / "bin"))
RUN_TIMEOUT_SECONDS = 600  # a watchdog


def run_tool(command, **more):
    return subprocess.run(command, capture_output=True, text=True, timeout=RUN_TIMEOUT_SECONDS, **more)


@functools.lru_cache(maxsize=None)
def input_directory():
    """Of this run of the tests; gone with the interpreter."""
    directory = Path(tempfile.mkdtemp(prefix="qrx_inputs_"))
    atexit.register(shutil.rmtree, directory, ignore_errors=True)
    return directory


@functools.lru_cache(maxsize=None)
def make_input(name, *arguments):
    """A file made by ffmpeg with these arguments, once for all tests."""
    path = input_directory() / name
    done = run_tool(["ffmpeg", "-v", "error", "-nostdin", "-y", *arguments, str(path)])
    if done.returncode != 0:
        raise RuntimeError(f"ffmpeg cannot make {name}: {done.stderr}")
    return path


def picture(seconds, size="160x120", rate=25):
    return ("-f", "lavfi", "-i", f"testsrc=size={size}:rate={rate}:duration={seconds}")


def sound(seconds, rate=44100):
    return ("-f", "lavfi", "-i", f"sine=frequency=440:sample_rate={rate}:duration={seconds}")


def cinepak_avi(seconds=4):
    return make_input(f"cinepak{seconds}.avi", *picture(seconds), *sound(seconds), "-c:v", "cinepak", "-c:a",
                      "pcm_s16le")


def raw_avi(seconds=4, size="160x120"):
    """Uncompressed video, which the system's own splitter streams."""
    return make_input(f"raw{seconds}_{size}.avi", *picture(seconds, size), *sound(seconds), "-c:v", "rawvideo",
                      "-pix_fmt", "yuv420p", "-c:a", "pcm_s16le")


def long_avi():
    """Long enough to disturb a run in the middle."""
    return raw_avi(20, "640x480")


def long_video_avi():
    """The same without sound, for runs that are stopped in the middle: with two streams, the splitter of the host
    waits for ever now and then, since the demuxer behind it does not get rid of a packet for a reader that has left
    already. How mkvmux ends then is tested in tests/mkvmux/graph_stopper_test.cpp."""
    return make_input("raw_video.avi", *picture(20, "640x480"), "-c:v", "rawvideo", "-pix_fmt", "yuv420p")


def long_mkv():
    """Two streams, read by mkvmux itself; the noise makes the pictures large."""
    return make_input("long.mkv", *picture(20, "640x480"), *sound(20), "-vf", "noise=alls=90:allf=t", "-c:v", "mpeg4",
                      "-q:v", "1", "-c:a", "pcm_s16le")


def pcm_wave(seconds=4):
    return make_input(f"pcm{seconds}.wav", *sound(seconds), "-c:a", "pcm_s16le")


class MkvmuxCase(unittest.TestCase):
    profile = "compatible"  # of the files that mkvmux writes

    def setUp(self):
        self.directory = Path(tempfile.mkdtemp(prefix="qrx_files_"))
        self.addCleanup(shutil.rmtree, self.directory, ignore_errors=True)
        self.saved = {}  # outputs that the judges get, with their numbers

    @property
    def is_strict(self):
        return self.profile == STRICT

    # ---- running

    @classmethod
    def command(cls, *arguments, registered=False):
        return [BIN / "mkvmux.exe", *([] if registered else ["--no-register"]), "--profile", cls.profile, *arguments]

    def start(self, *arguments, registered=False, **more):
        """A run in the background; it is killed when the test ends."""
        process = WineProcess(*self.command(*arguments, registered=registered), **more)
        self.addCleanup(process.end)
        return process

    def wait_for_bytes(self, output, count, process):
        """Waits until the running mkvmux has written so many bytes."""
        deadline = time.monotonic() + WAIT_SECONDS
        while not (output.exists() and output.stat().st_size > count):
            self.assertTrue(process.is_running(), "mkvmux ended before it could be disturbed")
            self.assertLess(time.monotonic(), deadline, "mkvmux does not get on")
            time.sleep(0.002)

    def mkvmux(self, *arguments, registered=False, **more):
        return self.start(*arguments, registered=registered, **more).wait()

    def mux(self, output, *inputs):
        """A run that has to succeed without a word on standard error."""
        run = self.mkvmux("-o", output, *inputs)
        self.assertEqual(run.status, 0, f"mkvmux failed: {run}")
        self.assertEqual(run.error_lines, [], f"mkvmux complained: {run}")
        self.save_for_judges(output)
        return run

    def save_for_judges(self, output):
        """A copy for the judges of all written files, where ./dev test names their directory. Its name tells its
        profile, and is the test's, with a number from a test's second file on."""
        if directory := os.environ.get("QRX_JUDGE_DIR"):
            number = self.saved.setdefault(Path(output), len(self.saved) + 1)
            name = self.id().replace("test_", "", 1) + (f".{number}" if number > 1 else "")
            shutil.copy(output, Path(directory) / (name + (".strict" if self.is_strict else "") + Path(output).suffix))

    def assert_fails(self, run, *texts):
        """Exit status 2 and exactly one line on standard error that names what and why."""
        self.assertEqual(run.status, 2, f"a failure has exit status 2: {run}")
        self.assertEqual(len(run.error_lines), 1, f"a failure is one line on standard error: {run}")
        for text in texts:
            self.assertIn(text, run.error_lines[0])

    # ---- judging

    def assert_decodes(self, path):
        done = run_tool(["ffmpeg", "-v", "error", "-xerror", "-nostdin", "-i", str(path), "-f", "null", "-"])
        self.assertEqual((done.returncode, done.stderr), (0, ""), f"ffmpeg cannot decode {path} without an error")

    def identify(self, path):
        done = run_tool(["mkvmerge", "-J", str(path)])
        report = json.loads(done.stdout)
        self.assertEqual(report["errors"], [], "mkvmerge reports errors")
        self.assertEqual(report["warnings"], [], "mkvmerge reports warnings")
        self.assertTrue(report["container"]["recognized"] and report["container"]["supported"])
        self.assertEqual(report["container"]["type"], "Matroska")
        return report

    def codecs(self, path):
        return [(track["type"], track["properties"]["codec_id"]) for track in self.identify(path)["tracks"]]

    @staticmethod
    def run_ffmpeg(path, *arguments):
        return run_tool(["ffmpeg", "-v", "error", "-nostdin", "-i", str(path), *arguments]).stdout

    @staticmethod
    def run_ffprobe(path, *arguments):
        return run_tool(["ffprobe", "-v", "error", *arguments, str(path)]).stdout

    def packets(self, path, stream):
        """(size, hash) of each packet of one stream, as ffmpeg's demuxer reads them; empty ones do not count."""
        text = self.run_ffmpeg(path, "-map", f"0:{stream}", "-c", "copy", "-f", "framehash", "-hash", "md5", "-")
        lines = [line.split(",") for line in text.splitlines() if line and not line.startswith("#")]
        packets = [(int(fields[4]), fields[5].strip()) for fields in lines]
        return [packet for packet in packets if packet[0] > 0]

    def times(self, path, stream):
        """Start of each packet in milliseconds."""
        text = self.run_ffprobe(path, "-select_streams", str(stream), "-show_entries", "packet=pts_time", "-of",
                                "csv=p=0")
        return [round(1000 * float(line.strip(","))) for line in text.split()]

    def assert_same_packets(self, source, source_stream, path, stream):
        before = self.packets(source, source_stream)
        after = self.packets(path, stream)
        self.assertGreater(len(before), 0, f"ffmpeg finds no packet in stream {source_stream} of {source}")
        self.assertEqual(len(before), len(after), "the number of packets")
        self.assertEqual(before, after, "sizes and MD5 of the packets")
