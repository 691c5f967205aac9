"""The file as our own reader sees it: the output of mkvlayout, with what the other judges need from it."""

import json
import shlex
import subprocess
import tempfile

TOOL = "mkvlayout"
CRC_32 = "CRC-32"
DEFAULT_LANGUAGE = "eng"  # of a track that does not say


class Layout:
    def __init__(self, data):
        self.data = data
        self.tracks = data["tracks"]
        self.cues = data["cues"]
        self.seek_entries = data["seekEntries"]
        self.duration_ns = data.get("durationNs")
        self.intact_bytes = self._intact_bytes()
        self.elements = [element for element in data["elements"] if element["offset"] < self.intact_bytes]
        self.blocks = [block for cluster in data["clusters"] for block in cluster["blocks"]
                       if block["offset"] < self.intact_bytes]
        segment = next((element for element in data["elements"] if element["name"] == "Segment"), None)
        self.segment_data_offset = segment["offset"] + segment["headSize"] if segment else 0

    def _intact_bytes(self):
        """How far a file goes in which every reader must see the same: to the first element that has lost its end."""
        cut = (element["offset"] for element in self.data["elements"] if element["cut"])
        return min(cut, default=self.data["size"])

    @property
    def is_intact(self):
        return self.intact_bytes == self.data["size"]

    def blocks_of(self, track_number):
        return [block for block in self.blocks if block["track"] == track_number]


def text_of(file):
    file.seek(0)
    return file.read().decode("utf-8", "backslashreplace")


def run_program(arguments):
    """(status, standard output, standard error). To files, not to pipes: the host's own services, which its first
    program starts, would keep those open."""
    with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
        run = subprocess.run(arguments, stdin=subprocess.DEVNULL, stdout=output, stderr=errors, check=False)
        return run.returncode, text_of(output), text_of(errors)


def read(command, path, cut, verdict):
    """Runs mkvlayout; its findings are complaints. None when it fails."""
    options = (["--cut"] if cut else []) + (["--strict"] if verdict.is_strict else [])
    arguments = shlex.split(command) + options + [str(path)]
    status, printed, complaints = run_program(arguments)
    if status not in (0, 1) or not printed:
        verdict.complain(TOOL, f"failed with status {status}: {complaints.strip()}")
        return None
    data = json.loads(printed)
    for finding in data["findings"]:
        verdict.complain(TOOL, finding)
    if (status == 1) != bool(data["findings"]):
        verdict.complain(TOOL, f"its status {status} does not fit its findings")
    return Layout(data)
