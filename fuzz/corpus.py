"""The corpora that are kept: fuzz/corpus/TARGET.zip, a few tens of kilobytes each.

corpus.py unpack DIRECTORY            into DIRECTORY/TARGET, as ./dev fuzz does on every run
corpus.py pack TARGET DIRECTORY       keeps the smallest inputs of what -merge=1 left there
"""

import sys
import zipfile
from pathlib import Path

KEPT = Path(__file__).resolve().parent / "corpus"
MOST_BYTES = 48 * 1024  # of a target, before they are packed
EPOCH = (1980, 1, 1, 0, 0, 0)  # the same inputs are the same file


def unpack(directory):
    for archive in sorted(KEPT.glob("*.zip")):
        target = directory / archive.stem
        target.mkdir(parents=True, exist_ok=True)
        with zipfile.ZipFile(archive) as kept:
            for name in kept.namelist():
                (target / Path(name).name).write_bytes(kept.read(name))


def pack(target, directory):
    inputs = sorted({path.read_bytes() for path in directory.iterdir()}, key=lambda content: (len(content), content))
    KEPT.mkdir(exist_ok=True)
    total = 0
    with zipfile.ZipFile(KEPT / f"{target}.zip", "w", zipfile.ZIP_DEFLATED) as kept:
        for number, content in enumerate(inputs):
            total += len(content)
            if total > MOST_BYTES:
                break
            kept.writestr(zipfile.ZipInfo(str(number), EPOCH), content, zipfile.ZIP_DEFLATED)


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "unpack":
        unpack(Path(sys.argv[2]))
    elif len(sys.argv) == 4 and sys.argv[1] == "pack":
        pack(sys.argv[2], Path(sys.argv[3]))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
