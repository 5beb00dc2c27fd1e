"""On the kernel's driver of USB cameras, with an emulated camera whose pictures tell how they were taken."""

import random
import time
from math import floor

import pytest
from guest.cameras import wait_for_cameras, wait_for_none
from guest.usb_camera import grey_of, read
from harness.rpc import TIMED_OUT
from harness.wait import wait_until

EXPOSURE_UNSET = -(2**63)
STOPS = range(-11, -2)  # what of 3 to 2047 times 100 us the hub can use: 2^-11 s to 2^-3 s
RED, GREEN, BLUE = (255, 0, 0), (0, 255, 0), (0, 0, 255)
NO_DELAY = {"exposureChangeDelayInMs": 0}
STILL_LIMIT = 10  # seconds that the hub waits for a still


def microseconds(stop):
    """As the hub reports an exposure."""
    return 1_000_000 >> -stop


def units(stop):
    """What the camera is to be set to: 100 us. Halves go up."""
    return floor(10_000 * 2.0**stop + 0.5)


def capture(hub, client, stop=-7):
    """The reported exposure, and what the picture shows."""
    uid = wait_for_cameras(hub)[0]["uid"]
    result = client.capture(uid, exposureInUs=microseconds(stop), **NO_DELAY)
    return result["exposureInUs"], read(hub.picture(result))


def open_descriptors(hub):
    return [str(path) for path in hub.open_files() if str(path).startswith("/dev/video")]


def assert_shows(shown, stop):
    assert shown.exposure == units(stop)
    assert shown.grey == pytest.approx(grey_of(units(stop)), abs=4)


def assert_colours(shown):
    for got, wanted in zip(shown.colours, (RED, GREEN, BLUE)):
        assert max(abs(a - b) for a, b in zip(got, wanted)) <= 8, shown.colours


def assert_works_again(hub, camera, uid):
    """Plugged in again it is the same camera, under the same node: nothing has held on to the old one."""
    wait_for_none(hub)
    camera.plug()
    assert camera.nodes() == ["/dev/video0"]
    assert wait_for_cameras(hub)[0]["uid"] == uid
    client = hub.rpc()
    exposure, shown = capture(hub, client, -6)
    assert exposure == microseconds(-6)
    assert_shows(shown, -6)
    assert open_descriptors(hub) == ["/dev/video0"]


def test_a_camera_is_listed_soon_after_it_is_plugged_in(start_hub, plug_camera):
    hub = start_hub()
    plug_camera(sizes="320x240,640x480")
    plugged = time.monotonic()
    (camera,) = wait_for_cameras(hub)
    after_plugging = time.monotonic() - plugged
    hub.stop()
    started = time.monotonic()
    assert wait_for_cameras(start_hub()) == [camera]
    assert after_plugging < 4 * (time.monotonic() - started)  # which is some two seconds on a real machine
    assert (camera["make"], camera["model"]) == ("Example Optics", "Test Camera")
    assert (camera["resolutionX"], camera["resolutionY"]) == (640, 480)
    assert (camera["exposureMinValueInUs"], camera["exposureMaxValueInUs"]) == (microseconds(-11), microseconds(-3))


def test_two_cameras_of_one_model_are_told_apart(start_hub, plug_camera):
    for port in (0, 1):
        plug_camera(port=port)
    hub = start_hub()
    cameras = wait_for_cameras(hub, 2)
    assert cameras[0]["uid"] != cameras[1]["uid"]


def test_a_camera_with_a_serial_number_keeps_its_identity_at_another_port(start_hub, plug_camera):
    first = plug_camera(port=0, serial="A17")
    hub = start_hub()
    (before,) = wait_for_cameras(hub)
    first.unplug()
    wait_for_none(hub)
    plug_camera(port=1, serial="A17")
    assert wait_for_cameras(hub) == [before]


def test_the_automatics_are_off_in_the_picture(start_hub, plug_camera):
    plug_camera(sizes="320x240")  # which a busy machine takes in the time that the hub gives a still
    hub = start_hub()
    exposure, shown = capture(hub, hub.rpc(), -5)
    assert exposure == microseconds(-5)
    assert shown.automatics == 0
    assert_shows(shown, -5)
    assert_colours(shown)


