"""Taking stills and keeping them, by POST; and the list of those that are kept."""

import io
import re
from datetime import datetime, timezone

import pytest
from harness.openapi import check_answer
from harness.scenario import scenario
from PIL import Image

STILLS = "/api/cameras/cam/stills"


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam", "fixed", cameras={"fixed": {}})).wait_for_cameras("cam", "fixed")


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network)


def now():
    """As the times of stills are written: they sort."""
    return datetime.now(timezone.utc).isoformat(timespec="milliseconds").replace("+00:00", "Z")


def take(web, body, uid="cam"):
    return check_answer("takeStill", web.post(f"/api/cameras/{uid}/stills", body))


@pytest.mark.parametrize("body, asked, exposure, text", [
    ({"exposure": "20ms"}, {"exposureUs": 20000}, 15625, "1/64 s (15.625 ms)"),
    ({"exposure": "1/50s"}, {"exposureUs": 20000}, 15625, "1/64 s (15.625 ms)"),
    ({"exposure": "1/50"}, {"exposureUs": 20000}, 15625, "1/64 s (15.625 ms)"),
    ({"exposure": "976us"}, {"exposureUs": 976}, 976, "1/1024 s (976 µs)"),
    ({"exposure": "976µs"}, {"exposureUs": 976}, 976, "1/1024 s (976 µs)"),
    ({"exposure": "0.25 s"}, {"exposureUs": 250000}, 250000, "1/4 s (250 ms)"),
    ({"exposure": "2147483647us"}, {"exposureUs": 2147483647}, 1000000, "1 s"),
    ({"exposure": "1us"}, {"exposureUs": 1}, 122, "1/8192 s (122 µs)"),
    ({"percent": 100}, {"percent": 100}, 1000000, "1 s"),
    ({"percent": 50}, {"percent": 50}, 500000, "1/2 s (500 ms)"),
    ({"percent": 0}, {"percent": 0}, 122, "1/8192 s (122 µs)"),
    ({}, {"exposureUs": 50000}, 62500, "1/16 s (62.5 ms)"),
])
def test_the_exposure_is_the_nearest_that_the_camera_has(web, body, asked, exposure, text):
    still = take(web, body | {"settle": "0"}).json()
    assert (still["asked"], still["exposureUs"], still["exposureText"]) == (asked, exposure, text)


def test_what_is_told_of_a_still_is_so(web):
    before = now()
    still = take(web, {"exposure": "20ms"}).json()
    assert before <= still["takenAt"] <= now()
    assert re.fullmatch("[0-9a-f]{32}", still["id"])
    assert (still["uid"], still["camera"], still["width"], still["height"]) == ("cam", "cam", 64, 48)
    assert (still["png"], still["jpeg"]) == (f"/api/stills/{still['id']}.png", f"/api/stills/{still['id']}.jpg")
    assert still["fileName"] == f"cam_{still['takenAt'].replace(':', '-')}.png"
    assert still["wasTakenTwice"] is False
    picture = web.get(still["png"]).body
    assert len(picture) == still["bytes"]
    assert Image.open(io.BytesIO(picture)).size == (64, 48)


def test_the_answer_names_the_place_of_the_picture(web):
    answer = take(web, {})
    assert answer.status == 201
    assert answer.header("Location") == answer.json()["png"]


def test_the_settle_time_is_what_the_hub_waits_for_and_250_ms_by_itself(hub, web):
    for body, settle in (({"exposure": "2ms"}, 250), ({"exposure": "4ms", "settle": "0.9s"}, 900)):
        still = take(web, body).json()
        assert still["durations"]["captureMs"] >= settle, still


def test_a_camera_that_cannot_tell_its_exposure_takes_a_still_all_the_same(web):
    still = take(web, {"exposure": "1ms"}, uid="fixed").json()
    assert (still["exposureUs"], still["exposureText"]) == (None, None)
    answer = check_answer("takePng", web.get("/cameras/fixed/still.png"))
    assert answer.status == 200 and answer.header("Camera-Hub-Exposure") is None


def test_the_list_has_the_newest_first_and_each_as_it_was_told(web):
    taken = [take(web, {"settle": "0", "percent": percent}).json() for percent in (10, 20, 30)]
    listed = check_answer("listStills", web.get("/api/stills")).json()["stills"]
    assert listed[:3] == taken[::-1]
    assert [still["takenAt"] for still in listed] == sorted((still["takenAt"] for still in listed), reverse=True)


