"""Examples/nginx-images.conf: what it passes to the hub, and that nothing of it hangs the hub."""

import contextlib
import re
import socket
import threading

import pytest
from harness.guides import guide_commands
from harness.hub import HTTP_PORT, ROOT
from harness.network import Network
from harness.nginx import Nginx
from harness.python_client import IMAGE_ID
from harness.scenario import scenario
from harness.wait import PATIENCE, wait_until

CONFIGURATION = (ROOT / "Examples/nginx-images.conf").read_text(encoding="utf-8")


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture(scope="module")
def rpc(hub):
    return hub.rpc()


@pytest.fixture(scope="module")
def image_id(rpc):
    return rpc.capture("cam", exposureInUs=20000)["resid"]


@pytest.fixture(scope="module")
def start_nginx(tmp_path_factory):
    started = []

    def start(network, configuration=CONFIGURATION):
        (command,) = guide_commands("Docs/fleet.md", "openssl req ")
        started.append(Nginx(tmp_path_factory.mktemp("nginx"), network, configuration, command))
        return started[-1]

    yield start
    for nginx in started:
        nginx.close()


@pytest.fixture(scope="module")
def nginx(hub, start_nginx):
    return start_nginx(hub.network)


class Recorder:
    """In the place of the hub: keeps what comes, answers each connection once, and reads on until it is ended."""

    def __init__(self, network):
        self.received = []
        self._listener = network.run(socket.create_server, ("127.0.0.1", HTTP_PORT))
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def _serve(self):
        with contextlib.suppress(OSError):
            while True:
                connection, _ = self._listener.accept()
                connection.settimeout(PATIENCE)
                with connection, contextlib.suppress(ConnectionError):
                    self._record(connection)

    def _record(self, connection):
        self.received.append(b"")
        answered = False
        while data := connection.recv(65536):
            self.received[-1] += data
            if b"\r\n\r\n" in self.received[-1] and not answered:
                answered = True
                connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nPNG")

    def close(self):
        self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
        self._thread.join(PATIENCE)
        assert not self._thread.is_alive()


@pytest.fixture(scope="module")
def recorded_network():
    network = Network()
    yield network
    network.close()


@pytest.fixture(scope="module")
def nginx_of_recorder(recorded_network, start_nginx):
    return start_nginx(recorded_network)


@pytest.fixture
def recorder(recorded_network):
    recorder = Recorder(recorded_network)
    yield recorder
    recorder.close()


def request(*headers, method="GET", path="/res/ID", version="HTTP/1.1", body=b""):
    lines = [f"{method} {path} {version}", "Host: hub.example", *headers]
    return "\r\n".join([*lines, "", ""]).encode("latin-1") + body


CHUNKED = "Transfer-Encoding: chunked"
NO_BODY = b"0\r\n\r\n"

