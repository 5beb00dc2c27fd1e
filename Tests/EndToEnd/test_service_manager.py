"""What a service manager hears of a hub that it has started."""

import signal
import socket

import pytest
from harness.hub import HTTP_PORT, RPC_PORT, SERVICE_LOGGER
from harness.scenario import scenario
from harness.service_manager import ServiceManager
from harness.wait import PATIENCE, wait_until

WATCHDOG = 0.2  # seconds
SILENCE = 2  # ten times as long: who says nothing for that time will not do so later


@pytest.fixture
def manage(tmp_path):
    """A function that makes a service manager; its arguments are those of ServiceManager."""
    managers = []

    def make(**arguments):
        managers.append(ServiceManager(tmp_path, **arguments))
        return managers[-1]

    yield make
    for manager in managers:
        manager.close()


def test_a_hub_is_ready_as_soon_as_both_ports_answer_and_says_so_once(start_hub, manage):
    manager = manage()
    hub = start_hub(scenario(), wait_for_ports=False, environment=manager.environment())
    assert manager.receive(PATIENCE) == "READY=1"
    assert hub.rpc().discover() == []
    assert hub.get("/res/x").status == 404
    assert manager.receive_all_there_is() == []


def test_a_hub_whose_watchdog_listens_tells_it_again_and_again_that_it_goes_on(start_hub, manage):
    manager = manage(watchdog=WATCHDOG)
    start_hub(scenario(), environment=manager.environment())
    assert [manager.receive(PATIENCE) for _ in range(6)] == ["READY=1"] + 5 * ["WATCHDOG=1"]


@pytest.mark.parametrize("taken", [RPC_PORT, HTTP_PORT])
def test_a_hub_without_one_of_its_ports_never_says_that_it_is_ready(start_hub, manage, network, taken):
    manager = manage(watchdog=WATCHDOG)
    with network.run(socket.create_server, ("", taken)):
        hub = start_hub(scenario(), wait_for_ports=False, network=network, environment=manager.environment())
        free = RPC_PORT + HTTP_PORT - taken
        wait_until(lambda: can_connect(network, free), f"port {free} is open")
        assert manager.receive(SILENCE) is None
        assert hub.is_running()


def can_connect(network, port):
    try:
        network.connect(port).close()
    except ConnectionRefusedError:
        return False
    return True


def hang(hub, manager):
    hub.http().send(b"\r\n")
    wait_until(lambda: manager.receive(SILENCE) is None, "the hub hangs")


def test_a_hub_that_an_empty_line_on_the_port_of_images_hangs_says_nothing_any_more(start_hub, manage):
    manager = manage(watchdog=WATCHDOG)
    hub = start_hub(scenario(), environment=manager.environment())
    hang(hub, manager)
    bystander = hub.rpc()
    bystander.send('{"id":1,"method":"camera:version"}')
    assert not bystander.has_bytes_within(SILENCE)
    assert manager.receive_all_there_is() == []
    assert hub.is_running()


def test_a_hub_that_its_watchdog_ends_tells_where_it_hung(start_hub, manage):
    """A service manager ends it with SIGABRT, for which there is a crash record."""
    manager = manage(watchdog=WATCHDOG)
    hub = start_hub(scenario(), environment=manager.environment())
    hang(hub, manager)
    hub.process.send_signal(signal.SIGABRT)
    assert hub.wait_for_end() == signal.SIGABRT
    (record,) = hub.crash_records()
    assert "HttpClient" in record, record


def test_a_service_manager_changes_nothing_in_the_log(start_hub, manage):
    manager = manage(watchdog=WATCHDOG)
    plain, service = start_hub(scenario()), start_hub(scenario(), environment=manager.environment())
    started = "Larkspur Windows Camera Hub started.  Waiting for Client connections..."
    for hub in (plain, service):
        hub.wait_for_log("INFO", SERVICE_LOGGER, started)
        assert hub.rpc().discover() == []
    for _ in range(3):
        manager.receive(PATIENCE)
    assert service.log() == plain.log()
    assert service.stderr() == plain.stderr()
