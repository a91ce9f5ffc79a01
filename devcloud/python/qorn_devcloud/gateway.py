"""A gateway of the test's own, on a development cloud."""

import contextlib
import dataclasses
import json
import os
import pathlib
import shlex
import subprocess
from collections.abc import Mapping
from typing import Any
from xml.sax import saxutils

from .control import Control
from .process import Ended, Process, without_proxies

# docs/configuration.md has the keys. Those up to the portal's URL are all needed.
_KEYS = {
    "account_db_path": "account.db",
    "OAuth_AsClient_app_name": "name",
    "OAuth_AsClient_app_id": "client",
    "OAuth_AsClient_app_secret": "secret-of-client",
    "account_device_type_code": "HGW",
    "account_device_model_id": "QG-1",
    "account_device_physical_address_text": "AABBCC",
    "account_service": "ACCOUNT",
    "account_server_type": "NTS",
    "account_qor_device_name": "Home",
    "account_enable_MIRLO_network_setting": "off",
}


def write_config(folder: pathlib.Path, cloud: Control, keys: Mapping[str, object] | None = None) -> pathlib.Path:
    """Writes config.xml, readable by its owner alone, for a gateway on the cloud with its storage in folder/data.

    `keys` replaces values and adds keys. Returns the path of the file.
    """
    storage = folder / "data"
    storage.mkdir(parents=True, exist_ok=True)
    values: dict[str, object] = {
        "qorn_storage_path": f"{storage}/", **_KEYS, "account_zep_auth_url": cloud.urls["http"],
        "account_user_portal_url": cloud.urls["http"], **(keys or {})}
    lines = [f"  <{key}>{saxutils.escape(str(value))}</{key}>\n" for key, value in values.items()]
    path = folder / "config.xml"
    with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "w", encoding="utf-8") as file:
        file.write("<config>\n" + "".join(lines) + "</config>\n")
    return path


@dataclasses.dataclass(frozen=True)
class Answer:
    """What a console command answered."""

    command: str
    code: int  # of the account interface; 1 is success
    message: str
    outputs: dict[str, Any]  # by name; codes and tokens are shortened, unless the gateway got --show-secrets

    def __getitem__(self, name: str) -> Any:
        return self.outputs[name]


class Gateway(Process):
    """A qorn-gateway with its console, that signs users in at a cloud.

    It is killed at the end of its `with` block; stop() ends it in order. `events` has those that were
    published up to the latest answer, oldest first, as the console's JSON objects.
    """

    def __init__(self, cloud: Control, folder: pathlib.Path, *options: str | pathlib.Path,
                 keys: Mapping[str, object] | None = None, program: str = "qorn-gateway"):
        """Starts it with folder/config.xml, which is written anew with these keys, and the log folder/log.

        `options` are those of the program. A gateway that finds a database in folder/data goes on with it.
        """
        self.folder = folder
        self.log = folder / "log"
        self.events: list[dict[str, Any]] = []
        self._typed_lines = 0
        super().__init__(program, "--config", write_config(folder, cloud, keys), "--log", self.log, "--json",
                         "--keep-going", *options, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, env=without_proxies())

    def run(self, *words: str) -> Answer:
        """Runs a command of the account interface, such as run("sign-in", user, code).

        Raises ValueError if the console refuses it, and Ended if the gateway ends before its answer.
        """
        line = self._type(words)
        answer = self._read(line)
        while answer["type"] not in ("answer", "error"):
            answer = self._read(line)
        if answer["type"] == "error":
            raise ValueError(answer["text"])
        return Answer(answer["command"], answer["code"], answer["message"], answer["outputs"])

    def show(self, *words: str) -> list[dict[str, Any]]:
        """Runs any command of the console, such as show("users"); returns the JSON objects that it prints."""
        line = self._type(words)
        self._type(("say", "shown"))
        printed = []
        while (read := self._read(line)) != {"type": "text", "text": "shown"}:
            printed.append(read)
        return printed

    def _type(self, words: tuple[str, ...]) -> int:
        """Returns the number of the line that the words make."""
        assert self.stdin is not None
        with contextlib.suppress(BrokenPipeError):  # Reading tells how it ended.
            os.write(self.stdin.fileno(), (shlex.join(words) + "\n").encode())
        self._typed_lines += 1
        return self._typed_lines

    def _read(self, oldest_line: int) -> dict[str, Any]:
        """The next object of the console that is neither an event nor an error of an earlier line."""
        assert self.stdout is not None
        other = []  # What is no object is said by something else than the console.
        for text in self.stdout:
            try:
                read: dict[str, Any] = json.loads(text)
            except ValueError:
                other.append(text.decode(errors="replace"))
                continue
            if read["type"] == "event":
                self.events.append(read)
            # A failure is an answer and, behind it, an error.
            elif read["type"] != "error" or read.get("line", oldest_line) >= oldest_line:
                return read
        raise Ended(f"qorn-gateway ended with status {self.wait()}: {''.join(other)}")
