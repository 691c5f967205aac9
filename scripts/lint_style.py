#!/usr/bin/env python3
"""The rules of docs/style.md that a program can hold, and that neither clang-format nor clang-tidy knows.

lint_style.py ROOT: a line for each breach, and status 1 when there are any.
"""

import re
import sys
from pathlib import Path

PRODUCT = ("win", "log", "codecs", "dshow", "media", "records", "mux", "mkv", "matroska_muxer", "settings", "client", "ui",
           "module", "sources/base", "sources/avi", "sources/matroska", "sources/annexb", "sources/av1", "sources/text",
           "sources/chapters", "mkvmux")
EVERYTHING = PRODUCT + ("examples", "bench", "bench/native", "fuzz", "tests")

# Spellings, with what is written instead.
SPELLINGS = {
    r"\bstd::size_t\b": "size_t",
    r"static_cast<void>\(": "(void)",
    r"\bHRESULT (?:result|res|ret|status) =": "HRESULT hr",
    r"#pragma GCC diagnostic": "a compiler option in cmake/QrxTargets.cmake",
}

PREFIXED = ("dshow", "log", "records", "mux", "mkv", "matroska_muxer", "ui")
# Names that are published without the prefix, and interfaces.
WITHOUT_PREFIX = re.compile(r"(C[A-Z]\w*|I[A-Z]\w*|.*Failure)$")
CLASS = re.compile(r"^(?:template <.*> )?class (?:\w+\(.*\) |QRX_\w+(?:\(.*?\))? )?(\w+)(?: final)?(?: : .*)? \{")

# Sources that stand without a header of their own: programs, tables, and the parts of large base classes.
WITHOUT_HEADER = re.compile(r"(dshow/.*|module/.*|.*/main|.*/guids|.*/identifiers)\.cpp$")

# What looks for a library or a program by its name, and so perhaps finds that of a stranger in the current folder.
SEARCHING = re.compile(r"\b(LoadLibrary(?:Ex)?[AW]?|LoadModule|WinExec|ShellExecute\w*|CreateProcess[AW]?|SearchPath[AW]?|"
                       r"_?w?system|_?w?popen|_w?spawn\w*|_w?exec\w*)\(")
# Loads by the whole path, and from the system's folder alone.
MAY_LOAD = "win/system_library.cpp"


def files_of(root, folders, *suffixes):
    for folder in folders:
        paths = (root / folder).rglob("*") if folder == "tests" else (root / folder).glob("*")
        yield from sorted(path for path in paths if path.suffix in suffixes)


def wrong_spellings(root):
    for path in files_of(root, EVERYTHING, ".h", ".cpp"):
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            for pattern, instead in SPELLINGS.items():
                if re.search(pattern, line):
                    yield path, number, f"write {instead}"


def classes_without_prefix(root):
    for path in files_of(root, PREFIXED, ".h"):
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            found = CLASS.match(line)
            if found and not WITHOUT_PREFIX.match(found[1]):
                yield path, number, f"the class {found[1]} has no prefix C"


def sources_without_header(root):
    for path in files_of(root, PRODUCT, ".cpp"):
        name = path.relative_to(root).as_posix()
        if not path.with_suffix(".h").exists() and not WITHOUT_HEADER.match(name):
            yield path, 1, "has no header of its own"


def searching_calls(root):
    for path in files_of(root, PRODUCT, ".h", ".cpp"):
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            found = SEARCHING.search(line.split("//")[0])
            if found and path.relative_to(root).as_posix() != MAY_LOAD:
                yield path, number, f"{found[1]} searches; win/system_library.h does not"


def main():
    root = Path(sys.argv[1]).resolve()
    breaches = [*wrong_spellings(root), *classes_without_prefix(root), *sources_without_header(root),
                *searching_calls(root)]
    for path, number, text in breaches:
        print(f"{path.relative_to(root).as_posix()}:{number}: {text}")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
