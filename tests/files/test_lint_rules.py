"""./dev lint's own rules: what they hold, on small trees, and that this tree keeps them."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("include win log codecs dshow media records mux mkv matroska_muxer settings client ui module repair report "
           "sources/base sources/avi sources/matroska sources/annexb sources/av1 sources/text sources/chapters mkvmux "
           "examples").split()


class LintRules(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = Path(directory.name)
        for folder in FOLDERS:
            (self.root / folder).mkdir(parents=True)

    def write(self, name, text="#pragma once\n"):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def found(self, rules, root=None):
        run = subprocess.run([sys.executable, ROOT / "scripts" / rules, root or self.root], capture_output=True, text=True,
                             check=False)
        self.assertEqual(run.stderr, "")
        self.assertEqual(run.returncode, 1 if run.stdout else 0)
        return run.stdout.splitlines()

    def test_a_folder_includes_itself_and_those_below(self):
        for name in ("mux/a.h", "dshow/b.h", "include/published.h", "sources/base/c.h"):
            self.write(name)
        self.write("mux/a.cpp", '#include "mux/a.h"\n#include "dshow/b.h"\n#include <vector>\n')
        self.write("mkvmux/main.cpp", '#include <published.h>\n#include "sources/base/c.h"\n')
        self.assertEqual(self.found("lint_includes.py"), [])

    def test_an_include_upwards_or_sideways_is_wrong(self):
        for name in ("mkv/a.h", "mux/b.h", "sources/avi/c.h", "tests/d.h", "include/published.h"):
            self.write(name)
        self.write("mux/x.cpp", '\n#include "mkv/a.h"\n')
        self.write("media/y.h", '# include "mux/b.h"\n')
        self.write("sources/text/z.cpp", '#include "sources/avi/c.h"\n')
        self.write("win/t.h", '#include "tests/d.h"\n#include <published.h>\n')
        self.assertEqual(self.found("lint_includes.py"), [
            "win/t.h:1: tests/d.h: win may not use tests",
            "win/t.h:2: published.h: win may not use include",
            "media/y.h:1: mux/b.h: media may not use mux",
            "mux/x.cpp:2: mkv/a.h: mux may not use mkv",
            "sources/text/z.cpp:1: sources/avi/c.h: sources/text may not use sources/avi",
        ])

    def test_a_library_is_for_the_folders_that_are_named_with_it(self):
        self.write("mkv/a.cpp", "#include <matroska/KaxCluster.h>\n")
        self.write("media/b.cpp", "#include <matroska/KaxCluster.h>\n")
        self.write("codecs/c.h", "#include <windows.h>\n")
        self.assertEqual([line.split(": only")[0] for line in self.found("lint_includes.py")],
                         ["codecs/c.h:1: windows.h", "media/b.cpp:1: matroska/KaxCluster.h"])

    def test_a_folder_that_is_gone_is_told(self):
        (self.root / "codecs").rmdir()
        self.assertEqual(self.found("lint_includes.py"), ["codecs: is no folder"])

    def test_spellings(self):
        self.write("tests/x/a.cpp", "std::size_t n;\nstatic_cast<void>(n);\n    HRESULT result = S_OK;\n")
        self.write("tests/x/b.cpp", "size_t n;\n(void)n;\nHRESULT hr = S_OK;\nF(HRESULT* result);\n")
        self.assertEqual(self.found("lint_style.py"), [
            "tests/x/a.cpp:1: write size_t", "tests/x/a.cpp:2: write (void)", "tests/x/a.cpp:3: write HRESULT hr"])

    def test_prefixes(self):
        self.write("mux/a.h", "class Gate {\nclass CGate final : public CBase {\nclass IGate {\nclass Forward;\n")
        self.write("win/b.h", "class Handle {\n")
        self.assertEqual(self.found("lint_style.py"), ["mux/a.h:1: the class Gate has no prefix C"])

    def test_a_source_has_a_header(self):
        for name in ("mux/a.cpp", "mux/b.cpp", "mux/b.h", "mkvmux/main.cpp", "dshow/base_pin_connection.cpp"):
            self.write(name, "")
        self.assertEqual(self.found("lint_style.py"), ["mux/a.cpp:1: has no header of its own"])

    def test_what_searches_for_libraries_and_programs(self):
        load = "HMODULE h = LoadLibraryExW(path, nullptr, 0);\n"
        self.write("win/system_library.h", "")
        self.write("win/system_library.cpp", load)
        self.write("ui/a.h", load + 'CreateProcessW(name);\nstd::system("dir");\nGetModuleHandleW(0);\nFileSystem(); // system()\n')
        self.write("tests/x/b.cpp", load)
        self.assertEqual([line.split(";")[0] for line in self.found("lint_style.py")],
                         ["ui/a.h:1: LoadLibraryExW searches", "ui/a.h:2: CreateProcessW searches", "ui/a.h:3: system searches"])

    def test_this_tree_keeps_them(self):
        for rules in ("lint_includes.py", "lint_style.py"):
            self.assertEqual(self.found(rules, ROOT), [])


if __name__ == "__main__":
    unittest.main()
