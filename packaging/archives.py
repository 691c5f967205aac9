"""Archives that are the same to the byte for the same files, and lists of checksums."""

import hashlib
import time
import zipfile
from pathlib import Path

UNIX = 3
EXECUTABLE = (".sh",)


def files_below(folder):
    """Relative paths with slashes, in the same order everywhere."""
    return sorted(path.relative_to(folder).as_posix() for path in Path(folder).rglob("*") if path.is_file())


def write_zip(output, folder, top, epoch):
    """All files of the folder, below the folder name top, with the date epoch (seconds since 1970, UTC)."""
    with zipfile.ZipFile(output, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in files_below(folder):
            entry = zipfile.ZipInfo(f"{top}/{name}", time.gmtime(epoch)[:6])
            entry.create_system = UNIX
            entry.external_attr = (0o100755 if name.endswith(EXECUTABLE) else 0o100644) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, (Path(folder) / name).read_bytes())


def sha256(path):
    return hashlib.sha256(Path(path).read_bytes()).hexdigest()


def write_checksums(folder, name="SHA256SUMS"):
    """As sha256sum -c reads them."""
    lines = [f"{sha256(Path(folder) / file)}  {file}\n" for file in files_below(folder) if file != name]
    (Path(folder) / name).write_text("".join(lines), encoding="utf-8")
