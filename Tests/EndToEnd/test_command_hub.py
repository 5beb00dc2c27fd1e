"""camera-hub version, diagnostics, health, and what all commands tell of a hub that does not answer"""

import json
import re
import signal

import pytest
from harness.command import fails_with, run
from harness.hub import RPC_PORT
from harness.no_hub import giving_one_reply
from harness.scenario import scenario
from harness.wait import wait_until


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam")).wait_for_cameras("cam")


def test_the_versions_are_told(hub):
    result = run(hub.network, "version")
    assert (result.returncode, result.stdout, result.stderr) == (
        0, "Camera Hub 2.9 at localhost, camera-hub 2.9\n", "")
    assert json.loads(run(hub.network, "version", "--json").stdout) == {"hub": "2.9", "program": "2.9"}
    assert run(hub.network, "--version").stdout == "camera-hub 2.9\n"


def test_a_hub_that_answers_is_healthy(hub):
    result = run(hub.network, "health")
    assert (result.returncode, result.stderr) == (0, "")
    assert re.fullmatch(r"healthy: Camera Hub 2\.9, cameras: 1, answered within .*s\n", result.stdout)
    value = json.loads(run(hub.network, "health", "--json").stdout)
    assert value.keys() == {"hub", "cameras", "milliseconds"} and (value["hub"], value["cameras"]) == ("2.9", 1)


def test_a_hub_that_hangs_is_not_healthy(start_hub):
    hub = start_hub(scenario())
    hub.http().send(b"\r\n")  # stops it for good
    fails_with(6, "the hub did not answer in time; look at its log, or start it anew",
               run(hub.network, "health", "--timeout", "300ms"))


def test_a_hub_whose_port_for_images_is_closed_is_not_healthy(hub):
    result = run(hub.network, "health", "--image-port", "3143")
    assert (result.returncode, result.stdout) == (3, "") and "3143" in result.stderr


def refused(port=RPC_PORT):
    return (f"cannot connect to localhost, port {port}: Connection refused; start a hub there, or name its machine by "
            "--host (camera-hub find)")


@pytest.mark.parametrize("command", [["list"], ["capture"], ["bracket", "--from", "1ms", "--to", "2ms"], ["version"],
                                     ["diagnostics", "--to", "/Diagnostics"], ["health"]])
def test_every_command_tells_that_there_is_no_hub(network, command):
    fails_with(3, refused(), run(network, *command))
    fails_with(3, refused(3150), run(network, "--port", "3150", *command, "--json"))


def test_another_host_is_asked(hub):
    assert run(hub.network, "--host", "127.0.0.1", "version").returncode == 0
    assert run(hub.network, "--host", "::1", "version").returncode == 0
    result = run(hub.network, "--host", "nowhere.invalid", "version")
    assert result.returncode == 3 and "nowhere.invalid" in result.stderr and result.stderr.count("\n") == 1


@pytest.mark.parametrize("reply, code, text", [
    (b"", 3, "see whether it is back: camera-hub health"),
    (b"hello\0", 8, "127.0.0.1:3141: what answers is no hub"),
    (b'{"code":-32700,"jsonrpc":"2.0","message":"Parse Error"}\n\r\n\0', 8, "Parse Error"),
])
def test_what_is_no_reply_of_a_hub_is_told(network, reply, code, text):
    with giving_one_reply(network, reply):
        result = run(network, "--host", "127.0.0.1", "version")
    assert (result.returncode, result.stdout) == (code, "")
    assert text in result.stderr and result.stderr.count("\n") == 1


def redirection(tmp_path):
    folder = tmp_path / "Diagnostics/mine"
    for name in ("logs", "Traces"):
        (folder / "LarkspurWindowsCameraHub" / name).mkdir(parents=True)
    return folder


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_diagnostics_go_to_the_folder_until_the_command_is_interrupted(start_hub, start_command, tmp_path, number):
    hub = start_hub(scenario())
    folder = redirection(tmp_path)
    logs = folder / "LarkspurWindowsCameraHub/logs/DEFAULT.log"
    before = len(hub.run_folders())
    command = start_command(hub.network, "diagnostics", "--to", folder, columns=200)
    command.read_until(f"the hub's logs go to {folder} until Ctrl-C\r\n")
    assert logs.is_file()
    hub.wait_for_the_next_run_name()
    assert command.interrupt(number) == 128 + number
    wait_until(lambda: len(hub.run_folders()) > before, "a run folder in the ordinary place")


def test_the_folder_is_told_as_json(start_hub, start_command, tmp_path):
    folder = redirection(tmp_path)
    command = start_command(start_hub(scenario()).network, "diagnostics", "--json", "--to", folder)
    assert json.loads(command.read_until("}\n")) == {"folder": str(folder)}


def test_diagnostics_that_the_hub_cannot_write_are_told(start_hub, tmp_path):
    folder = tmp_path / "Diagnostics"
    fails_with(8, f"the hub cannot write there: make {folder}/LarkspurWindowsCameraHub/logs and "
               f"{folder}/LarkspurWindowsCameraHub/Traces on its machine, and let the hub's user write in them",
               run(start_hub(scenario()).network, "diagnostics", "--to", folder))


def test_diagnostics_of_a_path_that_costs_the_hub_its_settings_are_not_asked_for(hub):
    result = run(hub.network, "diagnostics", "--to", "/tmp/mine")
    assert result.returncode == 2 and "Diagnostics" in result.stderr and hub.is_running()


def test_diagnostics_end_with_the_hub(start_hub, start_command, tmp_path):
    hub = start_hub(scenario())
    command = start_command(hub.network, "diagnostics", "--to", redirection(tmp_path), columns=200)
    command.read_until("until Ctrl-C")
    hub.process.kill()
    assert command.rest().endswith("camera-hub health\n") and command.process.returncode == 3


def test_a_wrong_line_is_told_in_one_line_and_help_is_for_standard_output(network):
    fails_with(2, "no command is given; see: camera-hub --help", run(network))
    fails_with(2, "there is no command nope; see: camera-hub --help", run(network, "nope"))
    result = run(network, "--help")
    assert (result.returncode, result.stderr) == (0, "") and "Examples:" in result.stdout
    assert max(map(len, result.stdout.splitlines())) <= 80
