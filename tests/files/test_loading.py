"""Nothing that stands beside mkvmux is loaded in the place of a library of the system."""

import re
import shutil
import subprocess

from whole_files.mkvmux_case import BIN, MkvmuxCase, pcm_wave
from whole_files.wine_process import WineProcess, wine_environment

# What the system keeps mapped for all programs, on every version of it: these are never searched for.
KNOWN_TO_THE_SYSTEM = {
    "advapi32.dll", "comdlg32.dll", "gdi32.dll", "imm32.dll", "kernel32.dll", "msctf.dll", "msvcrt.dll", "normaliz.dll",
    "ole32.dll", "oleaut32.dll", "psapi.dll", "rpcrt4.dll", "sechost.dll", "setupapi.dll", "shell32.dll",
    "shlwapi.dll", "user32.dll", "wldap32.dll", "ws2_32.dll",
}
# What mkvmux, its module and the system's own filters load besides.
PLANTED = ("quartz", "comctl32", "devenum", "msdmo", "msvfw32", "oleacc", "uxtheme", "winmm")


def imported_libraries(program):
    done = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", program], capture_output=True, text=True, check=True)
    return {name.lower() for name in re.findall(r"DLL Name: (\S+)", done.stdout)}


class Loading(MkvmuxCase):
    def setUp(self):
        super().setUp()
        self.program = self.directory / "mkvmux.exe"
        for name in (self.program.name, "QRX_MKVMuxer.ax"):
            shutil.copy(BIN / name, self.directory)

    def plant(self, *names):
        for name in names:
            shutil.copy(BIN / "planted_dll.dll", self.directory / f"{name}.dll")

    def loaded(self):
        return sorted(mark.name for mark in self.directory.glob("*.loaded"))

    def run_with_planted(self, program, *arguments):
        """The host takes its own libraries before others, where it is not told otherwise: that would hide the fault."""
        overrides = wine_environment()["WINEDLLOVERRIDES"] + ";" + ",".join(PLANTED) + "=n,b"
        process = WineProcess(program, *arguments, environment={"WINEDLLOVERRIDES": overrides}, cwd=self.directory)
        self.addCleanup(process.end)
        return process.wait()

    def test_all_that_is_imported_is_known_to_the_system(self):
        imported = imported_libraries(BIN / "mkvmux.exe")
        self.assertIn("kernel32.dll", imported)
        self.assertEqual(imported - KNOWN_TO_THE_SYSTEM, set())

    def test_a_planted_library_leaves_a_mark_where_it_is_loaded(self):
        self.plant("some")
        self.run_with_planted("regsvr32", "/s", "some.dll")
        self.assertEqual(self.loaded(), ["some.dll.loaded"])

    def test_no_library_beside_the_program_takes_the_place_of_the_systems(self):
        self.plant(*PLANTED)
        output = self.directory / "out.mkv"
        run = self.run_with_planted(self.program, "--no-register", "-o", output, pcm_wave())
        self.assertEqual((self.loaded(), run.status, run.error_lines), ([], 0, []), run)
        self.assert_decodes(output)
