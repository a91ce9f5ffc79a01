"""A gateway with a component that answers from memory, so that tests need no cloud."""

import os
import re

import programs

FAKE = ("--component", programs.LIBRARIES / "libqorn_gateway_fake_component.so")


class GatewayTestCase(programs.TestCase):
    def setUp(self):
        super().setUp()
        # The component's long operation lasts until the test closes this pipe.
        self.pipe = self.folder / "pipe"
        os.mkfifo(self.pipe)
        self.configure("")
        self.command = ("qorn-gateway", "--config", self.folder / "config.xml", *FAKE, "--log", self.folder / "log")

    def configure(self, keys):
        self.write("config.xml", f"<config>{keys}</config>")

    def audit(self):
        """The audit file without its times."""
        return re.sub('"time":"20[0-9-]{8}T[0-9:.]{12}Z",', "", (self.folder / "audit").read_text())

    def start(self, *arguments, **environment):
        """Starts it at a terminal, with its history in the test's folder."""
        return self.enterContext(programs.Terminal(*self.command, *arguments, XDG_STATE_HOME=str(self.folder),
                                                   **environment))
