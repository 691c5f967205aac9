"""The plot of a report: what a packet costs, against its size, the number of inputs and the length of the recording."""

from statistics import median

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams["svg.hashsalt"] = "bench"  # the same figures give the same file
matplotlib.rcParams["svg.fonttype"] = "none"
from matplotlib import pyplot  # noqa: E402  (the backend comes first)

SECONDS_OF = {"1 min": 60, "10 min": 600, "1 h": 3600, "3 h": 10800, "6 h": 21600, "24 h": 86400}
MICROSECONDS = 1e6


def line(axes, points, label):
    points = sorted(points)
    axes.plot([x for x, _ in points], [y for _, y in points], marker="o", label=label)


def plot_sizes(axes, report):
    rows = {int(name.split()[1]): row for name, row in report.items() if name.startswith("size ")}
    for run in ("ours", "libavformat", "floor"):
        for what, style in (("wall", run), ("cpu", f"{run}, CPU")):
            if what == "wall" or run == "ours":
                line(axes, [(size, median(row["runs"][run][what]) / row["packets"] * MICROSECONDS)
                            for size, row in rows.items()], style)
    axes.set(xscale="log", yscale="log", xlabel="bytes a packet", ylabel="µs a packet")


def plot_inputs(axes, report):
    row = report["inputs"]
    for muxer in ("ours", "libavformat"):
        line(axes, [(int(run.split()[1]), median(series["wall"]) / row["packets"] * MICROSECONDS)
                    for run, series in row["runs"].items() if run.startswith(muxer)], muxer)
    axes.set(xscale="log", xlabel="inputs, packets of 62 bytes", ylim=(0, None))


def plot_lengths(axes, report):
    for what, label in (("wall ns a packet", "ours"), ("cpu ns a packet", "ours, CPU")):
        line(axes, [(SECONDS_OF[run] / 3600, median(series[what]) / 1000)
                    for run, series in report["lengths"]["runs"].items()], label)
    axes.set(xscale="log", xlabel="hours recorded", ylim=(0, None))


def draw(report, path):
    """False when a row is missing that the plot shows."""
    if not {"inputs", "lengths", "size 62"} <= report.keys():
        return False
    figure, panels = pyplot.subplots(1, 3, figsize=(12, 3.6), layout="constrained")
    for axes, plot in zip(panels, (plot_sizes, plot_inputs, plot_lengths)):
        plot(axes, report)
        axes.grid(alpha=0.3)
        axes.legend(fontsize="small")
    figure.savefig(path, metadata={"Date": None})
    return True
