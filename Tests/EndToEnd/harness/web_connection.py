"""A client of the program for browsers that shows every byte, and takes nothing that is not HTTP/1.1 to the letter."""

import contextlib
import json
import re
import select
import socket
from dataclasses import dataclass

STATUS_LINE = re.compile(r"HTTP/1\.1 ([1-5][0-9][0-9]) ([ -~]*)")
HEADER = re.compile(r"([!#$%&'*+.^_`|~0-9A-Za-z-]+): ?([\t -~]*)")
WITHOUT_A_BODY = (204, 304)
JSON = ("application/json", "application/problem+json")


@dataclass(frozen=True)
class Answer:
    status: int
    headers: tuple  # of names and values, as they came
    body: bytes

    def header(self, name):
        """None where it is not there; there must not be two."""
        values = [value for each, value in self.headers if each.lower() == name.lower()]
        assert len(values) <= 1, (name, values)
        return values[0] if values else None

    @property
    def media_type(self):
        return (self.header("Content-Type") or "").partition(";")[0]

    def json(self):
        assert self.media_type in JSON, self
        return json.loads(self.body.decode("utf-8", "strict"))

    @property
    def kind(self):
        """That of a problem."""
        assert self.media_type == "application/problem+json", self
        problem = self.json()
        assert problem["status"] == self.status
        return problem["type"].removeprefix("urn:camera-hub:problem:")


def parse_head(head):
    lines = head.decode("ascii").removesuffix("\r\n\r\n").split("\r\n")
    status = STATUS_LINE.fullmatch(lines[0])
    assert status, head
    headers = [HEADER.fullmatch(line) for line in lines[1:]]
    assert all(headers), head
    return Answer(int(status[1]), tuple((match[1], match[2].strip()) for match in headers), b"")


class WebConnection:
    """Over a socket, plain or with TLS."""

    def __init__(self, connection):
        self.socket = connection
        self._received = b""

    def send(self, data):
        self.socket.sendall(data)

    def ask(self, method, target, headers=None, body=None):
        """Sends a request; a header whose value is None is not sent, also none of those that it has by itself."""
        given = {"Host": "localhost"} | ({"Content-Length": len(body)} if body is not None else {}) | (headers or {})
        lines = [f"{name}: {value}" for name, value in given.items() if value is not None]
        self.send("\r\n".join([f"{method} {target} HTTP/1.1", *lines, "", ""]).encode("latin-1") + (body or b""))

    def request(self, method, target, headers=None, body=None):
        self.ask(method, target, headers, body)
        return self.receive(method)

    def _receive_more(self):
        """False at the end."""
        data = self.socket.recv(1 << 18)
        self._received += data
        return bool(data)

    def receive_exactly(self, count):
        while len(self._received) < count:
            assert self._receive_more(), f"ended behind {self._received[:1000]}"
        data, self._received = self._received[:count], self._received[count:]
        return data

    def receive_through(self, mark):
        while mark not in self._received:
            assert self._receive_more(), f"ended behind {self._received[:1000]}"
        return self.receive_exactly(self._received.index(mark) + len(mark))

    def receive_head(self):
        return parse_head(self.receive_through(b"\r\n\r\n"))

    def receive(self, method="GET"):
        """One answer that has an end."""
        head = self.receive_head()
        return self.receive(method) if head.status == 100 else self.receive_after(head, method)

    def receive_after(self, head, method="GET"):
        """The answer whose head came before."""
        if method == "HEAD" or head.status in WITHOUT_A_BODY:
            return head
        return Answer(head.status, head.headers, self._receive_body(head))

    def _receive_body(self, head):
        length, coding = head.header("Content-Length"), head.header("Transfer-Encoding")
        assert length is None or coding is None, head
        if length is not None:
            return self.receive_exactly(int(length))
        if coding is not None:
            return b"".join(self.chunks())
        return self.rest()

    def chunks(self):
        """Those of a body in chunks, as they come."""
        while size := int(self.receive_through(b"\r\n"), 16):
            yield self.receive_exactly(size)
            assert self.receive_exactly(2) == b"\r\n"
        assert self.receive_exactly(2) == b"\r\n"

    def pieces(self, head):
        """Those of a body that may have no end, as they come."""
        if head.header("Transfer-Encoding") is not None:
            yield from self.chunks()
            return
        while self._received or self._receive_more():
            data, self._received = self._received, b""
            yield data

    def has_bytes_within(self, seconds):
        return bool(self._received) or bool(select.select([self.socket], [], [], seconds)[0])

    def rest(self):
        """What comes until the connection is closed at the other end."""
        try:
            while self._receive_more():
                pass
        except ConnectionResetError:
            pass
        data, self._received = self._received, b""
        return data

    def finish(self):
        """Nothing more will be sent."""
        with contextlib.suppress(OSError):
            self.socket.shutdown(socket.SHUT_WR)

    def close(self):
        self.socket.close()
