"""mkvmux --properties: its pages on the screen, used with the mouse and keys of the X server."""

import subprocess
import time

from whole_files.mkvmux_case import MkvmuxCase, cinepak_avi, run_tool

CAPTION = "Quorlex Matroska Muxer"
# What is waited for comes at once; this is for the case that it never does.
FAR_SECONDS = 180
# How long a run that does not wait for its pages has to show that it does not.
TEMPTATION_SECONDS = 2
# Page and buttons, below the caption; before they are painted there is one colour.
PAINTED_COLOURS = 4


def xdotool(*arguments):
    return run_tool(["xdotool", *map(str, arguments)])


def wait_until(process, condition, what):
    """What the condition answers as soon as that is something, while the process runs."""
    deadline = time.monotonic() + FAR_SECONDS
    while time.monotonic() < deadline and process.is_running():
        found = condition()
        if found:
            return found
        time.sleep(0.1)
    raise AssertionError(f"{what}: not within {FAR_SECONDS} s, or before the end of the program")


def frames():
    return xdotool("search", "--onlyvisible", "--name", CAPTION).stdout.split()


def wait_for_frame(process):
    """The X window of the property frame that the process shows, ready for keys: it is painted after it got them."""
    frame = wait_until(process, frames, "a property frame")[0]
    wait_until(process, lambda: len(set(lower_half(pixels(frame)))) >= PAINTED_COLOURS, "a painted property frame")
    # Without a window manager, keys go where the pointer is.
    xdotool("mousemove", "--window", frame, 60, 10)
    return frame


def pixels(frame):
    """The picture of the frame; nothing when it is gone."""
    done = subprocess.run(["import", "-window", frame, "rgb:-"], capture_output=True, check=False)
    return [done.stdout[at : at + 3] for at in range(0, len(done.stdout), 3)]


def lower_half(picture):
    return picture[len(picture) // 2 :]


def press_and_see(process, frame, *keys):
    """Presses one key after the other, each when the frame shows what came of the one before."""
    for key in keys:
        before = pixels(frame)
        xdotool("key", key)
        wait_until(process, lambda: pixels(frame) not in (before, []), f"what comes of {key}")


def close_with(key):
    """Presses the key until no frame is there any more."""
    deadline = time.monotonic() + FAR_SECONDS
    while frames() and time.monotonic() < deadline:
        xdotool("key", key)
        time.sleep(1)


class PropertiesBeforeARun(MkvmuxCase):
    def start_with_pages(self):
        self.output = self.directory / "out.mkv"
        self.process = self.start("--properties", "-o", self.output, cinepak_avi(1))
        frame = wait_for_frame(self.process)
        time.sleep(TEMPTATION_SECONDS)
        self.assertFalse(self.output.exists(), "the run began before the pages were closed")
        return frame

    def assert_run_follows(self):
        run = self.process.wait()
        self.assertEqual(run.status, 0, f"mkvmux failed: {run}")
        self.assertEqual(["V_MS/VFW/FOURCC", "A_PCM/INT/LIT"], [codec for _, codec in self.codecs(self.output)])

    def test_the_run_waits_for_the_pages_and_follows_when_ok_is_pressed(self):
        self.start_with_pages()
        close_with("Return")
        self.assert_run_follows()

    def test_the_run_follows_when_the_pages_are_cancelled(self):
        self.start_with_pages()
        close_with("Escape")
        self.assert_run_follows()

    def test_keys_reach_an_editor_of_the_settings_page_whose_escape_keeps_the_frame_open(self):
        frame = self.start_with_pages()
        # Past the buttons to the tabs, to the other page, into the tree, to the document type, into its list; out of it
        # again, and up to the first row.
        press_and_see(self.process, frame, "Tab", "Tab", "Right", "Tab", "Down", "F2", "w", "Escape", "Up")
        self.assertEqual([frame], frames(), "Escape in an editor closed the frame")
        self.assertFalse(self.output.exists())
        close_with("Escape")
        self.assert_run_follows()
