""""camera:capture": how its parameters are read, what it answers, and what reaches the camera."""

import re
import time

import pytest
from harness.hub import ASSERTS, DEVICE_LOGGER, SERVICE_LOGGER, LogEntry
from harness.scenario import EXPOSURE, scenario
from harness.wait import wait_until

EXPOSURE_UNSET = -9223372036854775808
RESID = "[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}"

# A capture without any exposure stops a hub whose assertions are on.
asserts = pytest.mark.skipif(ASSERTS, reason="assertions are on")

LOST = {"message": "Device lost", "code": -2147024891, "times": 1}


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    cameras = {
        "plain": {"exposure": EXPOSURE},
        "fine": {"exposure": EXPOSURE | {"min": -10, "step": 0.5}},
        "short": {"exposure": EXPOSURE | {"max": -2}},
        "fixed": {},
        "refusing": {"exposure": EXPOSURE | {"refuse": ["TrySetValue"]}},
        "unreadable": {"exposure": EXPOSURE | {"refuse": ["TryGetValue"]}},
        "latching": {"exposure": EXPOSURE | {"latch": -3}},
        "failing": {"exposure": EXPOSURE, "faults": {"MediaCapture.CapturePhotoToStreamAsync": LOST}},
        "empty": {"exposure": EXPOSURE, "capture": {"outcome": "error"}},
    }
    return start_shared_hub(scenario(*cameras, cameras=cameras)).wait_for_cameras(*cameras)


@pytest.fixture(scope="module")
def client(hub):
    """One connection for the whole module, so that the plain camera is opened once."""
    return hub.rpc()


@pytest.fixture
def errors_of(hub):
    """A function that gives the error log entries that a call has made."""

    def collect(call):
        before = len(hub.log())
        call()
        return [entry for entry in hub.log()[before:] if entry.level == "ERROR"]

    return collect


def exchange(client, params):
    return client.exchange(f'{{"jsonrpc":"2.0","id":1,"method":"camera:capture","params":{params}}}').decode()


def failure(code, message):
    return f'{{"id":1,"jsonrpc":"2.0","result":{{"code":{code},"message":"{message}"}}}}\n\r\n\0'


def calls(hub, since=0, name="MediaDeviceControl.TrySetValue"):
    return [line for line in hub.journal()[since:] if line["call"] == name]


@pytest.mark.parametrize("params", ["{}", "null", "[]", "[5]", '"text"', "5", "true", '{"to":""}', '{"to":null}'])
def test_a_capture_that_names_no_camera_gives_code_1(client, params):
    assert exchange(client, params) == failure(1, "Unknown camera")


def test_a_capture_without_params_gives_code_1(client):
    assert client.exchange('{"id":1,"method":"camera:capture"}').decode() == failure(1, "Unknown camera")


@pytest.mark.parametrize("uid", ['"elsewhere"', "true", "false", '"PLAIN"', '"plain "'])
def test_a_uid_that_no_camera_has_gives_code_2(hub, client, uid):
    assert exchange(client, f'{{"to":{uid}}}') == failure(2, "Camera Disconnected")
    hub.wait_for_log("ERROR", SERVICE_LOGGER, "There is no known " + uid.strip('"'))


def test_a_capture_gives_the_latched_exposure_and_an_image_id(client):
    reply = exchange(client, '{"to":"plain","exposureInUs":20000}')
    assert re.fullmatch(
        f'{{"id":1,"jsonrpc":"2.0","result":{{"exposureInUs":15625,"resid":"{RESID}"}}}}\n\r\n\0', reply
    )


def test_every_capture_has_an_id_of_its_own(client):
    assert len({client.capture("plain", exposureInUs=20000)["resid"] for _ in range(5)}) == 5


