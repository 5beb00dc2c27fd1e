"""The Python client library, on what is no proper hub."""

import gc
import os
import socket
import struct
import threading
import time

import camera_hub
import pytest
from camera_hub import (Cancelled, CaptureRefused, ConnectionEnded, ConnectionFailed, Hub, HubError, ImageGone,
                        MessageRejected, MethodFailed, NotConnected, ProtocolError, TimedOut)
from harness.python_client import IMAGE_ID, OTHER_ID, PNG, captured, image, in_background, result
from harness.wait import PATIENCE, wait_until

NO_IMAGE = b"HTTP/1.1 404 Image does not exist\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n0\r\n\r\n"


def quote(data):
    """A reply of these bytes, whatever the request's id."""
    return lambda identity: data.replace(b"ID", str(identity).encode()) + b"\0"


def test_each_failure_of_the_protocol_is_an_error_of_its_own_and_leaves_the_connection(serve):
    peers = serve([
        quote(b'{"code":-32700,"jsonrpc":"2.0","message":"Parse Error"}\n\r\n'),
        quote(b'{"error":{"message":"Method not supported: x"},"id":ID,"jsonrpc":"2.0"}\n\r\n'),
        result({"code": 3, "message": "Unknown capture error"}),
        result("2.9"),
    ])
    with pytest.raises(MessageRejected, match=r"^Parse Error \(-32700\)$") as rejected:
        peers.client.version()
    assert (rejected.value.code, rejected.value.message) == (-32700, "Parse Error")
    with pytest.raises(MethodFailed, match="^Method not supported: x$"):
        peers.client.version()
    with pytest.raises(CaptureRefused) as refused:
        peers.client.capture("desk")
    assert refused.value.code == 3
    assert peers.client.version() == "2.9"


def test_all_failures_are_hub_errors():
    errors = [getattr(camera_hub, name) for name in camera_hub.__all__]
    errors = [error for error in errors if isinstance(error, type) and issubclass(error, Exception)]
    assert len(errors) == 11 and all(issubclass(error, HubError) for error in errors)


def test_a_still_whose_image_is_gone_is_taken_once_more_and_that_is_told(serve):
    peers = serve([captured(IMAGE_ID), captured(OTHER_ID)], [NO_IMAGE, image(PNG)])
    still = peers.client.take_still("desk", 0.5)
    assert (still.image_id, still.was_taken_twice, still.png) == (OTHER_ID, True, PNG)
    assert peers.calls == [peers.calls[0]] * 2
    assert [request.split()[1] for request in peers.images.requests] == [
        f"/res/{IMAGE_ID}".encode(), f"/res/{OTHER_ID}".encode()]


def test_it_is_not_taken_a_third_time(serve):
    peers = serve([captured()] * 3, [NO_IMAGE] * 3)
    with pytest.raises(ImageGone):
        peers.client.take_still("desk")
    assert (len(peers.messages.requests), len(peers.images.requests)) == (2, 2)


def reset(connection):
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))


@pytest.mark.parametrize("reply", [b"", b'{"id":1', b'{"id":1,"jsonrpc":"2.0","result":"2.9"}\n\r\n'])
def test_a_reply_that_is_cut_means_that_the_hub_has_ended(serve, reply):
    peers = serve([lambda _: reply], ends=True)
    with pytest.raises(ConnectionEnded, match="^the hub ended without a reply"):
        peers.client.version()
    with pytest.raises(NotConnected, match="^an earlier call has lost the connection$"):
        peers.client.version()


@pytest.mark.parametrize("reply", [b"", b"HTTP/1.1 200 OK\r\nContent-Le", image(PNG)[:-1], reset])
def test_so_does_an_image_that_is_cut_but_messages_go_on(serve, reply):
    peers = serve([result("2.9")], [reply])
    with pytest.raises(ConnectionEnded, match="^the hub ended without a reply"):
        peers.client.fetch(IMAGE_ID)
    assert peers.client.version() == "2.9"


