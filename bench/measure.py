#!/usr/bin/env python3
"""Measures the muxer beside others, judges, prints, and keeps what it found. Run by ./dev bench.

measure.py --folder FOLDER [--quick] --parts native|wine… --rows [ROW…]

Always: build/bench_report.json. After a full run of everything: docs/performance.json, docs/images/performance.svg and
the tables in docs/performance.md.
"""

import argparse
import json
import os
import platform
import subprocess
import sys
import time
from pathlib import Path

import tables
import whole_jobs

ROOT = Path(__file__).resolve().parent.parent
NATIVE = ROOT / "build" / "bench" / "bin" / "bench_native"
KEPT = ROOT / "build" / "bench_report.json"
DOCUMENT = ROOT / "docs" / "performance.md"
NATIVE_ROWS = ["film", "small", "inputs", "sizes", "startcodes", "lengths", "memory", "filters", "live", "queue"]
QUICK_JOBS = ["job film", "job opus"]
BEGIN = "<!-- measured: ./dev bench writes what stands between these lines -->\n"
END = "<!-- end of what ./dev bench writes -->\n"


def say(text):
    print(text, file=sys.stderr, flush=True)


def measure_native(row, folder, quick):
    """A process for each row: what one leaves in memory does not count for the next."""
    result = Path(folder) / "row.json"
    subprocess.run([str(NATIVE), str(result), folder, *(["--quick"] if quick else []), row], check=True)
    for file in Path(folder).glob("*.mkv"):
        file.unlink()
    return json.loads(result.read_text(encoding="utf-8"))


def keep(report):
    KEPT.write_text(json.dumps(report, indent=1) + "\n", encoding="utf-8")


def measure_all(arguments):
    report, failed = {}, []
    wanted = set(arguments.rows)
    for row in NATIVE_ROWS if "native" in arguments.parts else []:
        if not wanted or row in wanted:
            try:
                report |= measure_native(row, arguments.folder, arguments.quick)
                keep(report)
            except (subprocess.CalledProcessError, OSError) as failure:
                failed.append(f"{row}: {failure}")
    for name in whole_jobs.JOBS if "wine" in arguments.parts else []:
        if name.split()[1] in wanted if wanted else not arguments.quick or name in QUICK_JOBS:
            try:
                start = time.monotonic()
                report[name] = whole_jobs.measure_job(name, arguments.folder, 3 if arguments.quick else 5)
                keep(report)
                say(f"measured {name} in {time.monotonic() - start:.1f} s")
            except (subprocess.SubprocessError, RuntimeError, OSError) as failure:
                failed.append(f"{name}: {failure}")
    return report, failed


def add_shares(report):
    """Shares of a core, of runs that keep to the clock."""
    for series in report.get("live", {}).get("runs", {}).values():
        series["share"] = [cpu / wall for cpu, wall in zip(series["cpu"], series["wall"])]


def machine():
    model = next((line.split(":", 1)[1].strip() for line in Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
                  if line.startswith("model name")), platform.machine())
    return f"{os.cpu_count()} processors ({model})"


def document_tables(report):
    return (f"Measured on {time.strftime('%Y-%m-%d')} on {machine()}.\n\n{tables.as_markdown(tables.figure_rows(report))}\n"
            f"{tables.as_markdown(tables.time_rows(report))}\n{tables.as_markdown(tables.other_rows(report))}")


def write_document(report):
    import plot  # needs a package that the rest does without
    text = DOCUMENT.read_text(encoding="utf-8")
    before, rest = text.split(BEGIN)
    after = rest.split(END)[1]
    DOCUMENT.write_text(f"{before}{BEGIN}\n{document_tables(report)}\n{END}{after}", encoding="utf-8")
    DOCUMENT.with_suffix(".json").write_text(json.dumps(report, indent=1) + "\n", encoding="utf-8")
    plot.draw(report, ROOT / "docs" / "images" / "performance.svg")


def print_report(report):
    for rows in (tables.time_rows(report), tables.other_rows(report), tables.figure_rows(report)):
        print(tables.as_text(rows) if len(rows) > 1 else "", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--folder", required=True)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--parts", nargs="+", choices=["native", "wine"], default=["native", "wine"])
    parser.add_argument("--rows", nargs="*", default=[])
    arguments = parser.parse_args()
    known = set(NATIVE_ROWS) | {name.split()[1] for name in whole_jobs.JOBS}
    if unknown := set(arguments.rows) - known:
        parser.error(f"no such row: {', '.join(sorted(unknown))}; these are: {' '.join(sorted(known))}")
    report, failed = measure_all(arguments)
    add_shares(report)
    keep(report)
    print_report(report)
    for failure in failed:
        say(f"not measured: {failure}")
    if not failed and not arguments.quick and not arguments.rows and len(arguments.parts) == 2:
        write_document(report)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
