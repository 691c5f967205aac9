"""Rules of the strict profile: what RFC 9559, RFC 8794, ISO/IEC 14496-15 and the WebM guidelines ask for, and what the
profile promises besides. mkvlayout --strict checks the layout; here are the values."""

import re

from format_rules import elements_of
from webm_elements import ELEMENTS as WEBM_ELEMENTS

TOOL = "strict rules"

# The version of the document type that an element came with, where that is not the first.
SINCE = {2: "FlagEnabled FlagInterlaced SimpleBlock CodecState CueCodecState CueReference CueRefTime",
         3: "StereoMode AlphaMode ChapterStringUID",
         4: "FlagHearingImpaired FlagVisualImpaired FlagTextDescriptions FlagOriginal FlagCommentary LanguageBCP47 "
            "TagLanguageBCP47 ChapLanguageBCP47 CodecDelay SeekPreRoll DiscardPadding FieldOrder Colour Projection "
            "BlockAdditionMapping CueRelativePosition CueDuration"}
VERSIONS = {name: version for version, names in SINCE.items() for name in names.split()}
NEWEST_VERSION, NEWEST_READ_VERSION = 4, 2

UUID_BYTES = 16
RANDOM_BITS = 64
FLAGS = ("FlagEnabled", "FlagDefault", "FlagForced", "FlagLacing", "FlagHearingImpaired", "FlagVisualImpaired",
         "FlagTextDescriptions", "FlagOriginal", "FlagCommentary")
VIDEO, AUDIO = 1, 2
INTERLACED = 1
FIELD_ORDERS = {0, 1, 2, 6, 9, 14}
OPUS_RATE, OPUS_SEEK_PRE_ROLL_NS = 48_000, 80_000_000
LOW_PROFILES = {66, 77, 88}  # whose decoder records say nothing of chroma and depths
STATISTICS = {"BPS", "DURATION", "NUMBER_OF_FRAMES", "NUMBER_OF_BYTES"}
STATISTICS_DURATION = re.compile(r"^\d{2,}:[0-5]\d:[0-5]\d\.\d{9}$")
MUXING_APP = re.compile(r"^libebml v\d+\.\d+\.\d+ \+ libmatroska v\d+\.\d+\.\d+$")


def check_versions(head, layout, verdict):
    used = {element["name"] for element in layout.elements}
    version, read_version = (head.child(name).number() for name in ("DocTypeVersion", "DocTypeReadVersion"))
    for name in sorted(used):
        if VERSIONS.get(name, 1) > version:
            verdict.complain(TOOL, f"DocTypeVersion {version} has no {name}")
    if "SimpleBlock" in used and read_version < VERSIONS["SimpleBlock"]:
        verdict.complain(TOOL, f"DocTypeReadVersion {read_version} has no SimpleBlock")
    if version > NEWEST_VERSION or read_version > NEWEST_READ_VERSION:
        verdict.complain(TOOL, f"versions {version}/{read_version} are above what can be needed")


def check_contents(layout, is_webm, verdict):
    for element in layout.elements:
        if element["dataSize"] == 0 and element["name"] != "Void" and not element["unknownSize"]:
            verdict.complain(TOOL, f"@{element['offset']}: {element['name']} is empty")
        if is_webm and element["name"] not in WEBM_ELEMENTS:
            verdict.complain(TOOL, f"@{element['offset']}: {element['name']} is no element of WebM")


def check_info(info, is_webm, verdict):
    for name in ("TimestampScale", "MuxingApp", "WritingApp", "DateUTC"):
        if info.child(name) is None:
            verdict.complain(TOOL, f"Info has no {name}")
    uuid = info.child("SegmentUUID")
    if uuid is None and not is_webm:
        verdict.complain(TOOL, "Info has no SegmentUUID")
    if uuid is not None and (len(uuid.bytes()) != UUID_BYTES or uuid.number() == 0):
        verdict.complain(TOOL, "SegmentUUID is no identifier of 128 bits")
    duration = info.child("Duration")
    if duration is not None and duration.number() == 0:
        verdict.complain(TOOL, "Duration is 0")
    app = info.child("MuxingApp")
    if app is not None and not MUXING_APP.match(app.text()):
        verdict.complain(TOOL, f"MuxingApp is '{app.text()}'")


