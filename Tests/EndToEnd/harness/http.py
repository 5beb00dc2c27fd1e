"""A client of the hub's port 3142 that shows every byte."""

import select
from dataclasses import dataclass


@dataclass
class HttpResponse:
    head: bytes  # with the empty line
    body: bytes  # of a chunked response: with the chunk sizes, up to the first end mark

    @property
    def status_line(self):
        return self.head.partition(b"\r\n")[0].decode()

    @property
    def status(self):
        return int(self.head.split(b" ", 2)[1])


class HttpConnection:
    def __init__(self, connection):
        self.socket = connection
        self._received = b""

    def send(self, data):
        self.socket.sendall(data)

    def _receive_more(self):
        data = self.socket.recv(1 << 20)
        if not data:
            raise ConnectionError("the hub has closed the connection")
        self._received += data

    def receive_exactly(self, count):
        while len(self._received) < count:
            self._receive_more()
        data, self._received = self._received[:count], self._received[count:]
        return data

    def receive_through(self, mark):
        while mark not in self._received:
            self._receive_more()
        return self.receive_exactly(self._received.index(mark) + len(mark))

    def receive_response(self):
        head = self.receive_through(b"\r\n\r\n")
        for line in head.split(b"\r\n"):
            name, _, value = line.partition(b": ")
            if name == b"Content-Length":
                return HttpResponse(head, self.receive_exactly(int(value)))
        return HttpResponse(head, self.receive_through(b"0\r\n\r\n"))

    def get(self, path):
        self.send(f"GET {path} HTTP/1.1\r\nHost: localhost\r\n\r\n".encode())
        return self.receive_response()

    def has_bytes_within(self, seconds):
        return bool(self._received) or bool(select.select([self.socket], [], [], seconds)[0])

    def close(self):
        self.socket.close()
