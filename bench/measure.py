"""Runs the measurements of ./dev bench and keeps their figures in build/bench/report.json."""

import argparse
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys

import bus_figures
import report

PROGRAMS = ["store", "session", "operation", "cloud", "text", "event", "thread", "durable", "peers"]
OTHERS = ["flash", "start", "size", "instructions", "bus"]
# How often every measurement is repeated, and the seconds that each repetition takes at least.
FULL = (7, 0.05)
QUICK = (1, 0.001)
STARTS = 40
CALLS = 2000


def run(*command, **environment):
    answer = subprocess.run([str(word) for word in command], text=True, capture_output=True,
                            env={**os.environ, **environment})
    if answer.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} failed: {answer.stderr.strip()[-2000:]}")
    return answer


def figure(name, ours, floor, unit="ns"):
    """Samples of one measurement and of the floor beside it, taken in turn."""
    ratios = [ours_one / floor_one for ours_one, floor_one in zip(ours, floor)]
    return {"name": name, "unit": unit, "ours": statistics.median(ours),
            "floor": statistics.median(floor), "ratio": statistics.median(ratios),
            "low": min(ratios), "high": max(ratios)}


def google_benchmark(program, repetitions, seconds, quick=False, folder=None, only=None):
    """A program of Google Benchmark, whose counters hold both times; with a folder on a disk its
    figures are named so. `only`: what the names of the benchmarks begin with."""
    options = [f"--benchmark_repetitions={repetitions}", f"--benchmark_min_time={seconds}",
               "--benchmark_format=json"]
    if quick:
        options.append("--benchmark_filter=-(users:100000|friends:1000|10000)")
    if folder:
        options.append("--benchmark_filter=-default-log")
    if only:
        options.append(f"--benchmark_filter=^{only}")
    environment = {"QORN_BENCH_FOLDER": str(folder)} if folder else {}
    answer = json.loads(run(program, *options, **environment).stdout)
    samples = {}
    for line in answer["benchmarks"]:
        if line["run_type"] != "iteration":
            continue
        name = re.sub(r"/manual_time|/(full_log|way):\d|/(repeats|iterations):\d+", "", line["run_name"])
        name = name.replace("/", "-on-disk/", 1) if folder else name
        ours, floor = samples.setdefault(name, ([], []))
        ours.append(line["ours_ns"])
        floor.append(line["floor_ns"])
    return [figure(name, *both) for name, both in samples.items()]


def starts(build, times):
    """The component, the floor library and the peer, loaded in turn, each in its own process."""
    libraries = {"component": "qorn_account", "floor": "qorn_bench_floor"}
    if (build / "lib/libqorn_bench_peer.so").exists():
        libraries["peer"] = "qorn_bench_peer"
    samples = {kind: [] for kind in libraries}
    for _ in range(times):
        for kind, library in libraries.items():
            answer = run(build / "bin/qorn_start_probe", kind, build / f"lib/lib{library}.so")
            samples[kind].append([float(word) for word in answer.stdout.split()])
    times_of, sizes_of = {}, {}
    for kind, rows in samples.items():
        times_of[kind] = [row[0] for row in rows]
        sizes_of[kind] = [row[1] / 1024 for row in rows]
    figures = [figure("start/load_to_interface_ready", times_of["component"], times_of["floor"]),
               figure("memory/idle_host", sizes_of["component"], sizes_of["floor"], "KiB")]
    if "peer" in libraries:
        figures += [figure("peer/load_to_store_ready", times_of["component"], times_of["peer"]),
                    figure("peer/idle_host", sizes_of["component"], sizes_of["peer"], "KiB")]
    return figures


def memory(build, times):
    figures = []
    for what in ["user", "session", "candidate"]:
        samples = [[float(word) for word in run(build / "bin/qorn_memory_probe", what).stdout.split()]
                   for _ in range(times)]
        figures.append(figure(f"memory/per_{what}", *map(list, zip(*samples)), "bytes"))
    return figures