# Name, bytes in which ID stands for the id of an image, and the status of the reply.
REQUESTS = {
    "an image": (request(), 200),
    "an empty line first": (b"\r\n" + request(), 200),
    "many empty lines first": (b"\r\n" * 9 + request(), 200),
    "chunks": (request(CHUNKED, body=b"3\r\nabc\r\n" + NO_BODY), 200),
    "no chunks": (request("transfer-encoding: Chunked", body=NO_BODY), 200),
    "a coding": (request("Transfer-Encoding: gzip"), 501),
    "two codings": (request(CHUNKED, CHUNKED, body=NO_BODY), 400),
    "a blank behind the coding's name": (request("Transfer-Encoding : chunked", body=NO_BODY), 400),
    "a folded coding": (request("X: y", f" {CHUNKED}", body=NO_BODY), 400),
    "a coding behind a LF": (request(f"X: y\n{CHUNKED}", body=NO_BODY), 200),
    "a coding behind a CR": (request(f"X: y\r{CHUNKED}", body=NO_BODY), 400),
    "a coding and a length": (request(CHUNKED, "Content-Length: 5", body=NO_BODY), 400),
    "a coding as method": (request(method="Transfer-Encoding:"), 400),
    "a coding in the path": (request(path="/res/Transfer-Encoding:chunked"), 404),
    "a body": (request("Content-Length: 4", body=b"abcd"), 200),
    "a body that does not come": (request("Content-Length: 99999"), 413),
    "a length below 0": (request("Content-Length: -4"), 400),
    "a NUL": (request("X: \0"), 400),
    "another protocol": (request("Upgrade: h2c", "Connection: Upgrade, HTTP2-Settings", "HTTP2-Settings: AAAA"), 200),
    "HTTP/1.0": (request(version="HTTP/1.0"), 200),
    "HTTP/2": (b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", 400),
    # In one record of TLS: what nginx left unread in the connection would cost the reply.
    "a huge header": (request("X: " + "x" * 15_000), 400),
    "many headers": (request(*(f"X{number}: {'x' * 100}" for number in range(120))), 400),
    "a huge path": (request(path="/res/" + "a" * 15_000), 414),
    **{method: (request(method=method), 405)
       for method in ("HEAD", "POST", "PUT", "DELETE", "OPTIONS", "TRACE", "PATCH", "CONNECT")},
    "get": (request(method="get"), 400),
    **{path: (request(path=path), 404)
       for path in ("/", "/res", "/res/", "/res/none", "/other", "/res/ID/", "/res/ID0", "/RES/ID", "/res/ID%0d%0aX:y",
                    "/res/ID%20HTTP/1.1%0d%0aTransfer-Encoding:chunked")},
    "/res/ID%00": (request(path="/res/ID%00"), 400),
    **{path: (request(path=path), 200)  # other spellings of it
       for path in ("//res/ID", "/res//ID", "/res/x/../ID", "/%72es/ID", "/res/ID?size=large", "/res/ID#x")},
}


@pytest.mark.parametrize("name", REQUESTS)
def test_the_hub_gets_nothing_but_the_plain_get_of_an_image(nginx_of_recorder, recorder, name):
    content, status = REQUESTS[name]
    assert nginx_of_recorder.status(content.replace(b"ID", IMAGE_ID.encode())) == status
    plain = f"GET /res/{IMAGE_ID} HTTP/1.0\r\nHost: 127.0.0.1:3142\r\nConnection: close\r\n\r\n".encode()
    assert recorder.received == ([plain] if status == 200 else [])


def test_without_the_lines_that_hold_back_what_the_client_sends_the_hub_would_get_it(network, start_nginx):
    lines = [line for line in CONFIGURATION.splitlines() if not re.match(" *proxy_(pass_|set_|method)", line)]
    hub = Recorder(network)
    nginx = start_nginx(network, "\n".join(lines))
    assert nginx.status(request("X: y", "Content-Length: 4", body=b"abcd").replace(b"ID", IMAGE_ID.encode())) == 200
    nginx.close()
    hub.close()
    (received,) = hub.received
    assert b"X: y" in received and b"Content-Length: 4" in received and received.endswith(b"abcd")


@pytest.mark.parametrize("name", REQUESTS)
def test_the_hub_serves_on_after_each(hub, rpc, nginx, image_id, name):
    content, status = REQUESTS[name]
    assert nginx.status(content.replace(b"ID", image_id.encode())) == status
    assert rpc.request("camera:version")["result"] == "2.9"
    assert nginx.connect().get(f"/res/{image_id}").body == hub.image(image_id)


def test_an_image_comes_whole_and_an_unknown_one_is_not_found(hub, nginx, image_id):
    connection = nginx.connect()
    found = connection.get(f"/res/{image_id}")
    assert (found.status, found.body) == (200, hub.image(image_id))
    assert b"\r\nContent-Type: image/png\r\n" in found.head
    assert connection.get(f"/res/{IMAGE_ID}").status_line == "HTTP/1.1 404 Image does not exist"
    assert connection.get(f"/res/{image_id}").body == found.body  # the spare bytes of the hub did not get here


def test_requests_in_one_piece_are_answered_one_after_the_other(hub, nginx, image_id):
    connection = nginx.connect()
    connection.send((request() * 3 + b"\r\n" + request(method="POST") + request(CHUNKED, body=NO_BODY)).replace(
        b"ID", image_id.encode()))
    assert [connection.receive_response().status for _ in range(5)] == [200, 200, 200, 405, 200]


def test_clients_that_send_slowly_do_not_reach_the_hub(nginx_of_recorder, recorder):
    slow = [nginx_of_recorder.connect() for _ in range(40)]
    for byte in request().replace(b"ID", IMAGE_ID.encode())[:-1]:
        for connection in slow:
            connection.send(bytes([byte]))
    assert nginx_of_recorder.status(request().replace(b"ID", IMAGE_ID.encode())) == 200
    assert len(recorder.received) == 1


def test_an_address_has_a_limited_number_of_requests_at_a_time(hub, nginx, image_id):
    def status():
        return nginx.status(request().replace(b"ID", image_id.encode()))

    unfinished = [nginx.connect() for _ in range(16)]
    for connection in unfinished:
        connection.send(request(CHUNKED).replace(b"ID", image_id.encode()))
    wait_until(lambda: status() == 503, "the limit is reached")
    for connection in unfinished:
        connection.close()
    wait_until(lambda: status() == 200, "there is room again")


def test_nothing_is_served_without_tls(nginx, image_id):
    connection = nginx.connect(encrypted=False)
    connection.send(request().replace(b"ID", image_id.encode()))
    assert connection.receive_response().status == 400
