"""A client of the hub's port 3141 that shows every byte."""

import json
import select

from harness.wait import wait_until

TIMED_OUT = "captureImage failed: Timed out waiting for camera capture.(-2147483636)"


class RpcClient:
    """Texts are given and taken without the NUL that ends a message."""

    def __init__(self, connection):
        self.socket = connection
        self._received = b""

    def send_bytes(self, data):
        self.socket.sendall(data)

    def send(self, message):
        self.send_bytes((message if isinstance(message, bytes) else message.encode()) + b"\0")

    def receive_bytes(self):
        """One reply with its NUL."""
        while b"\0" not in self._received:
            data = self.socket.recv(65536)
            if not data:
                raise ConnectionError("the hub has closed the connection")
            self._received += data
        reply, _, self._received = self._received.partition(b"\0")
        return reply + b"\0"

    def exchange(self, message):
        """The bytes of the reply to one message."""
        self.send(message)
        return self.receive_bytes()

    def request(self, method, identity=1, **params):
        """The reply as a JSON value."""
        message = {"jsonrpc": "2.0", "id": identity, "method": method, "params": params}
        return json.loads(self.exchange(json.dumps(message))[:-1])

    def discover(self):
        return self.request("camera:discover")["result"]

    def capture(self, uid, **params):
        """The result of a capture, also one that failed."""
        reply = self.request("camera:capture", to=uid, **params)
        assert "result" in reply, reply
        return reply["result"]

    def capture_in_time(self, uid, **params):
        """The same, again and again where a busy machine makes no still in the time that the hub waits for one."""

        def result():
            reply = self.request("camera:capture", to=uid, **params)
            return None if reply.get("error") == {"message": TIMED_OUT} else reply["result"]

        return wait_until(result, "a still in time")

    def has_bytes_within(self, seconds):
        return bool(self._received) or bool(select.select([self.socket], [], [], seconds)[0])

    def rest(self):
        """What still comes until the hub closes the connection."""
        data, self._received = self._received, b""
        try:
            while more := self.socket.recv(65536):
                data += more
        except ConnectionResetError:
            pass
        return data

    def close(self):
        self.socket.close()