def test_the_automatics_are_on_for_two_seconds_each_time_a_camera_is_opened(start_hub, plug_camera):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    capture(hub, client, -5)
    client.close()
    wait_until(lambda: not open_descriptors(hub), "the camera is closed")
    known = len(camera.events())
    started = time.monotonic()
    assert capture(hub, hub.rpc(), -6)[1].automatics == 0
    assert time.monotonic() - started > 2
    assert [event for event in camera.events()[known:] if event.startswith("set-")] == [
        "set-exposure_auto 8",
        "set-focus_auto 1",
        "set-white_balance_auto 1",
        "set-exposure_auto 1",
        "set-focus_auto 0",
        "set-white_balance_auto 0",
        f"set-exposure {units(-6)}",
    ]


@pytest.mark.parametrize(
    "camera, count",
    [
        ({"formats": "yuyv", "sizes": "320x240", "latency": 4}, 100),
        ({"formats": "yuyv", "sizes": "320x240", "latency": 1}, 20),
        ({"formats": "mjpeg", "sizes": "640x480", "rate": 15, "latency": 3}, 30),
    ],
    ids=["100 of 100", "quick camera", "MJPEG"],
)
def test_every_first_still_after_a_change_of_exposure_shows_it(start_hub, plug_camera, camera, count):
    plug_camera(**camera)
    hub = start_hub()
    client = hub.rpc()
    stop, stale, last = None, [], 0
    generator = random.Random(20)
    for number in range(count):
        stop = generator.choice([other for other in STOPS if other != stop])
        exposure, shown = capture(hub, client, stop)
        assert exposure == microseconds(stop)
        assert shown.number > last
        last = shown.number
        if shown.exposure != units(stop) or abs(shown.grey - grey_of(units(stop))) > 4:
            stale.append((number, units(stop), shown.exposure, shown.grey))
    assert stale == []
    assert_colours(shown)


def test_a_still_without_a_change_shows_the_scene_after_the_request(start_hub, plug_camera):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    _, before = capture(hub, client)
    wait_until(lambda: camera.frames_made() > before.number + 20, "frames that nobody takes")
    made = camera.frames_made()
    _, after = capture(hub, client)
    assert after.number > made


@pytest.mark.parametrize("code", [1, 4, 8], ids=["not ready", "out of range", "invalid value"])
def test_a_setting_that_the_camera_refuses_is_reported_and_the_still_is_taken(start_hub, plug_camera, code):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    assert capture(hub, client, -7)[0] == microseconds(-7)
    camera.command(f"refuse exposure {code}")
    exposure, shown = capture(hub, client, -5)
    assert exposure == EXPOSURE_UNSET
    assert f"refused-exposure {units(-5)}" in camera.events()
    assert_shows(shown, -7)
    camera.command("accept exposure")
    exposure, shown = capture(hub, client, -5)
    assert exposure == microseconds(-5)
    assert_shows(shown, -5)


def test_unplugging_while_a_camera_is_looked_at_leaves_it_out_until_it_is_back(start_hub, plug_camera):
    camera = plug_camera()
    camera.command("at probe unplug")
    hub = start_hub()
    camera.wait_for_event("unplugged")
    camera.wait_until_gone()
    camera.plug()
    uid = wait_for_cameras(hub)[0]["uid"]
    camera.unplug()
    assert_works_again(hub, camera, uid)


UNPLUGGED = "(the camera has been unplugged)"


@pytest.mark.parametrize(
    "step, reason",
    [
        ("commit", "VIDIOC_STREAMON on /dev/video0: Input/output error"),  # the kernel does not tell why
        ("half-frame", UNPLUGGED),
        ("set-exposure_auto", UNPLUGGED),
        ("set-focus_auto", UNPLUGGED),
    ],
)
def test_unplugging_while_a_camera_is_opened_ends_the_hub_with_that_reason(start_hub, plug_camera, step, reason):
    """There is no guard around opening a camera, on purpose; what counts is that nothing hangs."""
    camera = plug_camera()
    hub = start_hub()
    uid = wait_for_cameras(hub)[0]["uid"]
    camera.command(f"at {step} unplug")
    client = hub.rpc()
    client.send(f'{{"id":1,"method":"camera:capture","params":{{"to":"{uid}","exposureInUs":1000}}}}')
    assert client.rest() == b""
    hub.wait_for_end()
    camera.wait_for_event("unplugged")
    (record,) = hub.crash_records()
    assert reason in record.splitlines()[0]


