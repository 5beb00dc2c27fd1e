"""Exactly those platform calls that a capture needs, in their order, and nothing else."""

import pytest
from harness.journal import begins, shorts
from harness.scenario import EXPOSURE, scenario
from harness.wait import wait_until

AUTO = {"supported": True, "autoModeSupported": True}
OLDER_CONTROLS = {"exposure": EXPOSURE, "focus": AUTO, "whiteBalance": AUTO}
NEWER_CONTROLS = {
    "exposureControl": {"supported": True},
    "focusControl": {"supported": True},
    "whiteBalanceControl": {"supported": True},
    "exposure": EXPOSURE,
}

OPENING = [
    "MediaFrameSourceGroup.FindAllAsync",
    "MediaFrameSourceGroup.FindAllAsync ended",
    "MediaCapture.InitializeAsync ['cam#group', 1, 2]",
    "MediaCapture.InitializeAsync ended",
    "MediaCapture.FrameSources",
    "MediaFrameSource.SetFormatAsync ['cam#source', 0]",
    "MediaFrameSource.SetFormatAsync ended",
]
EXPOSURE_RANGE = ["VideoDeviceController", "MediaDeviceControl.Capabilities(Exposure)"]
DISCOVERING = [
    "MediaFrameSourceGroup.FromIdAsync ['cam']",
    "MediaFrameSourceGroup.FromIdAsync ended",
    *OPENING,
    *EXPOSURE_RANGE,
]
STREAMING = [
    "MediaCapture.FrameSources",
    "MediaCapture.CreateFrameReaderAsync ['cam#source']",
    "MediaCapture.CreateFrameReaderAsync ended",
    "MediaFrameReader.AcquisitionMode [0]",
    "MediaFrameReader.StartAsync",
    "MediaFrameReader.StartAsync ended",
]
STILL = ["MediaCapture.CapturePhotoToStreamAsync", "MediaCapture.CapturePhotoToStreamAsync ended"]
CLOSING = ["MediaFrameReader.StopAsync", "MediaFrameReader.StopAsync ended", "MediaCapture.Close"]


def auto_with_older_controls(on):
    return [
        text
        for control in ("Exposure", "Focus", "WhiteBalance")
        for text in (
            "VideoDeviceController",
            f"MediaDeviceControl.Capabilities({control})",
            f"MediaDeviceControl.TrySetAuto({control}) [{on}]",
        )
    ]


def auto_with_newer_controls(on):
    return [
        "VideoDeviceController",
        f"ExposureControl.SetAutoAsync [{on}]",
        "ExposureControl.SetAutoAsync ended",
        "VideoDeviceController",
        "FocusControl.SetPresetAsync [0]",
        "FocusControl.SetPresetAsync ended",
        "VideoDeviceController",
        "WhiteBalanceControl.SetPresetAsync [0]",
        "WhiteBalanceControl.SetPresetAsync ended",
    ]


def changed_exposure(exponent):
    return [
        *EXPOSURE_RANGE,
        "VideoDeviceController",
        f"MediaDeviceControl.TrySetValue(Exposure) [{exponent}]",
        "VideoDeviceController",
        "MediaDeviceControl.TryGetValue(Exposure)",
    ]


@pytest.mark.parametrize(
    "camera, auto",
    [(OLDER_CONTROLS, auto_with_older_controls), (NEWER_CONTROLS, auto_with_newer_controls)],
    ids=["older controls", "newer controls"],
)
def test_the_calls_of_captures_from_the_first_to_the_closing(start_hub, camera, auto):
    hub = start_hub(scenario("cam", camera=camera)).wait_for_cameras("cam")
    client = hub.rpc()

    # Finding a camera: the watcher's calls may overlap with its first event.
    found = shorts(hub.journal())
    assert [text for text in found if text.startswith("MediaFrameSourceGroup.GetDeviceSelector")] == found[:1]
    assert found[1] == "DeviceInformation.CreateWatcher" or found[1].startswith("DeviceInformation.CreateWatcher [")
    assert sorted(found[2:4]) == ["DeviceWatcher.Added", "DeviceWatcher.Start"]
    assert found[4:] == DISCOVERING

    def journal_of(params):
        since = len(hub.journal())
        assert "resid" in client.capture("cam", **params)
        return shorts(hub.journal()[since:])

    # A fresh camera, an open one, and one whose exposure stays.
    assert journal_of({"exposureInUs": 1000}) == (
        OPENING + STREAMING + auto(True) + auto(False) + changed_exposure(-10.0) + STILL
    )
    assert journal_of({"exposureInUs": 2000}) == changed_exposure(-9.0) + STILL
    assert journal_of({"exposureInUs": 2000}) == EXPOSURE_RANGE + STILL
    assert journal_of({"exposureInPercent": 1, "gainInPercent": 0}) == changed_exposure(-13.0) + STILL

    since = len(hub.journal())
    client.close()
    wait_until(lambda: len(hub.journal()) >= since + len(CLOSING), "the camera is closed")
    assert shorts(hub.journal()[since:]) == CLOSING


