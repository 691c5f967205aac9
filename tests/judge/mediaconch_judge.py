"""MediaConch: its checks of EBML and Matroska as implemented, on all files at once.

It waits more than it works, about half a second a file, so several run side by side. Its exit status says nothing;
the report does.
"""

import concurrent.futures
import os
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree

TOOL = "mediaconch"
NAMESPACE = "{https://mediaarea.net/mediaconch}"
MATROSKA_CHECKS = "MediaConch EBML Implementation Checker"
ONLY_FAILS = "4"  # its verbosity; from 5 on it lists what passes, too
FILES_A_CALL = 8
CALLS_AT_ONCE = 12
TIMEOUT_SECONDS = 1200


def batches(paths):
    return [paths[start:start + FILES_A_CALL] for start in range(0, len(paths), FILES_A_CALL)]


def run_mediaconch(paths):
    """The report; it remembers files it has seen in a database of the user, which is a fresh one each time."""
    with tempfile.TemporaryDirectory(prefix="qrx_mediaconch_") as home:
        environment = {**os.environ, "HOME": home, "XDG_DATA_HOME": home, "XDG_CONFIG_HOME": home}
        run = subprocess.run(
            ["mediaconch", "--Force", "-mc", "-iv", ONLY_FAILS, "-fx", *map(str, paths)], env=environment,
            capture_output=True, check=False, timeout=TIMEOUT_SECONDS)
    return run.stdout.decode("utf-8", "replace")


def describe(check, test):
    values = [value.get("context") or value.get("name") for value in test.iter(NAMESPACE + "value")]
    return f"{check.get('icid')} {test.get('outcome')} at {values[0] if values else '?'}: {test.get('reason') or ''}"


def complaints_of(media):
    checked = [checks for checks in media.findall(NAMESPACE + "implementationChecks")
               if checks.findtext(NAMESPACE + "name") == MATROSKA_CHECKS]
    if len(checked) != 1 or int(checked[0].get("pass_count")) == 0:
        return ["it checked nothing"]
    found = [describe(check, test) for check in checked[0].iter(NAMESPACE + "check")
             for test in check.findall(NAMESPACE + "test") if test.get("outcome") != "pass"]
    counted = sum(int(checked[0].get(kind)) for kind in ("fail_count", "warn_count"))
    return found if found or counted == 0 else [f"{counted} checks fail that it does not name"]


def read_report(text):
    """The complaints by file, as the file was named."""
    try:
        report = ElementTree.fromstring(text)
    except ElementTree.ParseError:
        return {}
    return {media.get("ref"): complaints_of(media) for media in report.iter(NAMESPACE + "media")}


class MediaConchJudge:
    def __init__(self, paths):
        self._reports = {}
        with concurrent.futures.ThreadPoolExecutor(CALLS_AT_ONCE) as pool:
            for text in pool.map(run_mediaconch, batches(paths)):
                self._reports.update(read_report(text))

    def judge(self, path, _layout, verdict):
        for complaint in self._reports.get(str(path), ["there is no report of this file"]):
            verdict.complain(TOOL, complaint)