@pytest.mark.parametrize(
    "reply",
    [b"", b"hello", b"[]", b"42", b"null", b'"2.9"', b"{}", b'{"id":ID}', b'{"id":ID,"result":2.9}', b"\xff",
     b'{"id":ID,"result":null}', b'{"id":ID,"result":true}', b'{"id":"ID","result":"2.9"}', b'{"result":"2.9"}',
     b'{"id":0,"result":"2.9"}', b'{"id":ID,"error":"no"}', b'{"id":ID,"error":{}}', b'{"id":ID,"error":{"message":1}}',
     b'{"code":"1","message":"x"}', b'{"code":1}', b"[" * 100_000, b'{"id":' + b"9" * 5000 + b"}"],
    ids=lambda reply: ascii(reply)[:40],
)
def test_a_strange_reply_is_told_and_ends_the_connection(serve, reply):
    peers = serve([quote(reply)])
    with pytest.raises(ProtocolError) as error:
        peers.client.version()
    assert len(str(error.value)) < 250 and "\n" not in str(error.value)
    if b'"result"' not in reply or b'"id":ID' not in reply:  # else it was the reply, with another content
        with pytest.raises(NotConnected):
            peers.client.version()


CAMERA = {"uid": "a", "make": "b", "model": "c", "resolutionX": 1, "resolutionY": 2, "exposureMinValueInUs": 3,
          "exposureMaxValueInUs": 4}


@pytest.mark.parametrize(
    "content",
    [{}, "none", [[]], [7], *([CAMERA | {name: value}] for name in CAMERA for value in (None, True, [], 1.5)),
     *([{key: CAMERA[key] for key in CAMERA if key != name}] for name in CAMERA),
     [CAMERA | {"exposureMaxValueInUs": -1}], [CAMERA | {"exposureMaxValueInUs": 2**63}]],
    ids=lambda content: ascii(content)[:60],
)
def test_a_strange_list_of_cameras_is_told(serve, content):
    with pytest.raises(ProtocolError):
        serve([result(content)]).client.discover()


@pytest.mark.parametrize(
    "content",
    [[], 0, {}, {"resid": IMAGE_ID}, {"exposureInUs": 1}, {"exposureInUs": "1", "resid": IMAGE_ID},
     {"exposureInUs": -1, "resid": IMAGE_ID}, {"exposureInUs": 1, "resid": "/etc"}, {"exposureInUs": 1, "resid": 7},
     {"exposureInUs": 1, "resid": IMAGE_ID + "\r\n"}, {"code": 1}, {"code": "1", "message": ""}],
    ids=lambda content: ascii(content)[:60],
)
def test_a_strange_result_of_a_capture_is_told_and_no_image_asked_for(serve, content):
    peers = serve([result(content)])
    with pytest.raises(ProtocolError):
        peers.client.take_still("desk")
    assert peers.images.requests == []


HEAD = b"HTTP/1.1 200 OK\r\n"


@pytest.mark.parametrize(
    "reply",
    [b"hello\r\n\r\n", b"\r\n\r\n", image(PNG).replace(b"200 OK", b"206 Partial Content"),
     HEAD + b"\r\n", HEAD + b"Transfer-Encoding: chunked\r\n\r\n1\r\nx\r\n0\r\n\r\n",
     image(b""), image(b"<html>"), b"HTTP/1.1 500 x\r\nContent-Length: 0\r\n\r\n", b"HTTP/2.0 200 OK\r\n\r\n",
     b"HTTP/1.1 100 Continue\r\n\r\n" + image(PNG), b"x" * 100_000,
     *(HEAD + b"Content-Length: " + size + b"\r\n\r\n" for size in (b"-1", b"+5", b"1e3", b"", b"9" * 10, b"9" * 30))],
    ids=lambda reply: ascii(reply)[:60],
)
def test_a_strange_reply_in_the_place_of_an_image_is_told(serve, reply):
    with pytest.raises(ProtocolError):
        serve([], [reply]).client.fetch(IMAGE_ID)


def in_parts(*parts):
    def send(connection):
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        for part in parts:
            connection.sendall(part)
            time.sleep(0.05)  # in which the client reads it

    return send


def test_a_reply_that_comes_in_parts_is_read(serve):
    head, end, content = image(PNG).partition(b"\r\n\r\n")
    reply = in_parts(head[:9], head[9:], end[:1], end[1:3], end[3:] + content[:5], content[5:])
    assert serve([], [reply]).client.fetch(IMAGE_ID) == PNG


def test_a_reply_without_an_end_is_not_read_for_ever(serve):
    def flood(connection):
        while True:
            connection.sendall(b" " * (1 << 20))

    peers = serve([], [flood])
    with pytest.raises(ProtocolError, match="^a reply without an end"):
        peers.client.fetch(IMAGE_ID)