def check_flags(track, is_webm, where, verdict):
    for name in FLAGS:
        flag = track.child(name)
        if flag is not None and flag.number() > 1:
            verdict.complain(TOOL, f"{where}: {name} is {flag.number()}")
    for name in ("FlagEnabled", "FlagDefault", "FlagForced", "Language", *(() if is_webm else ("LanguageBCP47",))):
        if track.child(name) is None:
            verdict.complain(TOOL, f"{where}: there is no {name}")
    uid = track.child("TrackUID")
    # One in 2**32 has none of its upper half's bits.
    if uid is not None and uid.number() >> RANDOM_BITS // 2 == 0:
        verdict.complain(TOOL, f"{where}: TrackUID {uid.number()} has not {RANDOM_BITS} random bits")


def number_in(element, name):
    child = element.child(name)
    return child.number() if child else None


def check_video(video, where, verdict):
    shown = number_in(video, "DisplayWidth"), number_in(video, "DisplayHeight")
    if (shown[0] is None) != (shown[1] is None):
        verdict.complain(TOOL, f"{where}: one of DisplayWidth and DisplayHeight is alone")
    if shown == (number_in(video, "PixelWidth"), number_in(video, "PixelHeight")):
        verdict.complain(TOOL, f"{where}: the display size is the one of the picture, and written")
    if video.child("DisplayUnit") is not None:
        verdict.complain(TOOL, f"{where}: the display size is not in pixels")
    order = number_in(video, "FieldOrder")
    if order is not None and (order not in FIELD_ORDERS or number_in(video, "FlagInterlaced") != INTERLACED):
        verdict.complain(TOOL, f"{where}: FieldOrder {order} of a picture that has no fields, or no such order")


def check_avc(record, where, verdict):
    if len(record) < 7 or record[0] != 1 or record[4] >> 2 != 0x3F or record[5] >> 5 != 7:
        verdict.complain(TOOL, f"{where}: the decoder record's version or reserved bits are wrong")
        return
    place = 6
    for count in (record[5] & 0x1F, None):
        if count is None:
            count, place = record[place], place + 1
        for _ in range(count):
            place += 2 + int.from_bytes(record[place:place + 2], "big")
    expected = 0 if record[1] in LOW_PROFILES else 4
    more = record[place:]
    if len(more) != expected or (more and (more[0] >> 2 != 0x3F or more[1] >> 3 != 0x1F or more[2] >> 3 != 0x1F)):
        verdict.complain(TOOL, f"{where}: the decoder record of profile {record[1]} ends with {more.hex()!r}")


def check_hevc(record, where, verdict):
    reserved = ((13, 0xF0), (15, 0xFC), (16, 0xFC), (17, 0xF8), (18, 0xF8))
    if len(record) < 23 or record[0] != 1 or any(record[at] & bits != bits for at, bits in reserved):
        verdict.complain(TOOL, f"{where}: the decoder record's version or reserved bits are wrong")


def check_opus(track, record, where, verdict):
    pre_skip = int.from_bytes(record[10:12], "little")
    delay, pre_roll = (number_in(track, name) or 0 for name in ("CodecDelay", "SeekPreRoll"))
    if record[:8] != b"OpusHead" or abs(delay - pre_skip * 10**9 / OPUS_RATE) >= 1 or pre_roll != OPUS_SEEK_PRE_ROLL_NS:
        verdict.complain(TOOL, f"{where}: CodecDelay {delay}, SeekPreRoll {pre_roll} with a pre-skip of {pre_skip}")


def check_codec(track, where, verdict):
    codec = track.child("CodecID").text()
    private = track.child("CodecPrivate")
    record = private.bytes() if private else b""
    if codec == "V_MPEG4/ISO/AVC":
        check_avc(record, where, verdict)
    elif codec == "V_MPEGH/ISO/HEVC":
        check_hevc(record, where, verdict)
    elif codec == "A_OPUS":
        check_opus(track, record, where, verdict)
    elif codec in ("A_AAC", "A_VORBIS", "A_FLAC", "A_MS/ACM", "V_MS/VFW/FOURCC", "V_THEORA", "S_TEXT/ASS") and not record:
        verdict.complain(TOOL, f"{where}: {codec} without CodecPrivate")
    sound = track.child("Audio")
    if codec.startswith("A_PCM") and (sound is None or not number_in(sound, "BitDepth")):
        verdict.complain(TOOL, f"{where}: {codec} without BitDepth")


