"""What ./dev test makes of programs that crash, say nothing or have no test of that name; each is a script here."""

import os
import subprocess
from pathlib import Path

from whole_files.mkvmux_case import MkvmuxCase

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "test.sh"
SETUP = """
say() { printf '%s\\n' "$*"; }
die() { say "$*"; exit 2; }
for name in need_packages build_windows need_wine_prefix; do eval "$name() { :; }"; done
. "$SCRIPT"
verb_test made_up
"""


class Runner(MkvmuxCase):
    def run_suite(self, said, status=0, **variables):
        """A suite whose program says that and ends so."""
        binaries = self.directory / "windows" / "bin"
        binaries.mkdir(parents=True, exist_ok=True)
        (binaries / "test_made_up.exe").touch()
        program = self.directory / "program"
        program.write_text(f"#!/bin/sh\ncat <<'END'\n{said}\nEND\nexit {status}\n")
        program.chmod(0o755)
        environment = {name: value for name, value in os.environ.items() if name != "GTEST_FILTER"}
        environment.update(BUILD=str(self.directory), ROOT=str(SCRIPT.parents[1]), WINE=str(program),
                           SCRIPT=str(SCRIPT), PACKAGES_BUILD="", PACKAGES_JUDGES="", **variables)
        done = subprocess.run(["bash", "-uc", SETUP], env=environment, capture_output=True, text=True, check=False)
        self.assertEqual(done.stderr, "")
        return done.returncode, done.stdout

    def test_all_pass(self):
        status, text = self.run_suite("[ RUN      ] A.B\n[       OK ] A.B\n[  PASSED  ] 3 tests.")
        self.assertEqual((status, text.splitlines()[-1]), (0, "3 passed, 0 failed"))

    def test_a_filter_that_nothing_matches_fails(self):
        status, text = self.run_suite("[  PASSED  ] 0 tests.", GTEST_FILTER="Misspelt.*")
        self.assertEqual(status, 1, text)
        self.assertIn("no test ran: none has a name like GTEST_FILTER=Misspelt.*", text)

    def test_a_program_without_a_test_fails(self):
        status, text = self.run_suite("[  PASSED  ] 0 tests.")
        self.assertEqual((status, text.splitlines()[-1]), (1, "0 passed, 1 failed"))

    def test_a_crash_is_told_with_its_test_and_place(self):
        status, text = self.run_suite(
            "[ RUN      ] A.B\n[       OK ] A.B (0 ms)\n[ RUN      ] A.Crashes\n"
            "crash: exception 0xc0000005, writing address 0x0\ncrash: in other.dll+0x10 (0x10)", 5)
        self.assertEqual(status, 1, text)
        for line in ("error: it ended during A.Crashes", "crash: exception 0xc0000005, writing address 0x0",
                     "crash: in other.dll+0x10 (0x10)"):
            self.assertIn(line, text.splitlines())

    def test_a_program_that_says_nothing_fails(self):
        status, text = self.run_suite("", 1)
        self.assertEqual((status, text.splitlines()[-1]), (1, "0 passed, 1 failed"))
