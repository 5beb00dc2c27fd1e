"""Stands in for the service manager that starts a hub and listens to it."""

import socket


class ServiceManager:
    """Its environment() makes a hub a service of it; the time limit of the watchdog is in seconds."""

    def __init__(self, folder, watchdog=None):
        self._file = folder / "notify"
        self._watchdog = watchdog
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(str(self._file))

    def environment(self):
        variables = {"NOTIFY_SOCKET": str(self._file), "WATCHDOG_PID": None, "WATCHDOG_USEC": None}
        return variables if self._watchdog is None else variables | {"WATCHDOG_USEC": str(int(self._watchdog * 1e6))}

    def receive(self, seconds):
        """The next message; none if it does not come in time."""
        self._socket.settimeout(seconds)
        try:
            return self._socket.recv(4096).decode()
        except TimeoutError:
            return None

    def receive_all_there_is(self):
        messages = []
        while (message := self.receive(0.001)) is not None:
            messages.append(message)
        return messages

    def close(self):
        self._socket.close()
