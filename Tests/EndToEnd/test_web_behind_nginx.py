"""Examples/nginx-web.conf: the page behind nginx is the same, encrypted."""

import pytest
from harness.guides import guide_commands
from harness.hub import ROOT
from harness.nginx import Nginx
from harness.scenario import EXPOSURE, scenario
from harness.web_connection import WebConnection

HOST = {"Host": "hub1.example"}
TOKEN = "0123456789abcdef"
BEARER = HOST | {"Authorization": f"Bearer {TOKEN}"}


@pytest.fixture(scope="module")
def web(start_shared_hub, start_shared_web, tmp_path_factory):
    hub = start_shared_hub(scenario("a/b c", camera={"exposure": EXPOSURE})).wait_for_cameras("a/b c")
    token = tmp_path_factory.mktemp("secret") / "token"
    token.write_text(TOKEN, encoding="ascii")
    return start_shared_web(hub.network, "--listen", "127.0.0.1:8080", "--token-file", token)


@pytest.fixture(scope="module")
def nginx(web, tmp_path_factory):
    (certificate,) = guide_commands("Docs/fleet.md", "openssl req ")
    configuration = (ROOT / "Examples/nginx-web.conf").read_text(encoding="utf-8")
    nginx = Nginx(tmp_path_factory.mktemp("nginx"), web.network, configuration, certificate)
    yield nginx
    nginx.close()


@pytest.fixture
def connection(nginx):
    return WebConnection(nginx.connect().socket)


def test_it_passes_what_the_page_answers_and_has_browsers_come_encrypted_only(connection):
    answer = connection.request("GET", "/", HOST | {"Accept": "text/html"})
    assert (answer.status, answer.header("Location")) == (303, "/login")
    assert answer.header("Strict-Transport-Security") == "max-age=31536000"
    assert connection.request("GET", "/login", HOST).media_type == "text/html"
    assert connection.request("GET", "/api/cameras", HOST).kind == "unauthorized"


def test_a_session_is_for_encrypted_connections_only(connection):
    answer = connection.request("POST", "/login", HOST | {"Content-Type": "application/x-www-form-urlencoded"},
                                f"token={TOKEN}".encode())
    assert (answer.status, answer.header("Location")) == (303, "/")
    cookie, *attributes = answer.header("Set-Cookie").split("; ")
    assert {"httponly", "samesite=strict", "secure"} <= {attribute.lower() for attribute in attributes}
    assert connection.request("GET", "/api/cameras", HOST | {"Cookie": cookie}).status == 200


def test_a_slash_in_the_name_of_a_camera_gets_through(connection):
    answer = connection.request("GET", "/cameras/a%2Fb%20c/still.png?exposure=20ms", BEARER)
    assert (answer.status, answer.header("Content-Type")) == (200, "image/png")


def test_events_come_at_once(connection):
    connection.ask("GET", "/api/events", BEARER)
    connection.receive_through(b"event: cameras")


def test_requests_of_another_site_are_refused(connection):
    answer = connection.request("POST", "/api/cameras/a%2Fb%20c/stills",
                                BEARER | {"Origin": "https://other.example", "Content-Type": "application/json"}, b"{}")
    assert answer.kind == "forbidden"
