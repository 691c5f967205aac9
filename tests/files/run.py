#!/usr/bin/env python3
"""Runs the whole-file tests: run.py [NAME…]. The last line says "N passed, N failed"."""

import os
import subprocess
import sys
import unittest
from pathlib import Path


WINE_SERVER = "/usr/lib/wine/wineserver64"


def keep_wine_server():
    """One server for many short programs: it leaves by itself a minute after the last one."""
    from wine_process import wine_environment

    if os.path.exists(WINE_SERVER):
        subprocess.run([WINE_SERVER, "-p60"], env=wine_environment(), check=False, stderr=subprocess.DEVNULL)


def main():
    sys.dont_write_bytecode = True
    here = Path(__file__).resolve().parent
    sys.path.insert(0, str(here))
    keep_wine_server()
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
