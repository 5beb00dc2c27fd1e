"""Connections of both ports: too many of them, and those of which one half ends before the other."""

import contextlib
import os
import re
import resource
import socket
import struct
import time

import pytest
from harness.hub import HTTP_PORT, IS_SANITIZED, RPC_PORT, SERVICE_LOGGER, LogEntry
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.wait import wait_until

VERSION = b'{"id":1,"method":"camera:version"}\0'
VERSION_REPLY = rb'\{"id":1,"jsonrpc":"2.0","result":"2.9"\}\n\r\n\0'
CAPTURE = b'{"id":2,"method":"camera:capture","params":{"to":"cam","exposureInUs":15625}}\0'
CAPTURE_REPLY = rb'\{"id":2,"jsonrpc":"2.0","result":\{"exposureInUs":15625,"resid":"[0-9a-f-]{36}"\}\}\n\r\n\0'
CANCELLED = LogEntry("INFO", SERVICE_LOGGER, "Cancelled diagnostics redirection (likely due to client disconnection)")


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    """Its camera takes a while."""
    cameras = scenario("cam", camera={"exposure": EXPOSURE, "capture": {"delayMs": 300}})
    return start_shared_hub(cameras | {"groups": [camera_group("cam", 2000, 1500)]}).wait_for_cameras("cam")


@pytest.fixture(scope="module")
def client(hub):
    """Keeps the camera open, so that no other has to wait for that."""
    client = hub.rpc()
    assert "resid" in client.capture("cam", exposureInUs=15625)
    return client


@pytest.fixture
def images(hub, client):
    """Requests for an image, and the replies: more than the system keeps for a connection, at both of its ends."""
    path = f"/res/{client.capture('cam', exposureInUs=15625)['resid']}"
    image = hub.get(path)
    count = 20_000_000 // len(image.body) + 1
    return f"GET {path} HTTP/1.1\r\n\r\n".encode() * count, (image.head + image.body) * count


@pytest.fixture(autouse=True)
def no_descriptor_stays(hub, client):
    before = sockets(hub)
    yield
    wait_until(lambda: sockets(hub) <= before, "the hub lets the connections go")
    assert hub.is_running()


def sockets(hub):
    return sum(str(path).startswith("socket:") for path in hub.open_files())


def connect(hub, port):
    return hub.network.connect(port, timeout=60)


def reset(connection):
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    connection.close()


def receive_to_the_end(connection):
    data = b""
    while more := connection.recv(1 << 20):
        data += more
    return data


def is_served(client):
    return client.request("camera:version")["result"] == "2.9"


NOT_FOUND = rb"HTTP/1.1 404 Not Found\r\n(?s:.*)0\r\n\r\n"

# Port, what a client sends before half of its connection ends, and what it is owed then.
HALVES = {
    "nothing": (RPC_PORT, b"", b""),
    "half_a_message": (RPC_PORT, VERSION[:-1], b""),
    "a_message": (RPC_PORT, VERSION, VERSION_REPLY),
    "messages_and_a_half": (RPC_PORT, VERSION * 50 + b"{", VERSION_REPLY * 50),
    "a_capture": (RPC_PORT, CAPTURE, CAPTURE_REPLY),
    "a_capture_and_a_message": (RPC_PORT, CAPTURE + VERSION, CAPTURE_REPLY + VERSION_REPLY),
    "nothing_over_http": (HTTP_PORT, b"", b""),
    "half_a_head": (HTTP_PORT, b"GET / HTTP/1.1\r\nHost", b""),
    "a_request": (HTTP_PORT, b"GET / HTTP/1.1\r\n\r\n", NOT_FOUND),
    "half_a_body": (HTTP_PORT, b"GET / HTTP/1.1\r\nContent-Length: 9\r\n\r\nhalf", NOT_FOUND),
    "a_request_that_is_never_answered": (HTTP_PORT, b"POST /res/ HTTP/1.1\r\n\r\nGET / HTTP/1.1\r\n\r\n", b""),
}
SENT = [(port, sent) for port, sent, _ in HALVES.values()]


@pytest.mark.parametrize("attempt", range(3))
@pytest.mark.parametrize("port, sent, replies", HALVES.values(), ids=HALVES)
def test_what_is_owed_is_sent_to_a_client_that_has_ended_its_sending(hub, port, sent, replies, attempt):
    with connect(hub, port) as connection:
        connection.sendall(sent)
        connection.shutdown(socket.SHUT_WR)
        assert re.fullmatch(replies, receive_to_the_end(connection))


def test_images_are_sent_whole_to_a_client_that_has_ended_its_sending(hub, client, images):
    requests, replies = images
    with connect(hub, HTTP_PORT) as connection:
        connection.sendall(requests)
        connection.shutdown(socket.SHUT_WR)
        assert is_served(client)  # the hub has come to the end of the requests
        assert receive_to_the_end(connection) == replies


