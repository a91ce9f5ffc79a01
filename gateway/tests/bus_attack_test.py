"""A gateway under callers and a bus that behave badly. `./dev attack` sets the seconds and takes the rest in full."""

import os
import pathlib
import random
import re
import subprocess
import sys
import time

import bus_test_case
import programs

SECONDS = int(os.environ.get("QORN_ATTACK_SECONDS", 1))
BUS_DEATHS = 50 if "QORN_ATTACK_SECONDS" in os.environ else 3
STRANGER = {"user": "nobody", "group": "nogroup", "extra_groups": []} if os.geteuid() == 0 else {}


def resident_kibibytes(process):
    return int(re.search(r"VmRSS:\s+(\d+)", pathlib.Path(f"/proc/{process.pid}/status").read_text()).group(1))


class BusAttack(bus_test_case.BusTestCase):
    def attack(self, **caller):
        """Returns what the attack says it has done."""
        seed = str(random.randrange(1 << 30))
        ended = programs.run("qorn_bus_attack", self.bus.address, str(SECONDS), seed, **caller)
        self.assertEqual(ended.status, 0, f"seed {seed}: {ended.errors}")
        return ended.output

    def test_bad_callers_are_borne(self):
        gateway = self.start_gateway(calls=100_000)
        done = self.attack()
        before = resident_kibibytes(gateway)
        done += self.attack()
        print(done, f"resident: {before} KiB after the first attack, {resident_kibibytes(gateway)} after the second",
              file=sys.stderr)
        # Sanitizers keep for a while what was freed.
        if not re.search(b"__[at]san_init", (programs.BUILD / "bin/qorn-gateway").read_bytes()):
            self.assertLess(resident_kibibytes(gateway), before + 2048)
        self.assert_stops(gateway)

    def test_strangers_are_borne_while_polkit_is_silent(self):
        with programs.Process("qorn_bus_attack", self.bus.address, stdout=subprocess.PIPE) as polkit:
            polkit.stdout.readline()
            gateway = self.start_gateway()
            self.attack(**STRANGER)
            self.assert_stops(gateway)

    def test_the_bus_dies_again_and_again(self):
        gateway = self.start_gateway()
        for _ in range(BUS_DEATHS):
            with programs.Process("qornctl", "--bus", self.bus.address, "--keep-going", stdin=subprocess.PIPE,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as caller:
                caller.stdin.write(b"users\nin-alt ann ''\n" * 1000)
                caller.stdin.flush()
                time.sleep(random.random() / 10)  # The death comes at any moment.
                self.bus.end()
                self.bus = self.enterContext(programs.Bus(self.folder))
                programs.wait_until(self.answers)
        self.assert_stops(gateway)
