"""An HTTP client that returns answers as they came over the wire."""

import collections
import re
import socket
import ssl

import programs

# status: 0 if there is none. end: "whole", "reset" or "cut". largest: the most bytes of one read, over TLS of
# one record.
Seen = collections.namedtuple("Seen", "text status end largest")


class Connection:
    def __init__(self, url, tls=False):
        host, port = re.fullmatch("https?://([0-9.]+):([0-9]+)", url).groups()
        self.socket = socket.create_connection((host, int(port)), programs.PATIENCE)
        self.largest = 0
        if tls:
            self.socket = ssl._create_unverified_context().wrap_socket(self.socket, suppress_ragged_eofs=False)

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        self.socket.close()

    def write(self, text):
        try:
            self.socket.sendall(text.encode(errors="surrogateescape"))
        except ConnectionError:
            pass  # The caller sees it in the answer.

    def read_until(self, end=""):
        """Reads up to and including the text, or to the end of the connection."""
        read = b""
        while (not end or not read.endswith(end.encode())) and (byte := self.socket.recv(1)):
            read += byte
        return read.decode()

    def read_answer(self):
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


def is_whole(text):
    """Whether all of the answer is there; one without a length ends with the connection."""
    head, _, body = text.partition("\r\n\r\n")
    if head.endswith("100 Continue"):
        return is_whole(body)
    length = re.search("\r\nContent-Length: ([0-9]+)", head)
    return " 204 " in head or bool(length) and len(body.encode(errors="surrogateescape")) >= int(length[1])


def send(method, url, body="", header_lines=()):
    base, target = re.fullmatch("(https?://[^/]+)(.*)", url).groups()
    if "Host:" not in str(header_lines):
        header_lines = [f"Host: {base.partition('//')[2]}", *header_lines]
    lines = [f"{method} {target} HTTP/1.1", *header_lines]
    if method != "GET":
        lines.append(f"Content-Length: {len(body.encode(errors='surrogateescape'))}")
    with Connection(base, base.startswith("https")) as connection:
        connection.write("\r\n".join(lines) + "\r\n\r\n" + body)
        text, end = connection.read_answer()
    status = re.search("HTTP/1.1 ([02-9][0-9]+)", text)
    return Seen(text, int(status[1]) if status else 0, end, connection.largest)