def check_track(track, is_webm, verdict):
    where = f"track {number_in(track, 'TrackNumber')}"
    check_flags(track, is_webm, where, verdict)
    check_codec(track, where, verdict)
    kind = number_in(track, "TrackType")
    for name, wanted in (("Video", VIDEO), ("Audio", AUDIO)):
        if (track.child(name) is not None) != (kind == wanted):
            verdict.complain(TOOL, f"{where}: {name} in a track of type {kind}")
    if track.child("Video") is not None:
        check_video(track.child("Video"), where, verdict)
    for element in (track, track.child("Audio")):
        if element is not None and any(number_in(element, name) == 0 for name in ("BitDepth", "CodecDelay")):
            verdict.complain(TOOL, f"{where}: BitDepth or CodecDelay is 0")


def addition_bytes(layout, track):
    """What stands beside the blocks of the track: each addition belongs to the block in front of it."""
    blocks = sorted(layout.blocks, key=lambda block: block["offset"])
    total = 0
    for element in layout.elements:
        if element["name"] == "BlockAdditional":
            before = [block for block in blocks if block["offset"] < element["offset"]]
            total += element["dataSize"] if before and before[-1]["track"] == track else 0
    return total


def check_statistics(tag, layout, by_uid, verdict):
    uid = number_in(tag.child("Targets"), "TagTrackUID")
    if uid not in by_uid:
        return  # told with all others
    values = {simple.child("TagName").text(): simple.child("TagString").text()
              for simple in tag.children if simple.name == "SimpleTag"}
    blocks = layout.blocks_of(by_uid[uid])
    sizes = [size for block in blocks for size in block["frameSizes"]]
    expected = {"NUMBER_OF_FRAMES": str(len(sizes)), "NUMBER_OF_BYTES": str(sum(sizes) + addition_bytes(layout, by_uid[uid]))}
    told = {name: values.get(name) for name in expected}
    if STATISTICS - values.keys() or told != expected or not STATISTICS_DURATION.match(values["DURATION"]):
        verdict.complain(TOOL, f"track {by_uid[uid]}: {expected} is told as {values}")


def is_statistics(tag):
    names = {simple.child("TagName").text() for simple in tag.children if simple.name == "SimpleTag"}
    return tag.child("Targets").child("TagTrackUID") is not None and bool(names & STATISTICS)


def check_tags(layout, content, verdict):
    by_uid = {track["uid"]: track["number"] for track in layout.tracks}
    tags = elements_of(layout, content, "Tag")
    statistics = [tag for tag in tags if is_statistics(tag)]
    for tag in statistics:
        check_statistics(tag, layout, by_uid, verdict)
    if statistics and len(statistics) != len(layout.tracks):
        verdict.complain(TOOL, f"statistics in {len(statistics)} tags for {len(layout.tracks)} tracks")
    for tag in tags:
        uid = number_in(tag.child("Targets"), "TagTrackUID")
        if uid is not None and uid not in by_uid:
            verdict.complain(TOOL, f"a tag for the track with the UID {uid}, which there is not")
        if tag.child("SimpleTag") is None:
            verdict.complain(TOOL, "a Tag without any SimpleTag")


def all_named(name, elements):
    """Those inside of each other, too."""
    return [found for element in elements for found in
            ([element] if element.name == name else []) + all_named(name, element.children)]


def check_chapters(layout, content, is_webm, verdict):
    editions = elements_of(layout, content, "EditionEntry")
    atoms = all_named("ChapterAtom", elements_of(layout, content, "ChapterAtom"))
    if len(editions) > 1 or (editions and editions[0].child("ChapterAtom") is None):
        verdict.complain(TOOL, f"{len(editions)} editions, or one without a chapter")
    uids = [number_in(atom, "ChapterUID") for atom in atoms]
    if 0 in uids or None in uids or len(set(uids)) != len(uids):
        verdict.complain(TOOL, f"ChapterUIDs are {uids}")
    for display in elements_of(layout, content, "ChapterDisplay"):
        for name in ("ChapString", "ChapLanguage", *(() if is_webm else ("ChapLanguageBCP47",))):
            if display.child(name) is None:
                verdict.complain(TOOL, f"a ChapterDisplay without {name}")


def judge(path, layout, verdict):
    if not verdict.is_strict:
        return
    content = path.read_bytes()
    is_webm = layout.data["docType"] == "webm"
    check_versions(elements_of(layout, content, "EBML")[0], layout, verdict)
    check_contents(layout, is_webm, verdict)
    for info in elements_of(layout, content, "Info"):
        check_info(info, is_webm, verdict)
    for track in elements_of(layout, content, "TrackEntry"):
        check_track(track, is_webm, verdict)
    check_chapters(layout, content, is_webm, verdict)
    check_tags(layout, content, verdict)
