"""Installed into an empty prefix and taken away again: by the installer, and by the two command files of the zip."""

import shutil
import time
import unittest

from package_case import (PackageCase, empty_prefix, files_of_prefix, registry, the_file, unpacked, wine, windows_path)
from whole_files.wine_process import WAIT_SECONDS

INSTALLED = "C:\\Program Files\\Quorlex Matroska Muxer"
FILTER = "BDCE2C3A-4B83-480E-9B5F-8E96F0A9D3C1"
OURS = ("quorlex", "qrx_mkv", FILTER.lower(), "mkv muxer")


def ours(text):
    """Lines that speak of us."""
    return [line for line in text.splitlines() if any(word in line.lower() for word in OURS)]


class InstalledCase(PackageCase):
    def assert_nothing_is_left(self, files):
        self.assertEqual(ours(registry()), [])
        self.assertEqual(files_of_prefix() - files, set())


class Installer(InstalledCase):
    def install(self, *options):
        ended = wine(the_file("*-setup.exe"), "/S", *options)
        self.assertEqual(ended.status, 0, ended)

    def uninstall(self):
        """It works on in a copy of itself when it has ended, so that it can remove itself: the folder goes last but for
        the entry among the installed programs."""
        ended = wine(f"{INSTALLED}\\uninstall.exe", "/S")
        self.assertEqual(ended.status, 0, ended)
        folder = empty_prefix() / "drive_c" / "Program Files" / "Quorlex Matroska Muxer"
        deadline = time.monotonic() + WAIT_SECONDS
        while folder.exists() or "CurrentVersion\\Uninstall\\Quorlex" in registry():
            self.assertLess(time.monotonic(), deadline, f"it stays: {[str(path) for path in folder.rglob('*')]}")
            time.sleep(0.5)

    def test_install_record_upgrade_uninstall(self):
        empty_prefix()
        before = files_of_prefix()
        self.assertEqual(ours(registry()), [])
        self.install("/PATH")
        text = registry()
        self.assertIn(FILTER, text.upper())
        self.assertIn("Program Files\\\\Quorlex Matroska Muxer\\\\bin\\\\QRX_MKVMuxer.ax", text)
        self.assertEqual(self.path().count("Quorlex Matroska Muxer\\bin"), 1)
        installed = files_of_prefix()
        self.record(f"{INSTALLED}\\bin\\mkvmux.exe", self.folder / "first.mkv")
        self.install()
        self.assertEqual(files_of_prefix(), installed)
        self.assertEqual(self.path().count("Quorlex Matroska Muxer\\bin"), 1)
        self.record(f"{INSTALLED}\\bin\\mkvmux.exe", self.folder / "second.mkv")
        self.uninstall()
        self.assert_nothing_is_left(before)

    def path(self):
        ended = wine("reg", "query", "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment", "/v", "PATH")
        return ended.output


class CommandFiles(InstalledCase):
    def test_register_record_unregister(self):
        folder = self.folder / "a folder"
        shutil.copytree(unpacked() / "bin", folder / "bin")
        for name in ("register.cmd", "unregister.cmd"):
            shutil.copy(unpacked() / name, folder / name)
        empty_prefix()
        before = files_of_prefix()
        registered = wine("cmd", "/c", windows_path(folder / "register.cmd"))
        self.assertEqual((registered.status, registered.output.strip()), (0, "QRX_MKVMuxer.ax is registered."), registered)
        self.assertIn(FILTER, registry().upper())
        self.record(folder / "bin" / "mkvmux.exe", self.folder / "out.mkv")
        undone = wine("cmd", "/c", windows_path(folder / "unregister.cmd"))
        self.assertEqual((undone.status, undone.output.strip()), (0, "QRX_MKVMuxer.ax is no longer registered."), undone)
        self.assert_nothing_is_left(before)

    def test_a_module_that_is_missing_is_told(self):
        for name in ("register.cmd", "unregister.cmd"):
            shutil.copy(unpacked() / name, self.folder / name)
            ended = wine("cmd", "/c", windows_path(self.folder / name))
            self.assertEqual(ended.status, 1, ended)
            self.assertEqual(len(ended.error_lines), 1, ended)


if __name__ == "__main__":
    unittest.main()
