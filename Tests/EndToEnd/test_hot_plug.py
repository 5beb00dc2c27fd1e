"""Cameras that come and go while the hub runs."""

from itertools import count

from harness.hub import DEVICE_LOGGER, SERVICE_LOGGER, LogEntry
from harness.journal import begins
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.wait import wait_until

DELAY = 0.5  # seconds, from the report of a camera until it is looked at

GONE = {"code": 2, "message": "Camera Disconnected"}


def removed(hub):
    """How often the removal of the camera has been logged: only when the hub has dealt with it."""
    return hub.log().count(LogEntry("INFO", SERVICE_LOGGER, "Device removed: cam"))


def reports_of(hub, uid):
    """What the watcher has told of the camera, in pairs as long as it only comes and goes."""
    return [line for line in hub.journal()
            if line["call"] in ("DeviceWatcher.Added", "DeviceWatcher.Removed") and line["device"] == uid]


def remove(hub):
    before = removed(hub)
    hub.write_scenario(scenario())
    wait_until(lambda: removed(hub) > before, "the camera is removed")


def test_a_camera_that_is_plugged_in_later_is_found(start_hub):
    hub = start_hub(scenario("one")).wait_for_cameras("one")
    hub.write_scenario(scenario("one", "two"))
    hub.wait_for_cameras("one", "two")
    assert [line["device"] for line in begins(hub.journal(), "DeviceWatcher.Added")] == ["one", "two"]


def test_a_camera_that_is_removed_while_it_is_open_is_refused_and_closed_and_can_come_back(start_hub):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    client = hub.rpc()
    assert client.capture("cam", exposureInUs=1000)["exposureInUs"] == 976

    remove(hub)
    assert client.discover() == []
    assert begins(hub.journal(), "MediaCapture.Close") == []
    assert client.capture("cam", exposureInUs=1000) == GONE
    hub.wait_for_log("ERROR", SERVICE_LOGGER, "There is no known cam")
    hub.wait_for_log("INFO", DEVICE_LOGGER, "Disconnected from camera uid cam, camera name: Test Camera")

    hub.write_scenario(scenario("cam"))
    hub.wait_for_cameras("cam")
    since = len(hub.journal())
    assert client.capture("cam", exposureInUs=1000)["exposureInUs"] == 976
    assert len(begins(hub.journal()[since:], "MediaCapture.InitializeAsync")) == 1


def test_a_camera_that_comes_back_while_a_client_holds_it_is_not_opened_again(start_hub):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    client = hub.rpc()
    client.capture("cam", exposureInUs=1000)
    remove(hub)
    hub.write_scenario(scenario("cam"))
    hub.wait_for_cameras("cam")
    since = len(hub.journal())
    assert client.capture("cam", exposureInUs=2000)["exposureInUs"] == 1953
    assert begins(hub.journal()[since:], "MediaCapture.InitializeAsync") == []

    assert client.capture("unknown") == GONE  # lets go of it
    assert client.capture("cam", exposureInUs=2000)["exposureInUs"] == 1953
    assert len(begins(hub.journal()[since:], "MediaCapture.InitializeAsync")) == 1


def test_a_camera_that_is_removed_in_the_middle_of_a_capture_times_out(start_hub):
    slow = {"exposure": EXPOSURE, "capture": {"delayMs": 9000}}
    hub = start_hub(scenario("cam", camera=slow)).wait_for_cameras("cam")
    client = hub.rpc()
    client.send('{"id":1,"method":"camera:capture","params":{"to":"cam","exposureInUs":1000}}')
    wait_until(lambda: begins(hub.journal(), "MediaCapture.CapturePhotoToStreamAsync"), "the still has begun")
    remove(hub)
    assert client.receive_bytes() == (
        b'{"error":{"message":"captureImage failed: Timed out waiting for camera capture.(-2147483636)"},'
        b'"id":1,"jsonrpc":"2.0"}\n\r\n\0'
    )
    assert client.capture("cam", exposureInUs=1000) == GONE
    hub.write_scenario(scenario("cam"))
    hub.wait_for_cameras("cam")
    assert "resid" in client.capture("cam", exposureInUs=1000)


def test_a_camera_that_is_removed_during_the_delay_is_not_offered_and_can_come_back(start_hub):
    hub = start_hub(scenario())
    added = LogEntry("INFO", SERVICE_LOGGER, "Device added: cam")
    marks = (f"mark {number}" for number in count())

    def removed_in_time():
        """False if the machine was too busy for the hub to notice the removal within the delay."""
        before, mark = hub.log().count(added), next(marks)
        hub.write_scenario(scenario("cam"))
        wait_until(lambda: len(reports_of(hub, "cam")) % 2 == 1, "the camera is reported")
        # Another camera's report shows when this one's going has been noticed; its own waits for the delay's end.
        hub.write_scenario(scenario(mark))
        wait_until(lambda: reports_of(hub, mark), "the mark is reported")
        wait_until(lambda: len(reports_of(hub, "cam")) % 2 == 0, "the removal is reported")
        hub.wait_for_cameras(mark)
        in_time = reports_of(hub, mark)[0]["t"] - reports_of(hub, "cam")[-2]["t"] < DELAY
        assert not in_time or hub.log().count(added) == before
        return in_time

    wait_until(removed_in_time, "a removal within the delay")
    hub.write_scenario(scenario("cam"))
    hub.wait_for_cameras("cam")
    assert "resid" in hub.rpc().capture("cam", exposureInUs=1000)


def test_a_camera_that_goes_and_comes_within_the_delay_is_offered_in_the_end(start_hub):
    def reports():
        return [line["call"] for line in hub.journal() if line.get("device") == "cam"
                and line["call"].startswith("DeviceWatcher.")]

    def found_or_lost():
        return [entry.text for entry in hub.log() if entry.text in ("Device added: cam", "Device removed: cam")]

    hub = start_hub(scenario("cam"))
    wait_until(reports, "the camera is reported")
    # Another camera's report shows that this one's going has been noticed; its own waits for the delay's end.
    hub.write_scenario(scenario("mark"))
    wait_until(lambda: any(line.get("device") == "mark" for line in hub.journal()), "the mark is reported")
    hub.write_scenario(scenario("cam"))
    wait_until(lambda: found_or_lost()[-2:] == ["Device removed: cam", "Device added: cam"], "it is found again")
    assert reports() == ["DeviceWatcher.Added", "DeviceWatcher.Removed", "DeviceWatcher.Added"]
    hub.wait_for_cameras("cam")


def test_an_update_changes_nothing_of_what_a_client_sees(start_hub):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    before = hub.rpc().discover()
    renamed = scenario("cam")
    renamed["groups"] = [camera_group("cam", name="Renamed")]
    hub.write_scenario(renamed)
    wait_until(lambda: begins(hub.journal(), "DeviceWatcher.Updated"), "the update is reported")
    assert hub.rpc().discover() == before


def test_removing_one_of_two_cameras_leaves_the_other_usable(start_hub):
    hub = start_hub(scenario("cam", "other")).wait_for_cameras("cam", "other")
    client = hub.rpc()
    client.capture("other", exposureInUs=1000)
    hub.write_scenario(scenario("other"))
    wait_until(lambda: removed(hub), "the camera is removed")
    hub.wait_for_cameras("other")
    since = len(hub.journal())
    assert "resid" in client.capture("other", exposureInUs=1000)
    assert begins(hub.journal()[since:], "MediaCapture.InitializeAsync") == []
