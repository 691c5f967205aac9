"""A Windows program under Wine, in the background.

Its output goes to files, not to pipes: the first program of a session starts Wine's own services, which keep what
they inherit open for as long as any program runs, so that a pipe would not end with the program.
"""

import os
import re
import subprocess
import tempfile
from pathlib import Path

BUILD = Path(__file__).resolve().parents[2] / "build"
WINE = os.environ.get("QRX_WINE", str(BUILD.parent / "scripts" / "wine64"))
WAIT_SECONDS = 600  # a watchdog: nothing that goes well takes a tenth of it

# What the host under Wine prints on its own account; everything else on standard error is the program's.
HOST_NOISE = re.compile(r"GStreamer|ALSA lib|^wine: |^wineserver: |fixme:|err:|^\s*$")


def wine_environment():
    environment = dict(os.environ)
    environment.setdefault("WINEARCH", "win64")
    environment.setdefault("WINEPREFIX", str(BUILD / "wineprefix"))
    environment.setdefault("WINEDEBUG", "-all")
    environment.setdefault("WINEDLLOVERRIDES", "winealsa.drv,winepulse.drv,winemenubuilder.exe,mscoree,mshtml=")
    return environment


class Run:
    """One finished run."""

    def __init__(self, status, output, errors):
        self.status = status
        self.output = output
        self.errors = errors  # the host's own too, for the message of a failing test
        self.error_lines = [line for line in errors.splitlines() if not HOST_NOISE.search(line)]

    def __str__(self):
        return f"exit status {self.status}\n{self.output}\n{self.errors}"


class WineProcess:
    def __init__(self, *command, **more):
        self.output = tempfile.TemporaryFile()
        self.errors = tempfile.TemporaryFile()
        environment = {**wine_environment(), **more.pop("environment", {})}
        more = {"stdin": subprocess.DEVNULL, "stdout": self.output, "stderr": self.errors, **more}
        self.process = subprocess.Popen([WINE, *map(str, command)], env=environment, **more)
        self.pid = self.process.pid

    def is_running(self):
        return self.process.poll() is None

    def signal(self, number):
        self.process.send_signal(number)

    def end(self):
        """Kills it if it still runs."""
        if self.is_running():
            self.process.kill()
        self.process.wait()
        self.output.close()
        self.errors.close()

    def wait(self):
        """The finished run; an error with what was said so far when it does not finish."""
        try:
            self.process.wait(WAIT_SECONDS)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"still running after {WAIT_SECONDS} s: {self.so_far()}") from None
        return self.so_far()

    def so_far(self):
        texts = []
        for file in (self.output, self.errors):
            file.seek(0)
            texts.append(file.read().decode("utf-8", "replace").replace("\r\n", "\n"))
        return Run(self.process.returncode, *texts)
