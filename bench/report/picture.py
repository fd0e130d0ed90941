"""One SVG: our ratio to every peer, and how cost grows with what waits."""

import re

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams["svg.fonttype"] = "none"  # text stays text, which halves the size
import matplotlib.pyplot as plt  # noqa: E402 (the back end is chosen first)

from statistics_of import median  # noqa: E402

GROWTH = (("FramesQueued", "frames queued"), ("LogLinesWaiting", "log lines waiting"), ("StoreSaved", "bytes of the old store"))


def draw_ratios(axis, rows):
    compared = [row for row in rows if "ratio" in row]
    labels = [f"{row['what']} : {row['who']}" for row in compared]
    colours = ["#2a7f4f" if row["ratio"] <= row.get("goal", 1.0) else "#b5482f" for row in compared]
    places = range(len(compared))[::-1]
    axis.barh(places, [row["ratio"] - 1 for row in compared], left=1, color=colours)
    axis.set_xscale("log")
    axis.set_yticks(places, labels, fontsize=6)
    axis.axvline(1, color="black", linewidth=0.8)
    axis.set_title("our time / theirs (left of 1: we are ahead)", fontsize=9)
    axis.grid(axis="x", linewidth=0.3)


def draw_growth(axis, times, name, label):
    points = sorted((int(match.group(1)), median(values)) for key, values in times.items()
                    if (match := re.fullmatch(rf"{name}/(\d+)", key)))
    axis.plot([n for n, _ in points], [t / 1000 for _, t in points], "o-", color="#33557f", markersize=3)
    n, t = points[-1]
    axis.plot([x for x, _ in points], [t / 1000 * x / n for x, _ in points], ":", color="grey", linewidth=0.8)
    axis.set_xscale("log")
    axis.set_yscale("log")
    axis.set_xlabel(label, fontsize=8)
    axis.set_ylabel("us", fontsize=8)
    axis.grid(linewidth=0.3)


def draw(path, title, rows, times):
    matplotlib.rcParams["svg.hashsalt"] = "tollmere"
    figure = plt.figure(figsize=(10, 12), layout="constrained")
    grid = figure.add_gridspec(2, 3, height_ratios=(3.5, 1))
    draw_ratios(figure.add_subplot(grid[0, :]), rows)
    for column, (name, label) in enumerate(GROWTH):
        draw_growth(figure.add_subplot(grid[1, column]), times, name, label)
    figure.suptitle(title)
    figure.savefig(path, metadata={"Date": None})
