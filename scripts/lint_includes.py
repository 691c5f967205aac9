#!/usr/bin/env python3
"""Reads the includes of the product's sources: each folder uses the ones below it, and never one beside or above it.

lint_includes.py ROOT: a line for each include that is wrong, and status 1 when there are any.
"""

import re
import sys
from pathlib import Path

# What each folder may include besides itself. The picture of it stands in ARCHITECTURE.md.
ALLOWED = {
    "include": set(),
    "win": set(),
    "log": {"win"},
    "codecs": set(),
    "dshow": {"win"},
    "media": {"codecs", "dshow", "win"},
    "records": {"include", "win"},
    "mux": {"dshow", "log", "win"},
    "mkv": {"media", "records", "dshow", "log", "win", "include"},
    "matroska_muxer": {"mux", "mkv", "media", "records", "dshow", "log", "win", "include"},
    "settings": {"win"},
    "client": {"include", "win"},
    "ui": {"client", "records", "dshow", "win", "include"},
    "module": {"ui", "matroska_muxer", "settings", "dshow", "win", "include"},
    "sources/base": {"media", "dshow", "win"},
    "sources/avi": {"sources/base", "media", "dshow", "win"},
    "sources/matroska": {"sources/base", "media", "codecs", "dshow", "win"},
    "sources/av1": {"sources/base", "sources/annexb", "media", "codecs", "dshow", "win"},
    "sources/annexb": {"sources/base", "media", "codecs", "dshow", "win"},
    "sources/text": {"sources/base", "media", "codecs", "dshow", "win"},
    "sources/chapters": {"sources/base", "win"},
    "repair": {"mkv", "sources/matroska", "sources/base", "media", "win"},
    "report": {"sources/matroska", "sources/base", "media", "win"},
    "mkvmux": {"client", "repair", "report", "sources/base", "sources/avi", "sources/matroska", "sources/annexb",
               "sources/av1", "sources/text", "sources/chapters", "media", "records", "dshow", "win", "include"},
    "examples": {"include"},
}
# Headers from outside that only some folders may use.
ONLY_IN = {
    r"(ebml|matroska)/": {"mkv", "sources/matroska", "repair", "report"},
    r"(windows|winnt|guiddef|objbase|dshow|strmif)\.h$": {"win", "include", "dshow", "ui", "examples"},
    r"msxml": {"settings"},
    r"(CLI|nlohmann)/": {"mkvmux"},
    r"zlib\.h$": {"sources/matroska"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')


def folder_of(path):
    """The longest folder of the table that the path lies in; nothing outside of them."""
    parts = path.split("/")[:-1]
    for length in range(len(parts), 0, -1):
        if (name := "/".join(parts[:length])) in ALLOWED:
            return name
    return None


def target_of(root, header):
    """The folder that an include leads to, with its kind: ours or somebody else's."""
    if (root / "include" / header).is_file():
        return "include"
    return folder_of(header) or (header.split("/")[0] if (root / header).is_file() else None)


def complaint(root, folder, header):
    target = target_of(root, header)
    if target is not None:
        if target != folder and target not in ALLOWED[folder]:
            return f"{folder} may not use {target}"
        return None
    for pattern, folders in ONLY_IN.items():
        if re.match(pattern, header) and folder not in folders:
            return f"only {', '.join(sorted(folders))} may include it"
    return None


def sources_of(root, folder):
    return sorted(path for path in (root / folder).glob("*") if path.suffix in (".h", ".cpp", ".inc", ".rc"))


def wrong_includes(root):
    for folder in ALLOWED:
        for path in sources_of(root, folder):
            name = path.relative_to(root).as_posix()
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                found = INCLUDE.match(line)
                if found and (problem := complaint(root, folder, found[2])):
                    yield f"{name}:{number}: {found[2]}: {problem}"


def main():
    root = Path(sys.argv[1]).resolve()
    missing = [folder for folder in ALLOWED if not (root / folder).is_dir()]
    problems = [f"{folder}: is no folder" for folder in missing] + list(wrong_includes(root))
    print("\n".join(problems), end="\n" if problems else "")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
