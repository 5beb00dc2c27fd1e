"""The document of the HTTP interface held against the program: all of it is there, and nothing else."""

import re

import pytest
from harness.openapi import (DOCUMENT, FILE, OPERATIONS, check_answer, check_response, is_file, methods_of,
                             resolved)
from harness.scenario import scenario
from harness.web import part

TOKEN = "a-token-of-many-letters"
FORM = {"Content-Type": "application/x-www-form-urlencoded"}


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network)


@pytest.fixture(scope="module")
def guarded(hub, start_shared_web):
    """One with a token."""
    file = hub.folder / "token"
    file.write_text(f"{TOKEN}\n", encoding="ascii")
    return start_shared_web(hub.network, "--token-file", file)


@pytest.fixture(scope="module")
def still(web):
    return web.take("cam", settle="0")


@pytest.fixture(scope="module")
def targets(still):
    """By the document's paths, addresses that are there."""
    values = {"uid": "cam", "id": still["id"], "name": "style.css"}
    return {path: path.format(**{name: part(value) for name, value in values.items()}) for path in DOCUMENT["paths"]}


# What is asked with, and the status, where it is not a plain one of 200.
CALLS = {
    "takeStill": ({"Content-Type": "application/json"}, b'{"exposure":"20ms","settle":"0","ticket":"mine"}', 201),
    "login": (FORM, b"token=" + TOKEN.encode(), 303),
    "logout": ({"Authorization": f"Bearer {TOKEN}"} | FORM, b"", 303),
}
OF_TOKENS = ("getLogin", "login", "logout")


@pytest.mark.parametrize("identity", [operation.identity for operation in OPERATIONS])
def test_every_operation_is_there_and_answers_as_described(web, guarded, targets, identity):
    (operation,) = [each for each in OPERATIONS if each.identity == identity]
    headers, body, status = CALLS.get(identity, ({}, None, 200))
    program = guarded if identity in OF_TOKENS else web
    with program.connection() as connection:
        connection.ask(operation.method, targets[operation.path], headers, body)
        endless = identity in ("followEvents", "watchCamera")
        answer = connection.receive_head() if endless else connection.receive(operation.method)
    assert check_answer(identity, answer).status == status


@pytest.mark.parametrize("identity", OF_TOKENS)
def test_without_a_token_there_is_no_login(web, identity):
    (operation,) = [each for each in OPERATIONS if each.identity == identity]
    headers, body, _ = CALLS.get(identity, ({}, None, 200))
    answer = web.request(operation.method, operation.path, headers, body)
    assert check_answer(identity, answer).kind == "not-found"


METHODS = ("GET", "POST", "PUT", "DELETE", "PATCH", "TRACE", "PROPFIND", "get", "X")


@pytest.mark.parametrize("path", DOCUMENT["paths"])
def test_other_methods_are_refused_with_those_that_there_are(guarded, targets, path):
    refusal = DOCUMENT["components"]["responses"]["MethodNotAllowed"]
    for method in METHODS:
        if method not in methods_of(path):
            answer = guarded.request(method, targets[path], {"Authorization": f"Bearer {TOKEN}"})
            check_response(refusal, answer)
            assert set(answer.header("Allow").split(", ")) == methods_of(path) | {"OPTIONS"}, method
    if "HEAD" not in methods_of(path):
        assert guarded.request("HEAD", targets[path], {"Authorization": f"Bearer {TOKEN}"}).status == 405


@pytest.mark.parametrize("path", DOCUMENT["paths"])
def test_a_path_tells_its_methods(guarded, targets, path):
    answer = guarded.request("OPTIONS", targets[path], {"Authorization": f"Bearer {TOKEN}"})
    assert (answer.status, answer.body) == (204, b"")
    assert set(answer.header("Allow").split(", ")) == methods_of(path) | {"OPTIONS"}


@pytest.mark.parametrize("path", [path for path in DOCUMENT["paths"] if {"GET", "HEAD"} <= methods_of(path)])
def test_the_head_is_that_of_the_whole_answer(guarded, targets, path):
    headers = {"Authorization": f"Bearer {TOKEN}"}
    whole = guarded.get(targets[path], headers)
    with guarded.connection() as connection:
        head = connection.request("HEAD", targets[path], headers)
        names = [name for name, _ in whole.headers]
        assert (head.status, [name for name, _ in head.headers]) == (whole.status, names)
        assert connection.request("GET", "/healthz").status == 200  # there was nothing behind the head


@pytest.mark.parametrize("target", [
    "/api", "/api/", "/api/camera", "/api/cameras/", "/api/cameras/cam", "/api/cameras/cam/", "/api/cameras/cam/still",
    "/api/cameras/cam/stills/", "/api//cameras", "//api/cameras", "/API/cameras", "/api/Cameras", "/api/%2e%2e/cameras",
    "/api/../api/cameras", "/./api/cameras", "/api%2Fcameras", "/cameras", "/cameras/cam", "/cameras/cam/still.gif",
    "/cameras/cam/still.png/", "/cameras/cam/stream", "/page", "/page/", "/page/none", "/page/../page/style.css",
    "/page/..%2f..%2f..%2fetc%2fpasswd", "/page/%2fetc%2fpasswd", "/page/style.css/",
    "/etc/passwd", "/../../etc/passwd", "/res/none", "/index.html", "/openapi.yaml",
    "/api/openapi.json",
    "/api/stills/x", "/metrics/", "/healthz/", "/api/queue/1", "/;", "/%2f", "/api/cameras%20", "/robots.txt",
])
def test_what_is_not_described_is_not_found(web, target):
    not_found = DOCUMENT["components"]["responses"]["NotFound"]
    answer = web.get(target)
    check_response(not_found, answer)
    assert answer.status == 404


@pytest.mark.parametrize("path", sorted({each.path for each in OPERATIONS if each.identity not in OF_TOKENS}))
def test_a_parameter_that_is_not_described_is_refused_but_of_files(web, targets, path):
    for method in methods_of(path):
        headers, body = ({"Content-Type": "application/json"}, b"{}") if method == "POST" else ({}, None)
        answer = web.request(method, f"{targets[path]}?unheard-of=1", headers, body)
        if is_file(path):
            assert answer.status == 200
            continue
        assert answer.status == 400, (method, answer)
        if method != "HEAD":
            check_response(resolved(DOCUMENT["components"]["responses"]["InvalidRequest"]), answer)
            assert "unheard-of" in answer.json()["detail"]


def test_the_files_of_the_page_are_not_sent_again_to_who_has_them(web):
    names = re.findall('(?:href|src)="(/page/[^"]+)"', web.get("/").body.decode())
    assert len(names) >= 3
    for identity, target in [("getPage", "/"), ("getIcon", "/favicon.ico"), ("getDocument", "/api/openapi.yaml"),
                             *(("getPageFile", name) for name in names)]:
        tag = check_answer(identity, web.get(target)).header("ETag")
        again = check_answer(identity, web.get(target, {"If-None-Match": tag}))
        assert (again.status, again.header("ETag")) == (304, tag)
        assert web.get(target, {"If-None-Match": '"other"'}).status == 200


def test_the_document_is_given_as_it_was_written(web):
    answer = web.get("/api/openapi.yaml")
    assert answer.body == FILE.read_bytes()
    assert answer.header("Content-Type").startswith("application/yaml")
