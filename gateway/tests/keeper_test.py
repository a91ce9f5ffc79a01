"""qorn-gateway --keep-tokens through days of a clock that the test moves."""

import contextlib
import json
import mmap
import os
import socket
import sqlite3
import struct

import bus_test_case
import programs

SOON = 600  # More seconds than any pause before another attempt, and than these tests take.
DAY = 24 * 3600 + SOON
MANY = 1000


@contextlib.contextmanager
def full(folder):
    with open(folder + "/ballast", "wb", buffering=0) as file, contextlib.suppress(OSError):
        while True:
            file.write(bytes(4096))
    yield
    os.remove(folder + "/ballast")


class Keeper(bus_test_case.BusTestCase):
    def start(self, by=()):
        with self.write("clock", "-" * 16).open("r+b") as file:
            self.steps = mmap.mmap(file.fileno(), 16)
        struct.pack_into("qq", self.steps, 0, 0, -1)
        self.known = 0, 0
        preload = f"{os.environ['LD_PRELOAD']}:{programs.LIBRARIES}/libqorn_stepped_clock.so"
        places = {"NOTIFY_SOCKET": f"{self.folder}/notify", "QORN_STEPPED_CLOCK": f"{self.folder}/clock"}
        return self.start_gateway("--keep-tokens", "24", "--metrics", by=by,
                                  env={**os.environ, "LD_PRELOAD": preload, **places})

    def move(self, seconds):
        """Moves the clock; returns once nothing is due any more."""
        now = struct.unpack_from("q", self.steps)[0] + seconds
        struct.pack_into("q", self.steps, 0, now)
        programs.wait_until(lambda: struct.unpack_from("q", self.steps, 8)[0] == now)

    def kept(self):
        """The keeper's lines of the audit."""
        return [line for line in (self.folder / "audit").read_text().splitlines() if '"type":"keeper"' in line]

    def after(self, seconds):
        """Moves the clock. Returns what the keeper then does until nothing is due, and how many refreshes it sends."""
        self.move(seconds)
        lines = [json.loads(line) for line in self.kept()]
        sent = sum("&grant_type=refresh_token&" in request.body for request in self.cloud.requests("/token"))
        known, self.known = self.known, (len(lines), sent)
        done = [(line["user_id"], line.get("result"), line["message"]) for line in lines[known[0]:]]
        return sorted(done, key=str), sent - known[1]

    def test_loses_no_token_that_it_can_keep_and_says_who_must_sign_in(self):
        manager = self.enterContext(socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM))
        manager.bind(str(self.folder / "notify"))
        heard = self.listen()
        is_root = os.geteuid() == 0
        small_disk = ("unshare", "--mount", "sh", "-ec", 'mount -t tmpfs -o size=4m none "$0"; exec "$@"',
                      self.folder / "data")
        gateway = self.start(by=small_disk if is_root else ())
        data = f"/proc/{gateway.pid}/root/{self.folder}/data"
        for user in "ann", "bob":
            self.ctl("create-user", user, self.cloud.code(user))
        both = [("ann", 1, "tokens refreshed"), ("bob", 1, "tokens refreshed")], 2
        self.assertEqual(self.after(DAY), both)

        fault = self.cloud.fault
        faults = [fault("status", status=500, path="/"), fault("status", status=503, path="/"),
                  self.cloud.refuse_connections(), *is_root * [full(data)]]
        for trouble in faults:
            with trouble:
                self.assertEqual(self.after(DAY), ([], 0))
            self.assertEqual(self.after(SOON), both)
        # A server that refuses the plain request is there.
        with fault("status", status=404, path="/"):
            self.assertEqual(self.after(DAY), both)

        lost = "ann", 19, "refresh refused, or its answer was lost"
        with fault("truncate_after", bytes=100, path="/token", user="ann"):
            self.assertEqual(self.after(DAY), ([lost, both[0][1]], 2))
        self.assertEqual(self.after(SOON), ([lost, ("ann", None, "must sign in")], 1))
        self.assertIn("; must sign in: ann\n", self.ctl("status").output)
        table = self.ctl("users").output
        self.assertRegex(table, r"(?m)^ann +\S+ +\S+ +true ")
        self.assertRegex(table, r"(?m)^bob +\S+ +\S+ +false ")
        self.assertIn("\nqorn_sign_in_needed_users 1\n", self.ctl("metrics").output)
        self.ctl("sign-in", "ann", self.cloud.code("ann"))
        self.assertEqual(self.after(0)[0], [("ann", None, "need not sign in any more")])
        self.assertEqual(self.after(DAY), both)
        self.assertEqual(programs.mode(f"{data}/keeper.json"), "0o600")
        self.ctl("do-factory-reset")
        self.assertEqual(self.after(2 * DAY), ([], 0))
        self.assert_stops(gateway)
        told = ""
        while "STOPPING" not in told:
            told += manager.recv(100).decode()
        self.assertRegex(told, "READY=1.*STATUS=Users that must sign in: 1.*: 0.*STOPPING=1")
        programs.wait_until(lambda: heard.read_text().count("SignInNeeded") == 3)
        if not is_root:
            self.skipTest("all but the full disk was tried: only root can mount one")

    def test_spreads_a_thousand_users_over_an_hour(self):
        config, database = programs.write_config(self.folder, self.cloud), self.folder / "data/account.db"
        made = "".join(f"create-user user{i} {self.cloud.code(f'user{i}')}\n" for i in range(MANY))
        self.assertEqual(programs.run("qorn-gateway", "--config", config, text=made).status, 0)
        with sqlite3.connect(database) as store:
            tokens = set(store.execute("SELECT userId, refreshToken FROM Users"))
        self.start()
        self.move(0)  # Its hour begins.
        counts = [0]
        for _ in range(60):
            self.move(60)
            counts.append(len(self.kept()))
        most = max(after - before for before, after in zip(counts, counts[1:]))
        self.assertEqual((counts[-1], most <= MANY / 20), (MANY, True), counts)
        with sqlite3.connect(database) as store:
            self.assertFalse(tokens & set(store.execute("SELECT userId, refreshToken FROM Users")))
