"""Plots of simulated fleets."""

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot
import numpy

# The same bytes for the same result.
matplotlib.rcParams.update({"svg.hashsalt": "fleet", "svg.fonttype": "none", "font.size": 9, "axes.grid": True,
                            "grid.alpha": 0.3, "axes.spines.top": False, "axes.spines.right": False})
MOST_POINTS = 400  # of a line, to keep the files small


def thin(times, values):
    """As many points as can be told apart; of those that are left out the largest is shown."""
    width = -(-values.size // MOST_POINTS)
    padded = numpy.pad(values, (0, -values.size % width))
    return times[::width], padded.reshape(-1, width).max(axis=1)


def draw(path, results):
    """Connection attempts a second over the share of gateways served; results by their names in the legend."""
    figure, (above, below) = matplotlib.pyplot.subplots(2, 1, sharex=True, figsize=(7, 4.6), layout="constrained")
    for name, result in results.items():
        begin = int(result.begin)
        connects = result.connects[begin:]
        above.plot(*thin(numpy.arange(connects.size), connects), label=name, linewidth=0.8)
        served = numpy.sort(result.served[~numpy.isnan(result.served)])
        shares = numpy.linspace(0, 1, 201)[1:]
        ranks = (shares * result.settings.gateways).astype(int)
        known = ranks <= served.size
        below.plot(numpy.concatenate(([0], served[ranks[known] - 1])),
                   numpy.concatenate(([0], 100 * shares[known])), label=name, linewidth=1.2)
    above.set_ylabel("connection attempts\na second")
    above.set_ylim(bottom=0)
    below.set_ylabel("gateways served, %")
    below.set_xlabel("seconds since a gateway could be served")
    below.set_xlim(left=0)
    if len(results) > 1:
        below.legend(fontsize=8)
    figure.savefig(path, metadata={"Date": None} if path.endswith(".svg") else None)
    matplotlib.pyplot.close(figure)


def draw_line(path, across, upwards, lines):
    """Lines through a few points, over a logarithmic scale."""
    figure, axes = matplotlib.pyplot.subplots(figsize=(7, 3), layout="constrained")
    for name, points in lines.items():
        axes.plot(*zip(*points), "o-", label=name, linewidth=1.2, markersize=3)
    axes.set_xscale("log")
    axes.xaxis.set_major_formatter("{x:g}")
    axes.set_xlabel(across)
    axes.set_ylabel(upwards)
    axes.set_ylim(bottom=0)
    axes.legend(fontsize=8)
    figure.savefig(path, metadata={"Date": None})
    matplotlib.pyplot.close(figure)