def flash(build):
    """What operations write; a line whose floor is "-" has none."""
    figures = []
    for line in run(build / "bin/qorn_flash_probe").stdout.splitlines():
        name, ours, floor, unit = line.split()
        if floor == "-":
            figures.append({"name": name, "unit": unit, "ours": float(ours)})
        else:
            figures.append(figure(name, [float(ours)], [float(floor)], unit))
    return figures


def stripped_size(build, library):
    stripped = build / "stripped.so"
    run("strip", "-o", stripped, library)
    bytes_of_it = stripped.stat().st_size
    stripped.unlink()
    return bytes_of_it


def size(build):
    ours = stripped_size(build, build / "lib/libqorn_account.so")
    peer = build / "lib/libqorn_bench_peer.so"
    if not peer.exists():
        return [{"name": "size/libqorn_account.so", "unit": "bytes", "ours": ours}]
    found = re.search(r"libaccounts-glib\S* => (\S+)", run("ldd", peer).stdout).group(1)
    return [figure("size/libqorn_account.so", [ours], [stripped_size(build, found)], "bytes")]


def instructions(build):
    """Instructions of one call: those of many calls without those of none."""
    figures = []
    for what in ["check", "lookup", "parse"]:
        counts = []
        for calls in (0, CALLS):
            answer = run("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                         build / "bin/qorn_instruction_probe", what, calls)
            counts.append(int(re.search(r"Collected : (\d+)", answer.stderr).group(1)))
        figures.append({"name": f"instructions/{what}", "unit": "instructions",
                        "ours": round((counts[1] - counts[0]) / CALLS)})
    return figures


def bus(build, repetitions, seconds, times):
    if not (build / "bin/qorn_bus_bench").exists():
        print("built without the bus", file=sys.stderr)
        return []
    return bus_figures.measure(build, lambda program, only: google_benchmark(
        program, repetitions, seconds, only=only), figure, times)


def main():
    parser = argparse.ArgumentParser(prog="./dev bench", description=__doc__)
    parser.add_argument("--json", action="store_true", help="print the figures as JSON")
    parser.add_argument("--quick", action="store_true", help="see that all runs; figures of no worth")
    parser.add_argument("programs", nargs="*", metavar="PROGRAM",
                        help=f"only these: {' '.join(PROGRAMS + OTHERS)}")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    wanted = options.programs or PROGRAMS + OTHERS
    for name in wanted:
        if name not in PROGRAMS + OTHERS:
            parser.error(f"no program '{name}': {' '.join(PROGRAMS + OTHERS)}")
    folder = pathlib.Path("build/bench")
    folder.mkdir(parents=True, exist_ok=True)
    repetitions, seconds = QUICK if options.quick else FULL
    figures = []
    for name in wanted:
        print(f"measuring {name}", file=sys.stderr, flush=True)
        program = options.build / f"bin/qorn_{name}_bench"
        if name == "start":
            figures += starts(options.build, 2 if options.quick else STARTS)
            figures += memory(options.build, 1 if options.quick else 5)
        elif name == "flash":
            figures += flash(options.build)
        elif name == "size":
            figures += size(options.build)
        elif name == "instructions":
            figures += instructions(options.build)
        elif name == "bus":
            figures += bus(options.build, repetitions, seconds, 1 if options.quick else STARTS)
        elif name == "peers" and not program.exists():
            print("libaccounts-glib is not here", file=sys.stderr)
        else:
            figures += google_benchmark(program, repetitions, seconds, quick=options.quick)
        if name in ("operation", "cloud", "durable") and not options.quick:
            # A sync takes milliseconds, and the difference is one of them.
            time = 10 * seconds if name == "durable" else seconds
            figures += google_benchmark(program, repetitions, time, folder=folder)
    (folder / "report.json").write_text(json.dumps(figures, indent=1) + "\n")
    report.write(figures, folder)
    print(json.dumps(figures, indent=1) if options.json else report.table(figures))


main()
