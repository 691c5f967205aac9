"""mkvmux is killed in the middle of a run: every cluster that had reached the file is there for other programs.

The moments are drawn from a seed, which is printed; QRX_KILLS says how many (./dev killed), QRX_KILL_SEED which.
"""

import functools
import os
import random
import signal
import time

from whole_files import ebml_clusters
from whole_files.mkvmux_case import MkvmuxCase, input_directory, long_avi, make_input, picture, raw_avi, run_tool, sound
from whole_files.wine_process import WAIT_SECONDS

KILL_AFTER_BYTES = 20_000_000
FEW_KILLS = 3  # one of each workload
MOST_RUNS_PER_KILL = 20  # a run that is over before its moment is made again, with another one


def packets_of_all(path):
    """(size, hash) of each packet of each stream, read in one go."""
    text = MkvmuxCase.run_ffmpeg(path, "-map", "0", "-c", "copy", "-f", "framehash", "-hash", "md5", "-")
    packets = {}
    for line in text.splitlines():
        if line and not line.startswith("#"):
            fields = line.split(",")
            packets.setdefault(int(fields[0]), []).append((int(fields[4]), fields[5].strip()))
    return packets


@functools.lru_cache(maxsize=None)
def source_packets(source):
    return packets_of_all(source)


class KilledCase(MkvmuxCase):
    def check_recovered(self, source, output, streams):
        """That mkvmerge and ffmpeg find all frames of the clusters that are there. Says how many those are."""
        flushed = ebml_clusters.frames_in_whole_clusters(output)
        if not flushed:
            return 0
        rescued = self.directory / "rescued.mkv"
        done = run_tool(["mkvmerge", "-o", str(rescued), str(output)])
        self.assertIn(done.returncode, (0, 1), f"mkvmerge cannot read the file: {done.stdout}")
        for judge, path in (("ffmpeg", output), ("mkvmerge", rescued)):
            found = packets_of_all(path)
            for stream in range(streams):
                count = flushed.get(stream + 1, 0)
                with self.subTest(judge=judge, stream=stream):
                    packets = found.get(stream, [])
                    self.assertGreaterEqual(len(packets), count, "frames of flushed clusters are lost")
                    self.assertEqual(packets[:count], source_packets(source)[stream][:count])
        rescued.unlink()
        return sum(flushed.values())


class KilledRun(KilledCase):
    def killed_file(self):
        source = long_avi()
        output = self.directory / "killed.mkv"
        process = self.start("-o", output, source)
        self.wait_for_bytes(output, KILL_AFTER_BYTES, process)
        process.signal(signal.SIGKILL)
        process.wait()
        self.assertLess(output.stat().st_size, source.stat().st_size, "the run was over before it was killed")
        return source, output

    def test_mkvmerge_and_ffmpeg_recover_every_flushed_cluster(self):
        source, output = self.killed_file()
        flushed = ebml_clusters.frames_in_whole_clusters(output)
        self.assertGreater(flushed.get(1, 0), 10, "too little was flushed to say anything")
        self.check_recovered(source, output, 2)


@functools.lru_cache(maxsize=None)
def captions():
    """A subtitle of a second for each of ten minutes."""
    path = input_directory() / "captions.srt"
    path.write_text("".join(f"{i + 1}\n00:{i // 60:02}:{i % 60:02},000 --> 00:{i // 60:02}:{i % 60:02},900\nline {i}\n\n"
                            for i in range(600)))
    return path


def noisy_mkv():
    """Large pictures."""
    return make_input("noisy.mkv", *picture(4, "640x480"), *sound(4), "-vf", "noise=alls=90:allf=t", "-c:v", "mpeg4", "-q:v",
                      "1", "-c:a", "pcm_s16le")


def spoken_mkv():
    """No video: clusters as long and as large as they may be."""
    return make_input("spoken.mkv", *sound(600, 48000), "-i", str(captions()), "-map", "0:a", "-map", "1:s", "-c:a",
                      "pcm_s16le", "-c:s", "srt")


def three_streams_mkv():
    """Small frames, and a cluster for each of many keyframes."""
    return make_input("three.mkv", *picture(240), *sound(240), "-i", str(captions()), "-map", "0:v", "-map", "1:a", "-map",
                      "2:s", "-t", "240", "-c:v", "mpeg4", "-g", "5", "-q:v", "1", "-c:a", "pcm_s16le", "-c:s", "srt")


class RandomMoments(KilledCase):
    WORKLOADS = ((lambda: raw_avi(10, "320x240"), 2), (noisy_mkv, 2), (spoken_mkv, 2), (three_streams_mkv, 3))

    def killed_at(self, moment, source, output):
        """Whether the run was still on when its moment came: so many bytes of the output, and a little later."""
        output.unlink(missing_ok=True)
        least = int(moment.uniform(-0.05, 0.95) * source.stat().st_size)  # below 0: before there is an output
        later = moment.uniform(0, 1.0 if least < 0 else 0.005)
        process = self.start("-q", "-o", output, source)
        deadline = time.monotonic() + WAIT_SECONDS
        while least > 0 and process.is_running() and not (output.exists() and output.stat().st_size >= least):
            self.assertLess(time.monotonic(), deadline, "mkvmux does not get on")
            time.sleep(0.0005)
        time.sleep(later)
        is_on = process.is_running()
        process.signal(signal.SIGKILL) if is_on else None
        process.wait()
        process.end()
        return is_on

    def test_every_flushed_cluster_is_recovered_and_nothing_else_is_left(self):
        seed = int(os.environ.get("QRX_KILL_SEED") or time.time_ns() % 1_000_000)
        kills = int(os.environ.get("QRX_KILLS") or FEW_KILLS)
        print(f"{kills} kills, seed {seed}")
        output = self.directory / "killed.mkv"
        recovered = []
        for kill in range(kills):
            make_source, streams = self.WORKLOADS[(seed + kill) % len(self.WORKLOADS)]
            source = make_source()
            moment = random.Random(f"{seed}/{kill}")
            with self.subTest(seed=seed, kill=kill, source=source.name):
                runs = 1
                while not self.killed_at(moment, source, output):
                    runs += 1
                    self.assertLess(runs, MOST_RUNS_PER_KILL, "each run is over before its moment")
                left = [entry.name for entry in self.directory.iterdir()]
                self.assertIn(left, ([], [output.name]), "nothing else lies in the folder")
                size = output.stat().st_size if output.exists() else 0
                frames = self.check_recovered(source, output, streams) if size else 0
                recovered.append(frames)
                print(f"kill {kill}: {source.name}, {size} bytes, {frames} frames recovered", flush=True)
        self.assertEqual(len(recovered), kills)
        self.assertGreater(max(recovered), 10, "too little was flushed to say anything")
