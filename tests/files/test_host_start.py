"""Nothing that the kernel places at random is in the way of what Wine needs at fixed addresses."""

import fcntl
import os

from whole_files.mkvmux_case import MkvmuxCase

SHARED_DATA = 0x7FFE0000  # Wine's page of data that all programs share
STARTS = 5
PIPE_BYTES = 4096


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
