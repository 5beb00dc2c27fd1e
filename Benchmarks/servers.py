"""The hub and what it is compared with, each started for the benchmark alone, in a network of its own."""

import ctypes
import json
import os
import subprocess
import tempfile
import time
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from harness.hub import HTTP_PORT, ROOT, RPC_PORT, Hub
from harness.network import Network
from harness.wait import wait_until

Process = subprocess.Popen[bytes]

PROGRAMS = ROOT / "build/bin"
NGINX_PORT, REDIS_PORT = 8142, 8141

NGINX_CONFIGURATION = """
daemon off; master_process off; worker_processes 1; pid nginx.pid;
events { worker_connections 2048; }
http {
  access_log off; sendfile on; keepalive_requests 1000000000;
  client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t; scgi_temp_path t;
  server { listen 127.0.0.1:%d; root files; }
}
"""


def new_folder(parent: Path) -> Path:
    """One that is not there yet."""
    return Path(tempfile.mkdtemp(dir=parent)) / "hub"


@contextmanager
def hub_with(folder: Path, scenario: dict[str, Any]) -> Iterator[Hub]:
    """A hub on these cameras, without a journal unless the scenario asks for one."""
    folder.mkdir()
    file = folder / "cameras.json"
    file.write_text(json.dumps(scenario), encoding="utf-8")
    hub = Hub(folder, environment={"CAMERA_HUB_SIMULATION": str(file)})
    try:
        yield hub
    finally:
        hub.stop()


@contextmanager
def running(network: Network, command: Sequence[str | Path], port: int) -> Iterator[Process]:
    """A server that ends with the block, or with this process."""
    process = network.run(subprocess.Popen, ["setpriv", "--pdeathsig", "KILL", *command], stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL)

    def answers() -> bool:
        assert process.poll() is None, f"{command[0]} has ended"
        try:
            network.connect(port).close()
        except ConnectionRefusedError:
            return False
        return True

    try:
        wait_until(answers, f"{command[0]} answers")
        yield process
    finally:
        process.kill()
        process.wait()


@contextmanager
def nginx(folder: Path, network: Network) -> Iterator[Process]:
    """Serves the files of `folder`/files: one process, by sendfile, without a log."""
    (folder / "files").mkdir(parents=True, exist_ok=True)
    (folder / "nginx.conf").write_text(NGINX_CONFIGURATION % NGINX_PORT, encoding="ascii")
    command = ["nginx", "-p", folder, "-c", folder / "nginx.conf", "-e", "stderr"]
    with running(network, command, NGINX_PORT) as process:
        yield process


@contextmanager
def redis(folder: Path, network: Network) -> Iterator[Process]:
    """Keeps nothing on the disk."""
    command = ["redis-server", "--port", str(REDIS_PORT), "--bind", "127.0.0.1", "--save", "", "--appendonly", "no",
               "--dir", folder]
    with running(network, command, REDIS_PORT) as process:
        yield process


def processor_time(process: Process) -> float:
    """Seconds that it has taken so far, in user and kernel mode, to the nanosecond."""
    clock = ctypes.c_int()
    error = ctypes.CDLL(None).clock_getcpuclockid(process.pid, ctypes.byref(clock))
    if error != 0:
        raise OSError(error, os.strerror(error))
    return time.clock_gettime(clock.value)


def proc_number(hub: Hub, file: str, name: str) -> int:
    """Of a line "name: number kB" of a file in /proc; bytes."""
    for line in hub.proc(file).read_text(encoding="ascii").splitlines():
        if line.startswith(f"{name}:"):
            return int(line.split()[1]) * 1024
    raise ValueError(f"{file} has no {name}")


def page_faults(hub: Hub) -> int:
    """Of all of its threads so far, those that took no disk."""
    fields = hub.proc("stat").read_text(encoding="ascii").rpartition(")")[2].split()
    return int(fields[7])


@dataclass(frozen=True)
class Peer:
    """Whom ServingClient asks, for what, where the reply ends, and what is in it."""

    port: int
    end: str
    request: bytes
    expected: str


def get(port: int, path: str) -> Peer:
    return Peer(port, "http", f"GET {path} HTTP/1.1\r\nHost: localhost\r\n\r\n".encode(), " 200 OK")


def call(method: str, **params: Any) -> Peer:
    message = json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params})
    return Peer(RPC_PORT, "0", message.encode() + b"\0", '"result":')


VERSION = call("camera:version")
PING = Peer(REDIS_PORT, str(ord("\n")), b"*1\r\n$4\r\nPING\r\n", "+PONG")


def image(resid: str) -> Peer:
    return get(HTTP_PORT, f"/res/{resid}")


@dataclass(frozen=True)
class Exchange:
    """What ServingClient tells; times in seconds."""

    requests: int
    seconds: float
    bytes: int
    median: float
    p99: float

    @property
    def rate(self) -> float:
        return self.requests / self.seconds


def client_command(peer: Peer, limit: str, connections: int, read: int) -> list[str]:
    return [str(PROGRAMS / "ServingClient"), str(peer.port), peer.end, str(connections), str(read), limit,
            peer.expected]


def exchange(network: Network, peer: Peer, limit: str, connections: int = 1, read: int = 1 << 18) -> Exchange:
    result = network.run(subprocess.run, client_command(peer, limit, connections, read), input=peer.request,
                         stdout=subprocess.PIPE, check=True)
    return Exchange(**json.loads(result.stdout))


@contextmanager
def exchanging(network: Network, peer: Peer, connections: int, read: int = 1 << 18) -> Iterator[None]:
    """Goes on beside the block."""
    command = ["setpriv", "--pdeathsig", "KILL", *client_command(peer, "1000s", connections, read)]
    process = network.run(subprocess.Popen, command, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
    try:
        process.stdin.write(peer.request)
        process.stdin.close()
        yield
        assert process.poll() is None, "the client beside has ended"
    finally:
        process.kill()
        process.wait()


def wrk(network: Network, port: int, path: str, connections: int) -> float:
    """Replies a second."""
    command = ["wrk", "--threads", "1", "--connections", str(connections), "--duration", "1s",
               f"http://127.0.0.1:{port}{path}"]
    text = network.run(subprocess.run, command, stdout=subprocess.PIPE, check=True, text=True).stdout
    assert "Non-2xx" not in text and "Socket errors" not in text, text
    (rate,) = [line.split()[1] for line in text.splitlines() if line.startswith("Requests/sec:")]
    return float(rate)
