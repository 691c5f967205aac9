"""ffprobe: the streams, and each packet with its time, key flag, size and checksum, as the demuxer alone gives them."""

import json
import subprocess

import our_layout

TOOL = "ffprobe"
TYPES = {"video": 1, "audio": 2, "subtitle": 17}
NS = 10**9
ATTACHMENT = "attachment"
SUBTITLE_TRACK = 17
NO_DURATION = "Estimating duration from bitrate"


def run_ffprobe(path):
    # Without parsers and without filled-in times: the packets as they are in the file.
    return subprocess.run(
        ["ffprobe", "-v", "warning", "-fflags", "noparse+nofillin", "-show_data_hash", "CRC32", "-show_packets",
         "-show_streams", "-of", "json", str(path)], capture_output=True, check=False)


def our_stream(track):
    # An element that is there but empty has its default value (RFC 8794, section 6.1).
    language = track["language"] or our_layout.DEFAULT_LANGUAGE
    return {"type": track["type"], "language": None if language == "und" else language, "name": track["trackName"],
            "default": track["flagDefault"] != 0, "forced": track["flagForced"] == 1}


def their_stream(stream):
    tags = {name.lower(): value for name, value in stream.get("tags", {}).items()}
    disposition = stream.get("disposition", {})
    return {"type": TYPES.get(stream.get("codec_type"), stream.get("codec_type")), "language": tags.get("language"),
            "name": tags.get("title"), "default": disposition.get("default") == 1,
            "forced": disposition.get("forced") == 1}


def is_attachment(stream):
    """Attached pictures it shows as video."""
    return stream.get("codec_type") == ATTACHMENT or stream.get("disposition", {}).get("attached_pic") == 1


def overlapping_subtitles(track, blocks, tick_ns):
    """The offsets of the blocks that begin before one before them ends: they are no key packets for it."""
    found, end = set(), 0
    if track["type"] == SUBTITLE_TRACK:
        for block in blocks:
            if block["timeNs"] < end:
                found.add(block["offset"])
            end = max(end, block["timeNs"] + (block["durationTicks"] or 0) * tick_ns)
    return found


def our_packets(track, blocks, tick_ns):
    overlapping = overlapping_subtitles(track, blocks, tick_ns)
    # It takes the codec's delay off, in whole ticks.
    delay_ns = ((track["codecDelayNs"] or 0) + tick_ns // 2) // tick_ns * tick_ns
    # Of the frames of a laced block only the first carries the time and the flag.
    return [(round(block["timeNs"]) - delay_ns, block["keyframe"] and block["offset"] not in overlapping,
             block["frameSizes"][0], f"{block['frameCrcs'][0]:08x}") for block in blocks]


def their_packets(packets, stream, laced_followers):
    numerator, denominator = (int(part) for part in stream["time_base"].split("/"))
    result = []
    for index, packet in enumerate(packets):
        if index in laced_followers:
            continue
        # Tracks that describe their codec by a structure of Windows have their times counted as decoding times.
        ticks = packet.get("pts", packet.get("dts"))
        time = None if ticks is None else round(ticks * NS * numerator / denominator)
        result.append((time, packet["flags"].startswith("K"), int(packet["size"]),
                       packet.get("data_hash", "").removeprefix("CRC32:")))
    return result


def followers_in_laces(blocks):
    """The indices of the packets that are not the first of their block."""
    followers, index = set(), 0
    for block in blocks:
        followers.update(range(index + 1, index + len(block["frameSizes"])))
        index += len(block["frameSizes"])
    return followers


def judge(path, layout, verdict):
    run = run_ffprobe(path)
    for line in run.stderr.decode("utf-8", "replace").splitlines():
        if NO_DURATION in line and layout.duration_ns == 0:
            continue  # a file without packets is as long as it says
        verdict.complain(TOOL, line)
    if run.returncode != 0:
        verdict.complain(TOOL, f"exit status {run.returncode}")
        return
    seen = json.loads(run.stdout.decode("utf-8", "replace"))
    streams = [stream for stream in seen["streams"] if not is_attachment(stream)]
    verdict.compare_lists(TOOL, "stream", [our_stream(track) for track in layout.tracks],
                          [their_stream(stream) for stream in streams])
    for track, stream in zip(layout.tracks, streams):
        blocks = layout.blocks_of(track["number"])
        packets = [packet for packet in seen["packets"] if packet["stream_index"] == stream["index"]]
        ours = our_packets(track, blocks, layout.data["timestampScaleNs"])
        theirs = their_packets(packets, stream, followers_in_laces(blocks))
        if not layout.is_intact:
            theirs = theirs[:len(ours)]  # behind the cut it reads on as far as it can
        verdict.compare_lists(TOOL, f"track {track['number']} ({track['codecId']}), packet (time, key, size, CRC)",
                              ours, theirs)
