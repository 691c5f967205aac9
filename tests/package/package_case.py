"""What the tests of the package share: ./dev package is run once, and its zip unpacked once."""

import atexit
import functools
import os
import shutil
import subprocess
import tempfile
import unittest
import zipfile
from pathlib import Path

from whole_files.wine_process import WineProcess

ROOT = Path(__file__).resolve().parents[2]
OUT = ROOT / "build" / "package" / "out"
WATCHDOG_SECONDS = 3600
TOOLS = "x86_64-w64-mingw32-"


def run(*command, **more):
    """A Linux program that has to succeed; what it wrote. To a file: what Wine starts keeps pipes open."""
    with tempfile.TemporaryFile("w+") as said:
        done = subprocess.run([str(part) for part in command], stdout=said, stderr=said, stdin=subprocess.DEVNULL,
                              timeout=WATCHDOG_SECONDS, check=False, **more)
        said.seek(0)
        text = said.read()
    if done.returncode != 0:
        raise AssertionError(f"{command} failed: {text}")
    return text


def temporary_folder():
    folder = Path(tempfile.mkdtemp(prefix="qrx_package_"))
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    return folder


@functools.lru_cache(maxsize=None)
def made_package():
    """The folder of what ./dev package makes; QRX_PACKAGE_DIR names one that was made already."""
    if made := os.environ.get("QRX_PACKAGE_DIR"):
        return Path(made)
    run(ROOT / "dev", "package")
    return OUT


def the_file(pattern):
    found = sorted(made_package().glob(pattern))
    if len(found) != 1:
        raise AssertionError(f"{pattern}: {found}")
    return found[0]


@functools.lru_cache(maxsize=None)
def unpacked():
    """The one folder in the zip. Its name has a blank above it, as folders of users have."""
    folder = temporary_folder() / "a folder"
    with zipfile.ZipFile(the_file("*-win64.zip")) as archive:
        archive.extractall(folder)
    return next(folder.iterdir())


@functools.lru_cache(maxsize=None)
def empty_prefix():
    """A Wine prefix in which nothing was ever registered."""
    folder = temporary_folder() / "prefix"
    environment = {"WINEPREFIX": str(folder)}
    made = WineProcess("wineboot", "-i", environment=environment).wait()
    if made.status != 0:
        raise AssertionError(f"wineboot failed: {made}")
    return folder


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def wine(*command):
    """A finished run in the empty prefix."""
    return WineProcess(*command, environment={"WINEPREFIX": str(empty_prefix())}).wait()


def registry():
    """All keys and values of the prefix's machine, without what the system itself counts."""
    output = temporary_folder() / "registry.txt"
    ended = wine("regedit", "/E", windows_path(output), "HKEY_LOCAL_MACHINE")
    if ended.status != 0:
        raise AssertionError(f"regedit failed: {ended}")
    text = output.read_bytes()
    return text.decode("utf-16" if text[:2] == b"\xff\xfe" else "latin-1").replace("\r", "")


def files_of_prefix():
    drive = empty_prefix() / "drive_c"
    return {path.relative_to(drive).as_posix() for path in drive.rglob("*")
            if "/Temp/" not in path.as_posix() and "/windows/" not in path.as_posix()}


class PackageCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="qrx_case_"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def record(self, muxer, output, *options):
        """A recording by that mkvmux of two seconds of picture and sound; its packets are those of the input."""
        source = self.folder / "in.avi"
        if not source.exists():
            run("ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "testsrc=size=160x120:rate=25:duration=2", "-f",
                "lavfi", "-i", "sine=frequency=440:duration=2", "-c:v", "cinepak", "-c:a", "pcm_s16le", source)
        ended = wine(muxer, *options, "-o", windows_path(output), windows_path(source))
        self.assertEqual((ended.status, ended.error_lines), (0, []), ended)
        for stream in ("0:0", "0:1"):
            self.assertEqual(self.hash_of(output, stream), self.hash_of(source, stream))

    @staticmethod
    def hash_of(file, stream):
        return run("ffmpeg", "-v", "error", "-nostdin", "-i", file, "-map", stream, "-c", "copy", "-f", "streamhash", "-")
