"""Whole jobs: mkvmux under Wine beside mkvmerge and ffmpeg, which read the same inputs and write the same packets.

The inputs are made by ffmpeg once and kept. Every program writes to a name that is there already, and truncates it.
"""

import os
import subprocess
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WINE = ROOT / "scripts" / "wine64"
MKVMUX = ROOT / "build" / "windows" / "bin" / "mkvmux.exe"
INPUTS = ROOT / "build" / "bench_inputs"
LIMIT_SECONDS = 600  # a watchdog

FFMPEG = ["ffmpeg", "-nostdin", "-v", "error", "-y"]


def run(command):
    subprocess.run([str(part) for part in command], check=True, timeout=LIMIT_SECONDS)


def make(name, command):
    """The input of that name, made by the command (without its last argument, the output) if it is not there."""
    path = INPUTS / name
    if not path.exists():
        INPUTS.mkdir(parents=True, exist_ok=True)
        unfinished = INPUTS / f"unfinished-{name}"
        run([*command, unfinished])
        unfinished.rename(path)
    return path


def film():
    """About 555 MB of H.264 with AAC and SubRip: 48 s of noisy pictures, twelve times."""
    subtitles = INPUTS / "film.srt"
    if not subtitles.exists():
        INPUTS.mkdir(parents=True, exist_ok=True)
        lines = (f"{n + 1}\n00:{n * 2 // 60:02}:{n * 2 % 60:02},000 --> 00:{n * 2 // 60:02}:{n * 2 % 60 + 1:02},500\n"
                 f"line {n + 1}\n" for n in range(288))
        subtitles.write_text("\n".join(lines), encoding="utf-8")
    scene = make("film-scene.mkv", [
        *FFMPEG, "-f", "lavfi", "-i", "testsrc2=s=1280x720:r=25:d=48,noise=alls=24:allf=t", "-f", "lavfi", "-i",
        "sine=f=440:r=48000:d=48", "-c:v", "libx264", "-preset", "ultrafast", "-g", "50", "-b:v", "7600k", "-minrate", "7600k",
        "-maxrate", "7600k", "-bufsize", "3800k", "-pix_fmt", "yuv420p", "-c:a", "aac", "-b:a", "128k"])
    return make("film.mkv", [*FFMPEG, "-stream_loop", "11", "-i", scene, "-i", subtitles, "-map", "0", "-map", "1",
                             "-c", "copy"])


def opus():
    """Five minutes of four Opus tracks with packets of 5 ms: 240,000 packets of about 62 bytes."""
    track = make("opus-track.mkv", [*FFMPEG, "-f", "lavfi", "-i", "sine=f=440:r=48000:d=300", "-ac", "2", "-c:a", "libopus",
                                    "-b:a", "100k", "-frame_duration", "5"])
    return make("opus.mkv", [*FFMPEG, "-i", track, "-map", "0", "-map", "0", "-map", "0", "-map", "0", "-c", "copy"])


def pictures_stream():
    """360,000 small pictures of H.264 with start codes: 3,600 of them, a hundred times."""
    scene = make("pictures-scene.h264", [*FFMPEG, "-f", "lavfi", "-i", "testsrc2=s=64x48:r=25:d=144", "-c:v", "libx264",
                                         "-preset", "ultrafast", "-g", "50", "-pix_fmt", "yuv420p"])
    path = INPUTS / "pictures.h264"
    if not path.exists():
        path.write_bytes(scene.read_bytes() * 100)
    return path


def pictures_matroska():
    return make("pictures.mkv", ["mkvmerge", "-q", "--default-duration", "0:25p", pictures_stream(), "-o"])


def mkvmux(source, output, raw):
    rate = ["--fps", "25"] if raw else []
    # The profile that the figures to reach were measured with.
    return [WINE, MKVMUX, "--no-register", "--profile", "compatible", "-q", "-y", *rate, "-o", output, source]


def mkvmerge(source, output, raw):
    rate = ["--default-duration", "0:25p"] if raw else []
    return ["mkvmerge", "-q", "--disable-lacing", "-o", output, *rate, source]


def ffmpeg(source, output, raw):
    rate = ["-r", "25"] if raw else []
    return [*FFMPEG, *rate, "-i", source, "-map", "0", "-c", "copy", "-write_crc32", "0", output]


PEERS = {"mkvmux": mkvmux, "mkvmerge": mkvmerge, "ffmpeg": ffmpeg}
# Row, its input, whether that is a raw stream without times.
JOBS = {
    "job film": (film, False),
    "job opus": (opus, False),
    "job pictures": (pictures_matroska, False),
    "job h264": (pictures_stream, True),
}


class WineServer:
    """The server of our Wine prefix, which works for mkvmux: its processor time belongs to the job."""

    def __init__(self):
        prefix = Path(os.environ["WINEPREFIX"])
        info = prefix.stat()
        self.names = {f"server-{info.st_dev:x}-{info.st_ino:x}"}
        self.pid = None

    def find(self):
        for process in Path("/proc").iterdir():
            try:
                if process.name.isdigit() and Path(os.readlink(process / "cwd")).name in self.names:
                    if (process / "comm").read_text().startswith("wineserver"):
                        self.pid = process.name
                        return
            except OSError:
                continue  # it has ended meanwhile, or is not ours

    def cpu(self):
        """Seconds so far; none while there is no server."""
        if self.pid is None or not Path(f"/proc/{self.pid}").exists():
            self.find()
        if self.pid is None:
            return 0.0
        fields = Path(f"/proc/{self.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def measure(command, server):
    """Wall and processor time of one run, seconds; the server's as well."""
    before = server.cpu()
    start = time.monotonic()
    process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.monotonic() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode not in (0, 1):  # 1 is mkvmerge's answer when it warned
        raise RuntimeError(f"status {process.returncode}: {' '.join(str(part) for part in command)}")
    return wall, usage.ru_utime + usage.ru_stime + server.cpu() - before


def packets_of(path):
    """Blocks of a finished file, by track."""
    listing = subprocess.run(["mkvinfo", "--all", str(path)], check=True, capture_output=True, text=True, timeout=LIMIT_SECONDS)
    return listing.stdout.count("+ Simple block") + listing.stdout.count("+ Block group")


def measure_job(name, folder, rounds):
    """One row of the report."""
    make_input, raw = JOBS[name]
    source = make_input()
    server = WineServer()
    row = {"bytes": source.stat().st_size, "runs": {peer: {"wall": [], "cpu": []} for peer in PEERS}}
    outputs = {peer: Path(folder) / f"{name.replace(' ', '-')}-{peer}.mkv" for peer in PEERS}
    for peer, output in outputs.items():  # makes the files, and warms the input
        measure(PEERS[peer](source, output, raw), server)
    counts = {peer: packets_of(output) for peer, output in outputs.items()}
    if len(set(counts.values())) != 1:
        raise RuntimeError(f"{name}: the files differ in their number of packets: {counts}")
    row["packets"] = counts["mkvmux"]
    order = list(PEERS)
    for number in range(rounds):
        for peer in order[number % len(order):] + order[:number % len(order)]:
            wall, cpu = measure(PEERS[peer](source, outputs[peer], raw), server)
            row["runs"][peer]["wall"].append(wall)
            row["runs"][peer]["cpu"].append(cpu)
    for output in outputs.values():
        output.unlink()
    return row
