#!/usr/bin/env python3
"""Makes the type library of the public interface: type_library.py OUTPUT.tlb. Of the same sources it is the same to the
byte; widl and the headers that it reads come with Debian's packages (scripts/packages.sh)."""

import calendar
import os
import re
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
IDL = ROOT / "idl" / "qrx_mkvmuxer.idl"
WIDL = "x86_64-w64-mingw32-widl"
INTERFACES = "/usr/include/wine/wine/windows"  # oaidl.idl, objidl.idl
STANDARD_LIBRARIES = "/usr/lib/x86_64-linux-gnu/wine/x86_64-windows"  # stdole2.tlb


def make_type_library(output, idl=IDL):
    """Compiled under a fixed name in a folder of its own: widl makes names of types out of that of the file."""
    with tempfile.TemporaryDirectory(prefix="qrx_idl_") as folder:
        source = Path(folder) / IDL.name
        source.write_bytes(Path(idl).read_bytes())
        done = subprocess.run([WIDL, "--win64", "-t", f"-I{INTERFACES}", f"-L{STANDARD_LIBRARIES}", "-o",
                               str(Path(output).resolve()), source.name], cwd=folder, capture_output=True, text=True,
                              env={**os.environ, "TZ": "UTC"}, check=False)
    if done.returncode != 0 or done.stderr:
        raise RuntimeError(f"widl: {done.stderr.strip() or done.returncode}")
    Path(output).write_bytes(without_date(Path(output).read_bytes()))


def without_date(library):
    """widl notes when it ran, as a text and as a number behind it; both become those of the beginning of 1970."""
    note = re.search(rb"Created by WIDL version [\d.]+ at (.{24})", library)
    if not note:
        return library
    ran = calendar.timegm(time.strptime(note[1].decode("ascii")))
    library = library.replace(note[1], time.asctime(time.gmtime(0)).encode("ascii"))
    behind = library.find(b"\x13\0" + struct.pack("<I", ran), note.end())  # an unsigned number of 32 bits
    if behind < 0:
        raise RuntimeError("widl notes its date in another way than is known")
    return library[:behind + 2] + bytes(4) + library[behind + 6:]


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: type_library.py OUTPUT.tlb")
    try:
        make_type_library(sys.argv[1])
    except (OSError, RuntimeError) as error:
        sys.exit(f"type_library.py: {error}")
