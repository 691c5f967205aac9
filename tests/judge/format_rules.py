"""Rules of the format (RFC 9559 and the WebM container guidelines) that none of the other judges checks."""

import re

TOOL = "format rules"

NOT_ZERO = {"TimestampScale", "TrackNumber", "TrackUID", "DefaultDuration", "PixelWidth", "PixelHeight", "DisplayWidth",
            "DisplayHeight", "Channels", "CueTrack", "FileUID"}
MANDATORY_OF_ATTACHMENT = ("FileName", "FileMimeType", "FileData", "FileUID")
MAX_PIXELS = 65535  # more than any codec has in one direction
LANGUAGE_CODE = re.compile(r"^[a-z]{3}$")
CODEC = re.compile(
    r"^(V_(MS/VFW/FOURCC|UNCOMPRESSED|MPEG4/(ISO/(SP|ASP|AP|AVC)|MS/V3)|MPEG[12]|MPEGH/ISO/HEVC|REAL/RV[1-4]0|"
    r"QUICKTIME|THEORA|PRORES|VP[89]|AV1|FFV1)"
    r"|A_(MPEG/L[123]|PCM/(INT/(BIG|LIT)|FLOAT/IEEE)|MPC|AC3(/BSID(9|10))?|EAC3|TRUEHD|ALAC|DTS(/(EXPRESS|LOSSLESS))?|"
    r"VORBIS|FLAC|REAL/(14_4|28_8|COOK|SIPR|RALF|ATRC)|MS/ACM|AAC(/.+)?|QUICKTIME(/.+)?|TTA1|WAVPACK4|OPUS|ATRAC/AT1)"
    r"|S_(TEXT/(UTF8|SSA|ASS|ASCII|USF|WEBVTT)|IMAGE/BMP|VOBSUB|HDMV/(PGS|TEXTST)|DVBSUB|ARIBSUB|KATE))$")
WEBM_CODECS = {"V_VP8", "V_VP9", "V_AV1", "A_VORBIS", "A_OPUS"}


class Element:
    """One element with its children, and its value from the file."""

    def __init__(self, entry, content):
        self.name = entry["name"]
        self._bytes = content[entry["offset"] + entry["headSize"]:][:entry["dataSize"]]
        self.children = []

    def child(self, name):
        return next((child for child in self.children if child.name == name), None)

    def bytes(self):
        return self._bytes

    def number(self):
        return int.from_bytes(self._bytes, "big")

    def text(self):
        return self._bytes.rstrip(b"\0").decode("utf-8", "replace")


def elements_of(layout, content, wanted):
    """The elements of that name, with all below them."""
    found, path = [], []
    for entry in layout.elements:
        del path[entry["level"]:]
        path += [None] * (entry["level"] - len(path))
        inside = next((element for element in path if element is not None), None)
        element = Element(entry, content) if inside is not None or entry["name"] == wanted else None
        if element is not None:
            (path[-1].children if path and path[-1] is not None else found).append(element)
        path.append(element)
    return found


def check_numbers(element, where, verdict):
    if element.name in NOT_ZERO and element.number() == 0:
        verdict.complain(TOOL, f"{where}: {element.name} is 0")
    for child in element.children:
        check_numbers(child, where, verdict)


def check_picture(video, where, verdict):
    sizes = {name: child.number() for name in ("PixelWidth", "PixelHeight", "DisplayWidth", "DisplayHeight")
             if (child := video.child(name))}
    for name, size in sizes.items():
        if size > MAX_PIXELS:
            verdict.complain(TOOL, f"{where}: {name} is {size}")
    width, height = sizes.get("PixelWidth", 0), sizes.get("PixelHeight", 0)
    shown = sizes.get("DisplayWidth", width), sizes.get("DisplayHeight", height)
    if video.child("DisplayUnit") is None and 0 not in shown and shown[0] < width and shown[1] < height:
        verdict.complain(TOOL, f"{where}: the display size in pixels is smaller than the picture")


def check_track(track, doc_type, verdict):
    number = track.child("TrackNumber")
    where = f"track {number.number() if number else '?'}"
    check_numbers(track, where, verdict)
    language = track.child("Language")
    if language is not None and not LANGUAGE_CODE.match(language.text()):
        verdict.complain(TOOL, f"{where}: Language is '{language.text()}'")
    codec = track.child("CodecID")
    if codec is not None and not CODEC.match(codec.text()):
        verdict.complain(TOOL, f"{where}: CodecID '{codec.text()}' is not registered")
    if codec is not None and doc_type == "webm" and codec.text() not in WEBM_CODECS:
        verdict.complain(TOOL, f"{where}: {codec.text()} is no codec of WebM")
    video = track.child("Video")
    if video is not None:
        check_picture(video, where, verdict)


def check_repeated(kind, elements, name, verdict):
    numbers = [child.number() for element in elements if (child := element.child(name))]
    for number in sorted({number for number in numbers if numbers.count(number) > 1}):
        verdict.complain(TOOL, f"{kind}: {name} {number} is there {numbers.count(number)} times")


def check_attachments(attached, doc_type, verdict):
    for index, file in enumerate(attached, 1):
        check_numbers(file, f"attachment {index}", verdict)
        for name in MANDATORY_OF_ATTACHMENT:
            if file.child(name) is None:
                verdict.complain(TOOL, f"attachment {index}: there is no {name}")
    if attached and doc_type == "webm":
        verdict.complain(TOOL, "attachments are no part of WebM")
    check_repeated("attachments", attached, "FileUID", verdict)


def check_cues(layout, verdict):
    times = [cue["timeNs"] for cue in layout.cues]
    if times != sorted(times):
        verdict.complain(TOOL, "cues: their times go back")


def judge(path, layout, verdict):
    content = path.read_bytes()
    doc_type = layout.data["docType"]
    tracks = elements_of(layout, content, "TrackEntry")
    for track in tracks:
        check_track(track, doc_type, verdict)
    check_repeated("tracks", tracks, "TrackUID", verdict)
    check_attachments(elements_of(layout, content, "AttachedFile"), doc_type, verdict)
    check_cues(layout, verdict)
