"""The example beside the account component, in the real program on a development cloud."""

import pathlib
import re

import programs


class PresenceWatch(programs.TestCase):
    def run_gateway(self, *components, script=""):
        cloud = self.enterContext(programs.Cloud())
        config = programs.write_config(self.folder, cloud, account_log_level="LOG_INFO")
        loaded = [word for component in components for word in ("--component", programs.LIBRARIES / component)]
        return programs.run("qorn-gateway", "--config", config, *loaded, "--log", self.folder / "log", text=script)

    def test_counts_the_open_sessions_of_each_user(self):
        script = pathlib.Path("presence.qorn").read_text()
        ended = self.run_gateway("libqorn_account.so", "libpresence_watch.so", script=script)
        self.assertEqual((ended.status, ended.errors), (0, ""))
        log = (self.folder / "log").read_text()
        self.assertIn("presence: ", script)
        self.assertEqual(re.findall("presence: .*", log), re.findall("(?m)(?<=^#> ).*", script))
        # Only of the session that the reset ended it had to ask.
        self.assertEqual(re.findall("(?<=CheckSessionValidationEnd)I.*", log), ["Invalid Session ID"])

    def test_does_not_start_before_the_account_component(self):
        self.assertEqual(self.run_gateway("libpresence_watch.so", "libqorn_account.so"), (
            2, "", f"qorn-gateway: {programs.LIBRARIES}/libpresence_watch.so: did not start\n"))
