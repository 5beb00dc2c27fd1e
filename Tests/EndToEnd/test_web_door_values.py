"""What ends or hangs a hub by design does not get through to it, whatever field of the program it is sent in."""

import json
import re

import pytest
from harness.openapi import OPERATIONS, is_file
from harness.scenario import scenario
from harness.web import part

# As Docs/protocol.md has it: messages that end the hub, and what is in them.
MESSAGES = [
    '42', '"text"', 'true', '{"method":42}', '{"method":["camera:version"]}', '{"method":{}}',
    '{"method":"camera:capture","params":{"to":7}}', '{"method":"camera:capture","params":{"to":["cam"]}}',
    '{"method":"camera:capture","params":{"to":{}}}',
    '{"method":"camera:capture","params":{"to":"cam","gainInPercent":"10"}}',
    '{"method":"camera:capture","params":{"to":"cam","gainInPercent":[10]}}',
    '{"method":"camera:capture","params":{"to":"cam","gainInPercent":{}}}',
    '{"method":"camera:capture","params":{"to":"cam","exposureInUs":5,"exposureChangeDelayInMs":-1}}',
    '{"method":"camera:redirectDiagnostics","params":{"path":["Diagnostics"]}}',
    '{"method":"camera:redirectDiagnostics","params":{"path":7}}',
]
TEXTS = [
    *MESSAGES, '42\0', '\x0042\0', 'cam"},"method":42}\0', 'cam","gainInPercent":"10', 'cam\\","gainInPercent":"10',
    'cam"}}\n\r\n\x0042\0', "\r\n\r\n", "\r\nTransfer-Encoding: chunked\r\n\r\n",
    " HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n",
    "-1ms", "-250ms", "-1", "-2147483648", "4294967295ms", "2147483648ms", "49d", "1e99s", "\ud800", "\x00", "a" * 3000,
]
VALUES = [42, -1, 0, 1.5, 2 ** 31, -2 ** 31, 2 ** 63, 1e300, True, False, None, [], ["cam"], [10], {}, {"us": 20000},
          "10", "-1ms", "-250ms", *MESSAGES]
NAMES = ["exposure", "percent", "settle", "ticket", "to", "exposureInUs", "exposureInPercent", "gainInPercent",
         "exposureChangeDelayInMs", "method", "params", "path", "id", "jsonrpc", "uid"]


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network)


@pytest.fixture(autouse=True)
def both_live_on(hub, web):
    """The same hub answers at once as before, and so does the program."""
    process = hub.process
    yield
    assert hub.process is process and hub.is_running()
    client = hub.rpc()
    assert client.request("camera:version")["result"] == "2.9"
    client.close()
    assert web.is_running()
    assert web.get("/healthz").status == 200
    assert web.take("cam", settle="0")["uid"] == "cam"


def encoded(text):
    return part(text.encode("utf-8", "surrogatepass"))


def is_harmless(name, value):
    """A ticket is the client's own word; and some of the numbers are per cent."""
    if name == "percent":
        return type(value) is int and 0 <= value <= 100
    return name == "ticket" and isinstance(value, str) and re.fullmatch("[A-Za-z0-9-]{1,64}", value)


@pytest.mark.parametrize("name", NAMES)
def test_in_a_member_of_the_body(web, name):
    for value in VALUES:
        around = {} if name == "settle" else {"settle": "0"}
        answer = web.post("/api/cameras/cam/stills", around | {name: value})
        assert answer.status == (201 if is_harmless(name, value) else 400), (name, value, answer)


@pytest.mark.parametrize("name", ["exposure", "percent", "settle", "ticket", "uid", "to", "gainInPercent", "x"])
def test_in_a_member_of_the_body_as_text(web, name):
    for text in TEXTS:
        body = json.dumps({name: text}).encode()
        answer = web.request("POST", "/api/cameras/cam/stills", {"Content-Type": "application/json"}, body)
        assert answer.status == (201 if is_harmless(name, text) else 400), (name, text, answer)


def test_as_the_body(web):
    for message in MESSAGES:
        data = message.encode()
        for body in (data, data + b"\0", b"\0" + data + b"\0", b"\r\n" + data):
            answer = web.request("POST", "/api/cameras/cam/stills", {"Content-Type": "application/json"}, body)
            assert (answer.status, answer.kind) == (400, "invalid-request")


@pytest.mark.parametrize("text", TEXTS)
def test_as_the_uid_of_a_camera(web, text):
    for method, target in (("POST", "/api/cameras/{}/stills"), ("GET", "/cameras/{}/still.png"),
                           ("GET", "/cameras/{}/still.jpg"), ("GET", "/cameras/{}/stream.mjpg")):
        answer = web.request(method, target.format(encoded(text)), {"Content-Type": "application/json"}, b"{}")
        assert answer.status in (400, 404, 414), answer


@pytest.mark.parametrize("operation", [each for each in OPERATIONS if each.identity != "followEvents"],
                         ids=lambda operation: operation.identity)
def test_in_a_parameter_of_the_query(web, operation):
    target = operation.path.format(uid="cam", id="0" * 32, name="style.css")
    for name in {*NAMES, "fps", "width", "quality", "download"}:
        for text in TEXTS:
            body = (b"{}",) if operation.method == "POST" else ()
            with web.connection() as connection:
                connection.ask(operation.method, f"{target}?{name}={encoded(text)}",
                               {"Content-Type": "application/json"} if body else {}, *body)
                is_taken = is_file(operation.path) or (text == "42" and name in ("percent", "width", "quality"))
                assert connection.receive_head().status in ((400, 404, 414, 415) + (200,) * is_taken), (name, text)


@pytest.mark.parametrize("name", ["Range", "If-None-Match", "If-Range", "Accept", "Cookie", "Authorization", "Origin",
                                  "User-Agent", "Last-Event-ID", "X-Forwarded-For", "Content-Type"])
def test_in_a_header(web, name):
    still = web.take("cam", settle="0")
    for text in TEXTS:
        for target in (still["png"], "/cameras/cam/still.png?settle=0", "/api/cameras"):
            value = text.encode("utf-8", "surrogatepass").replace(b"\r", b" ").replace(b"\n", b" ").decode("latin-1")
            with web.connection() as connection:
                connection.ask("GET", target, {name: value})
                assert connection.receive_head().status < 500, (target, text)


@pytest.mark.parametrize("text", TEXTS)
def test_in_place_of_a_request(web, text):
    data = text.encode("utf-8", "surrogatepass")
    for sent in (data, data + b"\0", data + b"\r\n\r\n", b"\0" + data,
                 b"GET " + data + b" HTTP/1.1\r\nHost: localhost\r\n\r\n"):
        with web.connection() as connection:
            connection.send(sent)
            connection.finish()
            for status in re.findall(rb"HTTP/1\.1 ([0-9]{3}) ", connection.rest()):
                assert 400 <= int(status) < 500, (sent, status)
