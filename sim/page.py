"""The tables and plots of docs/fleet.md: page.py FOLDER-FOR-PLOTS. Prints the tables as Markdown."""

import concurrent.futures
import dataclasses
import pathlib
import sys

from fleet import summarize
from fleet_model import Settings, simulate
from fleet_plot import draw, draw_line

FLEET = Settings(gateways=1_000_000, step=0.03)
HUNDREDTH = FLEET.gateways // 100
WAITING = dataclasses.replace(FLEET, boot="uniform:0:60", outage=600)  # Each knocks at a second of its own.
CAPACITIES = (2_000, 5_000, 20_000, 50_000)
SHARES = (0.5, 1, 2, 5, 10, 20, 50)  # Per cent of the fleet that the portal holds.


def power_cut(requests_per_second, connections=0, **others):
    return dataclasses.replace(FLEET, requests_per_second=requests_per_second, connections=connections, **others)


TABLES = {
    "A portal that accepts and queues": [power_cut(rate) for rate in CAPACITIES],
    "A portal that holds one gateway in a hundred": [
        power_cut(rate, HUNDREDTH, start_spread=spread) for rate in (5_000, 20_000) for spread in (0, 60, 300)],
    "How alike the gateways boot": [
        power_cut(5_000, HUNDREDTH, boot=boot) for boot in ("normal:60:2", "uniform:50:70", "normal:60:20")],
    "The same over HTTP": [power_cut(5_000, HUNDREDTH, scheme="http", start_spread=spread) for spread in (0, 60)],
    "Found again after an outage of ten minutes": [
        dataclasses.replace(WAITING, requests_per_second=5_000, connections=connections)
        for connections in (0, HUNDREDTH)],
    # A tenth of everything gives the same times in a tenth of the effort.
    "By connections, for a tenth of the fleet": [
        dataclasses.replace(power_cut(500, int(FLEET.gateways * share / 1000), start_spread=spread),
                            gateways=FLEET.gateways // 10) for spread in (0, 60) for share in SHARES],
}
SHOWN = {"accepts and queues": power_cut(5_000),
         "holds 10,000 connections": power_cut(5_000, HUNDREDTH),
         "holds 10,000, start spread 60 s": power_cut(5_000, HUNDREDTH, start_spread=60)}


def run(settings):
    result = simulate(settings)
    return (summarize(result), result if settings in SHOWN.values() else None)


def row(settings, figures):
    def percent(value):
        return f"{100 * value:.0f} %"
    done = figures["all_served"]
    return (f"{settings.requests_per_second:,}", f"{settings.connections:,}" if settings.connections else "any",
            f"{settings.start_spread} s", settings.boot, f"{figures['half_served']:,.0f} s",
            f"{done:,.0f} s" if done else percent(figures["served"] / settings.gateways),
            f"{figures['tries_mean']:.1f}", f"{figures['connects_most_in_a_second']:,}",
            f"{figures['connections_most']:,}", percent(figures["portal_busy"]), percent(figures["portal_useful"]))


HEAD = ("Requests a second", "Connections", "Start spread", "Boot", "Half served", "All served", "Tries",
        "Connects in the worst second", "Connections held", "Busy", "With what counted")


def main():
    folder = pathlib.Path(sys.argv[1])
    everything = list(dict.fromkeys(settings for table in TABLES.values() for settings in table))
    with concurrent.futures.ProcessPoolExecutor(2) as processes:
        found = dict(zip(everything, processes.map(run, everything)))
    for title, table in TABLES.items():
        print(f"\n{title}\n\n| {' | '.join(HEAD)} |\n|{'---|' * len(HEAD)}")
        for settings in table:
            print("|", " | ".join(row(settings, found[settings][0])), "|")
    draw(str(folder / "fleet-power-cut.svg"), {name: found[settings][1] for name, settings in SHOWN.items()})
    draw_line(str(folder / "fleet-connections.svg"), "connections that the portal holds, % of the fleet",
              "minutes until all are served",
              {f"start spread {spread} s" if spread else "no start spread":
               [(100 * settings.connections / settings.gateways, (found[settings][0]["all_served"] or 3600) / 60)
                for settings in TABLES["By connections, for a tenth of the fleet"] if settings.start_spread == spread] for spread in (0, 60)})


if __name__ == "__main__":
    main()
