#!/usr/bin/env python3
"""Runs the whole-file tests: run.py [NAME…]. The last line says "N passed, N failed"."""

import sys
import unittest
from pathlib import Path


def main():
    here = Path(__file__).resolve().parent
    sys.path.insert(0, str(here))
    loader = unittest.TestLoader()
    names = sys.argv[1:]
    suite = loader.loadTestsFromNames(names) if names else loader.discover(str(here), "test_*.py")
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    failed_ids = {test.id().split(" (")[0] for test, _ in result.failures + result.errors}
    failed = len(failed_ids)
    print(f"{result.testsRun - failed} passed, {failed} failed")
    return 1 if failed or result.testsRun == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
