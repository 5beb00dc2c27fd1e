"""Who may ask: hosts, other sites, tokens, TLS; and the headers that protect browsers."""

import base64
import re
import socket
import ssl
import subprocess

import pytest
from harness.openapi import DOCUMENT, SECURITY_HEADERS, check_answer, check_response
from harness.scenario import scenario
from harness.wait import wait_until
from harness.web_streams import Events, closing

TOKEN = "sixteen-Letters-and-more"
FORM = {"Content-Type": "application/x-www-form-urlencoded"}
OWN_NAME = socket.gethostname()


def problem(name, answer):
    check_response(DOCUMENT["components"]["responses"][name], answer)
    return answer


def basic(user, password):
    return "Basic " + base64.b64encode(f"{user}:{password}".encode()).decode()


def bearer(token=TOKEN):
    return {"Authorization": f"Bearer {token}"}


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture(scope="module")
def open_web(hub, start_shared_web):
    web = start_shared_web(hub.network, "--allow-host", "cameras.example", "--allow-host", "Other.Example")
    return web.wait_for_cameras("cam")


@pytest.fixture(scope="module")
def token_file(hub):
    file = hub.folder / "token"
    file.write_text(f"{TOKEN}\nnot this line\n", encoding="utf-8")
    return file


@pytest.fixture(scope="module")
def web(hub, token_file, start_shared_web):
    web = start_shared_web(hub.network, "--token-file", token_file)
    wait_until(lambda: web.get("/healthz").status == 200, "it has found the hub")
    return web


@pytest.fixture(scope="module")
def tls(hub, token_file, start_shared_web):
    """With a certificate of its own making."""
    folder = hub.folder
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "1", "-subj", "/CN=localhost",
                    "-addext", "subjectAltName=DNS:localhost,IP:127.0.0.1", "-keyout", folder / "key.pem",
                    "-out", folder / "certificate.pem"], check=True, capture_output=True)
    context = ssl.create_default_context(cafile=str(folder / "certificate.pem"))
    web = start_shared_web(hub.network, "--token-file", token_file, "--tls-certificate", folder / "certificate.pem",
                           "--tls-key", folder / "key.pem", tls=context)
    wait_until(lambda: web.get("/healthz").status == 200, "it has found the hub")
    return web


def login(web, token=TOKEN, source="127.0.0.1"):
    form = "token=" + "".join(f"%{byte:02X}" for byte in token.encode())
    return check_answer("login", web.request("POST", "/login", FORM, form.encode(), source))


def cookie(web):
    return login(web).header("Set-Cookie").partition(";")[0]


# Hosts

@pytest.mark.parametrize("host", [
    "localhost", "LOCALHOST:8080", "localhost.", "127.0.0.1", "127.0.0.1:1", "[::1]:8080", "[::1]", "10.1.2.3",
    "192.168.0.7:80", "[fe80::1]", OWN_NAME, f"{OWN_NAME}:8080", f"{OWN_NAME}.local", OWN_NAME.upper(),
    "cameras.example", "CAMERAS.example:8080", "other.example",
])
def test_hosts_that_can_only_be_this_one_are_served(open_web, host):
    assert open_web.get("/api/cameras", {"Host": host}).status == 200


@pytest.mark.parametrize("host", [
    "evil.example", "localhost.evil.example", "evil.localhost.example", "127.0.0.1.evil.example",
    "cameras.example.evil", "xcameras.example", "local", "a.local", "camera-hub", "evil.example:8080",
])
def test_a_name_that_anybody_can_lead_here_is_misdirected(open_web, host):
    for method, target in (("GET", "/"), ("GET", "/api/cameras"), ("GET", "/cameras/cam/still.png"),
                           ("GET", "/healthz"), ("POST", "/api/cameras/cam/stills"), ("GET", "/none"), ("DELETE", "/")):
        problem("Misdirected", open_web.request(method, target, {"Host": host}))


@pytest.mark.parametrize("host", ["1.2.3", "1.2.3.4.5", "0x7f.1", "2130706433", "[::1].evil.example", "[::1", "::1",
                                  "localhost:x", "", "a b", "@localhost", "localhost/"])
def test_what_is_nearly_an_address_is_none(open_web, host):
    problem("Misdirected", open_web.get("/api/cameras", {"Host": host}))


# Other sites

