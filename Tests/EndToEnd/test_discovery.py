""""camera:discover" and what decides which cameras it gives."""

import pytest
from harness.hub import SERVICE_LOGGER, LogEntry
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.wait import wait_until

CONTAINER = "{00000000-1111-2222-3333-444444444444}"
DISCOVER = '{"jsonrpc":"2.0","id":2,"method":"camera:discover"}'


def group_of_known_make():
    group = camera_group("usb-2", 1920, 1080)
    group["sources"][0]["device"]["properties"] = {
        "System.Devices.DeviceInstanceId": "node-2",
        "System.Devices.ContainerId": CONTAINER.upper(),
    }
    return group


def infrared_group():
    group = camera_group("usb-3")
    group["sources"][0]["kind"] = "Infrared"
    return group


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    groups = [camera_group("usb-B ä"), group_of_known_make(), infrared_group(), camera_group("usb-A", 320, 200)]
    hub = start_shared_hub(
        {
            "groups": groups,
            "deviceNodes": [{"id": "node-2", "properties": {"System.Devices.DeviceManufacturer": "Halden \"H\""}}],
            "containers": [
                {
                    "id": CONTAINER,
                    "properties": {"System.Devices.ModelName": "C/920", "System.Devices.Manufacturer": "Other"},
                }
            ],
            "cameras": {"usb-2": {"exposure": EXPOSURE | {"min": -9, "max": -2}}, "usb-A": {"exposure": EXPOSURE}},
        }
    )
    return hub.wait_for_cameras("usb-2", "usb-A", "usb-B ä")


def test_all_members_of_all_cameras_are_given_in_ascending_uid_order(hub):
    assert hub.rpc().exchange(DISCOVER).decode() == (
        '{"id":2,"jsonrpc":"2.0","result":['
        '{"exposureMaxValueInUs":250000,"exposureMinValueInUs":1953,"make":"Halden \\"H\\"","model":"C/920",'
        '"resolutionX":1920,"resolutionY":1080,"uid":"usb-2"},'
        '{"exposureMaxValueInUs":1000000,"exposureMinValueInUs":122,"make":"","model":"",'
        '"resolutionX":320,"resolutionY":200,"uid":"usb-A"},'
        '{"exposureMaxValueInUs":62500,"exposureMinValueInUs":62500,"make":"","model":"",'
        '"resolutionX":64,"resolutionY":48,"uid":"usb-B ä"}]}\n\r\n\0'
    )


def test_params_of_discover_are_not_looked_at(hub):
    client = hub.rpc()
    assert client.exchange(DISCOVER[:-1] + ',"params":"x"}') == client.exchange(DISCOVER)


def test_a_found_camera_is_logged_by_the_watchers_id(hub):
    hub.wait_for_log("INFO", SERVICE_LOGGER, "Device added: usb-A")


def test_a_group_without_a_colour_source_is_no_camera_and_is_not_logged(hub):
    assert any(line["call"] == "DeviceWatcher.Added" and line["device"] == "usb-3" for line in hub.journal())
    assert LogEntry("INFO", SERVICE_LOGGER, "Device added: usb-3") not in hub.log()


def test_a_camera_is_looked_at_half_a_second_after_it_was_reported(hub):
    times = {
        (line["call"], (line.get("args") or [line.get("device")])[0]): line["t"]
        for line in hub.journal()
        if line["call"] in ("DeviceWatcher.Added", "MediaFrameSourceGroup.FromIdAsync") and "ended" not in line
    }
    for uid in ("usb-2", "usb-3", "usb-A", "usb-B ä"):
        delay = times["MediaFrameSourceGroup.FromIdAsync", uid] - times["DeviceWatcher.Added", uid]
        assert 0.5 <= delay < 2


def test_no_camera_gives_the_empty_array(start_hub):
    assert start_hub(scenario()).rpc().exchange(DISCOVER) == b'{"id":2,"jsonrpc":"2.0","result":[]}\n\r\n\0'


def test_without_a_scenario_there_is_one_built_in_camera(start_hub):
    hub = start_hub(environment={"CAMERA_HUB_SIMULATION": None})
    client = hub.rpc()
    (camera,) = wait_until(client.discover, "a camera")
    assert (camera["resolutionX"], camera["resolutionY"]) == (1920, 1080)
    assert (camera["exposureMinValueInUs"], camera["exposureMaxValueInUs"]) == (122, 1000000)


@pytest.mark.parametrize("operation", ["MediaFrameSourceGroup.FromIdAsync", "MediaCapture.InitializeAsync"])
def test_a_camera_that_fails_while_it_is_looked_at_is_not_offered(start_hub, operation):
    fault = {"faults": {operation: {"message": "Out of order.", "code": -2147024891}}}
    in_group = operation.startswith("MediaFrameSourceGroup")
    hub = start_hub(
        {
            "groups": [camera_group("bad", **(fault if in_group else {})), camera_group("good")],
            "cameras": {"bad": {} if in_group else fault},
        }
    )
    hub.wait_for_cameras("good")
    hub.wait_for_log("ERROR", SERVICE_LOGGER, "Out of order. -2147024891")
    assert [camera["uid"] for camera in hub.rpc().discover()] == ["good"]


@pytest.mark.parametrize(
    "operation", ["MediaFrameSourceGroup.GetDeviceSelector", "DeviceInformation.CreateWatcher", "DeviceWatcher.Start"]
)
def test_a_watcher_that_cannot_be_made_leaves_a_hub_without_cameras(start_hub, operation):
    hub = start_hub(scenario("cam", faults={operation: {"message": "No devices today."}}))
    hub.wait_for_log("ERROR", SERVICE_LOGGER, "CameraEnumeration: could not create watcher - No devices today.")
    assert hub.rpc().discover() == []


@pytest.mark.parametrize(
    "content, at_fault",
    [
        (None, "scenario.json"),
        ("{", "scenario.json"),
        ('{"grups": []}', "grups"),
        ('{"groups": [{"id": "g", "sources": [{"device": {"id": "d"}}]}]}', "id"),
    ],
)
def test_a_scenario_that_cannot_be_used_leaves_a_hub_without_cameras(start_hub, tmp_path, content, at_fault):
    file = tmp_path / "scenario.json"
    if content is not None:
        file.write_text(content)
    hub = start_hub(environment={"CAMERA_HUB_SIMULATION": str(file)})
    assert hub.rpc().discover() == []
    (error,) = [entry for entry in hub.log() if entry.level == "ERROR"]
    assert error.logger == SERVICE_LOGGER
    assert error.text.startswith("CameraEnumeration: could not create watcher - ")
    assert str(file) in error.text and at_fault in error.text


def test_an_unknown_platform_leaves_a_hub_without_cameras(start_hub):
    hub = start_hub(environment={"CAMERA_HUB_PLATFORM": "kinescope"})
    assert hub.rpc().discover() == []
    (error,) = [entry for entry in hub.log() if entry.level == "ERROR"]
    assert error.text.startswith("CameraEnumeration: could not create watcher - ")
    assert "kinescope" in error.text and "simulated" in error.text