@pytest.mark.parametrize("field, value", [
    *[("exposure", value) for value in ("", "20", "0ms", "-20ms", "20 m", "1e3us", "1/0s", "2147483648us", "0.4us",
                                        "20ms ", " 20ms", "20ms20ms", "inf s", "nan s", "0x10us", "1/2/3s", 20, 20.5,
                                        True, None, [], ["20ms"], {}, {"us": 20})],
    *[("percent", value) for value in (-1, 101, 0.5, "40", "", True, None, [], [40], {}, 1e300, 2 ** 31, 2 ** 64,
                                       -2 ** 63)],
    *[("settle", value) for value in ("", "250", "-1ms", "-250ms", "60001ms", "61s", "2min", "1h", "24h", 250, -1, True,
                                      None, [], {}, "1e3ms", "250us")],
    *[("ticket", value) for value in ("", "a" * 65, "a b", "a/b", "ü", "a\n", "a\x00", 1, True, None, [], {})],
    *[(name, 1) for name in ("Exposure", "to", "gainInPercent", "exposureInUs", "method", "uid", "exposure ", "x")],
])
def test_a_member_that_is_not_as_described_is_refused_by_its_name(web, field, value):
    problem = take(web, {field: value})
    assert (problem.status, problem.kind) == (400, "invalid-request")
    assert field in problem.json()["detail"]


def test_exposure_and_percent_together_are_refused(web):
    detail = take(web, {"exposure": "20ms", "percent": 40}).json()["detail"]
    assert "exposure" in detail and "percent" in detail


@pytest.mark.parametrize("body", [
    b"", b" ", b"42", b'"20ms"', b"true", b"null", b"[]", b"[{}]", b"{", b"{}}", b"{} {}", b"{'exposure':'20ms'}",
    b'{"exposure":"20ms",}', b'{"exposure":"20ms"', b'{"exposure":"20ms","exposure":"10ms"}', b"{exposure:1}",
    b'{"exposure":"20ms"}\0', b"\xff", b'{"ticket":"\xff"}', b'{"percent":NaN}', b'{"percent":Infinity}', b"/* */{}",
    b"{}//", b"[" * 60000, b'{"a":' * 10000, b'{"percent":1e999}',
    b'{"percent":' + b"9" * 60000 + b"}",
])
def test_a_body_that_is_no_json_object_is_refused(web, body):
    answer = web.request("POST", STILLS, {"Content-Type": "application/json"}, body)
    assert check_answer("takeStill", answer).kind == "invalid-request"


@pytest.mark.parametrize("media", [None, "", "text/plain", "application/x-www-form-urlencoded", "multipart/form-data",
                                   "application/jsonp", "application/json-seq", "text/json", "json"])
def test_a_body_that_is_not_said_to_be_json_is_refused(web, media):
    answer = web.request("POST", STILLS, {"Content-Type": media}, b"{}")
    assert check_answer("takeStill", answer).kind == "unsupported-media-type"


@pytest.mark.parametrize("media", ["application/json", "Application/JSON", "application/json; charset=utf-8",
                                   "application/json;charset=UTF-8"])
def test_the_type_of_json_is_taken_however_it_is_written(web, media):
    answer = web.request("POST", STILLS, {"Content-Type": media}, b'{"settle":"0"}')
    assert check_answer("takeStill", answer).status == 201


def test_a_query_is_nothing_that_taking_takes(web):
    answer = web.post(f"{STILLS}?exposure=20ms", {})
    assert check_answer("takeStill", answer).kind == "invalid-request"


def test_only_so_many_stills_are_kept_as_it_was_told_and_the_oldest_goes_first(hub, start_web):
    web = start_web(hub.network, "--keep", 2)
    stills = [web.take("cam", settle="0", percent=percent) for percent in (10, 20, 30)]
    assert [still["id"] for still in web.get("/api/stills").json()["stills"]] == [stills[2]["id"], stills[1]["id"]]
    for address in (stills[0]["png"], stills[0]["jpeg"]):
        identity = "getStillPng" if address.endswith("png") else "getStillJpeg"
        assert check_answer(identity, web.get(address)).kind == "not-found"
    assert web.get(stills[1]["png"]).status == web.get(stills[2]["jpeg"]).status == 200
