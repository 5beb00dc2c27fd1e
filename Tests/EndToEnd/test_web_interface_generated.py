"""Requests that are made from the document, good ones and such as break one of its rules."""

import json
import random
import re
from urllib.parse import quote

import pytest
from harness.openapi import OPERATIONS, check_answer, is_file, resolved, typed, validator
from harness.scenario import scenario
from harness.web import part

SEEDS = range(40)
UIDS = ["cam", "a/b ü"]
ENDLESS = ("followEvents", "watchCamera")
OF_TOKENS = ("getLogin", "login", "logout")

STRANGE = [
    "", " ", "0", "-1", "1", "1.5", "1e9", "+1", "NaN", "Infinity", "null", "true", "[]", "{}", "42", "-0", "00",
    "99999999999999999999", "\0", "a\0b", "\r\nX: y", "\n", "\t", "../../etc/passwd", "/", "\\", "%", "%00", "%2e%2e",
    "<script>alert(1)</script>", "';--", '"', "ü", "\u202e", "\ufffd", "😀", "a" * 300, "*", "${x}", "{{x}}", "a&b=c",
    "a=b", "#", "?", ";", "bytes=0-", '{"us":1}', "Transfer-Encoding: chunked", "camera:capture", "-2147483648",
    "2147483648", "9223372036854775808", "0x10", "1_000", "١", "1,5", "1 ms", "1ms", "20ms", "1/0", "1/50s",
]
TIMES = {"exposure": ["1us", "976us", "1ms", "20ms", "20 ms", "1/50s", "1/50", "0.5s", ".5ms", "2147483647us"],
         "settle": ["0", "0ms", "1ms", "20ms", "0.02s", ".01s"]}
HEADERS = {
    "Range": ["bytes=0-1", "bytes=-5", "bytes=5-", "bytes=9-1", "bytes=0-1,3-4", "bytes=999999999-", "x=1-2", "bytes"],
    "If-None-Match": ["*", '"x"', 'W/"x"', '"x", "y"', '"', "x", ","],
    "If-Range": ['"x"', 'W/"x"', "x", "Sun, 22 Nov 2026 12:00:00 GMT"],
}
JSON_VALUES = [None, True, False, 0, -1, 1, 40, 100, 101, 0.5, 1e308, 2 ** 31, 2 ** 63, -2 ** 63, "", "20ms", "x", [],
               [1], {}, {"us": 1}, "a" * 300, "\0", "ü", ["20ms"], "-250ms"]


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario(*UIDS)).wait_for_cameras(*UIDS)


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network)


@pytest.fixture(scope="module")
def still(web):
    return web.take("cam", settle="0")


