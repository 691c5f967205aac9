"""mkvmux --properties: its pages on the screen, used with the mouse and keys of the X server."""

import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "files"))

from mkvmux_case import MkvmuxCase, cinepak_avi, run_tool  # noqa: E402
from wine_process import WAIT_SECONDS  # noqa: E402

# A window that can be seen need not take keys yet.
SETTLE_SECONDS = 2
CAPTION = "Quorlex Matroska Muxer"


def xdotool(*arguments):
    return run_tool(["xdotool", *map(str, arguments)])


def wait_for_frame(process):
    """The X window of the property frame that the process shows."""
    deadline = time.monotonic() + WAIT_SECONDS
    while time.monotonic() < deadline and process.is_running():
        found = xdotool("search", "--onlyvisible", "--name", CAPTION).stdout.split()
        if found:
            return found[0]
        time.sleep(0.1)
    raise AssertionError("no property frame appears")


def press(frame, *keys):
    """Without a window manager, keys go where the pointer is."""
    xdotool("mousemove", "--window", frame, 60, 10)
    xdotool("key", "--delay", 100, *keys)


class PropertiesBeforeARun(MkvmuxCase):
    def start_with_pages(self):
        self.output = self.directory / "out.mkv"
        self.process = self.start("--properties", "-o", self.output, cinepak_avi())
        frame = wait_for_frame(self.process)
        time.sleep(SETTLE_SECONDS)
        self.assertFalse(self.output.exists(), "the run began before the pages were closed")
        return frame

    def assert_run_follows(self):
        run = self.process.wait()
        self.assertEqual(run.status, 0, f"mkvmux failed: {run}")
        self.assertEqual(["V_MS/VFW/FOURCC", "A_PCM/INT/LIT"], [codec for _, codec in self.codecs(self.output)])

    def test_the_run_waits_for_the_pages_and_follows_when_ok_is_pressed(self):
        press(self.start_with_pages(), "Return")
        self.assert_run_follows()

    def test_the_run_follows_when_the_pages_are_cancelled(self):
        press(self.start_with_pages(), "Escape")
        self.assert_run_follows()

    def test_keys_reach_an_editor_of_the_settings_page_whose_escape_keeps_the_frame_open(self):
        frame = self.start_with_pages()
        # Past the buttons to the tabs, to the other page, into the tree, to the document type, into its list.
        press(frame, "Tab", "Tab", "Right", "Tab", "Home", "Down", "F2", "w", "Escape")
        time.sleep(1)
        self.assertEqual(frame, wait_for_frame(self.process), "Escape in an editor closed the frame")
        self.assertFalse(self.output.exists())
        press(frame, "Escape")
        self.assert_run_follows()
