"""Medians, spread and ratios of lists whose elements at the same place are of the same round."""

import statistics


def median(values):
    return statistics.median(values)


def spread(values):
    """Half the distance between the quartiles, as a share of the median."""
    if len(values) < 2:
        return 0.0
    low, middle, high = statistics.quantiles(values, n=4)
    return (high - low) / 2 / middle


def ratio(ours, theirs):
    """The median of the rounds' own ratios; below 1 we are ahead."""
    if len(ours) != len(theirs):
        return median(ours) / median(theirs)
    return statistics.median(mine / other for mine, other in zip(ours, theirs))
