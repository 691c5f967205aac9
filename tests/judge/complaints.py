"""What the tools complained about, minus what is known and explained in known_complaints.json.

Each entry of that file names the tool, the profile of the files that it is for ("compatible", "strict" or "both"), a
pattern for the file's name (shell style), a regular expression for the complaint, and the reason: it says nothing about
our file, or the file is so on purpose. No strict file is wrong on purpose, so an entry for those names a "defect" of the
judge instead of a reason. An entry with "by chance" need not come up in every run.
"""

import fnmatch
import json
import pathlib
import re

COMPATIBLE, STRICT, BOTH = "compatible", "strict", "both"
PROFILES = (COMPATIBLE, STRICT, BOTH)


def profile_of(path):
    """A file tells it by its name: that of a strict one ends in .strict.mkv, .strict.cut.mkv or the like."""
    return STRICT if ".strict" in pathlib.Path(path).suffixes[-3:] else COMPATIBLE


def check_entry(entry, path):
    why = "reason" if entry.get("profile") == COMPATIBLE else "defect"
    missing = {"tool", "profile", "files", "pattern", why} - entry.keys()
    if missing or entry["profile"] not in PROFILES:
        raise ValueError(f"{path}: an entry lacks {', '.join(sorted(missing)) or 'a profile that there is'}: {entry}")


class KnownComplaints:
    def __init__(self, path):
        self._entries = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
        for entry in self._entries:
            check_entry(entry, path)
            entry["regex"] = re.compile(entry["pattern"])
            entry["used"] = 0

    def is_known(self, tool, file_name, complaint):
        for entry in self._entries:
            if (entry["tool"] == tool and entry["profile"] in (profile_of(file_name), BOTH)
                    and fnmatch.fnmatch(file_name, entry["files"]) and entry["regex"].search(complaint)):
                entry["used"] += 1
                return True
        return False

    def unused(self):
        return [entry for entry in self._entries if not entry["used"] and not entry.get("by chance")]


class Verdict:
    """The reasons why one file fails; none when it passes."""

    def __init__(self, file_name, known):
        self.file_name = file_name
        self.is_strict = profile_of(file_name) == STRICT
        self.reasons = []
        self._known = known

    def complain(self, tool, complaint):
        """A tool is not content, or two tools differ; the tool is the one that is not ours."""
        if not self._known.is_known(tool, self.file_name, complaint):
            self.reasons.append(f"{tool}: {complaint}")

    def compare(self, tool, what, ours, theirs):
        if ours != theirs:
            self.complain(tool, f"{what}: we read {ours!r}, it reads {theirs!r}")

    def compare_lists(self, tool, what, ours, theirs):
        """Names the first difference only: the rest follows from it."""
        for index, (our_item, their_item) in enumerate(zip(ours, theirs)):
            if our_item != their_item:
                self.complain(tool, f"{what} {index}: we read {our_item!r}, it reads {their_item!r}")
                return
        if len(ours) != len(theirs):
            self.complain(tool, f"{what}: we read {len(ours)}, it reads {len(theirs)}")
