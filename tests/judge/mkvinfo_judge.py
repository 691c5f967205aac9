"""mkvinfo: every element with its position and size, the blocks' times and frames, the positions in seek head and
cues, all in the order of the file."""

import re
import subprocess

import our_layout

TOOL = "mkvinfo"

# '| + Name: value at 123 size 45 data size 40'; the number of columns before '+' is the level.
LINE = re.compile(r"^(?P<indent>\|? *)\+ (?P<text>.*?) at (?P<offset>\d+) size "
                  r"(?:is unknown|(?P<size>\d+) data size (?P<data_size>\d+))$")
FRAME = re.compile(r"^\|? *\+ Frame at \d+ size (?P<size>\d+)$")
BLOCK = re.compile(r"^(?:Simple block|Block): (?P<key>key, )?(?:discardable, )?track number (?P<track>\d+), "
                   r"(?P<frames>\d+) frame\(s\).*, timestamp (?P<time>[\d:.]+)")
TIME = re.compile(r"^(?P<hours>\d+):(?P<minutes>\d+):(?P<seconds>\d+)\.(?P<fraction>\d{9})$")
POSITION = re.compile(r": (?P<value>\d+)$")

# Its names for elements, where they can be told from the text alone.
NAMES = {
    "EBML head": "EBML", "EBML version": "EBMLVersion", "EBML read version": "EBMLReadVersion",
    "Maximum EBML ID length": "EBMLMaxIDLength", "Maximum EBML size length": "EBMLMaxSizeLength",
    "Document type": "DocType", "Document type version": "DocTypeVersion",
    "Document type read version": "DocTypeReadVersion", "Segment": "Segment", "EBML void": "Void",
    "Seek head": "SeekHead", "Seek entry": "Seek", "Seek ID": "SeekID", "Seek position": "SeekPosition",
    "Segment information": "Info", "Timestamp scale": "TimestampScale", "Multiplexing application": "MuxingApp",
    "Writing application": "WritingApp", "Duration": "Duration", "Tracks": "Tracks", "Track": "TrackEntry",
    "Track number": "TrackNumber", "Track type": "TrackType", "\"Lacing\" flag": "FlagLacing",
    "\"Default track\" flag": "FlagDefault", "\"Forced display\" flag": "FlagForced", "Codec ID": "CodecID",
    "Codec's private data": "CodecPrivate", "Default duration": "DefaultDuration", "Video track": "Video",
    "Pixel width": "PixelWidth", "Pixel height": "PixelHeight", "Display width": "DisplayWidth",
    "Display height": "DisplayHeight", "Audio track": "Audio", "Sampling frequency": "SamplingFrequency",
    "Bit depth": "BitDepth", "Channels": "Channels", "Cluster": "Cluster", "Cluster timestamp": "Timestamp",
    "Simple block": "SimpleBlock", "Block group": "BlockGroup", "Block": "Block", "Block duration": "BlockDuration",
    "Cues": "Cues", "Cue point": "CuePoint", "Cue time": "CueTime", "Cue track positions": "CueTrackPositions",
    "Cue track": "CueTrack", "Cue cluster position": "CueClusterPosition",
    "Cue relative position": "CueRelativePosition", "Attachments": "Attachments", "Attached": "AttachedFile",
    "File description": "FileDescription", "File name": "FileName", "MIME type": "FileMimeType",
    "File data": "FileData", "File UID": "FileUID",
}


def to_ns(text):
    parts = TIME.match(text)
    if not parts:
        return text
    seconds = (int(parts["hours"]) * 60 + int(parts["minutes"])) * 60 + int(parts["seconds"])
    return seconds * 10**9 + int(parts["fraction"])


class Listing:
    """What it printed, line by line."""

    def __init__(self, text):
        self.elements = []  # (offset, size, data size, level, name or None)
        self.blocks = []  # (offset, track, time, is key, frame sizes)
        self.seek_positions = []
        self.cue_positions = []
        self.complaints = []
        for line in text.splitlines():
            self._read_line(line)

    def _read_line(self, line):
        frame = FRAME.match(line)
        if frame:
            self.blocks[-1][4].append(int(frame["size"]))
            return
        match = LINE.match(line)
        if not match:
            if line.strip() and not line.startswith("|"):
                self.complaints.append(line.strip())
            return
        text, offset = match["text"], int(match["offset"])
        name = text.split(":")[0]
        size = None if match["size"] is None else int(match["size"])
        data_size = None if size is None else int(match["data_size"])
        self.elements.append((offset, size, data_size, len(match["indent"]), NAMES.get(name)))
        block = BLOCK.match(text)
        if block:
            self.blocks.append((offset, int(block["track"]), to_ns(block["time"]), bool(block["key"]), []))
        if name == "Seek position":
            self.seek_positions.append(int(POSITION.search(text)["value"]))
        if name == "Cue cluster position":
            self.cue_positions.append(int(POSITION.search(text)["value"]))


def describe(element, name):
    size = None if element["unknownSize"] else element["headSize"] + element["dataSize"]
    return (element["offset"], size, None if size is None else element["dataSize"], element["level"], name)


def compare_elements(layout, listing, verdict):
    # It consumes checksums without showing them.
    ours = [element for element in layout.elements if element["name"] != our_layout.CRC_32]
    their_names = {element[0]: element[4] for element in listing.elements}
    expected = [describe(element, element["name"] if their_names.get(element["offset"]) else None)
                for element in ours]
    theirs = [element for element in listing.elements if element[0] < layout.intact_bytes]
    verdict.compare_lists(TOOL, "element (offset, size, data size, level, name)", expected, theirs)


def compare_blocks(layout, listing, verdict):
    # For a block in a group it prints no key flag.
    ours = [(block["offset"], block["track"], round(block["timeNs"]), block["keyframe"] and block["simple"],
             block["frameSizes"]) for block in layout.blocks]
    theirs = [block for block in listing.blocks if block[0] < layout.intact_bytes]
    verdict.compare_lists(TOOL, "block (offset, track, time, key, frame sizes)", ours, theirs)


def compare_positions(layout, listing, verdict):
    base = layout.segment_data_offset
    verdict.compare_lists(TOOL, "seek head position", [entry["offset"] - base for entry in layout.seek_entries],
                          listing.seek_positions)
    verdict.compare_lists(TOOL, "cue position", [cue["clusterOffset"] - base for cue in layout.cues],
                          listing.cue_positions)


def judge(path, layout, verdict):
    command = ["mkvinfo", "--ui-language", "en_US", "-a", "-v", "-v", "-P", "-z", str(path)]
    run = subprocess.run(command, capture_output=True, check=False)
    listing = Listing(run.stdout.decode("utf-8", "replace"))
    for line in listing.complaints + run.stderr.decode("utf-8", "replace").splitlines():
        verdict.complain(TOOL, line)
    if run.returncode != 0:
        verdict.complain(TOOL, f"exit status {run.returncode}")
    compare_elements(layout, listing, verdict)
    compare_blocks(layout, listing, verdict)
    compare_positions(layout, listing, verdict)
