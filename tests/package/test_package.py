"""What is in the package: programs, header, documents, licences, the list of what is linked."""

import calendar
import hashlib
import html.parser
import json
import re
import unittest
import urllib.parse
import zipfile

from package_case import ROOT, TOOLS, PackageCase, made_package, run, temporary_folder, the_file, unpacked
from whole_files.pe_file import PeFile, weaknesses

PROGRAMS = ("QRX_MKVMuxer.ax", "mkvmux.exe")
OTHER_NAMES = {"libz.a": "zlib", "libpugixml.a": "pugixml"}
NEEDED = ("bin/QRX_MKVMuxer.ax", "bin/mkvmux.exe", "include/qrx_mkvmuxer.h", "idl/qrx_mkvmuxer.idl", "idl/qrx_mkvmuxer.tlb",
          "examples/CMakeLists.txt", "examples/mux_wave.cpp", "README.html", "LICENSE", "docs/mkvmux.html", "docs/parameters.html",
          "licences/LICENSE.txt", "licences/libebml.txt", "licences/libmatroska.txt", "licences/zlib.txt",
          "licences/CLI11.txt", "licences/nlohmann-json.txt", "licences/gcc-runtime.txt", "licences/GPL-3.txt",
          "licences/mingw-w64-runtime.txt", "register.cmd", "unregister.cmd", "SHA256SUMS", "sbom.spdx.json",
          "relink/README.md", "relink/relink.sh", "relink/rebuild-libraries.sh",
          "lib/cmake/QuorlexMatroskaMuxer/QuorlexMatroskaMuxerConfig.cmake")


def names():
    return {path.relative_to(unpacked()).as_posix() for path in unpacked().rglob("*") if path.is_file()}


def checksums(folder):
    lines = (folder / "SHA256SUMS").read_text(encoding="utf-8").splitlines()
    return dict(reversed(line.split("  ", 1)) for line in lines)


