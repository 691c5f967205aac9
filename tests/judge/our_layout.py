"""The file as our own reader sees it: the output of mkvlayout, with what the other judges need from it."""

import json
import shlex
import subprocess

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


def read(command, path, cut, verdict):
    """Runs mkvlayout; its findings are complaints. None when it fails."""
    arguments = shlex.split(command) + (["--cut"] if cut else []) + [str(path)]
    run = subprocess.run(arguments, capture_output=True, check=False)
    if run.returncode not in (0, 1):
        error = run.stderr.decode("utf-8", "replace").strip()
        verdict.complain(TOOL, f"failed with status {run.returncode}: {error}")
        return None
    data = json.loads(run.stdout.decode("utf-8", "backslashreplace"))
    for finding in data["findings"]:
        verdict.complain(TOOL, finding)
    if (run.returncode == 1) != bool(data["findings"]):
        verdict.complain(TOOL, f"its status {run.returncode} does not fit its findings")
    return Layout(data)
