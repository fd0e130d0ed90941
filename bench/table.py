"""Rows of the table, each with its goal: the largest ratio that is meant, unless a function says otherwise."""

import math
import statistics


def row(what, ours, beside, theirs, ratio="", goal="", verdict=""):
    return f"| {what} | {ours} | {beside} | {theirs} | {ratio} | {goal} | {verdict} |"


HEAD = row("what", "ours", "beside", "theirs", "ratio", "goal", "result") + "\n|---|---|---|---|---|---|---|"


def judge(value, goal):
    if goal is None:
        return "", ""
    return f"{goal:g}", "met" if value <= goal else "missed"


def percentile(times, percent):
    return sorted(times)[math.ceil(percent / 100 * len(times)) - 1]


def compare_percentiles(what, beside, ours, theirs, size, goal):
    """p50, p95 and p99, in microseconds: the median over the rounds of `size` times each. The goal is that of p50."""
    def median_of(times, percent):
        rounds = [times[i:i + size] for i in range(0, len(times), size)]
        return statistics.median(percentile(part, percent) for part in rounds) * 1e6

    mine, other = ([median_of(times, percent) for percent in (50, 95, 99)] for times in (ours, theirs))
    ratios = [m / o for m, o in zip(mine, other)]
    return row(what, " / ".join(f"{m:.0f}" for m in mine) + " us", beside,
               " / ".join(f"{o:.0f}" for o in other) + " us", " / ".join(f"{ratio:.2f}" for ratio in ratios),
               *judge(ratios[0], goal))


def compare(what, beside, ours, theirs, goal):
    """Medians of times, in milliseconds."""
    mine, other = (statistics.median(times) * 1e3 for times in (ours, theirs))
    return row(what, f"{mine:.3g} ms", beside, f"{other:.3g} ms", f"{mine / other:.2f}", *judge(mine / other, goal))


def compare_numbers(what, beside, ours, theirs, goal):
    return row(what, f"{ours:.1f}", beside, f"{theirs:.1f}", f"{ours / theirs:.2f}", *judge(ours / theirs, goal))


def limit(what, beside, ours, theirs, goal):
    """The goal is the largest value that is meant."""
    return row(what, f"{ours:.1f}", beside, f"{theirs:.1f}", "", *judge(ours, goal))


def margin(what, beside, ours, theirs, goal):
    """The goal is how much more than theirs is meant at most."""
    goal_text, verdict = judge(ours - theirs, goal)
    return row(what, f"{ours:.2f}", beside, f"{theirs:.2f}", f"{ours - theirs:+.2f}", f"+{goal_text}", verdict)