class Links(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.found = []
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        self.found += [value for name, value in attrs if name in ("href", "src") and value]


class Contents(PackageCase):
    def test_everything_is_there(self):
        self.assertEqual(set(NEEDED) - names(), set())

    def test_the_checksums_are_those_of_all_files(self):
        expected = {name: hashlib.sha256((unpacked() / name).read_bytes()).hexdigest() for name in names() - {"SHA256SUMS"}}
        self.assertEqual(checksums(unpacked()), expected)
        self.assertEqual(set(checksums(made_package())),
                         {path.name for path in made_package().iterdir()} - {"SHA256SUMS"})

    def test_entries_are_sorted_and_of_one_date(self):
        for pattern in ("*-win64.zip", "*-debug.zip"):
            with zipfile.ZipFile(the_file(pattern)) as archive:
                entries = archive.infolist()
            self.assertEqual([entry.filename for entry in entries], sorted(entry.filename for entry in entries))
            self.assertEqual(len({entry.date_time for entry in entries}), 1)
            self.assertEqual(len({entry.filename.split("/")[0] for entry in entries}), 1)

    def test_no_folder_of_the_build_is_named(self):
        for file in [unpacked() / "bin" / name for name in PROGRAMS] + [the_file("*-setup.exe")]:
            self.assertNotIn(str(ROOT).encode(), file.read_bytes(), file.name)
        for name in names():
            self.assertNotIn(str(ROOT).encode(), (unpacked() / name).read_bytes(), name)

    def test_the_programs_carry_the_date_of_the_package_and_are_hardened(self):
        with zipfile.ZipFile(the_file("*-win64.zip")) as archive:
            date = calendar.timegm((*archive.infolist()[0].date_time, 0, 0, 0))
        for name in PROGRAMS:
            data = (unpacked() / "bin" / name).read_bytes()
            header = int.from_bytes(data[0x3C:0x40], "little")
            told = int.from_bytes(data[header + 8:header + 12], "little")
            self.assertEqual(told - told % 2, date, "a zip has even seconds")
            self.assertEqual(list(weaknesses(data)), [])
            self.assertNotIn("libstdc++-6.dll", PeFile(data).imports())

    def test_links_of_the_documents_lead_to_files_of_the_package(self):
        broken, count = [], 0
        for name in sorted(names()):
            if name.endswith(".html"):
                for link in Links((unpacked() / name).read_text(encoding="utf-8")).found:
                    target = urllib.parse.urlparse(link)
                    if not target.scheme and target.path:
                        count += 1
                        if not (unpacked() / name).parent.joinpath(urllib.parse.unquote(target.path)).exists():
                            broken.append((name, link))
        self.assertGreater(count, 20)
        self.assertEqual(broken, [])


class Symbols(PackageCase):
    def test_an_address_of_the_program_leads_to_its_line(self):
        with zipfile.ZipFile(the_file("*-debug.zip")) as archive:
            folder = temporary_folder()
            archive.extractall(folder)
        for name in PROGRAMS:
            symbols = next(folder.rglob(name + ".debug"))
            program = unpacked() / "bin" / name
            self.assertIn(symbols.name.encode() + b"\0", program.read_bytes())  # the link to it
            table = run(TOOLS + "nm", symbols)
            address = re.search(r"^([0-9a-f]+) [Tt] .*CMatroskaMuxer|^([0-9a-f]+) [Tt] wmain", table, re.M)
            self.assertIsNotNone(address, name)
            place = run(TOOLS + "addr2line", "-e", symbols, address[1] or address[2])
            self.assertRegex(place, r"\./?[\w./]*\.(cpp|h):\d+")
            self.assertNotIn(str(ROOT), place)
            self.assertIn("no symbols", run(TOOLS + "nm", program))


class BillOfMaterials(PackageCase):
    def setUp(self):
        super().setUp()
        self.document = json.loads((unpacked() / "sbom.spdx.json").read_text(encoding="utf-8"))

    def test_it_has_what_the_format_asks_for(self):
        for field in ("spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo"):
            self.assertTrue(self.document[field], field)
        self.assertEqual((self.document["spdxVersion"], self.document["dataLicense"]), ("SPDX-2.3", "CC0-1.0"))
        self.assertRegex(self.document["creationInfo"]["created"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        for creator in self.document["creationInfo"]["creators"]:
            self.assertRegex(creator, "^(Tool|Organization|Person): ")
        identifiers = [entry["SPDXID"] for entry in self.document["packages"] + self.document["files"]]
        self.assertEqual(len(identifiers), len(set(identifiers)))
        for identifier in identifiers:
            self.assertRegex(identifier, r"^SPDXRef-[A-Za-z0-9.-]+$")
        for relation in self.document["relationships"]:
            self.assertIn(relation["spdxElementId"], [*identifiers, "SPDXRef-DOCUMENT"])
            self.assertIn(relation["relatedSpdxElement"], identifiers)
        for package in self.document["packages"]:
            self.assertTrue(package["name"] and package["versionInfo"] and package["downloadLocation"])

    def test_the_checksums_are_those_of_the_programs(self):
        for file in self.document["files"]:
            data = (unpacked() / file["fileName"]).read_bytes()
            for checksum in file["checksums"]:
                self.assertEqual(checksum["checksumValue"],
                                 hashlib.new(checksum["algorithm"].lower(), data).hexdigest(), file["fileName"])

    def test_what_is_linked_is_listed(self):
        """The libraries of the commands that link, and the headers of others that the tool includes."""
        words = (unpacked() / "relink" / "relink.sh").read_text(encoding="utf-8").split()
        own = {path.name for path in (ROOT / "build" / "package").rglob("*.a")}
        archives = {word.removeprefix("lib/") for word in words if word.endswith(".a")}
        foreign = {name for name in archives if not any(name.endswith("_" + library) for library in own)}
        linked = {OTHER_NAMES.get(name, name.removesuffix(".a")) for name in foreign}
        listed = {package["name"] for package in self.document["packages"]}
        self.assertLessEqual({"libebml", "libmatroska", "zlib"}, linked)
        self.assertLessEqual(linked | {"CLI11", "nlohmann-json", "gcc-runtime", "mingw-w64-runtime"}, listed)
        for name in listed - {"quorlex-matroska-muxer"}:
            self.assertTrue((unpacked() / "licences" / f"{name}.txt").read_text(encoding="utf-8", errors="replace"))


if __name__ == "__main__":
    unittest.main()