@pytest.mark.parametrize("step", ["set-exposure", "frame-1", "frame-4"])
def test_unplugging_during_a_capture_fails_it_and_the_hub_lives(start_hub, plug_camera, step):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    capture(hub, client, -7)
    uid = wait_for_cameras(hub)[0]["uid"]
    camera.command(f"at {step} unplug")
    asked = time.monotonic()
    reply = client.request("camera:capture", to=uid, exposureInUs=microseconds(-5), **NO_DELAY)
    assert time.monotonic() - asked < 2 * STILL_LIMIT
    if "error" in reply:
        assert reply["error"]["message"].startswith("captureImage failed: ")
    else:  # a still that ends with an error is an empty picture
        assert hub.get(f"/res/{reply['result']['resid']}").status == 404
    camera.wait_for_event("unplugged")
    client.close()
    assert_works_again(hub, camera, uid)


def test_unplugging_an_open_camera_between_captures(start_hub, plug_camera):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    capture(hub, client)
    uid = wait_for_cameras(hub)[0]["uid"]
    camera.unplug()
    wait_for_none(hub)
    assert client.capture(uid, exposureInUs=1000)["message"] == "Camera Disconnected"
    assert_works_again(hub, camera, uid)


def test_a_camera_that_stops_sending_times_the_capture_out_and_works_again_later(start_hub, plug_camera):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    capture(hub, client, -7)
    uid = wait_for_cameras(hub)[0]["uid"]
    camera.command("freeze")
    asked = time.monotonic()
    reply = client.request("camera:capture", to=uid, exposureInUs=microseconds(-6), **NO_DELAY)
    assert reply["error"]["message"] == TIMED_OUT
    assert STILL_LIMIT <= time.monotonic() - asked < 2 * STILL_LIMIT
    assert hub.rpc().discover()[0]["uid"] == uid
    camera.command("thaw")
    exposure, shown = capture(hub, client, -5)
    assert exposure == microseconds(-5)
    assert_shows(shown, -5)


def test_a_camera_whose_firmware_does_not_answer_costs_a_bounded_time(start_hub, plug_camera):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    capture(hub, client, -7)
    uid = wait_for_cameras(hub)[0]["uid"]
    camera.command("mute")
    asked = time.monotonic()
    reply = client.request("camera:capture", to=uid, exposureInUs=microseconds(-6), **NO_DELAY)
    assert "the camera does not answer" in reply["error"]["message"]
    assert time.monotonic() - asked < 30  # the kernel waits 5 s for a control, the hub 12 s for the kernel
    camera.command("speak")
    exposure, shown = capture(hub, client, -5)
    assert exposure == microseconds(-5)
    assert_shows(shown, -5)


@pytest.mark.parametrize("damage", ["cut", "mark"])
@pytest.mark.parametrize("formats", ["yuyv", "mjpeg"])
def test_damaged_frames_are_never_shown(start_hub, plug_camera, formats, damage):
    camera = plug_camera(formats=formats, sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    capture(hub, client)
    camera.command(damage)  # every frame with an odd number
    for stop in (-6, -5, -7, -6, -8, -6):
        exposure, shown = capture(hub, client, stop)
        assert exposure == microseconds(stop)
        assert_shows(shown, stop)
        assert_colours(shown)
        assert shown.number % 2 == 0


@pytest.mark.parametrize("command", ["stall", "at set-exposure stall", "at frame-3 stall"])
def test_a_stream_that_stalls_is_started_again_within_the_capture(start_hub, plug_camera, command):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    client = hub.rpc()
    capture(hub, client, -7)
    commits = camera.events().count("commit")
    camera.command(command)
    exposure, shown = capture(hub, client, -5)
    assert exposure == microseconds(-5)
    assert_shows(shown, -5)
    assert camera.events().count("commit") == commits + 1


def test_the_frames_of_an_open_camera_do_not_wake_the_hub(start_hub, plug_camera):
    """Run with -rP this tells what that costs, which no test can hold to a figure on a busy machine."""
    plug_camera(sizes="640x480", rate=30)
    hub = start_hub()
    wait_for_cameras(hub)
    client = hub.rpc()
    seconds = 10.0
    closed = share_of_a_core(hub, seconds)
    capture(hub, client)
    turns = hub.processor_turns()
    opened = share_of_a_core(hub, seconds)
    turns = hub.processor_turns() - turns
    print(f"Shares of one core: closed {closed:.2%}, open {opened:.2%}; {turns} turns in {seconds:.0f} s")
    assert turns < 100  # of some 300 frames


def share_of_a_core(hub, seconds):
    before = hub.cpu_seconds()
    time.sleep(seconds)
    return (hub.cpu_seconds() - before) / seconds
