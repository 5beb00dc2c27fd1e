"""What comes without an end: events and moving pictures."""

import contextlib
import json
import re
from dataclasses import dataclass

from harness.openapi import check, named, operation
from harness.wait import wait_until

EVENT = re.compile(rb"(?::[^\n]*\n|id: ?([^\n]+)\n|event: ?([^\n]+)\n|data: ?([^\n]+)\n)")
SCHEMAS = operation("followEvents").value["x-events"]


@dataclass(frozen=True)
class Event:
    identity: str
    name: str
    data: object


class Stream:
    """An answer without an end on a connection of its own."""

    def __init__(self, web, target, headers=None, source="127.0.0.1"):
        self.connection = web.connect(source=source)
        self.connection.ask("GET", target, headers)
        self.head = self.connection.receive_head()
        self._pieces = self.connection.pieces(self.head)
        self._received = b""

    def through(self, mark):
        while mark not in self._received:
            self._received += next(self._pieces)
        return self.exactly(self._received.index(mark) + len(mark))

    def exactly(self, count):
        while len(self._received) < count:
            self._received += next(self._pieces)
        data, self._received = self._received[:count], self._received[count:]
        return data

    def close(self):
        self.connection.close()


class Events(Stream):
    """Those of /api/events, each held against its schema. `seen` has all so far."""

    def __init__(self, web, headers=None):
        super().__init__(web, "/api/events", {"Accept": "text/event-stream"} | (headers or {}))
        self.seen = []

    def next(self):
        while True:
            block = self.through(b"\n\n")[:-1]
            fields = list(EVENT.finditer(block))
            assert b"".join(field[0] for field in fields) == block, block
            values = {name: field[number].decode() for number, name in ((1, "id"), (2, "event"), (3, "data"))
                      for field in fields if field[number] is not None}
            if values:  # else it was a comment
                event = Event(values["id"], values["event"], json.loads(values["data"]))
                check(SCHEMAS[event.name], event.data)
                self.seen.append(event)
                return event

    def wait_for(self, name, condition=lambda data: True):
        """The data of the next of that name that meets the condition."""
        while True:
            event = self.next()
            if event.name == name and condition(event.data):
                return event.data


@dataclass(frozen=True)
class Picture:
    still: str
    jpeg: bytes


class MovingPictures(Stream):
    """Those of a camera, each part taken to the letter."""

    def __init__(self, web, target, **keywords):
        super().__init__(web, target, **keywords)
        self._is_first = True

    def next(self):
        if self._is_first:
            self._pass_boundary()
        self._is_first = False
        head = self.through(b"\r\n\r\n").decode("ascii").removesuffix("\r\n\r\n")
        headers = dict(line.split(": ", 1) for line in head.split("\r\n"))
        assert set(headers) == {"Content-Type", "Content-Length", "Camera-Hub-Still", "Camera-Hub-Exposure"}
        assert headers["Content-Type"] == "image/jpeg"
        assert re.fullmatch("[0-9a-f]{32}", headers["Camera-Hub-Still"])
        picture = Picture(headers["Camera-Hub-Still"], self.exactly(int(headers["Content-Length"])))
        self._pass_boundary()  # it comes together with the picture: browsers show it only then
        return picture

    def _pass_boundary(self):
        boundary = b"\r\n--frame\r\n"
        assert self.exactly(len(boundary)) == boundary


@contextlib.contextmanager
def closing(stream):
    try:
        yield stream
    finally:
        stream.close()


def wait_for_queue(web, condition, what):
    """The first queue that meets the condition, held against its schema."""
    def fitting():
        entries = web.queue()
        check(named("Queue"), {"queue": entries})
        return (entries,) if condition(entries) else None

    return wait_until(fitting, what)[0]
