"""scripts/run.sh, as the guides have it."""

import os
import re
import signal
import socket
import subprocess
from pathlib import Path

import pytest
from harness.guides import guide_commands
from harness.hub import PRESET, ROOT, RPC_PORT
from harness.rpc import RpcClient
from harness.wait import PATIENCE, wait_until

pytestmark = pytest.mark.skipif(PRESET != "release", reason="it builds and runs the release build")


@pytest.fixture
def start(network, tmp_path):
    """A function that starts a command of the README in the network, for a user without any files."""
    started = []

    def start(command, stdin=subprocess.DEVNULL):
        environment = {name: value for name, value in os.environ.items() if not name.startswith(("CAMERA_HUB", "XDG"))}
        environment |= {"HOME": str(tmp_path), "CAMERA_HUB_PLATFORM": "simulated"}
        process = network.run(subprocess.Popen, ["setpriv", "--pdeathsig", "KILL", *command.split()], cwd=ROOT,
                              env=environment, stdin=stdin, stdout=subprocess.PIPE, text=True)
        started.append(process)
        return process

    yield start
    for process in started:
        process.kill()
        process.communicate()


def children_of(process):
    """The programs that it runs."""
    return [int(pid) for pid in Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()]


def connect(network, process):
    """A connection to the hub, once there is one."""

    def connected():
        assert process.poll() is None, "it has ended"
        try:
            return network.connect(RPC_PORT)
        except ConnectionRefusedError:
            return None

    return RpcClient(wait_until(connected, "the hub listens"))


def test_it_runs_a_hub_until_ctrl_c(start, network, tmp_path):
    process = start(guide_commands("README.md", "scripts/run.sh")[0])  # without arguments
    client = connect(network, process)
    (camera,) = wait_until(client.discover, "the simulated camera")
    assert camera["uid"] == "simulated-camera"
    assert list(tmp_path.glob(".local/state/camera-hub/*")) != []
    process.send_signal(signal.SIGINT)
    assert process.wait(PATIENCE) == -signal.SIGINT
    client.close()


def is_pending(pid, number):
    status = Path(f"/proc/{pid}/status").read_text(encoding="ascii")
    return int(re.search(r"^ShdPnd:\s+([0-9a-f]+)$", status, re.MULTILINE)[1], 16) & 1 << (number - 1)


def end_of(process, number):
    """The code that it ends with after the signal, and the rest of what it has said."""
    process.send_signal(number)
    rest, _ = process.communicate(timeout=PATIENCE)
    return process.returncode, rest


@pytest.mark.parametrize("number, code", [(signal.SIGINT, 130), (signal.SIGTERM, 143)])
def test_with_web_it_runs_hub_and_page_tells_the_address_and_ends_the_page_first(start, network, number, code):
    process = start(guide_commands("Docs/web.md", "scripts/run.sh --web")[0])
    wait_until(lambda: process.stdout.readline() == "camera-hub-web: http://127.0.0.1:8080/\n", "the address")
    network.connect(8080).close()
    hub = connect(network, process)
    programs = children_of(process)
    assert end_of(process, number)[0] == code
    assert [pid for pid in programs if Path(f"/proc/{pid}").exists()] == []
    assert hub.rest() == b""


def test_the_hub_serves_until_the_page_has_ended(start, network):
    process = start(guide_commands("README.md", "scripts/run.sh --web")[0])
    wait_until(lambda: process.stdout.readline().startswith("camera-hub-web: "), "the address")
    client = connect(network, process)
    _, page, *_ = children_of(process)
    os.kill(page, signal.SIGSTOP)
    try:
        process.send_signal(signal.SIGTERM)
        wait_until(lambda: is_pending(page, signal.SIGTERM), "the page has been told to end")
        assert client.request("camera:version")["result"] == "2.9"
    finally:
        os.kill(page, signal.SIGCONT)
    assert process.wait(PATIENCE) == 143
    assert client.rest() == b""


def test_a_page_that_cannot_start_ends_the_hub_too(start, network):
    with network.run(socket.create_server, ("127.0.0.1", 8080)):
        process = start(guide_commands("Docs/web.md", "scripts/run.sh --web")[0])
        assert process.wait(PATIENCE) == 1
    with pytest.raises(ConnectionRefusedError):
        network.connect(RPC_PORT)


def test_help_tells_how_it_is_used(start):
    process = start("scripts/run.sh --help")
    shown, _ = process.communicate(timeout=PATIENCE)
    assert process.returncode == 0
    assert "Usage: scripts/run.sh" in shown and "--web" in shown and "set -euo" not in shown


def test_with_debug_it_offers_the_console_first(start, network):
    (command,) = guide_commands("README.md", "scripts/run.sh --debug")
    process = start(command, stdin=subprocess.PIPE)
    process.stdin.write("6\n")  # leaves the console
    process.stdin.flush()
    connect(network, process).close()
    process.send_signal(signal.SIGINT)
    assert "Windows Camera Test Driver" in process.communicate(timeout=PATIENCE)[0]
