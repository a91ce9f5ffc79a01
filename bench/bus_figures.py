"""A gateway on a bus of its own, for the measurements of the group "bus"."""

import contextlib
import os
import pathlib
import re
import socket
import subprocess
import sys
import tempfile
import time

LIMITS = ["calls_per_second", "call_burst", "calls_in_flight", "all_calls_in_flight", "sign_ins_per_minute"]
PEER = pathlib.Path("/usr/libexec/accounts-daemon")


class Place:
    """A folder with a bus and a development cloud; the programs end with the block."""

    def __init__(self, build):
        os.environ["QORN_BUILD"] = str(build)
        source = pathlib.Path(__file__).resolve().parent.parent
        sys.path += [str(source / "tests"), str(source / "devcloud/python")]
        import programs  # It reads the variable.
        self.programs, self.build = programs, build

    def __enter__(self):
        self.ending = contextlib.ExitStack()
        memory = "/dev/shm" if os.path.isdir("/dev/shm") else None
        self.folder = pathlib.Path(self.ending.enter_context(tempfile.TemporaryDirectory(dir=memory)))
        self.bus = self.ending.enter_context(self.programs.Bus(self.folder))
        self.cloud = self.ending.enter_context(self.programs.Cloud())
        keys = {f"gateway_bus_{key}": 1_000_000 for key in LIMITS}
        self.programs.write_config(self.folder, self.cloud, account_log_level="LOG_ERROR", **keys)
        os.environ.pop("LD_PRELOAD")  # It costs memory.
        return self

    def __exit__(self, *failure):
        self.ending.close()

    def start(self, *command, **options):
        return self.ending.enter_context(self.programs.Process(*command, **options))

    def ctl(self, *words):
        ended = self.programs.run("qornctl", "--bus", self.bus.address, "--show-secrets", *words)
        if ended.status != 0:
            sys.exit(f"qornctl {words[0]} failed: {ended.errors}")
        return dict(re.findall(r"^  (\w+): (.*)$", ended.output, re.MULTILINE))

    @contextlib.contextmanager
    def gateway(self, *options):
        """A daemon; gives the process and the milliseconds until it was ready."""
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as ready:
            ready.bind("\0qorn-bench-" + str(os.getpid()))
            environment = {**os.environ, "NOTIFY_SOCKET": "@qorn-bench-" + str(os.getpid())}
            begin = time.monotonic()
            with self.programs.Process("qorn-gateway", "--config", self.folder / "config.xml", "--log",
                                       self.folder / "log", "--daemon", *options, env=environment,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
                while b"READY=1" not in ready.recv(4096):
                    pass
                yield process, 1000 * (time.monotonic() - begin)
                process.terminate()
                process.wait()


def resident_kibibytes(process):
    text = pathlib.Path(f"/proc/{process.pid}/smaps_rollup").read_text()
    return int(re.search(r"^Pss:\s+(\d+)", text, re.MULTILINE).group(1))


def idle(place, times):
    """Memory and start of a daemon, without a bus and with it, in turn."""
    samples = {"start": ([], []), "memory": ([], [])}
    for _ in range(times):
        for column, options in enumerate([[], ["--bus", place.bus.address]]):
            with place.gateway(*options) as (process, milliseconds):
                samples["start"][column].append(milliseconds)
                samples["memory"][column].append(resident_kibibytes(process))
    return samples


def measure(build, benchmark, figure, times):
    """`benchmark` runs a program of Google Benchmark; `figure` makes a line of samples."""
    program = build.resolve() / "bin/qorn_bus_bench"
    with Place(build) as place:
        samples = idle(place, times)
        figures = [figure("bus-start/daemon_ready", samples["start"][1], samples["start"][0], "ms"),
                   figure("bus-memory/idle_daemon", samples["memory"][1], samples["memory"][0], "KiB")]
        os.environ["QORN_BENCH_BUS"] = place.bus.address
        place.start(program, "--echo")
        if PEER.exists():
            place.start(PEER, env={**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": place.bus.address})
        else:
            print("accountsservice is not here", file=sys.stderr)
        with place.gateway("--bus", place.bus.address):
            place.ctl("create-user", "ann", place.cloud.code("ann"))
            os.environ["QORN_BENCH_SESSION"] = place.ctl("sign-in-alt", "ann", "")["session_id"]
            os.environ["QORN_BENCH_USER"] = "ann"
            figures += benchmark(program, "bus" if PEER.exists() else "bus/")
    return figures
