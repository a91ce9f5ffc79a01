"""Helpers for tests of whole programs. CTest passes the build folder in QORN_BUILD.

Tests wait for conditions, never for a time; a condition that does not hold after PATIENCE seconds fails.
"""

import collections
import os
import pathlib
import re
import select
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import qorn_devcloud
from qorn_devcloud import Cloud, Process, find_program

BUILD = pathlib.Path(os.environ["QORN_BUILD"]).resolve()
LIBRARIES = BUILD / "lib"
SOURCE = pathlib.Path(__file__).resolve().parent.parent
PATIENCE = 90
# A program that dies prints the stacks of its threads to its standard error.
os.environ.update(LD_PRELOAD=str(LIBRARIES / "libqorn_crash_report.so"), ASAN_OPTIONS="verify_asan_link_order=0")
DEADLY = {signal.SIGSEGV, signal.SIGABRT, signal.SIGBUS, signal.SIGFPE, signal.SIGILL}
Ended = collections.namedtuple("Ended", "status output errors")  # status: minus the signal that ended it


def run(program, *arguments, text="", stdout=subprocess.PIPE, **options):
    """Runs a program of the build to its end, with the text as its input."""
    with subprocess.Popen([BUILD / "bin" / program, *arguments], stdin=subprocess.PIPE, stdout=stdout,
                          stderr=subprocess.PIPE, **options) as process:
        try:
            output, errors = process.communicate(text.encode(), PATIENCE)
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGABRT)
            output, errors = process.communicate()
    return Ended(process.returncode, (output or b"").decode(), show_death(process.returncode, errors.decode()))


def show_death(status, text):
    """Returns the text; prints it too if the program crashed."""
    if -status in DEADLY or "Sanitizer" in text:
        print(f"status {status}:\n{text}", file=sys.stderr)
    return text


def wait_until(condition):
    deadline = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < deadline, "the condition did not come"
        time.sleep(0.005)


def mode(path):
    return oct(os.stat(path).st_mode & 0o777)


def write_config(folder, cloud, **keys):
    """As qorn_devcloud's, but logs nothing: without --log a gateway would mix it into what it prints."""
    return qorn_devcloud.write_config(folder, cloud, {"account_log_level": "LOG_FATAL", **keys})


class Bus(Process):
    """A D-Bus daemon in the folder, as the system's, but that everybody may have every name and hear everything."""

    CONFIG = """<busconfig><type>system</type><listen>{}</listen><auth>EXTERNAL</auth><policy context='default'>
        <allow user='*'/><allow own='*'/><allow send_destination='*' eavesdrop='true'/><allow eavesdrop='true'/></policy>
        <limit name='max_connections_per_user'>4096</limit></busconfig>"""

    def __init__(self, folder):
        self.address = f"unix:path={folder}/bus"
        (folder / "bus.conf").write_text(self.CONFIG.format(self.address))
        super().__init__("dbus-daemon", "--nofork", "--nopidfile", "--print-address", f"--config-file={folder}/bus.conf",
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.stdout.readline()  # It takes connections now.

    def end(self):
        self.kill()
        self.wait()
        pathlib.Path(self.address.removeprefix("unix:path=")).unlink(missing_ok=True)


class Terminal(Process):
    """A program at a pseudo-terminal, where output and errors are one stream."""

    def __init__(self, program, *arguments, **environment):
        self.terminal, side = os.openpty()
        self.unread = b""
        super().__init__("setsid", "--ctty", find_program(program), *arguments, stdin=side, stdout=side, stderr=side,
                         env={**os.environ, "TERM": "dumb", **environment})
        os.close(side)

    def __exit__(self, *failure):
        super().__exit__(*failure)
        os.close(self.terminal)

    def type(self, keys):
        os.write(self.terminal, keys.encode())

    def wait_for(self, text):
        """Reads up to and including the text; returns what came before it."""
        while text.encode() not in self.unread:
            assert self._read(), f"ended without {text!r}: {self.unread.decode()!r}"
        before, _, self.unread = self.unread.partition(text.encode())
        return before.decode()

    def finish(self, keys="", status=0):
        """Types the keys, expects the program to exit with the status, and returns the rest of its output."""
        self.type(keys)
        while self._read():
            pass
        output = show_death(self.wait(PATIENCE), self.unread.decode())
        assert self.returncode == status, f"ended with status {self.returncode}: {output!r}"
        return output

    def _read(self):
        assert select.select([self.terminal], [], [], PATIENCE)[0], f"nothing comes after {self.unread}"
        try:
            self.unread += os.read(self.terminal, 4096)
        except OSError:  # The program has ended.
            return False
        return True


class TestCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        memory = "/dev/shm" if os.path.isdir("/dev/shm") else None
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(dir=memory)))

    def write(self, name, text):
        (self.folder / name).write_bytes(text.encode())
        return self.folder / name

    def assert_one_line(self, errors, begin, *words):
        self.assertRegex(errors, "^" + re.escape(begin) + ".*\n$")
        for word in words:
            self.assertIn(word, errors)
