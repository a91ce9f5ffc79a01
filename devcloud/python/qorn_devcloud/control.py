"""What tests see of a running cloud, and change in it: its control API."""

import base64
import contextlib
import dataclasses
import json
import urllib.error
import urllib.request
from collections.abc import Iterator, Mapping
from typing import Any

_open = urllib.request.build_opener(urllib.request.ProxyHandler({})).open


class Refused(RuntimeError):
    """The cloud refused a call of its API; the text has the call, the status and the reason."""

    def __init__(self, call: str, status: int, reason: str):
        super().__init__(f"{call}: status {status}: {reason}")
        self.status = status


@dataclasses.dataclass(frozen=True)
class Request:
    """A request that the cloud received, on any of the ports for gateways."""

    number: int  # from 1, in the order of arrival
    time_ms: int  # since 1970, by the cloud's clock
    tls: bool
    method: str  # "" if the bytes were no HTTP request
    target: str  # the path with its query
    header_lines: list[str]
    body: str
    user: str  # who signs in, whose code or token it is or whom the portal is told, or ""
    fault: str  # the kind of the fault that it met, or ""
    raw: bytes  # the request as it came over the wire
    answer: bytes | None  # the answer as it went out; None while the request stalls

    @property
    def path(self) -> str:
        return self.target.partition("?")[0]

    def header(self, name: str) -> str | None:
        """The value of the first header line with this name, in any case of letters."""
        for line in self.header_lines:
            found, _, value = line.partition(":")
            if found.lower() == name.lower():
                return value.strip()
        return None


def _read_request(seen: dict[str, Any]) -> Request:
    raw, answer = (base64.b64decode(seen[name]) if seen[name] is not None else None
                   for name in ("raw_base64", "answer_base64"))
    known = {field.name for field in dataclasses.fields(Request)}
    return Request(**{name: value for name, value in seen.items() if name in known}, raw=raw or b"", answer=answer)


class Control:
    """The API of a running cloud. Each function raises Refused or, if the cloud cannot be reached, OSError."""

    def __init__(self, urls: Mapping[str, str], timeout: float = 60):
        """`urls` are the cloud's by the names "http" and "api", without a path; `timeout` is in seconds."""
        self.urls = dict(urls)
        self.api_timeout = timeout
        self._resets = 0

    def ask(self, path: str, body: object = None, method: str | None = None) -> Any:
        """The API's answer to a GET, or to a POST if there is a body. `man qorn-devcloud` lists the calls."""
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.urls["api"] + path, data, method=method)
        try:
            with _open(request, timeout=self.api_timeout) as answer:
                return json.load(answer)
        except urllib.error.HTTPError as refusal:
            with refusal:
                reason = refusal.read().decode(errors="replace").strip()
            raise Refused(f"{request.get_method()} {path}", refusal.code, reason) from None

    def code(self, user: str) -> str:
        """A new authorisation code, good for one sign-in within 10 minutes. Nobody need have seen the user before."""
        return str(self.ask("/api/codes", {"user": user})["code"])

    def requests(self, path: str | None = None) -> list[Request]:
        """The requests so far, oldest first; with a path those to this path alone."""
        seen = map(_read_request, self.ask("/api/requests"))
        return [request for request in seen if path in (None, request.path)]

    def forget_requests(self) -> None:
        self.ask("/api/requests", method="DELETE")

    def state(self) -> dict[str, Any]:
        """Users, devices, faults and the clock, as the page shows them."""
        return dict(self.ask("/api/state"))

    @contextlib.contextmanager
    def fault(self, kind: str, *, path: str = "*", user: str = "*", times: int = -1,
              **members: object) -> Iterator[None]:
        """Lets requests meet a fault until the end of the block, or the next so many of them.

        Kinds and further members are those of POST /api/faults: fault("status", status=503, path="/token").
        """
        fault = {"kind": kind, "path": path, "user": user, "times": times, **members}
        number, resets = self.ask("/api/faults", fault)["number"], self._resets
        try:
            yield
        finally:
            # After a reset the number may be another fault's.
            if resets == self._resets:
                self._end_fault(number)

    def _end_fault(self, number: int) -> None:
        try:
            self.ask(f"/api/faults?number={number}", method="DELETE")
        except Refused as refusal:
            if refusal.status != 404:  # It has been met as often as it was asked for.
                raise

    @contextlib.contextmanager
    def refuse_connections(self) -> Iterator[None]:
        """Closes the ports for gateways until the end of the block."""
        self.ask("/api/faults", {"kind": "refuse"})
        try:
            yield
        finally:
            self.ask("/api/faults?kind=refuse", method="DELETE")

    def advance_clock(self, seconds: int) -> None:
        """Moves the clock by which codes and tokens grow old; it never goes back."""
        self.ask("/api/clock", {"advance_seconds": seconds})

    def settings(self, **changes: object) -> dict[str, Any]:
        """What POST /api/settings knows, after these changes: settings(access_lifetime=60, rotation="never")."""
        return dict(self.ask("/api/settings", changes or None))

    def reset(self) -> None:
        """Makes the cloud what it was at its start."""
        self.ask("/api/reset", method="POST")
        self._resets += 1
