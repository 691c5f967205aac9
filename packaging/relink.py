"""What it takes to link module and tool with other versions of libebml and libmatroska, which their licence asks for."""

import shlex
import shutil
import tarfile
from pathlib import Path

from binaries import copy_without_debug, run

FILES = Path(__file__).resolve().parent / "files" / "relink"
OBJECTS = (".obj", ".a", ".res")
PLACES = ("-ffile-prefix-map=", "-frandom-seed=", "-Wl,--out-implib,")
LEFT_OUT = ("-O2", "-g1", "-DNDEBUG", ":", "&&")


def link_command(build, target):
    """The words of the command that linked it."""
    return shlex.split(run("ninja", "-C", build, "-t", "commands", target).splitlines()[-1])


def library_name(root, path):
    """Of a file in lib/; objects of several folders have the same names."""
    if not path.is_relative_to(root) or path.is_relative_to(root / "build" / "deps"):
        return path.name
    folders = [part for part in path.relative_to(root).parts[2:-1] if part not in ("CMakeFiles", "__")]
    return "_".join([*folders, path.name])


def portable_words(root, build, words, destination):
    """The command for relink.sh; what it links is put below lib/."""
    portable, next_is_output = [], False
    for word in words:
        path = Path(build, word)  # the word itself where it is a whole path
        if next_is_output:
            portable.append("relinked/" + path.name)
        elif word.startswith(PLACES) or word in LEFT_OUT:
            continue
        elif word.endswith(OBJECTS) and path.is_file():
            name = library_name(root, path)
            copy_without_debug(path, destination / "lib" / name)
            portable.append("lib/" + name)
        elif word.endswith(".def"):
            shutil.copyfile(path, destination / "lib" / path.name)
            portable.append("lib/" + path.name)
        elif word.endswith("g++-posix"):
            portable.append(path.name)
        else:
            portable.append(word)
        next_is_output = word == "-o"
    return portable


def add_relink_folder(root, build, dependencies, destination, versions):
    (destination / "lib").mkdir(parents=True)
    commands = [shlex.join(portable_words(root, build, link_command(build, target), destination))
                for target in ("QRX_MKVMuxer", "mkvmux")]
    script = ["#!/bin/sh", "# Links module and tool with the libraries in lib/, into relinked/; see README.md.", "set -eu",
              'cd "$(dirname "$0")"', "mkdir -p relinked", *commands]
    (destination / "relink.sh").write_text("\n".join(script) + "\n", encoding="utf-8")
    text = (FILES / "rebuild-libraries.sh").read_text(encoding="utf-8")
    for name, version in versions.items():
        text = text.replace(f"@{name.removeprefix('lib').upper()}_VERSION@", version)
    (destination / "rebuild-libraries.sh").write_text(text, encoding="utf-8")
    shutil.copyfile(FILES / "README.md", destination / "README.md")
    shutil.copyfile(root / "cmake" / "mingw-w64.cmake", destination / "mingw-w64.cmake")
    for name, version in versions.items():
        source = dependencies / "src" / f"{name}_{version}.orig.tar.xz"
        shutil.copyfile(source, destination / source.name)
        add_patches(dependencies / "src", name, version, destination / "patches" / name)


def add_patches(folder, name, version, destination):
    """Those that were applied: Debian's."""
    for packaging in sorted(folder.glob(f"{name}_{version}-*.debian.tar.*")):
        with tarfile.open(packaging) as archive:
            for member in archive.getmembers():
                if member.isfile() and member.name.startswith("debian/patches/"):
                    destination.mkdir(parents=True, exist_ok=True)
                    (destination / Path(member.name).name).write_bytes(archive.extractfile(member).read())
