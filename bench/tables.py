"""The tables of a report, as rows of text: what the program prints, and what docs/performance.md holds."""

from statistics import median

from figures import FIGURES

MICROSECONDS = 1e6


def figure_rows(report):
    rows = [["figure", "what", "measured", "[min..max]", "to reach", ""]]
    for figure in FIGURES:
        if (judged := figure.judged(report)) is not None:
            middle, least, most, reached = judged
            rows.append([figure.number, figure.text, f"{middle:.2f}{figure.unit}{figure.parts(report)}", f"[{least:.2f}..{most:.2f}]",
                         f"≤ {figure.limit:g}{figure.unit}", "met" if reached else "**missed**"])
    return rows


def spread(values, digits):
    return [f"{median(values):.{digits}f}", f"[{min(values):.{digits}f}..{max(values):.{digits}f}]"]


def time_rows(report):
    """Every run whose wall and processor time were taken."""
    rows = [["row", "run", "wall s", "[min..max]", "CPU s", "[min..max]", "wall µs/packet", "CPU µs/packet"]]
    for name, row in report.items():
        for run, series in row.get("runs", {}).items():
            if "wall" in series and "cpu" in series:
                packets = row.get("packets")
                each = [f"{median(series[what]) / packets * MICROSECONDS:.2f}" if packets else "" for what in ("wall", "cpu")]
                rows.append([name, run, *spread(series["wall"], 3), *spread(series["cpu"], 3), *each])
    return rows


def other_rows(report):
    """What else was counted."""
    rows = [["row", "run", "what", "median", "[min..max]"]]
    for name, row in report.items():
        for run, series in row.get("runs", {}).items():
            rows += [[name, run, what, *spread(values, 3 if max(values) < 100 else 0)]
                     for what, values in series.items() if what not in ("wall", "cpu")]
    return rows


def as_markdown(rows):
    head, *body = rows
    lines = [head, ["---"] * len(head), *body]
    return "".join(f"| {' | '.join(line)} |\n" for line in lines)


def as_text(rows):
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    lines = ("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in rows)
    return "".join(line.replace("**", "") + "\n" for line in lines)