@pytest.mark.parametrize(
    "params, exponent, reported",
    [
        ('"exposureInUs":50000', -4, 62500),
        ('"exposureInUs":1000.9', -10, 976),
        ('"exposureInUs":true', -13, 122),
        ('"exposureInUs":-5', None, None),
        ('"exposureInUs":2147483647', 0, 1000000),
        ('"exposureInUs":1000,"exposureInPercent":50,"gainInPercent":25', -10, 976),
        ('"exposureInUs":0,"exposureInPercent":50,"gainInPercent":25', -2, 250000),
        ('"exposureInPercent":1,"gainInPercent":25.9', -2, 250000),
        ('"exposureInPercent":-1,"gainInPercent":100', 0, 1000000),
        ('"exposureInPercent":100,"gainInPercent":1', -7, 7812),
        ('"exposureInPercent":50,"gainInPercent":200', 0, 1000000),
        ('"exposureInPercent":50', -13, 122),
        ('"exposureInPercent":50,"gainInPercent":null', -13, 122),
        ('"exposureInPercent":true,"gainInPercent":true', -7, 7812),
        pytest.param('"exposureInPercent":0.9,"gainInPercent":25', -4, 62500, marks=asserts),
        pytest.param('"gainInPercent":25', -4, 62500, marks=asserts),
        pytest.param('"exposureInUs":0', -4, 62500, marks=asserts),
        pytest.param('"exposureInUs":null', -4, 62500, marks=asserts),
        ('"encoding":"base64","image":true,"exposureInUs":50000', -4, 62500),
    ],
)
def test_which_exposure_reaches_the_camera(hub, client, params, exponent, reported):
    client.capture("plain", exposureInUs=4000)  # another one, so that the next is a change
    since = len(hub.journal())
    reply = exchange(client, f'{{"to":"plain",{params}}}')
    assert [line["args"] for line in calls(hub, since)] == [["nan" if exponent is None else exponent]]
    assert f'"exposureInUs":{EXPOSURE_UNSET if reported is None else reported},' in reply


@asserts
@pytest.mark.parametrize(
    "value, text",
    [
        ('"abc"', "Type is not convertible to int"),
        ('"5"', "Type is not convertible to int"),
        ("[]", "Type is not convertible to int"),
        ("{}", "Type is not convertible to int"),
        ("2147483648", "unsigned integer out of signed int range"),
        ("-2147483649", "unsigned integer out of signed int range"),
        ("1e10", "Real out of signed integer range"),
        ("-1e10", "Real out of signed integer range"),
    ],
)
def test_an_exposure_of_a_bad_type_is_logged_and_counts_as_none(client, errors_of, value, text):
    assert errors_of(lambda: exchange(client, f'{{"to":"plain","exposureInUs":{value}}}')) == [
        LogEntry("ERROR", "Common.RunCatch", f"Caught exception: {text}"),
        LogEntry("ERROR", SERVICE_LOGGER, "No valid exposure parsed in captureImage JSON request."),
    ]


@pytest.mark.parametrize("value", ['"abc"', "[]", "{}"])
def test_a_percentage_of_a_bad_type_is_logged_and_counts_as_none(client, errors_of, value):
    assert errors_of(
        lambda: exchange(client, f'{{"to":"plain","exposureInUs":9,"exposureInPercent":{value}}}')
    ) == [LogEntry("ERROR", "Common.RunCatch", "Caught exception: Type is not convertible to double")]


@pytest.mark.parametrize(
    "member, least, most",
    [
        ("", 0, 0.2),
        (',"exposureChangeDelayInMs":null', 0, 0.2),
        (',"exposureChangeDelayInMs":300', 0.3, 0.45),
        (',"exposureChangeDelayInMs":"abc"', 0.5, 1),
        (',"exposureChangeDelayInMs":1e10', 0.5, 1),
    ],
)
def test_the_exposure_is_read_back_after_the_delay(hub, client, member, least, most):
    """Never earlier; how much later is the machine's matter, but a delay that is longer is never so short."""

    def delay():
        client.capture("plain", exposureInUs=4000)
        since = len(hub.journal())
        exchange(client, f'{{"to":"plain","exposureInUs":1000{member}}}')
        (set_line,) = calls(hub, since)
        (get_line,) = calls(hub, since, "MediaDeviceControl.TryGetValue")
        assert get_line["t"] - set_line["t"] >= least
        return get_line["t"] - set_line["t"]

    wait_until(lambda: delay() < most, f"a delay below {most} s")


def test_parameters_are_read_before_the_camera_is_looked_for(client, errors_of):
    (error,) = errors_of(lambda: exchange(client, '{"exposureInUs":"abc"}'))
    assert error.logger == "Common.RunCatch"


def test_an_exposure_in_microseconds_is_logged_on_its_way(hub, client):
    client.capture("plain", exposureInUs=4000)
    client.capture("plain", exposureInUs=60000)
    client.capture("plain", exposureInUs=60001)
    assert [entry for entry in hub.log() if entry.logger == DEVICE_LOGGER][-5:] == [
        LogEntry("INFO", DEVICE_LOGGER, f"{text}, camera name: Test Camera")
        for text in (
            "Requested exposure 60000 us.",
            "Try set to 2^[-4.000000] s",
            "Exposure latched to: 62500us [-4.000000]",
            "Requested exposure 60001 us.",
            "Exposure has not changed since last request.",
        )
    ]


