"""A development cloud of the test's own."""

import pathlib
import subprocess

from .control import Control
from .process import Ended, Process


class Cloud(Control, Process):
    """A qorn-devcloud on free ports of 127.0.0.1.

    It takes requests when the constructor returns, and is killed at the end of its `with` block. What it
    complains about goes to standard error.
    """

    def __init__(self, *options: str | pathlib.Path, program: str = "qorn-devcloud"):
        """`options` are those of the program. Raises Ended if it does not start."""
        Process.__init__(self, program, "--port", "0", "--https-port", "0", "--print-urls", *options,
                         stdout=subprocess.PIPE)
        assert self.stdout is not None
        lines = [self.stdout.readline().decode().split() for _ in range(3)]
        if not all(lines):
            with self:
                raise Ended(f"{program} did not start; standard error says why")
        # "http" and "https" for gateways, "api" for people and tests.
        Control.__init__(self, {kind: url for kind, url in lines})
