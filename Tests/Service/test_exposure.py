"""Who reaches the ports, tried from a neighbour."""

import socket

import neighbour
import pytest
from conftest import run
from harness.hub import HTTP_PORT, RPC_PORT

pytestmark = pytest.mark.usefixtures("cable")


@pytest.fixture(autouse=True)
def closed_at_the_end(service):
    yield
    run("camera-hub-expose", "local")


def reached_ports():
    return [port for port in (RPC_PORT, HTTP_PORT) if neighbour.reaches(port)]


def test_only_this_machine_reaches_a_hub_that_has_been_installed(service):
    assert run("camera-hub-expose").startswith("local:")
    assert service.rpc().discover() == []
    assert reached_ports() == []


@pytest.mark.parametrize("word", ["all", "192.168.7.0/24", neighbour.ADDRESS])
def test_who_is_let_in_reaches_it_and_so_does_this_machine(service, word):
    shown = run("camera-hub-expose", word)
    assert shown.startswith(word)
    service.wait_until_ready()
    assert reached_ports() == [RPC_PORT, HTTP_PORT]
    assert service.rpc().discover() == []
    assert run("camera-hub-expose") == shown


def test_others_than_those_who_are_let_in_do_not_reach_it(service):
    run("camera-hub-expose", "192.168.8.0/24")
    service.wait_until_ready()
    assert reached_ports() == []


def test_a_hub_that_is_closed_again_is_out_of_reach(service):
    run("camera-hub-expose", "all")
    run("camera-hub-expose", "local")
    service.wait_until_ready()
    assert reached_ports() == []
    with socket.create_connection(("127.0.0.1", RPC_PORT), 10):
        pass
