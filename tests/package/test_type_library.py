"""The type library against the public header: what the system reads in the one, what a compiler says of the other."""

import functools
import re
import shutil
import sys
import tempfile
import time
import unittest
from pathlib import Path

import public_header
from public_header import HEADER, ROOT, run_windows_program

sys.path.insert(0, str(ROOT / "packaging"))
from type_library import IDL, make_type_library  # noqa: E402

# A header's type, as the dump writes that of a field or a parameter.
VARIANT_TYPES = {"BYTE": "17", "INT32": "22", "UINT32": "23", "LONG": "3", "INT64": "20", "LONGLONG": "20", "UINT64": "21",
                 "double": "5", "BSTR": "8", "char*": "16*", "BYTE*": "17*", "GUID*": "GUID*", "VARIANT*": "12*",
                 "IUnknown*": "13", "IUnknown**": "13*", "LONG*": "3*", "GUID**": "GUID**", "HKEY": "24*"}
# What the type library has of the system's own, for IModuleConfig's base.
OF_THE_SYSTEM = {"IPersist", "IPersistStream", "ISequentialStream", "IStream", "GUID", "_LARGE_INTEGER", "_ULARGE_INTEGER",
                 "tagSTATSTG", "_FILETIME"}


@functools.lru_cache(maxsize=None)
def original_header_facts():
    return header_facts_of(HEADER)


def header_facts(header=HEADER):
    """{what: value} of the header, in the words of type_library_facts; a compiler is asked once for the original."""
    return dict(original_header_facts()) if header == HEADER else header_facts_of(header)


def header_facts_of(header):
    text = public_header.without_comments(Path(header).read_text(encoding="utf-8"))
    measured = public_header.measured(header)
    facts = {}
    for name in public_header.identifiers(text):
        kind, _, short = name.partition("_")
        facts[f"{kind} {short}"] = measured[f"identifier {name}"][0]
    for enumeration, names in public_header.enumerations(text).items():
        facts[f"enum {enumeration}"] = names
    for name in sum(public_header.enumerations(text).values(), []) + public_header.constants(text):
        facts[f"value {name}"] = int(measured[f"value {name}"][0])
    for record, fields in public_header.records(text).items():
        facts[f"record {record}"] = (int(measured[f"record {record}"][0]), [field.split("[")[0] for _, field in fields])
        for kind, field in fields:
            name, _, count = field.partition("[")
            facts[f"field {record}.{name}"] = (int(measured[f"field {record}.{name}"][0]),
                                               VARIANT_TYPES[kind] + ("[" + count if count else ""))
    for name, parameters in public_header.methods(text):
        facts[f"method {name}"] = (int(measured[f"method {name}"][0]), [VARIANT_TYPES[kind] for kind in parameters])
    return facts


def type_library_facts(lines):
    """The same of the dump."""
    facts, members, kind, owner = {}, [], "", ""
    for word, name, *rest in map(str.split, lines):
        if word == "value":
            members.append(name)
            facts[f"value {name}"] = int(rest[0])
        elif word == "field" and owner not in OF_THE_SYSTEM:
            members.append(name)
            facts[f"field {owner}.{name}"] = (int(rest[0]), rest[1])
        elif word == "method" and owner == "IModuleConfig":
            facts[f"method {name}"] = (int(rest[0]), rest[1:])
        elif word not in ("field", "method"):
            kind, owner, members = word, name, []
            if name in OF_THE_SYSTEM or "generated_name" in name:
                owner = "GUID"
            elif kind == "enum":
                facts[f"enum {name}"] = members
            elif kind == "record":
                facts[f"record {name}"] = (int(rest[0]), members)
            elif kind == "class":
                facts[f"CLSID {name}"] = rest[0]
            elif kind == "interface" and name.startswith("MKVMUX_"):
                facts[f"MKVMUX {name[7:]}"] = rest[0]
            elif kind == "interface":
                facts[f"IID {name}"] = rest[0]
            elif kind != "library":
                facts[f"{kind} {name}"] = rest
    return facts


