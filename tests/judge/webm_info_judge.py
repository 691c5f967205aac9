"""webm_info: the parser of the library that browsers read WebM with, on each WebM file of the strict profile."""

import subprocess

TOOL = "webm_info"
EVERYTHING = ("-all", "-noframe_stats", "-novp9_level", "-noencrypted_info", "-nocodec_info")


def judge(path, layout, verdict):
    if not verdict.is_strict or layout.data["docType"] != "webm":
        return
    run = subprocess.run(["webm_info", *EVERYTHING, "-i", str(path)], capture_output=True, check=False)
    for line in run.stderr.decode("utf-8", "replace").splitlines():
        verdict.complain(TOOL, line)
    if run.returncode != 0:
        verdict.complain(TOOL, f"exit status {run.returncode}")
    seen = sum(line.strip().startswith("Block: ")
               for line in run.stdout.decode("utf-8", "replace").splitlines())
    verdict.compare(TOOL, "blocks", len(layout.blocks), seen)
