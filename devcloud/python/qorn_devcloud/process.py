"""Programs that a test starts, and where they are found."""

import os
import pathlib
import shutil
import subprocess
from typing import Any


class Ended(RuntimeError):
    """A program ended when it was still needed."""


def find_program(name: str) -> str:
    """Returns the path of a program: out of the folder bin of the build that QORN_BUILD names, else from PATH.

    A name with a slash is returned as it is. Raises FileNotFoundError with advice if there is no such program.
    """
    build = os.environ.get("QORN_BUILD")
    places = [os.path.abspath(os.path.join(build, "bin"))] if build else []
    found = shutil.which(name, path=os.pathsep.join([*places, os.environ.get("PATH", os.defpath)]))
    if found is None:
        raise FileNotFoundError(f"there is no program {name} on PATH: install the package that has it, or set "
                                "QORN_BUILD to a build folder, such as build/release")
    return found


def without_proxies() -> dict[str, str]:
    """The environment without the variables that would send requests for the cloud to a proxy."""
    return {name: value for name, value in os.environ.items() if not name.lower().endswith("_proxy")}


class Process(subprocess.Popen[bytes]):
    """A running program, which is killed at the end of its `with` block if it still runs then."""

    def __init__(self, program: str, *arguments: str | pathlib.Path, **options: Any):
        """Starts a program that find_program() finds; the options are those of subprocess.Popen."""
        super().__init__([find_program(program), *arguments], **options)

    def __exit__(self, *failure: Any) -> None:
        self.kill()
        super().__exit__(*failure)

    def stop(self, timeout: float = 60) -> int:
        """Ends the program in order and returns its exit status; raises subprocess.TimeoutExpired."""
        self.terminate()
        return self.wait(timeout)
