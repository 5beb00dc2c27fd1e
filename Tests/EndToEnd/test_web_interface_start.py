"""Starting and ending the program."""

import re
import signal
import socket

import pytest
from harness.hub import Hub
from harness.scenario import scenario
from harness.web import run_web


def fails(code, result):
    """It said why in one line at standard error, and nothing else."""
    assert (result.returncode, result.stdout) == (code, ""), result
    assert re.fullmatch("camera-hub-web: [^\n]+\n", result.stderr), result.stderr
    return result.stderr


def test_the_version_is_that_of_the_hub(network):
    result = run_web(network, "--version")
    assert (result.returncode, result.stderr) == (0, "")
    assert re.fullmatch(r"camera-hub-web 2\.9\n", result.stdout)


def test_the_help_names_all_arguments(network):
    result = run_web(network, "--help")
    assert (result.returncode, result.stderr) == (0, "")
    for name in ("--listen", "--hub", "--hub-port", "--hub-image-port", "--tls-certificate", "--tls-key",
                 "--token-file", "--no-token", "--allow-host", "--keep", "--keep-memory", "--idle", "--max-connections",
                 "--version"):
        assert re.search(rf"{name}\b(?!-)", result.stdout), name


@pytest.mark.parametrize("arguments", [
    ["--unheard-of"], ["argument"], ["--listen"], ["--listen", "nonsense"], ["--listen", "127.0.0.1"],
    ["--listen", "127.0.0.1:"], ["--listen", "127.0.0.1:65536"], ["--listen", "127.0.0.1:-1"], ["--listen", "::1:8080"],
    ["--listen", "[::1]"], ["--hub-port", "0"], ["--hub-port", "65536"], ["--hub-image-port", "x"], ["--hub", ""],
    ["--hub", "a b"], ["--keep", "0"], ["--keep", "-1"], ["--keep", "x"], ["--keep-memory", "-1"], ["--idle", "60"],
    ["--idle", "-1s"], ["--max-connections", "0"], ["--tls-certificate", "FILE"], ["--tls-key", "FILE"],
    ["--allow-host", ""],
])
def test_arguments_that_are_not_as_described_are_told_in_one_line(network, tmp_path, arguments):
    (tmp_path / "file").write_text("x", encoding="ascii")
    fails(2, run_web(network, *(str(tmp_path / "file") if each == "FILE" else each for each in arguments)))


@pytest.mark.parametrize("address", ["0.0.0.0:0", "[::]:0"])
def test_it_does_not_listen_beyond_this_machine_without_a_token_unless_that_is_asked_for(
        network, start_web, address):
    line = fails(2, run_web(network, "--listen", address))
    assert "--token-file" in line and "--no-token" in line
    web = start_web(network, "--listen", address, "--no-token")
    assert web.get("/page/none").status == 404


@pytest.mark.parametrize("address", ["127.0.0.1:0", "127.1.2.3:0"])
def test_it_tells_where_it_listens(network, start_web, address):
    web = start_web(network, "--listen", address)
    assert (web.scheme, web.host) == ("http", address.removesuffix(":0"))
    connection = network.run(socket.create_connection, (web.host, web.port))
    connection.close()


def test_a_port_that_is_taken_is_told_in_one_line(network):
    with network.run(socket.create_server, ("127.0.0.1", 8080)):
        assert "8080" in fails(1, run_web(network))


@pytest.mark.parametrize("content", [None, "", "\n", "short\n", "fifteen-letters\n", f"\n{'a' * 16}\n",
                                     "a token of blanks\n", "a-token-of-ümlauts\n", "a" * 1025 + "\n"])
def test_a_token_file_that_has_no_token_is_told_in_one_line(network, tmp_path, content):
    file = tmp_path / "token"
    if content is not None:
        file.write_text(content, encoding="utf-8")
    fails(1, run_web(network, "--token-file", file))


def test_what_is_no_certificate_is_told_in_one_line(network, tmp_path):
    file = tmp_path / "file"
    file.write_text("x", encoding="ascii")
    for certificate, key in ((file, file), (tmp_path / "none", file), (tmp_path, tmp_path)):
        fails(1, run_web(network, "--tls-certificate", certificate, "--tls-key", key))


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_signal_ends_it_in_order_also_while_it_serves(start_hub, start_web, number):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    web = start_web(hub.network)
    events, waiting = web.connect(), web.connect()
    events.ask("GET", "/api/events")
    assert events.receive_head().status == 200
    waiting.ask("GET", "/cameras/cam/still.png?exposure=2ms&settle=20s")
    waiting.has_bytes_within(0)
    assert web.end(number) == 0
    events.rest()


def test_it_starts_at_another_address_of_the_hub(start_hub, start_web):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    assert isinstance(hub, Hub)
    web = start_web(hub.network, "--hub", "127.0.0.1").wait_for_cameras("cam")
    assert web.get("/api/cameras").json()["hub"]["host"] == "127.0.0.1"