@pytest.mark.parametrize("site", ["cross-site", "same-site"])
def test_what_another_site_asks_for_is_refused(open_web, site):
    for method, target, mode in (("GET", "/api/cameras", "cors"), ("GET", "/cameras/cam/still.png", "no-cors"),
                                 ("GET", "/cameras/cam/stream.mjpg", "no-cors"), ("GET", "/api/events", "cors"),
                                 ("POST", "/api/cameras/cam/stills", "cors"), ("GET", "/", "no-cors"),
                                 ("GET", "/cameras/cam/still.png", "navigate"), ("GET", "/page/style.css", "no-cors")):
        headers = {"Sec-Fetch-Site": site, "Sec-Fetch-Mode": mode, "Sec-Fetch-Dest": "empty"}
        if mode == "navigate":
            headers["Sec-Fetch-Dest"] = "document"
        problem("Forbidden", open_web.request(method, target, headers))


@pytest.mark.parametrize("site", ["same-origin", "none"])
def test_what_the_page_itself_or_its_user_asks_for_is_served(open_web, site):
    for target in ("/", "/api/cameras", "/cameras/cam/still.png?settle=0"):
        assert open_web.get(target, {"Sec-Fetch-Site": site}).status == 200


def test_a_link_of_another_site_leads_to_the_page(open_web, web):
    headers = {"Sec-Fetch-Site": "cross-site", "Sec-Fetch-Mode": "navigate", "Sec-Fetch-Dest": "document"}
    assert open_web.get("/", headers).status == 200
    assert web.get("/login", headers).status == 200
    problem("Forbidden", open_web.get("/", headers | {"Sec-Fetch-Dest": "iframe"}))
    problem("Forbidden", web.request("POST", "/login", headers | FORM, b"token=x"))


@pytest.mark.parametrize("origin, status", [
    ("http://localhost", 201), ("http://LOCALHOST", 201), ("http://evil.example", 403), ("null", 403), ("", 403),
    ("http://localhost.evil.example", 403), ("http://evil.example/localhost", 403), ("http://localhost:1", 403),
    ("localhost", 403), ("http://", 403),
])
def test_a_post_comes_from_the_page_itself(open_web, origin, status):
    answer = open_web.post("/api/cameras/cam/stills", {"settle": "0"}, {"Origin": origin, "Host": "localhost"})
    assert answer.status == status
    if status == 403:
        problem("Forbidden", answer)


# Tokens

NEEDS_ONE = [
    ("GET", "/api/cameras"), ("GET", "/api/events"), ("POST", "/api/cameras/cam/stills"), ("GET", "/api/stills"),
    ("GET", f"/api/stills/{'0' * 32}.png"), ("GET", "/cameras/cam/still.png"), ("GET", "/cameras/cam/still.jpg"),
    ("GET", "/cameras/cam/stream.mjpg"), ("GET", "/api/queue"), ("GET", "/api/openapi.yaml"), ("GET", "/metrics"),
    ("GET", "/none"), ("GET", "/api/none"), ("POST", "/api/none"), ("DELETE", "/api/cameras"),
]
WRONG = [
    {}, bearer("x" * 20), bearer(TOKEN[:-1]), bearer(TOKEN + "x"), bearer("not this line"), {"Authorization": "Bearer"},
    bearer(""), bearer(f" {TOKEN} x"), {"Authorization": TOKEN}, {"Authorization": ""},
    {"Authorization": basic("any", "wrong")}, {"Authorization": basic(TOKEN, "")}, {"Authorization": "Basic"},
    {"Authorization": "Basic !!!"}, {"Authorization": "Basic " + base64.b64encode(TOKEN.encode()).decode()},
    {"Authorization": f"Digest {TOKEN}"}, {"Cookie": "camera_hub_session=x"},
    {"Cookie": "camera_hub_session="}, {"Cookie": "camera_hub_session"}, {"Cookie": ""},
    {"Cookie": f"camera_hub_session={TOKEN}"},
]


@pytest.mark.parametrize("number", range(len(WRONG)), ids=lambda number: str(WRONG[number]))
def test_without_the_token_nothing_is_told(web, number):
    for place, (method, target) in enumerate(NEEDS_ONE):
        # Each from an address of its own: after some wrong ones an address has to wait.
        problem("Unauthorized", web.request(method, target, WRONG[number], source=f"127.2.{number}.{place + 1}"))