def test_a_redirection_ends_when_the_reply_has_gone_to_a_client_that_has_ended_its_sending(hub, tmp_path):
    for part in ("logs", "Traces"):
        (tmp_path / "Diagnostics" / "LarkspurWindowsCameraHub" / part).mkdir(parents=True)
    with connect(hub, RPC_PORT) as connection:
        path = tmp_path / "Diagnostics"
        connection.sendall(
            f'{{"id":1,"method":"camera:redirectDiagnostics","params":{{"path":"{path}"}}}}\0'.encode())
        connection.shutdown(socket.SHUT_WR)
        assert receive_to_the_end(connection) == b'{"id":1,"jsonrpc":"2.0","result":0}\n\r\n\0'
        wait_until(lambda: CANCELLED in hub.log(), "the redirection is cancelled")


@pytest.mark.parametrize("leave", [socket.socket.close, reset])
@pytest.mark.parametrize("port, sent", SENT, ids=HALVES)
def test_a_client_that_goes_disturbs_nobody(hub, client, port, sent, leave):
    connection = connect(hub, port)
    connection.sendall(sent)
    leave(connection)
    assert is_served(client)


@pytest.mark.parametrize("ends_sending_first", [False, True])
@pytest.mark.parametrize("leave", [socket.socket.close, reset])
def test_a_client_that_goes_in_the_middle_of_an_image_disturbs_nobody(hub, client, images, leave, ends_sending_first):
    connection = connect(hub, HTTP_PORT)
    connection.sendall(images[0])
    if ends_sending_first:
        connection.shutdown(socket.SHUT_WR)
    assert connection.recv(1) == b"H"
    leave(connection)
    assert is_served(client)


@pytest.mark.parametrize("port, sent", SENT, ids=HALVES)
def test_a_client_that_does_not_receive_or_falls_silent_disturbs_nobody(hub, client, port, sent):
    with connect(hub, port) as deaf, connect(hub, port) as silent:
        deaf.shutdown(socket.SHUT_RD)
        deaf.sendall(sent)
        silent.sendall(sent)
        assert is_served(client)
        assert hub.get("/").status == 404


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer keeps memory of its own")
def test_clients_that_do_not_receive_their_images_share_them(hub, images):
    requests, replies = images
    before = resident_memory(hub)
    with contextlib.ExitStack() as stack:
        connections = [stack.enter_context(connect(hub, HTTP_PORT)) for _ in range(20)]
        for connection in connections:
            connection.sendall(requests)
        for connection in connections:
            assert connection.recv(1) == b"H"  # the hub has come to the end of its requests
        assert resident_memory(hub) - before < len(replies) / 2


def resident_memory(hub):
    """In bytes."""
    return int(hub.proc("statm").read_text(encoding="ascii").split()[1]) * resource.getpagesize()


def processor_time(hub):
    """In seconds, of all threads."""
    fields = hub.proc("stat").read_text(encoding="ascii").rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def test_the_hub_takes_as_many_descriptors_as_the_system_grants(start_hub):
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(1024, hard - 1), hard))
    own = start_hub(scenario())
    resource.setrlimit(resource.RLIMIT_NOFILE, (soft, hard))
    assert resource.prlimit(own.process.pid, resource.RLIMIT_NOFILE) == (hard, hard)


def test_where_no_descriptor_is_left_clients_wait_and_the_hub_rests_and_says_so_once(start_hub):
    own = start_hub(scenario())
    served = own.rpc()
    assert served.discover() == []
    full = LogEntry("WARN", SERVICE_LOGGER,
                    "No descriptor is left for new connections on port 3141: clients wait until some are free")
    limit = (len(own.open_files()) + 5) * 4 // 3  # a quarter is left to the rest of the process
    resource.prlimit(own.process.pid, resource.RLIMIT_NOFILE, (limit, limit))
    clients = [own.rpc() for _ in range(20)]
    for client in clients:
        client.send('{"id":1,"method":"camera:version"}')
    wait_until(lambda: full in own.log(), "the lack is logged")

    begin, used_before = time.monotonic(), processor_time(own)
    time.sleep(1)  # there is nothing to wait for: it is to do nothing
    assert processor_time(own) - used_before < (time.monotonic() - begin) / 4
    assert served.discover() == []

    for client in clients:  # each that goes lets another one in
        assert client.receive_bytes() == b'{"id":1,"jsonrpc":"2.0","result":"2.9"}\n\r\n\0'
        client.close()
    assert own.log().count(full) == 1
    assert own.rpc().discover() == []
