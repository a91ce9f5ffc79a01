"""Real gateways beside the simulation of the same numbers: compare.py BUILD-FOLDER [GATEWAYS].

The gateways are real account components, each in a process of its own, at a development cloud with limits.
Ends with status 1 if a figure of the simulation is further from the real one than it may be.
"""

import concurrent.futures
import contextlib
import dataclasses
import pathlib
import subprocess
import sys
import threading
import time

import numpy

from fleet_model import Settings, draw_starts, simulate
from qorn_devcloud import Cloud

SEEDS = 9
BUNCH = 0.032  # Gateways on one machine repeat their SYNs in bunches: as precise as its kernel's timers are.
STAGGER = 20  # seconds between the beginnings of two settings
LIMIT = 600  # seconds after which a gateway counts as not served
FIGURES = (("half served, s", 0.15), ("all served, s", 0.15), ("tries each", 0.25))


def kernel_repeats():
    """When this machine's kernel repeats a SYN: newer ones do so each second at first."""
    try:
        linear = int(pathlib.Path("/proc/sys/net/ipv4/tcp_syn_linear_timeouts").read_text())
    except FileNotFoundError:
        linear = 0
    moments, pause = [], 1.0
    while sum(moments[-1:]) < 5:
        moments.append(sum(moments[-1:]) + pause)
        if len(moments) > linear:
            pause *= 2
    return tuple(moments)


def choose_settings(gateways):
    """Given for 200 gateways. In none of them half or all are served just before or after a pause of the fleet."""
    def of(scheme, requests_per_second, connections=0, **others):
        scale = gateways / 200
        return Settings(scheme=scheme, gateways=gateways, requests_per_second=max(1, round(requests_per_second * scale)),
                        connections=max(1, round(connections * scale)) if connections else 0, handshake=BUNCH / 2,
                        turnaround=0, duration=LIMIT, step=0.004, syn_repeats=kernel_repeats(), **others)
    return (of("https", 5, boot="uniform:0:20"),
            of("https", 10, 4, boot="uniform:0:10"),
            of("http", 10, 10, boot="uniform:0:20"),
            of("http", 5, 2, boot="uniform:0:20"),
            of("https", 5, 2, boot="uniform:0:20", start_spread=60),
            of("https", 20, 20, boot="uniform:0:60", outage=100, outage_kind="refused"))


def describe(settings):
    text = f"{settings.scheme}, {settings.requests_per_second} requests/s, "
    text += f"{settings.connections} connections" if settings.connections else "any number of connections"
    if settings.start_spread:
        text += f", start spread {settings.start_spread} s"
    if settings.outage:
        text += f", away for {settings.outage} s"
    return text


def figures(served, tries):
    """Of the gateways' times and tries; endless where too few were served."""
    served = numpy.sort(numpy.where(numpy.isnan(served), numpy.inf, served))
    return served[(len(served) - 1) // 2], served[-1], tries.mean()


def simulate_figures(settings, starts, begin):
    """The median of several seeds, since the order of SYNs is random."""
    found = []
    for seed in range(1, SEEDS + 1):
        result = simulate(dataclasses.replace(settings, seed=seed), starts)
        found.append(figures(result.served + result.begin - begin, result.tries))
    return numpy.median(found, axis=0)


def start_cloud(settings):
    addresses = [option for number in range(settings.gateways) for option in ("--gateway", f"GATEWAY-{number}")]
    return Cloud(*addresses, "--requests-per-second", str(settings.requests_per_second),
                 "--connections", str(settings.connections))


def run_real_gateways(folder, settings, boots):
    with start_cloud(settings) as cloud, contextlib.ExitStack() as outage:
        if settings.outage:
            outage.enter_context(cloud.refuse_connections())
        with subprocess.Popen([folder / "bin/qorn_real_gateways", folder / "lib/libqorn_account.so",
                               cloud.urls[settings.scheme], str(LIMIT), str(settings.start_spread)],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as gateways:
            print(*boots, file=gateways.stdin)
            gateways.stdin.close()
            begin = float(gateways.stdout.readline())
            if settings.outage:
                threading.Timer(begin + settings.outage - time.monotonic(), outage.close).start()
            rows = numpy.array([line.split() for line in gateways.stdout], dtype=float)
    if len(rows) != settings.gateways:
        sys.exit("compare: the real gateways did not end as they should")
    started, served, tries = rows.T
    return started, numpy.where(served < 0, numpy.nan, served), tries


def compare(folder, settings, pause):
    time.sleep(pause)
    boots = draw_starts(dataclasses.replace(settings, start_spread=0), numpy.random.default_rng(settings.seed))
    started, served, tries = run_real_gateways(folder, settings, boots)
    # Both count from the real starts, which are a little later than planned on a busy machine.
    begin = max(settings.outage, started.min())
    return figures(served - begin, tries), simulate_figures(settings, started, begin)


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    settings = choose_settings(int(sys.argv[2]) if len(sys.argv) > 2 else 200)
    print(f"{settings[0].gateways} gateways; SYNs repeated after {settings[0].syn_repeats} s\n")
    with concurrent.futures.ThreadPoolExecutor(len(settings)) as threads:
        # One after another, so that the starts of each are on a quiet machine.
        rows = list(threads.map(lambda entry: compare(folder, entry[1], STAGGER * entry[0]), enumerate(settings)))
    print(f"{'portal':62}{'figure':>17}{'real':>9}{'simulated':>11}{'off by':>8}")
    bad = 0
    for one, (real, simulated) in zip(settings, rows):
        for (name, allowed), found, expected in zip(FIGURES, real, simulated):
            off = expected / found - 1
            is_bad = not abs(off) <= allowed
            bad += is_bad
            print(f"{describe(one):62}{name:>17}{found:9.1f}{expected:11.1f}{100 * off:+7.1f}%"
                  f"{'  too far' if is_bad else ''}")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
