"""What tests of the service on the bus have in common."""

import subprocess

import programs


class BusTestCase(programs.TestCase):
    def setUp(self):
        super().setUp()
        self.folder.chmod(0o755)
        self.bus = self.enterContext(programs.Bus(self.folder))
        self.cloud = self.enterContext(programs.Cloud())

    def start_gateway(self, *arguments, calls=1000, by=(), **options):
        """A daemon that allows root ten times as many calls a second, started by the command `by`; its group is "games"."""
        config = programs.write_config(
            self.folder, self.cloud, gateway_bus_calls_per_second=calls, gateway_bus_call_burst=calls,
            gateway_bus_sign_ins_per_minute=1000, gateway_bus_group="games")
        gateway = self.enterContext(programs.Process(
            *by, programs.find_program("qorn-gateway"), "--config", config, "--log", self.folder / "log",
            "--audit", self.folder / "audit", "--daemon", "--bus", self.bus.address, *arguments, stdout=subprocess.DEVNULL, **options))
        programs.wait_until(lambda: gateway.poll() is not None or self.answers())
        return gateway

    def listen(self):
        """Returns a file to which all signals of the bus are written from now on."""
        heard = self.folder / "signals"
        self.enterContext(programs.Process("dbus-monitor", "--address", self.bus.address, "type='signal'",
                                           stdout=self.enterContext(heard.open("wb"))))
        programs.wait_until(heard.read_text)  # Its own name is the first signal.
        return heard

    def answers(self):
        return self.ctl("get-session-lifetime").status == 0

    def ctl(self, *words, **options):
        return programs.run("qornctl", "--bus", self.bus.address, *words, **options)

    def assert_stops(self, gateway):
        self.assertTrue(self.answers())
        gateway.terminate()
        self.assertEqual(gateway.wait(programs.PATIENCE), 0)
