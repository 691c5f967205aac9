#!/usr/bin/env python3
"""The folders' rows of what gcovr counted: coverage_table.py SUMMARY."""

import json
import sys
from collections import defaultdict

COUNTS = ("line_covered", "line_total", "branch_covered", "branch_total")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        summary = json.load(file)
    folders = defaultdict(lambda: [0] * len(COUNTS))
    for source in summary["files"]:
        counts = folders[source["filename"].rpartition("/")[0]]
        for i, name in enumerate(COUNTS):
            counts[i] += source[name]
    print("| folder | lines | reached | branches | taken |\n|---|---|---|---|---|")
    for folder, (lines_reached, lines, branches_taken, branches) in sorted(folders.items()):
        print(f"| `{folder}` | {lines} | {share(lines_reached, lines)} | {branches} | {share(branches_taken, branches)} |")


def share(part, whole):
    return f"{100 * part / whole:.1f} %" if whole else "-"


if __name__ == "__main__":
    main()