def test_the_automatic_controls_have_two_seconds_to_settle(start_hub):
    hub = start_hub(scenario("cam", camera=OLDER_CONTROLS)).wait_for_cameras("cam")
    hub.rpc().capture("cam", exposureInUs=1000)
    times = {line["args"][0]: line["t"] for line in begins(hub.journal(), "MediaDeviceControl.TrySetAuto")
             if line["control"] == "Exposure"}
    assert 2.0 <= times[False] - times[True] < 4


def test_a_camera_that_a_second_client_asks_for_is_shared(start_hub):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    first, second = hub.rpc(), hub.rpc()
    first.capture("cam", exposureInUs=1000)
    since = len(hub.journal())
    second.capture("cam", exposureInUs=1000)
    assert shorts(hub.journal()[since:]) == EXPOSURE_RANGE + STILL

    first.close()
    hub.rpc().discover()  # answered after the first client's end has been noticed
    assert shorts(hub.journal()[since:]) == EXPOSURE_RANGE + STILL
    second.close()
    hub.wait_for_log(
        "INFO", "LarkspurWindowsCameraHub.Device", "Disconnected from camera uid cam, camera name: Test Camera"
    )
    assert shorts(hub.journal()[since:]) == EXPOSURE_RANGE + STILL + CLOSING


def test_a_capture_of_another_camera_on_the_same_connection_releases_the_first(start_hub):
    hub = start_hub(scenario("cam", "other")).wait_for_cameras("cam", "other")
    client = hub.rpc()
    client.capture("cam", exposureInUs=1000)
    client.capture("")  # names no camera: what the connection holds stays
    assert begins(hub.journal(), "MediaCapture.Close") == []
    client.capture("other", exposureInUs=1000)
    assert [line["device"] for line in begins(hub.journal(), "MediaCapture.Close")] == ["cam"]
    client.capture("unknown", exposureInUs=1000)
    assert [line["device"] for line in begins(hub.journal(), "MediaCapture.Close")] == ["cam", "other"]


def test_a_camera_that_was_closed_is_opened_anew_with_a_full_convergence(start_hub):
    hub = start_hub(scenario("cam", camera=OLDER_CONTROLS)).wait_for_cameras("cam")
    client = hub.rpc()
    client.capture("cam", exposureInUs=1000)
    client.capture("unknown", exposureInUs=1000)
    since = len(hub.journal())
    assert "resid" in client.capture("cam", exposureInUs=1000)
    auto = auto_with_older_controls
    assert shorts(hub.journal()[since:]) == (
        OPENING + STREAMING + auto(True) + auto(False) + changed_exposure(-10.0) + STILL
    )


def test_a_client_that_leaves_during_its_capture_still_gets_it_done(start_hub):
    hub = start_hub(scenario("cam", camera={"capture": {"delayMs": 500}})).wait_for_cameras("cam")
    client = hub.rpc()
    client.send('{"id":1,"method":"camera:capture","params":{"to":"cam","exposureInUs":1000}}')
    wait_until(lambda: begins(hub.journal(), "MediaCapture.CapturePhotoToStreamAsync"), "the still has begun")
    client.close()
    wait_until(lambda: begins(hub.journal(), "MediaCapture.Close"), "the camera is closed")
    assert shorts(hub.journal()[-len(STILL + CLOSING):]) == STILL + CLOSING
    assert [camera["uid"] for camera in hub.rpc().discover()] == ["cam"]
