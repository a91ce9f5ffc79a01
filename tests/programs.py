"""Helpers for tests of whole programs. CTest passes the build folder in QORN_BUILD.

Tests wait for conditions, never for a time; a condition that does not hold after PATIENCE seconds fails.
"""

import base64
import collections
import json
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
import urllib.request

BUILD = pathlib.Path(os.environ["QORN_BUILD"]).resolve()
LIBRARIES = BUILD / "lib"
SOURCE = pathlib.Path(__file__).resolve().parent.parent
PATIENCE = 90
# A program that dies prints the stacks of its threads to its standard error.
os.environ.update(LD_PRELOAD=str(LIBRARIES / "libqorn_crash_report.so"), ASAN_OPTIONS="verify_asan_link_order=0")
DEADLY = {signal.SIGSEGV, signal.SIGABRT, signal.SIGBUS, signal.SIGFPE, signal.SIGILL}
Ended = collections.namedtuple("Ended", "status output errors")  # status: minus the signal that ended it
open_url = urllib.request.build_opener(urllib.request.ProxyHandler({})).open


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


def write_config(folder, cloud, *changes):
    """Writes config.xml for a gateway whose storage folder is "data" beside it; changes are (old, new) texts."""
    (folder / "data").mkdir(parents=True, exist_ok=True)
    text = (SOURCE / "tests/config.xml").read_text()
    for old, new in (("$data", f"{folder}/data"), ("$cloud", cloud.urls["http"]), *changes):
        assert old in text, old
        text = text.replace(old, new)
    (folder / "config.xml").write_text(text)
    return folder / "config.xml"


class Program(subprocess.Popen):
    """A program of the build, killed at the end of its block if it still runs then."""

    def __init__(self, *command, **options):
        super().__init__(command, cwd=BUILD / "bin", **options)

    def __exit__(self, *failure):
        self.kill()
        super().__exit__(*failure)


class Cloud(Program):
    """A development cloud on free ports; `urls` has those for "http", "https" and "api"."""

    def __init__(self, *options):
        super().__init__("./qorn-devcloud", "--port", "0", "--https-port", "0", "--print-urls", *options,
                         stdout=subprocess.PIPE)
        self.urls = dict(self.stdout.readline().decode().split() for _ in range(3))

    def ask(self, path, body=None, method=None):
        """What its API answers, to a POST if there is a body."""
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.urls["api"] + path, data, method=method)
        with open_url(request, timeout=PATIENCE) as answer:
            return json.load(answer)

    def issue_code(self, user):
        return self.ask("/api/codes", {"user": user})["code"]

    def exchanges(self):
        """The bytes of each request so far, and of its answer."""
        return [[base64.b64decode(request[part] or "") for part in ("raw_base64", "answer_base64")]
                for request in self.ask("/api/requests")]


class Bus(Program):
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


class Terminal(Program):
    """A program at a pseudo-terminal, where output and errors are one stream."""

    def __init__(self, program, *arguments, **environment):
        self.terminal, side = os.openpty()
        self.unread = b""
        super().__init__("setsid", "--ctty", "./" + program, *arguments, stdin=side, stdout=side, stderr=side,
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