class TypeLibraryCase(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="qrx_typelib_"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        cls.dumper = cls.folder / "dump.exe"
        public_header.compile_program(ROOT / "tests" / "package" / "dump_type_library.cpp", cls.dumper)

    def dump(self, idl=IDL):
        library = self.folder / "made.tlb"
        make_type_library(library, idl)
        return run_windows_program(self.dumper, "Z:" + str(library).replace("/", "\\"))

    def differences(self, header=HEADER, idl=IDL):
        """Names of what one has and the other has not, or has otherwise."""
        ours, theirs = header_facts(header), type_library_facts(self.dump(idl))
        # The numbers that are constants in the header and an enumeration's here.
        for name in ("MuxChapterTime", "MuxTagTrack", "MuxResult"):
            self.assertIn(f"enum {name}", theirs)
            del theirs[f"enum {name}"]
        return sorted(what for what in ours.keys() | theirs.keys() if ours.get(what) != theirs.get(what))


class TypeLibrary(TypeLibraryCase):
    def test_it_says_what_the_header_says(self):
        facts = header_facts()
        for kind, least in (("CLSID ", 3), ("MKVMUX ", 16), ("IID ", 1), ("record ", 8), ("field ", 70), ("value ", 21),
                            ("method ", 12)):
            self.assertGreaterEqual(sum(what.startswith(kind) for what in facts), least, kind)
        self.assertEqual(self.differences(), [])

    def test_the_interface_is_one_of_persistent_streams(self):
        lines = self.dump()
        self.assertTrue(any(re.fullmatch(r"interface IModuleConfig \S+ IPersistStream", line) for line in lines), lines)
        self.assertTrue(lines[0].startswith("library QuorlexMatroskaMuxer "), lines[0])

    def test_the_header_names_its_interface_for_uuidof(self):
        measured = public_header.measured()
        self.assertEqual(measured["identifier __uuidof(IModuleConfig)"], measured["identifier IID_IModuleConfig"])

    def test_it_is_the_same_to_the_byte_whenever_it_is_made(self):
        made = [self.folder / name for name in ("one.tlb", "two.tlb")]
        make_type_library(made[0])
        time.sleep(1.1)  # its compiler notes the second
        make_type_library(made[1])
        self.assertEqual(made[0].read_bytes(), made[1].read_bytes())


class DifferencesAreSeen(TypeLibraryCase):
    """One line of one of both changed at a time."""

    def changed(self, file, before, after):
        text = Path(file).read_text(encoding="utf-8")
        self.assertEqual(text.count(before), 1, before)
        changed = self.folder / Path(file).name
        changed.write_text(text.replace(before, after), encoding="utf-8")
        self.addCleanup(changed.unlink)
        return changed

    def assert_seen_in_header(self, before, after, *seen):
        self.assertEqual(self.differences(header=self.changed(HEADER, before, after)), list(seen))

    def assert_seen_in_idl(self, before, after, *seen):
        self.assertEqual(self.differences(idl=self.changed(IDL, before, after)), list(seen))

    def test_a_new_key(self):
        self.assert_seen_in_header("// {9C41D7B5", "DEFINE_GUID(MKVMUX_New, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11);\n// {9C41D7B5",
                                   "MKVMUX New")

    def test_another_identifier(self):
        self.assert_seen_in_idl("f2573ec4-0896-4ab3-bd54-3e129c68a7d1", "f2573ec4-0896-4ab3-bd54-3e129c68a7d2",
                                "MKVMUX InputCount")

    def test_a_wider_field(self):
        self.assert_seen_in_header("BYTE commentary;", "INT64 commentary;", "field MuxTrackFlags.commentary",
                                   "record MuxTrackFlags")

    def test_a_field_of_another_type(self):
        self.assert_seen_in_idl("UINT64 late;", "INT64 late;", "field MuxInputStatistics.late")

    def test_fields_that_change_places(self):
        self.assert_seen_in_idl("BYTE hidden;\n        BYTE disabled;", "BYTE disabled;\n        BYTE hidden;",
                                "field MuxChapter.disabled", "field MuxChapter.hidden", "record MuxChapter")

    def test_another_number(self):
        self.assert_seen_in_header("MuxTrackType_Audio = 2", "MuxTrackType_Audio = 3", "value MuxTrackType_Audio")
        self.assert_seen_in_idl("MuxEvent_OutputFailed = 0x8000 + 0x4D58", "MuxEvent_OutputFailed = 0x8000 + 0x4D57",
                                "value MuxEvent_OutputFailed")

    def test_a_number_that_is_missing(self):
        self.assert_seen_in_idl("MuxChapterTime_None = -1,", "", "value MuxChapterTime_None")

    def test_methods_that_change_places(self):
        self.assert_seen_in_idl("HRESULT CommitChanges();\n        HRESULT DeclineChanges();",
                                "HRESULT DeclineChanges();\n        HRESULT CommitChanges();",
                                "method CommitChanges", "method DeclineChanges")

    def test_another_parameter(self):
        self.assert_seen_in_idl("HRESULT Advise([in] IUnknown* sink);", "HRESULT Advise([in] BSTR sink);", "method Advise")


if __name__ == "__main__":
    unittest.main()
