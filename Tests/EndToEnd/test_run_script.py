"""scripts/run.sh, as the README has it."""

import os
import signal
import subprocess

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
    process = start(guide_commands("README.md", "scripts/run.sh")[0])
    client = connect(network, process)
    (camera,) = wait_until(client.discover, "the simulated camera")
    assert camera["uid"] == "simulated-camera"
    assert list(tmp_path.glob(".local/state/camera-hub/*")) != []
    process.send_signal(signal.SIGINT)
    assert process.wait(PATIENCE) == -signal.SIGINT
    client.close()


def test_with_debug_it_offers_the_console_first(start, network):
    (command,) = guide_commands("README.md", "scripts/run.sh --debug")
    process = start(command, stdin=subprocess.PIPE)
    process.stdin.write("6\n")  # leaves the console
    process.stdin.flush()
    connect(network, process).close()
    process.send_signal(signal.SIGINT)
    assert "Windows Camera Test Driver" in process.communicate(timeout=PATIENCE)[0]
