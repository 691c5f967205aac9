#!/usr/bin/env python3
"""Runs whole-file tests: run.py DIRECTORY [NAME…]. The last line says "N passed, N failed", and
how many were skipped, if any."""

import argparse
import sys
import unittest
from pathlib import Path


def main():
    sys.dont_write_bytecode = True
    sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
    loader = unittest.TestLoader()
    parser = argparse.ArgumentParser()
    parser.add_argument("directory", type=Path)
    parser.add_argument("names", nargs="*")
    arguments = parser.parse_args()
    directory = str(arguments.directory.resolve())
    sys.path.insert(0, directory)
    suite = (loader.loadTestsFromNames(arguments.names) if arguments.names
             else loader.discover(directory, "test_*.py"))
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    failed_ids = {test.id().split(" (")[0] for test, _ in result.failures + result.errors}
    failed = len(failed_ids)
    skipped = len(result.skipped)
    for test, reason in result.skipped:
        print(f"skipped: {test.id()}: {reason}")
    print(f"{result.testsRun - failed - skipped} passed, {failed} failed{f', {skipped} skipped' if skipped else ''}")
    return 1 if failed or result.testsRun == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
