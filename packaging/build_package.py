#!/usr/bin/env python3
"""Packs what ./dev package has built: build_package.py BUILD DEPENDENCIES OUTPUT. The same sources give the same bytes, in
whatever folder they lie. SOURCE_DATE_EPOCH is the date of everything."""

import argparse
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from archives import files_below, write_checksums, write_zip
from binaries import run, split_debug
from components import BOTH, add_licences, components, write_sbom
from documents import add_documents
from relink import add_relink_folder
from type_library import IDL, make_type_library

ROOT = Path(__file__).resolve().parents[1]
HERE = Path(__file__).resolve().parent


def project_version():
    """Three numbers of CMakeLists.txt, the one place of the version."""
    return re.search(r"VERSION (\d+\.\d+\.\d+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))[1]


def library_versions():
    """Of libebml and libmatroska, as ./dev builds them; libebml first."""
    text = (ROOT / "scripts" / "mkv_libraries.sh").read_text(encoding="utf-8")
    return {name: re.search(rf"^{name.upper()}_VERSION=(\S+)", text, re.M)[1] for name in ("libebml", "libmatroska")}


def add_development(folder, version):
    """Header, type library, what CMake looks for, examples."""
    for source, output in ((ROOT / "include", "include"), (ROOT / "examples", "examples")):
        shutil.copytree(source, folder / output)
    shutil.copyfile(HERE / "files" / "examples" / "CMakeLists.txt", folder / "examples" / "CMakeLists.txt")
    (folder / "idl").mkdir()
    shutil.copyfile(IDL, folder / "idl" / IDL.name)
    make_type_library(folder / "idl" / "qrx_mkvmuxer.tlb")
    cmake = folder / "lib" / "cmake" / "QuorlexMatroskaMuxer"
    cmake.mkdir(parents=True)
    config = HERE / "files" / "cmake" / "QuorlexMatroskaMuxerConfig.cmake"
    shutil.copyfile(config, cmake / config.name)
    text = (HERE / "files" / "cmake" / "QuorlexMatroskaMuxerConfigVersion.cmake.in").read_text(encoding="utf-8")
    text = text.replace("@VERSION@", version).replace("@MAJOR@", version.split(".", maxsplit=1)[0])
    (cmake / "QuorlexMatroskaMuxerConfigVersion.cmake").write_text(text, encoding="utf-8")


def add_programs(build, folder, debug_folder):
    (folder / "bin").mkdir(parents=True)
    debug_folder.mkdir()
    for name in BOTH:
        split_debug(build / "bin" / name, folder / "bin" / name, debug_folder)
    for name in ("register.cmd", "unregister.cmd"):
        shutil.copyfile(HERE / "files" / name, folder / name)


def make_installer(folder, output, version):
    """What is installed and what is removed again are the same list."""
    names = files_below(folder)
    folders = sorted({parent.as_posix() for name in names for parent in Path(name).parents} - {"."})
    install, remove = [], []
    for name in names:
        place = "\\".join(["$INSTDIR", *Path(name).parent.parts])
        install.append(f'SetOutPath "{place}"\nFile "{folder / name}"')
        remove.append(f'Delete /REBOOTOK "{place}\\{Path(name).name}"')
    for name in reversed(folders):
        remove.append('RMDir "$INSTDIR\\' + name.replace("/", "\\") + '"')
    lists = {"install.nsh": install, "remove.nsh": remove}
    for name, lines in lists.items():
        (output.parent / name).write_text("\n".join(lines) + "\n", encoding="utf-8")
    run("makensis", "-V2", "-NOCD", f"-DVERSION={version}", f"-DLISTS={output.parent}", f"-DOUTPUT={output}",
        HERE / "installer.nsi")
    for name in lists:
        (output.parent / name).unlink()


def build_package(build, dependencies, output):
    epoch = int(os.environ["SOURCE_DATE_EPOCH"])
    version, versions = project_version(), library_versions()
    shutil.rmtree(output, ignore_errors=True)
    output.mkdir(parents=True)
    top = f"quorlex-mkvmuxer-{version}"
    folder, debug_folder = output / top, output / f"{top}-debug"
    add_programs(build, folder, debug_folder)
    add_development(folder, version)
    add_documents(ROOT, folder)
    parts = components(dependencies, versions)
    add_licences(ROOT, parts, folder / "licences")
    write_sbom(folder / "sbom.spdx.json", parts, folder, version, epoch)
    make_installer(folder, output / f"{top}-setup.exe", version)
    add_relink_folder(ROOT, build, dependencies, folder / "relink", versions)
    write_checksums(folder)
    write_zip(output / f"{top}-win64.zip", folder, top, epoch)
    write_zip(output / f"{top}-debug.zip", debug_folder, f"{top}-debug", epoch)
    shutil.rmtree(folder)
    shutil.rmtree(debug_folder)
    write_checksums(output)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=lambda text: Path(text).resolve())
    parser.add_argument("dependencies", type=lambda text: Path(text).resolve())
    parser.add_argument("output", type=lambda text: Path(text).resolve())
    arguments = parser.parse_args()
    try:
        build_package(arguments.build, arguments.dependencies, arguments.output)
    except (OSError, RuntimeError, subprocess.SubprocessError) as error:
        sys.exit(f"build_package.py: {error}")


if __name__ == "__main__":
    main()
