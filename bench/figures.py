"""The figures to reach, and whether a report reaches them: nothing here is typed after a measurement.

A report is a row's name with its runs, a run's with its series ("wall", "cpu", …); the nth numbers of all series of a
row are of one round, so a ratio is taken inside one round.
"""

from dataclasses import dataclass
from statistics import median

MIB = 1 << 20


@dataclass(frozen=True)
class Series:
    """One measured series: a run's of a row."""

    row: str
    run: str
    what: str

    def of(self, report):
        return report.get(self.row, {}).get("runs", {}).get(self.run, {}).get(self.what, [])


@dataclass(frozen=True)
class Figure:
    """What is to be reached: a series, its ratio to another one, or what is left of it without a part that is not ours, is
    at most so much."""

    number: str
    text: str
    ours: Series
    limit: float
    peer: Series | None = None
    without: Series | None = None
    factor: float = 1.0  # of the series, for the unit in which it is told
    unit: str = ""

    def values(self, report):
        ours = self.ours.of(report)
        if self.peer is not None:
            return [a / b for a, b in zip(ours, self.peer.of(report)) if b > 0]
        if self.without is not None:
            ours = [a - b for a, b in zip(ours, self.without.of(report))]
        return [value * self.factor for value in ours]

    def parts(self, report):
        """The two medians that a difference is taken of, as text."""
        if self.without is None:
            return ""
        whole, part = (median(series.of(report)) * self.factor for series in (self.ours, self.without))
        return f" ({whole:.2f} − {part:.2f})"

    def judged(self, report):
        """The median, the least and the most of all rounds, and whether it is reached; None if nothing was measured."""
        values = self.values(report)
        if not values:
            return None
        return median(values), min(values), max(values), median(values) <= self.limit


def ratio(number, text, row, what, ours, peer, limit):
    return Figure(number, text, Series(row, ours, what), limit, Series(row, peer, what))


def own_share(text, run):
    """Of the processor time of a graph that keeps to the clock, without what its sources' own sleeping costs."""
    return Figure("6", f"{text}: share of a core, without its sources' own", Series("live", run, "share"), 0.2,
                  without=Series("live", f"{run} sources alone", "share"), factor=100, unit=" %")


def job(text, row, peer, limit):
    return ratio("3", f"mkvmux, {text}: wall, to {peer}", row, "wall", "mkvmux", peer, limit)


FIGURES = [
    ratio("1", "film: wall, to one gathering copy and write", "film", "wall", "ours", "floor", 1.0),
    ratio("1", "film: CPU, to the same", "film", "cpu", "ours", "floor", 1.25),
    ratio("1", "film: wall, to libavformat", "film", "wall", "ours", "libavformat", 0.75),
    ratio("1", "film: wall, to libwebm", "film", "wall", "ours", "libwebm", 1.0),
    ratio("2", "small packets: wall, to libavformat", "small packets", "wall", "ours", "libavformat", 0.35),
    ratio("2", "small packets: CPU, to libavformat", "small packets", "cpu", "ours", "libavformat", 0.5),
    ratio("2", "8 inputs: wall, to one", "inputs", "wall", "ours 8", "ours 1", 1.3),
    ratio("2", "64 inputs: wall, to one", "inputs", "wall", "ours 64", "ours 1", 1.3),
    job("film", "job film", "mkvmerge", 1.2),
    job("four Opus tracks", "job opus", "mkvmerge", 1.0),
    job("small pictures", "job pictures", "mkvmerge", 1.0),
    job("small pictures from .h264", "job h264", "mkvmerge", 1.0),
    ratio("4", "H.264 with start codes: wall, to lengths", "start codes", "wall", "start codes", "lengths", 1.3),
    ratio("4", "H.264 with start codes: CPU, to lengths", "start codes", "cpu", "start codes", "lengths", 1.3),
    own_share("live graph", "live"),
    own_share("starved graph", "starved"),
    Figure("6", "full queue: how often a second it wakes its producer", Series("full queue", "ours", "woken by the worker a second"), 5),
    Figure("6", "full queue: the same, with the producer's own looks", Series("full queue", "ours", "wake-ups a second"), 5),
    Figure("7", "full queue of 100 MiB: memory", Series("full queue", "ours", "peak bytes"), 104, factor=1 / MIB, unit=" MiB"),
    ratio("7", "24 h: most memory, to 1 h, the queues full once in both", "memory", "peak bytes",
          "24 h, queues full once", "1 h, queues full once", 1.05),
    Figure("7", "Stop after 24 h", Series("lengths", "24 h", "stop"), 1.0, unit=" s"),
    ratio("8", "24 h: CPU a packet, to 1 min", "lengths", "cpu ns a packet", "24 h", "1 min", 1.05),
    ratio("8", "24 h: wall a packet, to 1 min", "lengths", "wall ns a packet", "24 h", "1 min", 1.05),
    ratio("9", "4 filters: wall, to 4 processes", "filters", "wall", "4 filters", "4 processes", 1.1),
    ratio("9", "16 filters: wall, to 16 processes", "filters", "wall", "16 filters", "16 processes", 1.1),
]
