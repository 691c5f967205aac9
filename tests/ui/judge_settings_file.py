#!/usr/bin/env python3
"""Judges the file that a run wrote after the settings page was used: judge_settings_file.py DIRECTORY

The page was told a track name, a language and the document type webm; mkvmerge and mkvinfo must read them back.
"""
import json
import pathlib
import subprocess
import sys


def identify(file):
    return json.loads(subprocess.run(["mkvmerge", "-J", file], check=True, capture_output=True, text=True).stdout)


def document_type(file):
    info = subprocess.run(["mkvinfo", file], check=True, capture_output=True, text=True).stdout
    lines = [line for line in info.splitlines() if "Document type:" in line]
    return lines[0].rsplit(": ", 1)[1] if lines else None


def findings(file):
    tracks = [track["properties"] for track in identify(file)["tracks"]]
    yield "tracks", len(tracks), 2
    yield "name of track 1", tracks[1].get("track_name"), "Commentary \u2603"
    yield "language of track 1", tracks[1].get("language"), "swe"
    yield "name of track 0", tracks[0].get("track_name"), None
    yield "language of track 0", tracks[0].get("language"), "eng"
    yield "document type", document_type(file), "webm"


def main():
    file = pathlib.Path(sys.argv[1]) / "settings_page.webm"
    passed = failed = 0
    if not file.is_file():
        print(f"{file} was not written")
        failed = 1
    else:
        for what, found, expected in findings(file):
            if found == expected:
                passed += 1
            else:
                failed += 1
                print(f"{file.name}: {what}: {found!r} instead of {expected!r}")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
