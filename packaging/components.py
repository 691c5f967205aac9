"""What others wrote and is linked into module and tool: versions, licences, and the list of it (SPDX 2.3)."""

import hashlib
import json
import shutil
import time
import uuid
from dataclasses import dataclass
from pathlib import Path

from archives import sha256
from binaries import run

BOTH = ("QRX_MKVMuxer.ax", "mkvmux.exe")
TOOL = ("mkvmux.exe",)


@dataclass
class Component:
    name: str
    licence: str  # an SPDX expression
    programs: tuple  # that contain it
    text: str  # the file with its licence
    package: str = ""  # Debian's, whose version it has
    version: str = ""
    archive: str = ""  # how it shows in the command that links


def components(dependencies, versions):
    source = dependencies / "src"
    found = [Component(name, "LGPL-2.1-or-later", BOTH, str(source / f"{name}-{version}" / "LICENSE.LGPL"), "", version,
                       f"{name}.a") for name, version in versions.items()]
    found += [
        Component("zlib", "Zlib", TOOL, "/usr/share/doc/libz-mingw-w64-dev/copyright", "libz-mingw-w64-dev", "", "libz.a"),
        Component("CLI11", "BSD-3-Clause", TOOL, "/usr/share/doc/libcli11-dev/copyright", "libcli11-dev"),
        Component("nlohmann-json", "MIT", TOOL, "/usr/share/doc/nlohmann-json3-dev/copyright", "nlohmann-json3-dev"),
        Component("gcc-runtime", "GPL-3.0-or-later WITH GCC-exception-3.1", BOTH,
                  "/usr/share/doc/gcc-mingw-w64-base/copyright", "gcc-mingw-w64-x86-64-posix-runtime"),
        Component("mingw-w64-runtime", "ZPL-2.1 AND MIT AND BSD-3-Clause", BOTH,
                  "/usr/share/doc/mingw-w64-x86-64-dev/copyright", "mingw-w64-x86-64-dev"),
    ]
    found += [Component("pugixml", "MIT", TOOL, str(file), "", file.parent.name.split("-")[1], "libpugixml.a")
              for file in source.glob("pugixml-*/LICENSE.md")]
    for component in found:
        component.version = component.version or run("dpkg-query", "-W", "-f", "${Version}", component.package)
    return found


def add_licences(root, parts, destination):
    destination.mkdir(parents=True)
    shutil.copyfile(root / "LICENSE", destination / "LICENSE.txt")
    shutil.copyfile("/usr/share/common-licenses/GPL-3", destination / "GPL-3.txt")
    for part in parts:
        shutil.copyfile(part.text, destination / f"{part.name}.txt")


def package_entry(name, version, licence):
    return {"SPDXID": "SPDXRef-Package-" + name, "name": name, "versionInfo": version, "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False, "licenseConcluded": licence, "licenseDeclared": licence,
            "copyrightText": "NOASSERTION"}


def file_identifier(name):
    """The format has no underscores there."""
    return "SPDXRef-File-" + Path(name).name.replace("_", "-")


def file_entry(path, name):
    return {"SPDXID": file_identifier(name), "fileName": "./" + name, "fileTypes": ["BINARY"],
            "checksums": [{"algorithm": "SHA1", "checksumValue": hashlib.sha1(path.read_bytes()).hexdigest()},
                          {"algorithm": "SHA256", "checksumValue": sha256(path)}],
            "licenseConcluded": "NOASSERTION", "licenseInfoInFiles": ["NOASSERTION"], "copyrightText": "NOASSERTION"}


def relation(one, kind, other):
    return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}


def write_sbom(output, parts, folder, version, epoch):
    """Of the programs in folder/bin. The name of the document comes of what is in it."""
    ours = package_entry("quorlex-matroska-muxer", version, "MIT")
    files = [file_entry(folder / "bin" / name, "bin/" + name) for name in BOTH]
    relations = [relation("SPDXRef-DOCUMENT", "DESCRIBES", ours["SPDXID"])]
    for file in files:
        relations.append(relation(ours["SPDXID"], "CONTAINS", file["SPDXID"]))
    for part in parts:
        for program in part.programs:
            relations.append(relation(file_identifier(program), "STATIC_LINK", "SPDXRef-Package-" + part.name))
    document = {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"quorlex-matroska-muxer-{version}",
        "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(epoch)),
                         "creators": ["Tool: dev-package", "Organization: Quorlex Matroska Muxer team"]},
        "packages": [ours] + [package_entry(part.name, part.version, part.licence) for part in parts],
        "files": files, "relationships": relations,
    }
    name = uuid.uuid5(uuid.NAMESPACE_OID, json.dumps(document, sort_keys=True))
    document["documentNamespace"] = f"urn:uuid:{name}"
    output.write_text(json.dumps(document, indent=2) + "\n", encoding="utf-8")
