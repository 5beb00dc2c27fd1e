"""The service while it runs, and what becomes of it when it does not."""

import io
import os
import pwd
import signal
import time
from pathlib import Path

import pytest
from conftest import run
from harness.wait import PATIENCE
from PIL import Image

WATCHDOG = 120  # seconds


def tell(what, seconds):
    print(f"{what}: {seconds:.1f} s until it answers again")


def test_the_service_runs_as_a_user_of_its_own_with_the_group_of_cameras(service):
    ids = service.status()
    user = pwd.getpwnam("camera-hub")
    assert set(ids["Uid"]) == {str(user.pw_uid)}
    assert set(ids["Gid"]) == {str(user.pw_gid)}
    assert run("getent", "group", "video").split(":")[2] in ids["Groups"]
    assert ids["CapBnd"] == ["0000000000000000"]
    assert ids["NoNewPrivs"] == ["1"]


def test_little_of_the_system_is_open_to_it(service):
    assert service.openness() < 2.0


def test_nothing_that_systemd_or_the_hub_has_to_complain_of_is_in_the_journal(service):
    assert service.warnings() == ""


def test_a_camera_that_is_plugged_in_is_found_takes_stills_and_goes(service, camera):
    (found,) = service.wait_for_cameras(1)
    client = service.rpc()
    resid = client.capture_in_time(found["uid"], exposureInUs=1000)["resid"]
    connection = service.http()
    picture = Image.open(io.BytesIO(connection.get(f"/res/{resid}").body))
    assert picture.size == (found["resolutionX"], found["resolutionY"])
    process = service.process()
    camera.unplug()
    service.wait_for_cameras(0)
    camera.plug()
    service.wait_for_cameras(1)
    assert service.process() == process, "the hub has lived through all that"


def test_a_camera_that_goes_while_it_is_held_leaves_a_service_that_answers(service, camera):
    (found,) = service.wait_for_cameras(1)
    client = service.rpc()
    client.capture_in_time(found["uid"], exposureInUs=1000)
    camera.unplug()
    service.wait_until_ready().wait_for_cameras(0)
    client.close()  # which still held what is gone
    camera.plug()
    (found,) = service.wait_for_cameras(1)
    service.rpc().capture_in_time(found["uid"], exposureInUs=1000)


def test_a_capture_of_less_than_two_minutes_is_no_hang(service, camera):
    (found,) = service.wait_for_cameras(1)
    client, process = service.rpc(), service.process()
    client.capture_in_time(found["uid"], exposureInUs=1000)
    client.socket.settimeout(WATCHDOG + PATIENCE)
    client.capture(found["uid"], exposureInUs=100_000, exposureChangeDelayInMs=1000 * (WATCHDOG - 20))
    assert service.process() == process


def test_a_hub_that_a_request_ends_is_started_again_and_leaves_a_crash_record_with_stacks(service):
    process, before = service.process(), service.crash_records()
    client = service.rpc()
    begin = time.monotonic()
    client.send("42")
    assert client.rest() == b""
    tell("Ended by a request", service.time_until_another_answers(process, begin))
    (record,) = [record for record in service.crash_records() if record not in before]
    assert "std::runtime_error: Type has no members" in record
    assert ", which crashed:\n  #0 " in record


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM])
def test_a_hub_that_a_signal_ends_is_started_again(service, number):
    process = service.process()
    begin = time.monotonic()
    os.kill(process, number)
    tell(f"Ended by {number.name}", service.time_until_another_answers(process, begin))


def test_a_hub_that_ends_again_and_again_is_started_again_each_time(service):
    for _ in range(8):
        process = service.process()
        os.kill(process, signal.SIGKILL)
        service.time_until_another_answers(process, 0)


def test_a_hub_that_a_request_hangs_is_ended_by_the_watchdog_tells_where_it_hung_and_is_started_again(service):
    process, before, bystander = service.process(), service.crash_records(), service.rpc()
    begin = time.monotonic()
    client = service.http()
    client.send(b"\r\n")
    bystander.socket.settimeout(WATCHDOG + PATIENCE)
    assert bystander.rest() == b""
    tell("Hung by a request", service.time_until_another_answers(process, begin))
    (record,) = [record for record in service.crash_records() if record not in before]
    assert "SIGABRT" in record
    assert ", which crashed:\n  #0 " in record


def test_what_a_hub_leaves_is_for_its_user_alone(service):
    state = Path("/var/lib/camera-hub").stat()
    assert state.st_mode & 0o777 == 0o700
    assert state.st_uid == pwd.getpwnam("camera-hub").pw_uid