def test_an_exposure_in_percent_is_logged_as_a_short_number(hub, client):
    client.capture("plain", exposureInPercent=1, gainInPercent=33)
    hub.wait_for_log("INFO", DEVICE_LOGGER, "Requested exposure 33 %., camera name: Test Camera")


def test_a_grid_that_is_finer_than_a_stop_is_reported_in_whole_stops(hub, client):
    since = len(hub.journal())
    assert client.capture("fine", exposureInUs=50000)["exposureInUs"] == 31250
    assert [line["args"] for line in calls(hub, since)] == [[-4.5]]


def test_an_exposure_beyond_the_range_ends_at_its_end(client):
    assert client.capture("short", exposureInUs=10_000_000)["exposureInUs"] == 250000


def test_an_unchanged_exposure_is_reported_as_requested_not_as_latched(client):
    assert client.capture("latching", exposureInUs=1000)["exposureInUs"] == 125000
    assert client.capture("latching", exposureInUs=1000)["exposureInUs"] == 976


@pytest.mark.parametrize(
    "uid, text",
    [("fixed", "Exposure changes not supported"), ("refusing", "Failed to set exposure"), ("unreadable", None)],
)
def test_an_exposure_that_cannot_be_set_or_read_back_does_not_stop_the_capture(hub, client, errors_of, uid, text):
    results = []
    expected = [LogEntry("ERROR", DEVICE_LOGGER, f"{text}, camera name: Test Camera")] if text else []
    assert errors_of(lambda: results.append(client.capture(uid, exposureInUs=1000))) == expected
    assert results[0]["exposureInUs"] == EXPOSURE_UNSET
    assert hub.image(results[0]["resid"]).startswith(b"\x89PNG")


def test_a_platform_failure_in_a_capture_is_an_error_reply_and_the_camera_stays_usable(hub, client):
    reply = exchange(client, '{"to":"failing","exposureInUs":1000}')
    text = "captureImage failed: Device lost(-2147024891)"
    assert reply == f'{{"error":{{"message":"{text}"}},"id":1,"jsonrpc":"2.0"}}\n\r\n\0'
    hub.wait_for_log("ERROR", DEVICE_LOGGER, text)
    since = len(hub.journal())
    assert "resid" in client.capture("failing", exposureInUs=1000)
    assert calls(hub, since) == []  # the exposure that was set stays in force


def test_a_still_that_ends_with_an_error_gives_an_image_that_does_not_exist(hub, client):
    resid = client.capture("empty", exposureInUs=1000)["resid"]
    assert hub.get(f"/res/{resid}").status_line == "HTTP/1.1 404 Image does not exist"


def test_a_failed_capture_leaves_the_image_of_the_one_before(hub, client):
    resid = client.capture("plain", exposureInUs=1000)["resid"]
    client.capture("elsewhere")
    assert hub.image(resid).startswith(b"\x89PNG")


def test_a_still_that_never_comes_is_given_up_after_ten_seconds(start_hub):
    stuck = {"exposure": EXPOSURE, "capture": {"outcome": "never"}}
    hub = start_hub(scenario("stuck", camera=stuck)).wait_for_cameras("stuck")
    reply = exchange(hub.rpc(), '{"to":"stuck","exposureInUs":1000}')
    end = time.monotonic()  # the clock of the journal
    text = "captureImage failed: Timed out waiting for camera capture.(-2147483636)"
    assert reply == f'{{"error":{{"message":"{text}"}},"id":1,"jsonrpc":"2.0"}}\n\r\n\0'
    (begin,) = calls(hub, 0, "MediaCapture.CapturePhotoToStreamAsync")
    assert "ended" not in begin
    assert 10 <= end - begin["t"] < 20  # once


def test_a_still_that_comes_within_the_ten_seconds_is_a_normal_one(start_hub):
    late = {"exposure": EXPOSURE, "capture": {"delayMs": 7000}}
    hub = start_hub(scenario("late", camera=late)).wait_for_cameras("late")
    resid = hub.rpc().capture("late", exposureInUs=1000)["resid"]
    assert hub.image(resid).startswith(b"\x89PNG")
    begin, end = calls(hub, 0, "MediaCapture.CapturePhotoToStreamAsync")
    assert 7 <= end["t"] - begin["t"] < 10
