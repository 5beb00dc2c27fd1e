"""The Python client library in a network, and what pretends to be a hub for it."""

import contextlib
import functools
import json
import socket
import threading

import camera_hub

from harness.wait import PATIENCE

IMAGE_ID = "0c2a6b5e-7f3d-4c1a-9a55-52c1d0e4b7f6"
OTHER_ID = "5d0e7b0c-31d8-4f0e-8f0f-6c3f6a0f3b52"
PNG = b"\x89PNG\r\n\x1a\nthe rest"  # enough of a file for a client that does not look into it


class Within:
    """An object whose methods run in a network; `object` is the object itself."""

    def __init__(self, network, kind, *arguments, **keywords):
        self.network = network
        self.object = network.run(kind, *arguments, **keywords)

    def __getattr__(self, name):
        return functools.partial(self.network.run, getattr(self.object, name))


def client_of(hub, **keywords):
    """A client of a running hub."""
    return Within(hub.network, camera_hub.Hub, **keywords)


def result(value):
    """A reply with this result, to be completed by the id of the request."""
    return lambda identity: json.dumps({"id": identity, "jsonrpc": "2.0", "result": value}).encode() + b"\n\r\n\0"


def captured(image_id=IMAGE_ID):
    return result({"exposureInUs": 15625, "resid": image_id})


def image(content):
    return b"HTTP/1.1 200 OK\r\nContent-Length: %d\r\nContent-Type: image/png\r\n\r\n" % len(content) + content


def in_background(function, *arguments, **keywords):
    """A thread, and a list of what the function raises."""
    errors = []

    def run():
        try:
            function(*arguments, **keywords)
        except Exception as error:
            errors.append(error)

    thread = threading.Thread(target=run)
    thread.start()
    return thread, errors


class Peer:
    """Listens, reads requests up to the mark that ends each, and answers each with the next of the replies: bytes, a
    function that makes them of the request's JSON id, or a function that does with the connection what it likes. Behind
    the last it ends the connection, or reads on until the client does."""

    def __init__(self, network, mark, replies, ends):
        self.mark, self.ends = mark, ends
        self.requests = []
        self.rest = b""  # what came behind the last request
        self.has_request = threading.Event()
        self.gone = threading.Event()
        self._replies = list(replies)
        self._listener = network.run(socket.create_server, ("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def _serve(self):
        with contextlib.suppress(OSError):  # closed
            while True:
                connection, _ = self._listener.accept()
                connection.settimeout(PATIENCE)
                with connection, contextlib.suppress(ConnectionError):
                    self._talk(connection)

    def _talk(self, connection):
        received = b""
        while data := connection.recv(65536):
            received += data
            while self.mark in received and self._replies:
                request, _, received = received.partition(self.mark)
                self._take(request, connection)
            if not self._replies and self.ends:
                return
        self.rest += received
        self.gone.set()

    def _take(self, request, connection):
        self.requests.append(request)
        self.has_request.set()
        reply = self._replies.pop(0)
        if callable(reply):
            reply = reply(json.loads(request)["id"]) if self.mark == b"\0" else reply(connection)
        connection.sendall(reply or b"")

    def close(self):
        with contextlib.suppress(OSError):
            self._listener.shutdown(socket.SHUT_RDWR)  # which wakes the thread
        self._listener.close()
        self._thread.join(PATIENCE)
        assert not self._thread.is_alive()


class Peers:
    """What answers on both ports; a client of it."""

    def __init__(self, network, messages=(), images=(), ends=False, **keywords):
        self.messages = Peer(network, b"\0", messages, ends)
        self.images = Peer(network, b"\r\n\r\n", images, ends=True)
        self.client = Within(network, camera_hub.Hub, "127.0.0.1", message_port=self.messages.port,
                             image_port=self.images.port, **{"call_timeout": PATIENCE} | keywords)

    @property
    def calls(self):
        """The methods with their parameters that were called so far."""
        return [(request["method"], request["params"]) for request in map(json.loads, self.messages.requests)]

    def close(self):
        self.client.object.close()
        self.messages.close()
        self.images.close()
