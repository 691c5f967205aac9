"""What the headers of the module and of the tool promise the system, and what they import from it.

tests/files/imports lists for each of them all that it may import: what is new must be put there on purpose, with
QRX_REWRITE_GOLDEN=1 and the difference read. A library that is not there must besides be one that every program has mapped
already, or one that lies in the system's folder and is loaded by its full path.
"""

import os
import struct
import unittest
from pathlib import Path

from whole_files.mkvmux_case import BIN
from whole_files.pe_file import (DIRECTORY_BOUND_IMPORT, DIRECTORY_DELAY_IMPORT, DIRECTORY_IMPORT, DIRECTORY_RELOCATION,
                                 DLL_DYNAMIC_BASE, DLL_HIGH_ENTROPY, DLL_NX_COMPATIBLE, FILE_RELOCATIONS_STRIPPED,
                                 IMPORT_BY_ORDINAL, SECTION_EXECUTABLE, SECTION_WRITABLE, PeFile, weaknesses)

PROGRAMS = ("QRX_MKVMuxer.ax", "mkvmux.exe")
LISTS = Path(__file__).resolve().parent / "imports"
REWRITE = os.environ.get("QRX_REWRITE_GOLDEN") == "1"


def listed(name):
    """Library and function on each line."""
    return set((LISTS / f"{name}.txt").read_text(encoding="ascii").splitlines())


def imported(data):
    return {f"{library.lower()} {function}" for library, functions in PeFile(data).imports().items()
            for function in functions}


class Hardening(unittest.TestCase):
    def setUp(self):
        self.data = {name: (BIN / name).read_bytes() for name in PROGRAMS}

    def test_nothing_is_missing(self):
        for name, data in self.data.items():
            with self.subTest(name):
                self.assertEqual(list(weaknesses(data)), [])

    def test_nothing_is_imported_that_is_not_listed(self):
        for name, data in self.data.items():
            with self.subTest(name):
                if REWRITE:
                    (LISTS / f"{name}.txt").write_text("".join(f"{line}\n" for line in sorted(imported(data))), "ascii")
                self.assertGreater(len(imported(data)), 100)
                self.assertEqual(sorted(imported(data) - listed(name)), [])

    def test_no_library_is_listed_that_is_not_imported(self):
        for name, data in self.data.items():
            with self.subTest(name):
                self.assertEqual({line.split()[0] for line in listed(name)}, {line.split()[0] for line in imported(data)})


class WhatIsMissingIsSeen(unittest.TestCase):
    """The same headers with one thing dropped at a time: the checks above can fail."""

    def setUp(self):
        self.data = bytearray((BIN / "mkvmux.exe").read_bytes())
        self.pe = PeFile(self.data)

    def change(self, place, kind, function):
        struct.pack_into("<" + kind, self.data, place, function(self.pe.number(place, kind)))
        return list(weaknesses(self.data))

    def test_each_promise_to_the_loader(self):
        for bit, line in ((DLL_DYNAMIC_BASE, "its address is not random"),
                          (DLL_HIGH_ENTROPY, "its address has few random bits"),
                          (DLL_NX_COMPATIBLE, "its data may be executed")):
            self.assertEqual(self.change(self.pe.dll_characteristics_at, "H", lambda value, bit=bit: value ^ bit), [line])
            self.assertEqual(self.change(self.pe.dll_characteristics_at, "H", lambda value, bit=bit: value ^ bit), [])

    def test_an_address_below_4_gib(self):
        self.assertEqual(self.change(self.pe.image_base_at, "Q", lambda _: 0x400000), ["it lies below 4 GiB"])

    def test_relocations_that_were_stripped(self):
        self.assertEqual(self.change(self.pe.characteristics_at, "H", lambda value: value | FILE_RELOCATIONS_STRIPPED),
                         ["it cannot be moved"])

    def test_an_empty_table_of_relocations(self):
        self.assertEqual(self.change(self.pe.directory_at(DIRECTORY_RELOCATION) + 4, "I", lambda _: 0),
                         ["it cannot be moved"])

    def test_a_section_that_is_writable_and_executable(self):
        code = next(header for header in self.pe.section_headers() if self.pe.number(header + 36, "I") & SECTION_EXECUTABLE)
        self.assertEqual(self.change(code + 36, "I", lambda flags: flags | SECTION_WRITABLE),
                         [".text is writable and executable"])

    def test_bound_and_delayed_imports(self):
        self.assertEqual(self.change(self.pe.directory_at(DIRECTORY_BOUND_IMPORT) + 4, "I", lambda _: 1),
                         ["it has bound imports"])
        self.assertEqual(self.change(self.pe.directory_at(DIRECTORY_DELAY_IMPORT), "I", lambda _: 1),
                         ["it has bound imports", "it has delayed imports"])

    def test_a_function_that_is_imported_by_number(self):
        first = self.pe.place(self.pe.number(self.pe.place(self.pe.directory(DIRECTORY_IMPORT)[0]), "I"))
        self.assertEqual(self.change(first, "Q", lambda _: IMPORT_BY_ORDINAL | 7), ["of KERNEL32.dll it imports numbers"])

    def test_a_function_that_is_not_listed(self):
        place = bytes(self.data).index(b"GetLastError\0")
        self.data[place:place + 12] = b"GetSomething"
        self.assertEqual(imported(self.data) - listed("mkvmux.exe"), {"kernel32.dll GetSomething"})


if __name__ == "__main__":
    unittest.main()
