"""What people build with the package outside of this tree: the examples, and programs with changed libraries."""

import re
import shutil
import unittest

from package_case import ROOT, PackageCase, run, unpacked, wine, windows_path

TOOLCHAIN = ROOT / "cmake" / "mingw-w64.cmake"


class Examples(PackageCase):
    def test_the_example_is_built_with_find_package_and_runs(self):
        run("cmake", "-G", "Ninja", "-S", unpacked() / "examples", "-B", self.folder / "build",
            f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}", "-DCMAKE_BUILD_TYPE=Release")
        run("cmake", "--build", self.folder / "build")
        (self.folder / "cover.jpg").write_bytes(b"not really a picture")
        run("ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "sine=duration=1", self.folder / "in.wav")
        ended = wine(self.folder / "build" / "mux_wave.exe", windows_path(unpacked() / "bin" / "QRX_MKVMuxer.ax"),
                     *(windows_path(self.folder / name) for name in ("in.wav", "out.mkv", "cover.jpg")))
        # As far as it comes where the system's file writer has no IStream: module, settings and input are behind it.
        self.assertEqual(ended.status, 2, ended)
        self.assertIn("the output cannot be connected", ended.errors)

    def test_another_major_version_is_refused(self):
        (self.folder / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.20)\nproject(other LANGUAGES CXX)\nfind_package(QuorlexMatroskaMuxer 2.0 "
            f"REQUIRED CONFIG HINTS \"{unpacked()}/lib/cmake/QuorlexMatroskaMuxer\" NO_CMAKE_FIND_ROOT_PATH)\n",
            encoding="utf-8")
        with self.assertRaisesRegex(AssertionError, "compatible with requested version \"2.0\""):
            run("cmake", "-G", "Ninja", "-S", self.folder, "-B", self.folder / "build",
                f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}")


class Relinking(PackageCase):
    def setUp(self):
        super().setUp()
        self.relink = self.folder / "relink"
        shutil.copytree(unpacked() / "relink", self.relink)

    def documented_commands(self):
        text = (self.relink / "README.md").read_text(encoding="utf-8")
        return re.findall(r"^    (sh \S+)$", text, re.M)

    def test_with_a_rebuilt_library_by_the_documented_commands(self):
        commands = self.documented_commands()
        self.assertEqual(len(commands), 2)
        run("sh", "-c", commands[0], cwd=self.relink)
        # A change of the user's own, which the file tells: the library's version.
        sources = next((self.relink / "sources").glob("libebml-*")) / "src" / "EbmlVersion.cpp"
        text = sources.read_text(encoding="utf-8")
        changed, count = re.subn(r'(EbmlCodeVersion\s*=\s*)"[^"]*"', r'\1"9.8.7"', text)
        self.assertEqual(count, 1)
        sources.write_text(changed, encoding="utf-8")
        for command in commands:
            run("sh", "-c", command, cwd=self.relink)
        output = self.folder / "out.mkv"
        self.record(self.relink / "relinked" / "mkvmux.exe", output, "--no-register")
        self.assertIn(b"libebml v9.8.7", output.read_bytes())

    def test_with_the_libraries_as_shipped_the_same_file_comes_out(self):
        run("sh", self.relink / "relink.sh")
        ours, theirs = self.folder / "ours.mkv", self.folder / "theirs.mkv"
        self.record(unpacked() / "bin" / "mkvmux.exe", ours, "--no-register", "--deterministic", "1")
        self.record(self.relink / "relinked" / "mkvmux.exe", theirs, "--no-register", "--deterministic", "1")
        self.assertEqual(ours.read_bytes(), theirs.read_bytes())


if __name__ == "__main__":
    unittest.main()
