"""An HTTP client that sends what it is given and returns answers as they came over the wire.

Bytes that are no UTF-8 are surrogate escapes in texts. A cloud that says nothing for a minute raises TimeoutError.
"""

import re
import socket
import ssl
import urllib.parse
from collections.abc import Iterable
from typing import Any, NamedTuple

TIMEOUT = 60  # seconds


class Seen(NamedTuple):
    """What a client saw of an answer."""

    text: str  # head and body
    status: int  # 0 if there is none
    end: str  # "whole", "reset" or "cut"
    largest: int  # the most bytes of one read, over TLS of one record


class Connection:
    """A connection to the host and port of a URL, closed at the end of its `with` block."""

    def __init__(self, url: str, tls: bool = False):
        place = urllib.parse.urlsplit(url)
        default_port = 443 if place.scheme == "https" else 80
        self.socket = socket.create_connection((place.hostname or "", place.port or default_port), TIMEOUT)
        self.largest = 0
        if tls:
            self.socket = ssl._create_unverified_context().wrap_socket(self.socket, suppress_ragged_eofs=False)

    def __enter__(self) -> "Connection":
        return self

    def __exit__(self, *failure: Any) -> None:
        self.socket.close()

    def write(self, text: str) -> None:
        """Sends the text. A connection that the other side has closed is seen in the answer."""
        try:
            self.socket.sendall(text.encode(errors="surrogateescape"))
        except ConnectionError:
            pass

    def read_until(self, end: str = "") -> str:
        """Reads up to and including the text, or to the end of the connection."""
        read = b""
        while (not end or not read.endswith(end.encode())) and (byte := self.socket.recv(1)):
            read += byte
        return read.decode()

    def read_answer(self) -> tuple[str, str]:
        """Reads one answer, or as much as arrives of it; returns it and how it ended."""
        read = b""
        try:
            while not is_whole(text := read.decode(errors="surrogateescape")):
                piece = self.socket.recv(1 << 16)
                if not piece:
                    return text, "cut" if not text or "\r\nContent-Length: " in text else "whole"
                self.largest = max(self.largest, len(piece))
                read += piece
        except (ConnectionError, ssl.SSLError):
            return text, "reset"
        return text, "whole"


def is_whole(text: str) -> bool:
    """Whether all of the answer is there; one without a length ends with the connection."""
    head, _, body = text.partition("\r\n\r\n")
    if head.endswith("100 Continue"):
        return is_whole(body)
    length = re.search("\r\nContent-Length: ([0-9]+)", head)
    return " 204 " in head or length is not None and len(body.encode(errors="surrogateescape")) >= int(length[1])


def send(method: str, url: str, body: str = "", header_lines: Iterable[str] = ()) -> Seen:
    """Sends one request, with a Host line unless there is one, on a connection of its own. Checks no certificate."""
    scheme, _, rest = url.partition("://")
    host, slash, path = rest.partition("/")
    if "Host:" not in str(header_lines):
        header_lines = [f"Host: {host}", *header_lines]
    lines = [f"{method} {slash}{path} HTTP/1.1", *header_lines]
    if method != "GET":
        lines.append(f"Content-Length: {len(body.encode(errors='surrogateescape'))}")
    with Connection(url, scheme == "https") as connection:
        connection.write("\r\n".join(lines) + "\r\n\r\n" + body)
        text, end = connection.read_answer()
    status = re.search("HTTP/1.1 ([02-9][0-9]+)", text)
    return Seen(text, int(status[1]) if status else 0, end, connection.largest)
