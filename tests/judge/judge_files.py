#!/usr/bin/env python3
"""Judges every Matroska file of a directory by programs that nobody here wrote.

mkvinfo, mkvmerge and ffprobe each read the file; what they say is compared with what our own reader (mkvlayout) says.
MediaConch and rules of our own check it against the format. Whatever any of them complains about is a failure, unless
known_complaints.json explains it; so is, with --whole, an explanation that nothing needs.

usage: judge_files.py --mkvlayout COMMAND DIRECTORY

A file whose name ends in .cut.mkv or .cut.webm was not finalised on purpose. One whose name ends in .strict.mkv,
.strict.cut.mkv or the like is of the strict profile: more is asked of it, and the explanations for files of the
compatible profile are none for it. Exit status: 0 all files pass, 1 one fails, 2 nothing could be judged.
"""

import argparse
import concurrent.futures
import os
import pathlib
import shutil
import sys

import complaints
import ffprobe_judge
import format_rules
import mediaconch_judge
import mkvinfo_judge
import mkvmerge_judge
import our_layout
import strict_rules
import webm_info_judge

TOOLS = ("mkvinfo", "mkvmerge", "ffprobe", "mediaconch", "webm_info")
JUDGES = (mkvinfo_judge, mkvmerge_judge, ffprobe_judge, format_rules, strict_rules, webm_info_judge)
MAX_REASONS = 10  # of one file that are printed


def judge_file(path, command, judges, known):
    verdict = complaints.Verdict(path.name, known)
    cut = path.stem.endswith(".cut")
    layout = our_layout.read(command, path, cut, verdict)
    if layout is not None:
        for judge in judges:
            judge.judge(path, layout, verdict)
    return verdict


def print_verdict(verdict):
    print(f"{'FAIL' if verdict.reasons else 'ok  '} {verdict.file_name}")
    for reason in verdict.reasons[:MAX_REASONS]:
        print(f"       {reason}")
    if len(verdict.reasons) > MAX_REASONS:
        print(f"       and {len(verdict.reasons) - MAX_REASONS} more")


def parse_arguments():
    parser = argparse.ArgumentParser(description="Judges Matroska files by independent programs.")
    parser.add_argument("directory", type=pathlib.Path)
    parser.add_argument("--mkvlayout", required=True, metavar="COMMAND",
                        help="how to run our own reader, for example 'wine64 mkvlayout.exe'")
    parser.add_argument("--known", type=pathlib.Path, metavar="FILE",
                        default=pathlib.Path(__file__).with_name("known_complaints.json"),
                        help="complaints that are explained (default: %(default)s)")
    parser.add_argument("--whole", action="store_true",
                        help="the files of all suites are there: an explained complaint that did not come up fails")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    missing = [tool for tool in TOOLS if shutil.which(tool) is None]
    if missing:
        print(f"judge_files: not installed: {', '.join(missing)}", file=sys.stderr)
        return 2
    files = sorted(path for path in arguments.directory.glob("*") if path.suffix in (".mkv", ".webm"))
    if not files:
        print(f"judge_files: there is no file to judge in {arguments.directory}", file=sys.stderr)
        return 2
    known = complaints.KnownComplaints(arguments.known)
    judges = (*JUDGES, mediaconch_judge.MediaConchJudge(files))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        verdicts = list(pool.map(lambda path: judge_file(path, arguments.mkvlayout, judges, known), files))
    for verdict in verdicts:
        print_verdict(verdict)
    passed = sum(1 for verdict in verdicts if not verdict.reasons)
    unused = known.unused()
    for entry in unused:
        print(f"{'FAIL ' if arguments.whole else ''}never needed: {entry['tool']}, {entry['files']}: "
              f"{entry['pattern']}")
    failed = len(verdicts) - passed + (len(unused) if arguments.whole else 0)
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
