"""What a service manager hears of camera-hub-web."""

import socket

import pytest
from harness.service_manager import ServiceManager
from harness.wait import PATIENCE
from harness.web import run_web


@pytest.fixture
def manager(tmp_path):
    manager = ServiceManager(tmp_path)
    yield manager
    manager.close()


def notifying(manager):
    return f"export NOTIFY_SOCKET={manager.environment()['NOTIFY_SOCKET']}"


def test_it_is_ready_once_it_listens_also_without_a_hub_and_says_so_once(network, start_web, manager):
    web = start_web(network, prepare=notifying(manager))
    assert manager.receive(PATIENCE) == "READY=1"
    assert web.get("/healthz").kind == "hub-away"
    assert [message for message in manager.receive_all_there_is() if "READY" in message] == []


def test_without_its_port_it_never_says_that_it_is_ready_and_ends(network, manager, monkeypatch):
    monkeypatch.setitem(run_web.__globals__["ENVIRONMENT"], "NOTIFY_SOCKET", manager.environment()["NOTIFY_SOCKET"])
    with network.run(socket.create_server, ("127.0.0.1", 8080)):
        result = run_web(network, "--listen", "127.0.0.1:8080")
    assert (result.returncode, result.stdout) == (1, "")
    assert result.stderr.startswith("camera-hub-web: ")
    assert manager.receive_all_there_is() == []