def test_an_address_that_tries_many_tokens_has_to_wait(web):
    statuses = [web.request("GET", "/api/cameras", bearer(f"{'x' * 16}{number}"), source="127.3.0.1").status
                for number in range(20)]
    assert statuses == [401] * 10 + [429] * 10
    answer = problem("TooMany", web.request("GET", "/api/cameras", bearer(), source="127.3.0.1"))
    assert 1 <= int(answer.header("Retry-After")) <= 60
    assert web.request("POST", "/login", FORM, b"token=x", source="127.3.0.1").status == 429
    assert web.request("GET", "/api/cameras", bearer(), source="127.3.0.2").status == 200


def test_an_address_that_has_to_wait_keeps_its_sessions(web):
    session = {"Cookie": login(web, source="127.3.1.1").header("Set-Cookie").partition(";")[0]}
    for _ in range(11):
        web.request("GET", "/api/cameras", bearer("x" * 16), source="127.3.1.1")
    assert web.request("GET", "/api/cameras", session, source="127.3.1.1").status == 200


def test_the_token_is_taken_in_each_of_its_forms(web):
    for headers in (bearer(), {"Authorization": basic("any", TOKEN)}, {"Authorization": basic("", TOKEN)},
                    {"Authorization": bearer()["Authorization"].replace("Bearer", "bearer")},
                    {"Authorization": basic("any", TOKEN).replace("Basic", "BASIC")}, {"Cookie": cookie(web)},
                    {"Cookie": f"a=b; {cookie(web)}; c=d"}):
        assert web.get("/api/cameras", headers).status == 200, headers
        assert web.post("/api/cameras/cam/stills", {"settle": "0"}, headers).status == 201


def test_with_a_token_any_host_is_served(web):
    assert web.get("/api/cameras", bearer() | {"Host": "anything.example"}).status == 200
    problem("Unauthorized", web.get("/api/cameras", {"Host": "anything.example"}))


def test_what_needs_no_token_is_given_without_it(web):
    assert check_answer("checkHealth", web.get("/healthz")).status == 200
    assert check_answer("getLogin", web.get("/login")).status == 200
    assert check_answer("getLogin", web.get("/login?wrong")).status == 200
    for file in re.findall('(?:href|src)="(/page/[^"]+)"', web.get("/login").body.decode()):
        assert check_answer("getPageFile", web.get(file)).status == 200


def test_the_page_leads_to_the_login_without_it(web):
    browser = {"Accept": "text/html,application/xhtml+xml"}
    for headers in (browser, browser | {"Cookie": "camera_hub_session=x"}):
        answer = check_answer("getPage", web.get("/", headers))
        assert (answer.status, answer.header("Location")) == (303, "/login")
    problem("Unauthorized", web.get("/"))
    problem("Unauthorized", web.get("/", {"Accept": "*/*"}))
    assert check_answer("getPage", web.get("/", {"Cookie": cookie(web)})).status == 200


def test_the_login_gives_a_cookie_that_no_script_and_no_other_site_gets(web):
    answer = login(web)
    assert (answer.status, answer.header("Location")) == (303, "/")
    name, *attributes = answer.header("Set-Cookie").split("; ")
    assert name.startswith("camera_hub_session=") and TOKEN not in name
    assert {"HttpOnly", "SameSite=Strict", "Path=/"} <= set(attributes)
    assert "Secure" not in attributes


def test_a_wrong_token_leads_back_to_the_login_without_a_cookie(web):
    for token in ("", "x" * 20, TOKEN + "x", TOKEN.lower(), "not this line"):
        answer = login(web, token, source="127.4.0.1")
        assert (answer.status, answer.header("Location"), answer.header("Set-Cookie")) == (303, "/login?wrong", None)


@pytest.mark.parametrize("form", [b"", b"token", b"Token=x", b"token=x&token=x", b"token=x&x=y", b"token=%zz",
                                  b"x" * 60000])
def test_a_form_that_is_not_that_of_the_login_gives_no_cookie(web, form):
    answer = check_answer("login", web.request("POST", "/login", FORM, form, source="127.4.0.2"))
    assert answer.status in (303, 400) and answer.header("Set-Cookie") is None
    assert answer.header("Location") in (None, "/login?wrong")


