"""Runs the built hub (HUB_EXECUTABLE, default build/bin/LarkspurWindowsCameraHub), each in a network of its own."""

import resource
import sys
from pathlib import Path

import pytest

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parents[1] / "Client/Python")]

from harness.browser import WIDE, Browser, Page
from harness.command import StartedCommand
from harness.hub import EXECUTABLE, Hub
from harness.network import Network, allow_networks
from harness.python_client import Peers
from harness.web import Web


def pytest_configure(config):
    if not EXECUTABLE.is_file():
        raise pytest.UsageError(f"{EXECUTABLE} has not been built")
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))  # many of these tests end the hub by a signal
    allow_networks()


def _hub_starter(tmp_path_factory):
    hubs = []

    def start_hub(scenario=None, wait_for_ports=True, start=True, **arguments):
        hubs.append(Hub(tmp_path_factory.mktemp("hub"), scenario, **arguments))
        return hubs[-1].start(wait_for_ports) if start else hubs[-1]

    yield start_hub
    for hub in hubs:
        hub.stop()


@pytest.fixture
def start_hub(tmp_path_factory):
    """A function that starts a hub for this test alone; its arguments are those of Hub."""
    yield from _hub_starter(tmp_path_factory)


@pytest.fixture(scope="module")
def start_shared_hub(tmp_path_factory):
    """The same for a hub that the tests of a module share."""
    yield from _hub_starter(tmp_path_factory)


@pytest.fixture
def start_command():
    """A function that starts the command line; its arguments are those of StartedCommand."""
    commands = []

    def start(*arguments, **keywords):
        commands.append(StartedCommand(*arguments, **keywords))
        return commands[-1]

    yield start
    for command in commands:
        command.stop()


def _web_starter(tmp_path_factory):
    programs = []

    def start_web(network, *arguments, **keywords):
        programs.append(Web(tmp_path_factory.mktemp("web"), network, *arguments, **keywords))
        return programs[-1]

    yield start_web
    for program in programs:
        program.stop()


# It ends before the hub, with whose network's thread it would go down.
@pytest.fixture
def start_web(tmp_path_factory, start_hub):
    """A function that starts the program for browsers in a network; its arguments are those of Web."""
    yield from _web_starter(tmp_path_factory)


@pytest.fixture(scope="module")
def start_shared_web(tmp_path_factory, start_shared_hub):
    """The same for a program that the tests of a module share."""
    yield from _web_starter(tmp_path_factory)


@pytest.fixture(scope="module")
def browser(hub, tmp_path_factory):
    """In the network of the module's hub."""
    browser = Browser(tmp_path_factory.mktemp("browser"), hub.network)
    yield browser
    browser.close()


@pytest.fixture
def open_page(browser, start_web):  # after which it ends
    """A function that opens a page of a program for browsers in the place of the one before; further arguments are
    those of Browser.set_screen."""
    pages = []

    def open_page(web, path="/", size=WIDE, **screen):
        while pages:
            pages.pop().close()
        browser.set_screen(size, **screen)
        pages.append(Page(browser, f"{web.scheme}://{web.host}:{web.port}", path))
        return pages[-1]

    yield open_page
    for page in pages:
        page.close()


@pytest.fixture
def network():
    """A network for what is not a hub, or is there before one."""
    network = Network()
    yield network
    network.close()


@pytest.fixture
def serve(network):
    """A function that makes peers with a client; its arguments are those of Peers."""
    all_peers = []

    def start(*arguments, **keywords):
        all_peers.append(Peers(network, *arguments, **keywords))
        return all_peers[-1]

    yield start
    for peers in all_peers:
        peers.close()
