"""Bytes that are no requests, or too many: what they cost is the connection that they came on."""

import contextlib
import re

import pytest
from harness.openapi import DOCUMENT, check_response, resolved
from harness.scenario import scenario

TAKE = "/api/cameras/cam/stills"
CHUNKED = "Transfer-Encoding: chunked"
JSON = "Content-Type: application/json"


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network)


@pytest.fixture(autouse=True)
def both_live_on(hub, web):
    process = hub.process
    yield
    assert hub.process is process and hub.is_running() and web.is_running()
    client = hub.rpc()
    assert client.request("camera:version")["result"] == "2.9"
    client.close()
    assert web.get("/healthz").status == 200


def request(*headers, method="GET", target="/api/cameras", version="HTTP/1.1", host="Host: localhost", body=b""):
    lines = [f"{method} {target} {version}", *([host] if host else []), *headers, "", ""]
    return "\r\n".join(lines).encode("latin-1") + body


def post(*headers, body=b""):
    return request(JSON, *headers, method="POST", target=TAKE, body=body)


CHUNKS = b"2\r\n{}\r\n0\r\n\r\n"
# Name: bytes, and the statuses of the answers to them; the connection is ended behind the last.
REFUSED = {
    "no host": (request(host=None), [400]),
    "two hosts": (request("Host: localhost"), [400]),
    "no HTTP": (b"hello\r\n\r\n", [400]),
    "a NUL": (request("X: a\0b"), [400]),
    "a NUL in the target": (request(target="/api/cam\0eras"), [400]),
    "a blank in the target": (request(target="/api/cam eras"), [400]),
    "a blank before the colon": (request("X : y"), [400]),
    "a name that is none": (request("X Y: z"), [400]),
    "no name": (request(": z"), [400]),
    "no colon": (request("X"), [400]),
    "a folded header": (request("X: y", " z"), [400]),
    "a length that is none": (post("Content-Length: two", body=b"{}"), [400]),
    "a length below 0": (post("Content-Length: -2", body=b"{}"), [400]),
    "a signed length": (post("Content-Length: +2", body=b"{}"), [400]),
    "a length beyond all numbers": (post("Content-Length: 99999999999999999999999"), [400]),
    "two lengths": (post("Content-Length: 2", "Content-Length: 3", body=b"{} "), [400]),
    "a length and chunks": (post("Content-Length: 2", CHUNKED, body=CHUNKS), [400]),
    "chunks of another coding": (post("Transfer-Encoding: gzip", body=b"{}"), [400]),
    "two codings": (post("Transfer-Encoding: gzip, chunked", body=CHUNKS), [400]),
    "chunks that are not last": (post("Transfer-Encoding: chunked, gzip", body=CHUNKS), [400]),
    "chunks of no size": (post(CHUNKED, body=b"x\r\n{}\r\n0\r\n\r\n"), [400]),
    "chunks of a size below 0": (post(CHUNKED, body=b"-2\r\n{}\r\n0\r\n\r\n"), [400]),
    "chunks longer than told": (post(CHUNKED, body=b"1\r\n{}\r\n0\r\n\r\n"), [400]),
    "HTTP/2": (b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", [400]),
    "HTTP/0.9": (b"GET /api/cameras\r\n\r\n", [400]),
    "a version that is none": (request(version="HTTP/11"), [400]),
    "TLS": (bytes.fromhex("16030100c8010000c40303") + bytes(200), [400]),
    "what is for the hub": (b'{"method":42}\0', [400]),
}
# The same of what is taken: the connection goes on, or ends as the request asks for it.
TAKEN = {
    "an empty line first": (b"\r\n" + request(), [200]),
    "chunks": (post(CHUNKED, body=CHUNKS), [201]),
    "chunks with what nobody needs": (post(CHUNKED, body=b"2;x=y\r\n{}\r\n0\r\nX: y\r\n\r\n"), [201]),
    "a body that GET does not need": (request("Content-Length: 2", body=b"{}"), [200]),
    "chunks that GET does not need": (request(CHUNKED, body=CHUNKS), [200]),
    "three in one piece": (request() + request(target="/none") + request(target="/api/queue"), [200, 404, 200]),
    "a take between two": (request() + post("Content-Length: 14", body=b'{"settle":"0"}') + request(), [200, 201, 200]),
    "blanks around a value": (request("Accept:  \t */* \t "), [200]),
    "another protocol": (request("Connection: Upgrade", "Upgrade: h2c"), [200]),
    "HTTP/1.0": (request(version="HTTP/1.0"), [200]),
    "an end that is asked for": (request("Connection: close"), [200]),
}


def statuses(data):
    """Those of the answers in it."""
    return [int(number) for number in re.findall(rb"HTTP/1\.1 ([0-9]{3}) ", data)]


@pytest.mark.parametrize("name", REFUSED)
def test_what_is_no_request_is_refused_and_the_connection_ends(web, name):
    data, expected = REFUSED[name]
    with web.connection() as connection:
        # Another request behind it is never looked at: where it begins is anybody's guess.
        connection.send(data + request(target="/healthz"))
        connection.finish()
        assert statuses(connection.rest()) == expected


@pytest.mark.parametrize("name", TAKEN)
def test_what_is_a_request_is_answered(web, name):
    data, expected = TAKEN[name]
    with web.connection() as connection:
        connection.send(data)
        assert [connection.receive().status for _ in expected] == expected
        connection.finish()
        assert connection.rest() == b""


def test_a_request_that_comes_byte_by_byte_is_answered(web):
    with web.connection() as connection:
        for byte in post("Content-Length: 14", body=b'{"settle":"0"}'):
            connection.send(bytes([byte]))
        assert connection.receive("POST").status == 201


def test_a_client_that_waits_to_be_asked_for_its_body_is_asked(web):
    with web.connection() as connection:
        connection.send(post("Content-Length: 14", "Expect: 100-continue"))
        assert connection.receive_head().status == 100
        connection.send(b'{"settle":"0"}')
        assert connection.receive("POST").status == 201


def test_a_connection_serves_one_request_after_the_other(web):
    with web.connection() as connection:
        for target, status in (("/api/cameras", 200), ("/none", 404), ("/api/queue", 200), ("/api/stills?x", 400),
                               ("/cameras/cam/still.png?settle=0", 200), ("/cameras/none/still.png", 404)) * 3:
            assert connection.request("GET", target).status == status


# Name: the response's in the document, the head, what follows without an end, and how much of it at most is taken.
FLOODS = {
    "a body of 1 GB": ("TooLarge", post(f"Content-Length: {1 << 30}"), b"x" * 65536),
    "a body of 1 GB for GET": ("TooLarge", request(f"Content-Length: {1 << 30}"), b"x" * 65536),
    "chunks without an end": ("TooLarge", post(CHUNKED), b"10000\r\n" + b"x" * 65536 + b"\r\n"),
    "small chunks without an end": ("TooLarge", post(CHUNKED), b"1\r\nx\r\n" * 10000),
    "headers without an end": ("HeadTooLarge", b"GET / HTTP/1.1\r\nHost: localhost\r\n", b"X: y\r\n" * 10000),
    "a header without an end": ("HeadTooLarge", b"GET / HTTP/1.1\r\nHost: localhost\r\nX: ", b"y" * 65536),
    "a header's name without an end": ("HeadTooLarge", b"GET / HTTP/1.1\r\nHost: localhost\r\n", b"y" * 65536),
    "a target without an end": ("TargetTooLong", b"GET /", b"y" * 65536),
}
LONGEST = 64 << 20  # far above what sockets hold


@pytest.mark.parametrize("name", FLOODS)
def test_a_flood_is_refused_early_and_takes_no_memory(web, name):
    response, head, flood = FLOODS[name]
    before, sent = web.memory(), 0
    with web.connection() as connection:
        connection.send(head)
        with contextlib.suppress(ConnectionError):
            while sent < LONGEST and not connection.has_bytes_within(0):
                connection.send(flood)
                sent += len(flood)
        answer = connection.receive("GET")
        check_response(resolved(DOCUMENT["components"]["responses"][response]), answer)
        connection.finish()
        assert connection.rest() == b""
    assert sent < LONGEST
    assert web.memory() - before < 16 << 20


def test_a_body_of_1_gb_is_refused_before_it_comes(web):
    with web.connection() as connection:
        connection.send(post(f"Content-Length: {1 << 30}", "Expect: 100-continue"))
        assert connection.receive("POST").status == 413


@pytest.mark.parametrize("length, status", [(4096, 404), (4097, 414)])
def test_a_target_may_be_4_kib_long(web, length, status):
    assert web.get("/" + "a" * (length - 1)).status == status


@pytest.mark.parametrize("length, status", [(64 << 10, 201), ((64 << 10) + 1, 413)])
def test_a_body_may_be_64_kib_long(web, length, status):
    body = b'{"settle":"0"}'.ljust(length)
    assert web.request("POST", TAKE, {"Content-Type": "application/json"}, body).status == status
    with web.connection() as connection:
        connection.send(post(CHUNKED, body=b"%x\r\n%s\r\n0\r\n\r\n" % (length, body)))
        assert connection.receive("POST").status == status


@pytest.mark.parametrize("length, status", [(16 << 10, 200), ((16 << 10) + 1, 431)])
def test_a_head_may_be_16_kib_long(web, length, status):
    bare = len(request("X: "))
    with web.connection() as connection:
        connection.send(request("X: " + "x" * (length - bare)))
        assert connection.receive().status == status


def test_answers_name_nothing_of_the_machines_files(hub, web):
    texts = [web.request(method, target, headers, body).body for method, target, headers, body in (
        ("GET", "/none", {}, None), ("GET", "/page/none", {}, None), ("GET", "/page/..%2f..%2fmain.cpp", {}, None),
        ("GET", "/api/cameras", {}, None), ("GET", "/metrics", {}, None), ("GET", "/", {}, None),
        ("POST", TAKE, {"Content-Type": "application/json"}, b"{"), ("POST", TAKE, {}, b"{}"),
        ("GET", "/api/cameras", {"Host": "example.com"}, None), ("GET", "/api/cameras?x", {}, None))]
    for text in texts:
        for word in (b"/home", b"/tmp", b"/root", b"/usr", b"/var/", b"/etc", b".cpp", str(hub.folder).encode(),
                     str(hub.executable.parents[2]).encode()):
            assert word not in text, text