def good_values(name, schema, still):
    """Such as the schema of a parameter takes; settle times among them are short."""
    schema = resolved(schema)
    if name in TIMES:
        return TIMES[name]
    if "const" in schema:
        return [schema["const"]]
    if schema.get("type") == "integer":
        low, high = schema["minimum"], schema["maximum"]
        return [str(value) for value in (low, high, (low + high) // 2, low + 1, high - 1)]
    if schema.get("type") == "number":
        return [str(schema["minimum"]), str(schema["maximum"]), "1", "2.5", "0.25"]
    plain = {"uid": UIDS, "id": [still["id"]], "name": ["style.css", "none"], "download": ["", "1"]}
    return plain.get(name) or HEADERS[name]


def bad_values(schema):
    """Strange ones that the schema does not take, and those next to its limits."""
    strange = list(STRANGE)
    if "minimum" in resolved(schema):
        strange += [str(resolved(schema)["minimum"] - 1), str(resolved(schema)["maximum"] + 1)]
    return [text for text in strange if not validator(schema).is_valid(typed(schema, text))]


def other_parts(parameter):
    """Without what would make another path of it."""
    values = bad_values(parameter["schema"])
    return [text for text in values if text] if parameter["in"] == "path" else values


class Request:
    """One that is made of an operation and a seed. Of every second one a parameter is broken, if there is one that
    can be."""

    def __init__(self, operation, seed, still):
        self._random = random.Random(f"{operation.identity} {seed}")
        self.operation, self.is_broken = operation, False
        self.values = {"path": {}, "query": {}, "header": {}}
        for parameter in operation.parameters:
            if parameter["in"] == "path" or self._random.random() < 0.5:
                value = self._random.choice(good_values(parameter["name"], parameter["schema"], still))
                self.values[parameter["in"]][parameter["name"]] = value
        if {"exposure", "percent"} <= set(self.values["query"]):
            del self.values["query"][self._random.choice(["exposure", "percent"])]
        if seed % 2:
            self._break()
        self.body = self._make_body(seed % 4 == 3) if operation.method == "POST" else None

    def _break(self):
        breakable = [(parameter, other_parts(parameter)) for parameter in self.operation.parameters
                     if parameter["in"] != "header"]
        breakable = [(parameter, values) for parameter, values in breakable if values]
        if is_file(self.operation.path):
            return
        if self._random.random() < 0.2 or not breakable:
            self.values["query"][self._random.choice(["x", "to", "Exposure", "gainInPercent", "%00"])] = "1"
        else:
            parameter, values = self._random.choice(breakable)
            self.values[parameter["in"]][parameter["name"]] = self._random.choice(values)
        self.is_broken = True

    def _make_body(self, is_to_be_broken):
        names = ["settle", *self._random.sample(["exposure", "percent", "ticket", "x"], 2)] if is_to_be_broken else [
            "settle", self._random.choice(["exposure", "percent"]), "ticket"]
        good = {**TIMES, "percent": [0, 1, 40, 100], "ticket": ["a", "A-9", "x" * 64]}
        body = {name: self._random.choice(good.get(name, JSON_VALUES)) for name in names}
        if is_to_be_broken:
            body[self._random.choice(names)] = self._random.choice(JSON_VALUES)
            if self._random.random() < 0.2:
                body = self._random.choice(JSON_VALUES)
        content = self.operation.value["requestBody"]["content"].get("application/json")
        self.is_broken = self.is_broken or not content or not validator(content["schema"]).is_valid(body)
        return json.dumps(body).encode()

    @property
    def target(self):
        path = re.sub("{([^}]*)}", lambda match: part(self.values["path"][match[1]]), self.operation.path)
        pairs = [quote(name, safe="") + (f"={quote(value, safe='')}" if value else "")
                 for name, value in self.values["query"].items()]
        return path + ("?" + "&".join(pairs) if pairs else "")

    @property
    def headers(self):
        return self.values["header"] | ({"Content-Type": "application/json"} if self.body is not None else {})


def is_alive(hub, process):
    client = hub.rpc()
    assert client.request("camera:version")["result"] == "2.9"
    client.close()
    assert hub.process is process and hub.is_running()


@pytest.mark.parametrize("identity", [each.identity for each in OPERATIONS if each.identity not in OF_TOKENS])
def test_made_requests_are_answered_as_described(hub, web, still, identity):
    (operation,) = [each for each in OPERATIONS if each.identity == identity]
    process, broken = hub.process, 0
    for seed in SEEDS:
        request = Request(operation, seed, still)
        with web.connection() as connection:
            connection.ask(operation.method, request.target, request.headers, request.body)
            head = connection.receive_head()
            is_endless = identity in ENDLESS and head.status == 200
            answer = check_answer(identity, head if is_endless else connection.receive_after(head, operation.method))
        told = (identity, seed, request.target, request.headers, request.body, answer)
        assert answer.status < 500, told
        assert not request.is_broken or 400 <= answer.status < 500, told
        broken += request.is_broken
    assert broken < len(SEEDS) and (broken > 0 or is_file(operation.path))
    is_alive(hub, process)
    assert web.is_running()


@pytest.mark.parametrize("seed", range(40))
def test_bytes_that_are_nearly_a_request_are_answered_or_refused_and_nothing_ends(hub, web, seed):
    chance = random.Random(seed)
    good = (b"POST /api/cameras/cam/stills?x=1 HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
            b"Content-Length: 2\r\nConnection: close\r\n\r\n{}")
    for _ in range(10):
        data = bytearray(good)
        for _ in range(chance.randrange(1, 6)):
            place = chance.randrange(len(data))
            data[place:place + chance.randrange(3)] = chance.choice(
                [b"", b"\0", b"\r\n", b"\n", b"\r", b" ", b":", b"%", b"\xff", b"/", bytes([chance.randrange(256)])])
        with web.connection() as connection:
            connection.send(bytes(data))
            connection.finish()
            for line in re.findall(rb"HTTP/1\.1 ([0-9]{3})", connection.rest()):
                assert int(line) < 500, bytes(data)
    is_alive(hub, hub.process)
    assert web.is_running()
