"""camera-hub list"""

import json
import re

import pytest
from harness.command import run
from harness.scenario import EXPOSURE, camera_group, scenario

LONG_NAME = "Camera of a very long name that nobody would give, but somebody has"


def named(uid, name, make=None, size=(64, 48)):
    group = camera_group(uid, *size, name=name)
    if make:
        group["sources"][0]["device"]["properties"] = {"System.Devices.DeviceInstanceId": f"{uid}-node"}
    return group


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub({
        "groups": [named("desk", "Desk Camera", "Halden", (1920, 1080)), named("fixed", "Fixed"),
                   named("zoo", LONG_NAME, LONG_NAME)],
        "deviceNodes": [{"id": "desk-node", "properties": {"System.Devices.DeviceManufacturer": "Halden"}},
                        {"id": "zoo-node", "properties": {"System.Devices.DeviceManufacturer": LONG_NAME}}],
        "cameras": {"desk": {"exposure": EXPOSURE}, "fixed": {}, "zoo": {}},
    }).wait_for_cameras("desk", "fixed", "zoo")


def test_the_table_has_a_line_for_each_camera(hub):
    result = run(hub.network, "list")
    assert (result.returncode, result.stderr) == (0, "")
    header, desk, fixed, _ = [re.split(" {2,}", line.strip()) for line in result.stdout.splitlines()]
    assert header == ["No.", "Make", "Model", "Resolution", "Exposure", "Uid"]
    model = next(camera["model"] for camera in hub.rpc().discover() if camera["uid"] == "desk")
    assert desk == ["1", "Halden", *([model] if model else []), "1920x1080", "1/8192 s to 1 s", "desk"]
    assert fixed[0] == "2" and fixed[-3:] == ["64x48", "fixed", "fixed"]


def test_the_json_value_has_what_the_hub_tells(hub):
    result = run(hub.network, "list", "--json")
    assert (result.returncode, result.stderr) == (0, "")
    listed = json.loads(result.stdout)
    told = hub.rpc().discover()
    assert [(c["number"], c["uid"], c["make"], c["model"], c["width"], c["height"], c["shortestExposureInUs"],
             c["longestExposureInUs"]) for c in listed] == [
        (number, c["uid"], c["make"], c["model"], c["resolutionX"], c["resolutionY"], c["exposureMinValueInUs"],
         c["exposureMaxValueInUs"]) for number, c in enumerate(told, 1)]


def test_the_table_is_as_wide_as_the_terminal_at_most_and_a_pipe_gets_all_of_it(hub, start_command):
    whole = run(hub.network, "list").stdout
    assert LONG_NAME in whole
    narrow = start_command(hub.network, "list", columns=80).rest()
    assert max(map(len, narrow.splitlines())) == 80 and "…" in narrow
    assert start_command(hub.network, "list", columns=300).rest() == whole


def test_a_hub_without_cameras_gives_an_empty_list(start_hub):
    hub = start_hub(scenario())
    result = run(hub.network, "list")
    assert (result.returncode, len(result.stdout.splitlines())) == (0, 1)
    assert result.stderr == "the hub has no camera; plug one in and see it come with: camera-hub list --watch\n"
    assert run(hub.network, "list", "-q").stderr == ""
    result = run(hub.network, "list", "--json")
    assert (json.loads(result.stdout), result.stderr) == ([], "")


def test_a_watched_list_is_shown_again_in_its_place_when_a_camera_comes(start_hub, start_command):
    hub = start_hub(scenario("first")).wait_for_cameras("first")
    command = start_command(hub.network, "list", "--watch", columns=80)
    assert "\x1b" not in command.read_until("first\r\n")
    hub.write_scenario(scenario("first", "second"))
    assert "\x1b[2A\x1b[J" in command.read_until("second\r\n")  # up by its header and its one camera
    hub.write_scenario(scenario("second"))
    assert "\x1b[3A\x1b[J" in command.read_until("\x1b[3A")


def test_a_watched_list_in_a_pipe_is_one_table_or_one_line_of_json_for_each_change(start_hub, start_command):
    hub = start_hub(scenario("first")).wait_for_cameras("first")
    table = start_command(hub.network, "list", "--watch")
    lines = start_command(hub.network, "list", "--watch", "--json")
    table.read_until("first\n")
    lines.read_until("\n")
    hub.write_scenario(scenario("first", "second"))
    assert "first\n\nNo." in table.read_until("second\n") and "\x1b" not in table.seen.decode()
    changes = lines.read_until("second").splitlines()
    assert [[camera["uid"] for camera in json.loads(change)] for change in changes] == [["first"], ["first", "second"]]


def test_a_watched_hub_that_goes_is_told(start_hub, start_command):
    hub = start_hub(scenario("first")).wait_for_cameras("first")
    command = start_command(hub.network, "list", "--watch", columns=80)
    command.read_until("first\r\n")
    hub.process.kill()
    assert re.search(r"\ncamera-hub: .*camera-hub health\n$", command.rest().replace("\x1b[K", "").replace("\r", ""))
    assert command.process.returncode == 3