def test_the_logout_ends_the_cookie(web):
    headers = {"Cookie": cookie(web)}
    answer = check_answer("logout", web.request("POST", "/logout", FORM | headers, b""))
    assert (answer.status, answer.header("Location")) == (303, "/login")
    assert "Max-Age=0" in answer.header("Set-Cookie").split("; ")


def test_another_site_can_neither_log_in_nor_out(web):
    for target in ("/login", "/logout"):
        headers = FORM | bearer() | {"Origin": "http://evil.example"}
        problem("Forbidden", web.request("POST", target, headers, b"token=x"))


def test_events_need_the_token_as_everything(web):
    with closing(Events(web, headers={"Cookie": cookie(web)})) as events:
        assert events.next().name == "hub"


# TLS

def test_with_tls_everything_is_as_without_but_for_what_browsers_are_told_of_it(tls):
    assert tls.scheme == "https"
    answer = check_answer("listCameras", tls.get("/api/cameras", bearer()))
    assert re.fullmatch(r"max-age=[0-9]+(; includeSubDomains)?", answer.header("Strict-Transport-Security"))
    assert "Secure" in login(tls).header("Set-Cookie").split("; ")
    still = check_answer("takeStill", tls.post("/api/cameras/cam/stills", {"settle": "0"}, bearer())).json()
    assert len(tls.get(still["png"], bearer()).body) == still["bytes"]


def test_without_tls_browsers_are_not_told_to_use_it(web, open_web):
    for program in (web, open_web):
        assert program.get("/healthz").header("Strict-Transport-Security") is None


@pytest.mark.filterwarnings("ignore:ssl.TLSVersion:DeprecationWarning")
def test_old_versions_of_tls_are_refused(tls):
    for version in (ssl.TLSVersion.TLSv1, ssl.TLSVersion.TLSv1_1):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
        context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
        context.set_ciphers("ALL:@SECLEVEL=0")
        context.minimum_version = context.maximum_version = version
        with pytest.raises(OSError):
            context.wrap_socket(tls.connect(encrypted=False).socket)
    assert tls.get("/healthz").status == 200


def test_nothing_is_told_without_tls_where_there_is_tls(tls):
    connection = tls.connect(encrypted=False)
    connection.send(b"GET /healthz HTTP/1.1\r\nHost: localhost\r\n\r\n")
    assert b"reachable" not in connection.rest()
    assert tls.get("/healthz").status == 200


def test_handshakes_that_do_not_go_on_hinder_nobody(tls):
    stuck = [tls.connect(encrypted=False) for _ in range(50)]
    for connection in stuck[:25]:
        connection.send(bytes.fromhex("1603010200010001fc0303"))
    assert tls.get("/healthz").status == 200
    for connection in stuck[:25]:
        connection.rest()  # ended by the program
    assert tls.get("/healthz").status == 200


def test_a_certificate_that_is_another_one_now_does_not_disturb_what_runs(tls, hub):
    (hub.folder / "certificate.pem").write_bytes(b"")
    wait_until(lambda: tls.get("/healthz").status == 200, "it serves on")


# All answers

ASKED = [
    *((method, target, {}) for method, target in NEEDS_ONE), ("GET", "/", {}), ("GET", "/login", {}),
    ("GET", "/none", bearer()), ("GET", "/page/none", {}), ("PUT", "/login", {}), ("GET", "/" + "a" * 5000, {}),
    ("GET", "/api/cameras", {"Sec-Fetch-Site": "cross-site"}), ("GET", "/api/cameras", {"X": "x" * 20000}),
    ("GET", "/api/cameras", {"Host": "evil.example"}), ("GET", "/%", {}), ("GET", "/api/cameras", {"Host": None}),
    ("GET", "/api/cameras", {"Content-Length": 1 << 30}), ("GET", "/api/cam eras", {}),
]


@pytest.mark.parametrize("program", ["web", "open_web", "tls"])
def test_every_answer_protects_browsers(request, program):
    for method, target, headers in ASKED:
        with request.getfixturevalue(program).connection() as connection:
            connection.ask(method, target, headers)
            answer = connection.receive_head()
        for name, value in SECURITY_HEADERS.items():
            assert answer.header(name) == value, (target, headers)
        assert not re.search("[0-9]", answer.header("Server") or "")
        assert answer.header("Access-Control-Allow-Origin") is None
