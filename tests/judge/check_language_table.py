#!/usr/bin/env python3
"""Compares the rows of records/language_rows.inc with ISO 639-2 as the package iso-codes has it.

Codes, two-letter codes and English names are compared language by language. Every difference is printed; one
without a reason below, or a reason that no longer applies, makes the exit status 1.
"""
import argparse
import ast
import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
ROWS = ROOT / "records" / "language_rows.inc"
WITNESS = pathlib.Path("/usr/share/iso-codes/json/iso_639-2.json")

# The table follows the list that the registration authority publishes sorted by English name; iso-codes follows
# its plain text file, in which some names are older, and takes in later codes.
NEW_CODE = "added after the edition that the table follows"
SPACING = "the authority writes no space after ca."
NEWER_NAME = "the authority's plain text file still has the older name"
EXPECTED = {
    ("code", "cnr"): f"{NEW_CODE} (2017)",
    ("code", "zgh"): f"{NEW_CODE} (2012)",
    ("names", "ang"): SPACING,
    ("names", "dum"): SPACING,
    ("names", "frm"): SPACING,
    ("names", "fro"): SPACING,
    ("names", "gmh"): SPACING,
    ("names", "goh"): SPACING,
    ("names", "peo"): SPACING,
    ("names", "bnt"): NEWER_NAME,
    ("names", "sai"): NEWER_NAME,
    ("names", "wal"): NEWER_NAME,
    ("names", "oci"): "Provençal is no longer a name of this language",
    ("names", "pro"): "Occitan, Old (to 1500) is a second name of this language",
    ("row", "Sotho, Northern"): "sorted in under a turned name besides the three names of its entry",
}


def unescape(literal):
    """The text of a C string literal of code page 1252."""
    return ast.literal_eval("b" + literal).decode("cp1252")


def read_rows(path):
    rows = []
    for number, line in enumerate(path.read_text(encoding="ascii").splitlines(), 1):
        if line.startswith("//"):
            continue
        literals = re.findall(r'"(?:[^"\\]|\\.)*"', line)
        if len(literals) != 5 or "{" + ", ".join(literals) + "}," != line:
            sys.exit(f"{path}:{number}: not a row: {line}")
        rows.append([unescape(literal) for literal in literals])
    return rows


def languages_of_table(rows):
    """By terminology code: (bibliographic code, two-letter code, joined English names)."""
    singles = {}
    for name, joined, _, code, two in rows:
        bibliographic, _, terminology = code.rpartition("/")
        singles.setdefault(terminology, (bibliographic or terminology, two, joined))
    # French and German have a row for each of their codes instead of a pair.
    for bibliographic, terminology in (("fre", "fra"), ("ger", "deu")):
        if bibliographic in singles and terminology in singles:
            _, two, joined = singles.pop(bibliographic)
            if singles[terminology][1:] == (two, joined):
                singles[terminology] = (bibliographic, two, joined)
    return singles


def languages_of_witness(path):
    entries = json.loads(path.read_text(encoding="utf-8"))["639-2"]
    return {
        entry["alpha_3"]: (entry.get("bibliographic", entry["alpha_3"]), entry.get("alpha_2", ""), entry["name"])
        for entry in entries
    }


def differences(rows, witness):
    table = languages_of_table(rows)
    for code in sorted(table.keys() ^ witness.keys()):
        yield ("code", code), "in the table alone" if code in table else "in iso-codes alone"
    for code in sorted(table.keys() & witness.keys()):
        for kind, ours, theirs in zip(("bibliographic code", "two-letter code", "names"), table[code], witness[code]):
            if ours != theirs:
                yield (kind, code), f"table: {ours!r}, iso-codes: {theirs!r}"
    listed = {(name, joined) for _, _, joined in table.values() for name in joined.split("; ")}
    present = {(row[0], row[1]) for row in rows}
    for name, joined in sorted(listed ^ present):
        yield ("row", name), f"a row that is no name of {joined!r}" if (name, joined) in present else "has no row"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--rows", type=pathlib.Path, default=ROWS)
    parser.add_argument("--iso-codes", type=pathlib.Path, default=WITNESS)
    arguments = parser.parse_args()
    if not arguments.iso_codes.exists():
        sys.exit(f"{arguments.iso_codes}: missing, install the package iso-codes")

    rows = read_rows(arguments.rows)
    unused = dict(EXPECTED)
    unexpected = 0
    for key, what in differences(rows, languages_of_witness(arguments.iso_codes)):
        reason = unused.pop(key, None)
        unexpected += reason is None
        print(f"{'expected' if reason else 'DIFFERS '} {key[0]} {key[1]}: {what}" + (f" ({reason})" if reason else ""))
    for kind, what in unused:
        print(f"DIFFERS  {kind} {what}: expected to differ, but does not")
    failures = unexpected + len(unused)
    print(f"{len(rows)} rows compared, {len(EXPECTED) - len(unused)} expected differences, {failures} others")
    print(f"{len(rows)} passed, {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