def trickle(connection):
    while True:  # until the client goes
        connection.sendall(b"x")
        time.sleep(0.01)


def test_the_deadline_is_for_the_whole_call_and_not_for_each_byte(serve):
    peers = serve([], [trickle])
    with pytest.raises(TimedOut):
        peers.client.fetch(IMAGE_ID, timeout=0.3)


def test_a_message_without_a_reply_in_time_ends_the_connection(serve):
    peers = serve([lambda _: None], call_timeout=0.1)
    with pytest.raises(TimedOut):
        peers.client.version()
    with pytest.raises(NotConnected):
        peers.client.version(timeout=PATIENCE)


def test_the_time_to_settle_comes_on_top(serve):
    peers = serve([lambda _: None])
    begin = time.monotonic()
    with pytest.raises(TimedOut):
        peers.client.capture("desk", settle=0.5, timeout=0.1)
    assert time.monotonic() - begin >= 0.6


def test_a_message_that_nobody_reads_times_out(network):
    with network.run(socket.create_server, ("127.0.0.1", 0)) as listener:
        port = listener.getsockname()[1]
        with network.run(Hub, "127.0.0.1", message_port=port) as hub, pytest.raises(TimedOut):
            hub.capture("x" * 50_000_000, timeout=0.3)


def test_a_connection_that_is_not_accepted_times_out(network):
    with network.run(socket.create_server, ("127.0.0.1", 0), backlog=0) as listener:
        address = listener.getsockname()
        waiting = [network.run(socket.socket) for _ in range(4)]
        for each in waiting:
            each.setblocking(False)
            each.connect_ex(address)
        with pytest.raises(TimedOut):
            network.run(Hub, "127.0.0.1", message_port=address[1], connect_timeout=0.3)
        for each in waiting:
            each.close()


def test_nobody_there_and_no_such_host_are_told(network):
    with pytest.raises(ConnectionFailed, match="^no connection to 127.0.0.1 port 3141: Connection refused$"):
        network.run(Hub, "127.0.0.1")
    with pytest.raises(ConnectionFailed, match="^no address of nowhere.invalid: "):
        network.run(Hub, "nowhere.invalid")


def test_close_ends_a_call_that_waits_for_a_reply_and_all_later_ones(serve):
    peers = serve([lambda _: None])
    thread, errors = in_background(peers.client.object.version)
    assert peers.messages.has_request.wait(PATIENCE)
    peers.client.object.close()
    thread.join(PATIENCE)
    assert [type(error) for error in errors] == [Cancelled]
    assert peers.messages.gone.wait(PATIENCE)
    for call in (peers.client.version, peers.client.discover):
        with pytest.raises(Cancelled):
            call()
    peers.client.object.close()


def test_close_ends_a_call_that_waits_for_an_image(serve):
    may_end = threading.Event()
    peers = serve([captured()], [lambda connection: may_end.wait(PATIENCE) and None])
    thread, errors = in_background(peers.client.take_still, "desk")
    assert peers.images.has_request.wait(PATIENCE)
    peers.client.object.close()
    thread.join(PATIENCE)
    may_end.set()
    assert [type(error) for error in errors] == [Cancelled]
    assert peers.messages.gone.wait(PATIENCE)  # the other connection is closed too


def test_a_second_thread_is_refused(serve):
    peers = serve([lambda _: None])
    thread, errors = in_background(peers.client.object.version)
    assert peers.messages.has_request.wait(PATIENCE)
    with pytest.raises(RuntimeError, match="another thread"):
        peers.client.object.discover()
    peers.client.object.close()
    thread.join(PATIENCE)
    assert [type(error) for error in errors] == [Cancelled]


def test_the_end_of_the_block_closes_the_connection_and_nothing_is_left_open(serve):
    gc.collect()  # what other tests have left
    before = len(os.listdir("/proc/self/fd"))
    peers = serve([result("2.9")], [image(PNG)])
    with peers.client.object as hub:
        assert hub.version() == "2.9"
        peers.client.fetch(IMAGE_ID)
    assert peers.messages.gone.wait(PATIENCE)
    peers.close()
    wait_until(lambda: len(os.listdir("/proc/self/fd")) == before, "all is closed")
