"""A program under Wine always starts: nothing that the kernel places at random is in the way of what Wine needs at fixed
addresses, and no server ends meanwhile."""

import fcntl
import os
import time
from pathlib import Path

from whole_files.mkvmux_case import MkvmuxCase
from whole_files.wine_process import WAIT_SECONDS, wine_environment

SHARED_DATA = 0x7FFE0000  # Wine's page of data that all programs share
STARTS = 5
PIPE_BYTES = 4096
SERVICES = ("services.exe", "winedevice.exe", "plugplay.exe", "svchost.exe", "rpcss.exe")


class HostStart(MkvmuxCase):
    def heap_begin(self):
        """Where the heap of a program is that waits for somebody to read on."""
        read_end, write_end = os.pipe()
        fcntl.fcntl(write_end, fcntl.F_SETPIPE_SZ, PIPE_BYTES)  # less than the list of languages
        process = self.start("--list-languages", stdout=write_end)
        os.close(write_end)
        self.assertTrue(os.read(read_end, 1), "it said nothing")
        with open(f"/proc/{process.pid}/maps", encoding="ascii") as maps:
            heap = next(line for line in maps if line.rstrip().endswith("[heap]"))
        while os.read(read_end, 65536):
            pass
        os.close(read_end)
        self.assertEqual(process.wait().status, 0)
        return int(heap.split("-")[0], 16)

    def test_the_heap_is_where_it_cannot_reach_the_shared_data(self):
        begins = {self.heap_begin() for _ in range(STARTS)}
        self.assertEqual(len(begins), 1, f"the heap is placed at random: {[hex(begin) for begin in begins]}")
        distance = SHARED_DATA - begins.pop()
        self.assertFalse(0 <= distance < 16 << 20, f"the heap begins {distance} bytes below the shared data")

    def test_the_server_outlasts_its_last_program(self):
        self.assertEqual(self.mkvmux("--version").status, 0)
        prefix = Path(wine_environment()["WINEPREFIX"]).stat()
        directory = f"server-{prefix.st_dev:x}-{prefix.st_ino:x}"
        # Programs that start just now pass through that directory, and so do the servers that they needlessly bring.
        deadline = time.monotonic() + WAIT_SECONDS
        while len(servers := self.processes_in(directory)) != 1:
            self.assertLess(time.monotonic(), deadline, servers)
            time.sleep(0.2)
        self.assertIn("-p600", servers[0])

    def test_the_services_keep_nobodys_pipe_open(self):
        self.assertEqual(self.mkvmux("--version").status, 0)
        prefix = wine_environment()["WINEPREFIX"]
        pipes = []
        seen = 0
        for process in Path("/proc").glob("[0-9]*"):
            try:
                program = (process / "cmdline").read_text("utf-8", "replace").split("\0")[0]
                if not program.endswith(SERVICES):
                    continue
                if f"WINEPREFIX={prefix}" in (process / "environ").read_text("utf-8", "replace").split("\0"):
                    seen += 1
                    pipes += [program for fd in (1, 2) if str((process / "fd" / str(fd)).readlink()).startswith("pipe:")]
            except OSError:
                pass  # it has ended, or is somebody else's
        self.assertGreater(seen, 0)
        self.assertEqual(pipes, [])

    @staticmethod
    def processes_in(directory):
        """The command line of each."""
        found = []
        for process in Path("/proc").glob("[0-9]*"):
            try:
                if (process / "cwd").readlink().name == directory:
                    found.append((process / "cmdline").read_text(encoding="ascii").split("\0"))
            except OSError:
                pass  # it has ended, or is somebody else's
        return found
