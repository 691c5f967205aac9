"""mkvmerge -J: the tracks with codec, language, name and flags; the duration; the attachments."""

import json
import re
import subprocess

import our_layout

TOOL = "mkvmerge"
TYPES = {"video": 1, "audio": 2, "subtitles": 17}
LANGUAGE_CODE = re.compile(r"^[a-z]{3}$")
UNDETERMINED = "und"


def language_it_shows(stored):
    """What is no three-letter code is undetermined for it."""
    if stored is None:
        return our_layout.DEFAULT_LANGUAGE
    return stored if LANGUAGE_CODE.match(stored) else UNDETERMINED


def our_track(track):
    return {
        "number": track["number"], "type": track["type"], "codec": track["codecId"],
        "language": language_it_shows(track["language"]), "name": track["trackName"],
        # The format's own defaults of flags that are not written.
        "default": track["flagDefault"] != 0, "forced": track["flagForced"] == 1,
        "codec private": track["codecPrivateSize"] or 0,
    }


def their_track(track):
    properties = track["properties"]
    return {
        "number": properties["number"], "type": TYPES.get(track["type"], track["type"]),
        "codec": properties["codec_id"], "language": properties.get("language", UNDETERMINED),
        "name": properties.get("track_name"), "default": properties["default_track"],
        "forced": properties["forced_track"], "codec private": properties.get("codec_private_length", 0),
    }


def compare_duration(layout, container, verdict):
    theirs = container["properties"].get("duration", 0)  # it leaves out a duration of nothing
    ours = layout.duration_ns
    if ours is None:
        verdict.compare(TOOL, "duration", ours, theirs or None)
    elif abs(ours - theirs) > 1:  # it rounds to whole nanoseconds
        verdict.complain(TOOL, f"duration: we read {ours!r} ns, it reads {theirs!r} ns")


def judge(path, layout, verdict):
    command = ["mkvmerge", "--ui-language", "en_US", "-J", str(path)]
    run = subprocess.run(command, capture_output=True, check=False)
    seen = json.loads(run.stdout.decode("utf-8", "replace"))
    printed = run.stderr.decode("utf-8", "replace").splitlines()
    for complaint in seen.get("errors", []) + seen.get("warnings", []) + printed:
        verdict.complain(TOOL, complaint)
    if run.returncode != 0:
        verdict.complain(TOOL, f"exit status {run.returncode}")
    if not seen.get("container", {}).get("recognized"):
        verdict.complain(TOOL, "the file is not recognised")
        return
    verdict.compare_lists(TOOL, "track", [our_track(track) for track in layout.tracks],
                          [their_track(track) for track in seen["tracks"]])
    compare_duration(layout, seen["container"], verdict)
    attachments = [element for element in layout.elements if element["name"] == "AttachedFile"]
    verdict.compare(TOOL, "attachments", len(attachments), len(seen["attachments"]))
