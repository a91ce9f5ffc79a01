#!/usr/bin/python3
"""Simulates a fleet of gateways that fetch their network setting from a portal with limits.

The same options and the same seed give the same result. docs/fleet.md says what came out of it.
"""

import argparse
import dataclasses
import json
import sys

import numpy

from fleet_model import CONNECT_SECONDS, Settings, simulate


def read_options(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)

    def add(name, kind, text, **options):
        default = getattr(Settings, name)
        parser.add_argument("--" + name.replace("_", "-"), type=kind, default=default, help=text, **options)

    add("gateways", int, "how many there are [%(default)s]")
    add("requests_per_second", float, "what the portal answers, first in, first out; 0: no limit [%(default)s]")
    add("connections", int, "what the portal holds at a time; 0: no limit [%(default)s]")
    add("scheme", str, "of the portal's URL [%(default)s]", choices=("https", "http"))
    add("kernel_queue", int, "connections that its kernel completes beyond those [%(default)s]")
    add("boot", str, "when components start: uniform:FROM:TO, normal:MEAN:DEVIATION or constant:AT, in seconds "
        "[%(default)s]", metavar="DISTRIBUTION")
    add("start_spread", int, "gateway_start_spread_seconds of the gateways [%(default)s]", metavar="SECONDS")
    add("outage", float, "how long the portal is away at first [%(default)s]", metavar="SECONDS")
    add("outage_kind", str, "what a SYN meets meanwhile: silence or a refusal [%(default)s]",
        choices=("silent", "refused"))
    add("syn_repeats", lambda text: tuple(map(float, text.split(","))),
        "when a gateway's kernel repeats a SYN [1,3]", metavar="SECONDS,...")
    add("handshake", float, "from a SYN to the ACK that ends the handshake [%(default)s]", metavar="SECONDS")
    add("turnaround", float, "from a gateway's first answer to its second connection [%(default)s]", metavar="SECONDS")
    add("duration", float, "how long to simulate, since the portal could serve [%(default)s]", metavar="SECONDS")
    add("step", float, "the resolution [%(default)s]", metavar="SECONDS")
    add("seed", int, "of all that is random [%(default)s]")
    parser.add_argument("--json", metavar="FILE", help="write settings, figures and a series by seconds")
    parser.add_argument("--plot", metavar="FILE", help="draw the series; .svg or .png")
    options = parser.parse_args(arguments)
    if options.gateways < 1 or options.step <= 0 or options.duration < options.step:
        parser.error("there must be a gateway, and a duration of a step or more")
    if options.boot.partition(":")[0] not in ("uniform", "normal", "constant"):
        parser.error(f"no distribution of boot times: {options.boot}")
    # A longer queue would let gateways wait that have no TLS handshake, and they wait five seconds.
    if options.scheme == "https" and options.requests_per_second and options.connections and (
            options.kernel_queue > CONNECT_SECONDS * options.requests_per_second):
        parser.error("over HTTPS the model knows no kernel queue of more than five seconds' requests")
    return options


def summarize(result):
    """The figures of a run by name, times in seconds since a gateway could be served; None: never."""
    settings, gateways = result.settings, result.settings.gateways
    times = numpy.sort(result.served[~numpy.isnan(result.served)])

    def time_of(share):
        number = int(numpy.ceil(share * gateways))
        return round(float(times[number - 1]), 2) if times.size >= number else None

    answers = int(result.answers.sum())
    lasted = times[-1] if times.size == gateways else settings.duration
    capacity = settings.requests_per_second * lasted
    return {"served": int(times.size),
            "half_served": time_of(0.5), "nearly_all_served": time_of(0.99), "all_served": time_of(1),
            "tries_mean": round(float(result.tries.mean()), 3), "tries_most": int(result.tries.max()),
            "connects": int(result.connects.sum()), "connects_most_in_a_second": int(result.connects.max()),
            "connections_most": result.most_connections,
            "answers": answers, "answers_lost": answers - 2 * int(times.size),
            "portal_busy": round(answers / capacity, 4) if capacity else None,
            "portal_useful": round(2 * int(times.size) / capacity, 4) if capacity else None}


TEXTS = {"served": "gateways served", "half_served": "half served after, s",
         "nearly_all_served": "99 % served after, s", "all_served": "all served after, s",
         "tries_mean": "tries of a gateway, mean", "tries_most": "tries of a gateway, most",
         "connects": "connection attempts", "connects_most_in_a_second": "connection attempts in the worst second",
         "connections_most": "connections held, most", "answers": "requests answered",
         "answers_lost": "requests answered for nothing", "portal_busy": "portal busy",
         "portal_useful": "portal busy with what counted"}


def print_table(figures):
    for name, text in TEXTS.items():
        value = figures[name]
        if value is None:
            shown = "-"
        elif name.startswith("portal"):
            shown = f"{100 * value:.1f} %"
        else:
            shown = f"{value:,}"
        print(f"{text:<42}{shown:>14}")


def write_json(path, result, figures):
    served = result.served[~numpy.isnan(result.served)] + result.begin
    by_second = numpy.bincount(served.astype(int), minlength=result.connects.size)[:result.connects.size]
    with open(path, "w", encoding="utf-8") as file:
        json.dump({"settings": dataclasses.asdict(result.settings), "figures": figures, "begin": result.begin,
                   "by_second": {"connects": result.connects.tolist(), "answers": result.answers.tolist(),
                                 "served": by_second.tolist()}}, file)
        file.write("\n")


def main(arguments):
    options = vars(read_options(arguments))
    json_file, plot_file = options.pop("json"), options.pop("plot")
    result = simulate(Settings(**options))
    figures = summarize(result)
    print_table(figures)
    if json_file:
        write_json(json_file, result, figures)
    if plot_file:
        from fleet_plot import draw  # Only here: it takes a second to load.
        draw(plot_file, {"": result})


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
