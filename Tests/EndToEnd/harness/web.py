"""The program that speaks HTTP to people, run in the network of a hub."""

import contextlib
import json
import os
import re
import signal
import socket
import subprocess
from pathlib import Path
from urllib.parse import quote

from harness.hub import EXECUTABLE, SANITIZER_REPORT
from harness.wait import PATIENCE, wait_until
from harness.web_connection import WebConnection

WEB_EXECUTABLE = Path(os.environ.get("WEB_EXECUTABLE", EXECUTABLE.with_name("camera-hub-web"))).absolute()
LINE = re.compile(r"camera-hub-web: (https?)://(.+):([0-9]+)/\n")
ENVIRONMENT = {name: value for name, value in os.environ.items() if not name.startswith("CAMERA_HUB_")}


def part(uid):
    """A camera's uid as one part of a path."""
    return quote(uid, safe="")


def run_web(network, *arguments):
    """The result of one that ends by itself."""
    return network.run(subprocess.run, [str(WEB_EXECUTABLE), *map(str, arguments)], capture_output=True, text=True,
                       stdin=subprocess.DEVNULL, timeout=PATIENCE, check=False, env=ENVIRONMENT)


class Web:
    """Runs until stop(), which checks that it has ended in order. It listens at any port of 127.0.0.1, unless the
    arguments name another place."""

    def __init__(self, folder, network, *arguments, tls=None, prepare=None):
        self.network, self.tls = network, tls
        self.stdout_file, self.stderr_file = folder / "web-stdout.txt", folder / "web-stderr.txt"
        self._connections = []
        if "--listen" not in arguments:
            arguments = ("--listen", "127.0.0.1:0", *arguments)
        # setpriv: it goes down with the tests, however they end.
        command = ["setpriv", "--pdeathsig", "KILL", str(WEB_EXECUTABLE), *map(str, arguments)]
        if prepare:
            command = ["sh", "-e", "-c", f'{prepare}\nexec "$@"', "sh", *command]
        with open(self.stdout_file, "wb") as stdout, open(self.stderr_file, "wb") as stderr:
            self.process = network.run(subprocess.Popen, command, cwd=folder, stdin=subprocess.DEVNULL, stdout=stdout,
                                       stderr=stderr, env=ENVIRONMENT)
        line = wait_until(self._line, "the program listens")
        self.scheme, self.host, port = line.groups()
        self.port = int(port)

    def _line(self):
        written = self.stdout_file.read_text(encoding="utf-8")
        assert self.process.poll() is None, f"it has ended: {self.stderr()}"
        return written.endswith("\n") and LINE.fullmatch(written)

    def stderr(self):
        return self.stderr_file.read_text(encoding="utf-8", errors="replace")

    def connect(self, encrypted=True, source="127.0.0.1", target="127.0.0.1"):
        """A connection that ends with the program, if it is not closed before."""
        plain = self.network.run(socket.create_connection, (target, self.port), PATIENCE, (source, 0))
        if self.tls and encrypted:
            plain = self.tls.wrap_socket(plain, server_hostname="localhost")
        self._connections.append(WebConnection(plain))
        return self._connections[-1]

    @contextlib.contextmanager
    def connection(self, **keywords):
        connection = self.connect(**keywords)
        try:
            yield connection
        finally:
            self.forget(connection)

    def forget(self, connection):
        connection.close()
        self._connections.remove(connection)

    def request(self, method, target, headers=None, body=None, source="127.0.0.1"):
        """Its answer, on a connection of its own."""
        with self.connection(source=source) as connection:
            return connection.request(method, target, headers, body)

    def get(self, target, headers=None):
        return self.request("GET", target, headers)

    def post(self, target, value, headers=None):
        """`value` as JSON."""
        return self.request("POST", target, {"Content-Type": "application/json"} | (headers or {}),
                            json.dumps(value).encode())

    def take(self, uid, **body):
        """What is told of a still that was taken."""
        answer = self.post(f"/api/cameras/{part(uid)}/stills", body)
        assert answer.status == 201, answer
        return answer.json()

    def queue(self):
        return self.get("/api/queue").json()["queue"]

    def wait_for_cameras(self, *uids):
        """Until it lists exactly these."""
        def are_listed():
            answer = self.get("/api/cameras")
            return answer.status == 200 and [camera["uid"] for camera in answer.json()["cameras"]] == sorted(uids)

        wait_until(are_listed, f"the cameras {uids}", interval=0.05)
        return self

    def is_running(self):
        return self.process.poll() is None

    def memory(self):
        """What it holds of the machine's memory, in bytes."""
        status = Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii")
        return int(re.search(r"^VmRSS:\s+([0-9]+) kB$", status, re.MULTILINE)[1]) * 1024

    def descriptors(self):
        """How many it has open."""
        return len(list(Path(f"/proc/{self.process.pid}/fd").iterdir()))

    def end(self, number=signal.SIGTERM):
        """The code that it ends with."""
        self.process.send_signal(number)
        return self.process.wait(PATIENCE)

    def stop(self):
        for connection in self._connections:
            connection.close()
        try:
            code = self.end() if self.is_running() else self.process.returncode
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise
        assert not SANITIZER_REPORT.search(self.stderr()), self.stderr()
        assert (code, self.stderr()) == (0, ""), f"{code}: {self.stderr()}"
        assert LINE.fullmatch(self.stdout_file.read_text(encoding="utf-8"))
