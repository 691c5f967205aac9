#!/usr/bin/env python3
"""Runs whole-file tests: run.py DIRECTORY [NAME…]. The last line says "N passed, N failed"."""

import argparse
import os
import subprocess
import sys
import unittest
from pathlib import Path


WINE_SERVER = "/usr/lib/wine/wineserver64"


def keep_wine_server():
    """One server for many short programs: it leaves by itself a minute after the last one."""
    from whole_files.wine_process import wine_environment

    if os.path.exists(WINE_SERVER):
        subprocess.run([WINE_SERVER, "-p60"], env=wine_environment(), check=False, stderr=subprocess.DEVNULL)


def main():
    sys.dont_write_bytecode = True
    sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
    keep_wine_server()
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
    print(f"{result.testsRun - failed} passed, {failed} failed")
    return 1 if failed or result.testsRun == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
