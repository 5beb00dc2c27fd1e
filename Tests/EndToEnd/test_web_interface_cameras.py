"""Listing the cameras of a hub, and the camera's uid as a part of paths."""

import pytest
from harness.openapi import check_answer
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.web import part

CONTAINER = "{00000000-1111-2222-3333-444444444444}"
# Uids may have any character: those that mean something in addresses, and such as are not in ASCII.
ODD = ["a/b", "a%2Fb", "?exposure=1ms", "#", "..", ".", "a b+c", "Gerät", "<b>&amp;\"'", "\\\\?\\usb#vid", "😀", "%",
       "%00"]


def known_make():
    group = camera_group("known", 1920, 1080)
    group["sources"][0]["device"]["properties"] = {
        "System.Devices.DeviceInstanceId": "node", "System.Devices.ContainerId": CONTAINER}
    return group


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    names = {"System.Devices.ModelName": "C/920", "System.Devices.Manufacturer": "Other"}
    hub = start_shared_hub({
        "groups": [known_make(), camera_group("plain"), camera_group("fixed"), *map(camera_group, ODD)],
        "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "Halden \"H\""}}],
        "containers": [{"id": CONTAINER, "properties": names}],
        "cameras": {"known": {"exposure": EXPOSURE | {"min": -4, "max": -2}},
                    **{uid: {"exposure": EXPOSURE} for uid in ("plain", *ODD)}},
    })
    return hub.wait_for_cameras("known", "plain", "fixed", *ODD)


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network)


def cameras(web):
    return check_answer("listCameras", web.get("/api/cameras")).json()


def camera(web, uid):
    (found,) = [each for each in cameras(web)["cameras"] if each["uid"] == uid]
    return found


def test_the_list_has_the_hub_and_all_cameras_in_the_order_of_their_uids(web):
    listed = cameras(web)
    assert listed["hub"] == {"host": "localhost", "version": "2.9"}
    assert [each["uid"] for each in listed["cameras"]] == sorted(["known", "plain", "fixed", *ODD], key=str.encode)


def test_a_camera_has_a_name_for_people_and_what_the_hub_tells_of_it(web):
    assert camera(web, "known") == {
        "uid": "known", "name": 'Halden "H" C/920', "make": 'Halden "H"', "model": "C/920",
        "width": 1920, "height": 1080, "shortestExposureUs": 62500, "longestExposureUs": 250000,
        "exposureRange": "1/16 s to 1/4 s",
        "stops": [{"us": 62500, "text": "1/16 s"}, {"us": 125000, "text": "1/8 s"}, {"us": 250000, "text": "1/4 s"}],
    }


def test_a_camera_without_make_and_model_is_called_by_its_uid(web):
    found = camera(web, "plain")
    assert (found["name"], found["make"], found["model"]) == ("plain", "", "")


def test_the_stops_are_the_powers_of_two_of_a_second_from_the_shortest_exposure_to_the_longest(web):
    found = camera(web, "plain")
    assert found["exposureRange"] == "1/8192 s to 1 s"
    stops = found["stops"]
    assert [stop["text"] for stop in stops] == [f"1/{2 ** n} s" for n in range(13, 0, -1)] + ["1 s"]
    assert all(abs(stop["us"] - 1e6 / 2 ** n) < 1 for stop, n in zip(stops, range(13, -1, -1)))
    assert stops[0]["us"] == found["shortestExposureUs"] and stops[-1]["us"] == found["longestExposureUs"]


def test_a_camera_whose_exposure_is_fixed_has_no_stops(web):
    found = camera(web, "fixed")
    assert (found["stops"], found["exposureRange"]) == ([], "fixed")
    assert found["shortestExposureUs"] == found["longestExposureUs"]


@pytest.mark.parametrize("uid", ODD)
def test_a_still_is_taken_of_the_camera_of_that_uid_whatever_characters_it_has(web, uid):
    still = web.take(uid, exposure="1ms", settle="0")
    assert (still["uid"], still["camera"]) == (uid, uid)
    assert web.get(f"/cameras/{part(uid)}/still.png?exposure=1ms&settle=0").status == 200


@pytest.mark.parametrize("uid", ["none", "PLAIN", "plain ", "a", "%2e%2e%2f", "ü" * 50])
def test_a_uid_that_no_camera_has_is_no_such_camera(web, uid):
    answers = {
        "takeStill": web.post(f"/api/cameras/{part(uid)}/stills", {}),
        "takePng": web.get(f"/cameras/{part(uid)}/still.png"),
        "takeJpeg": web.get(f"/cameras/{part(uid)}/still.jpg"),
        "watchCamera": web.get(f"/cameras/{part(uid)}/stream.mjpg"),
    }
    for identity, answer in answers.items():
        assert check_answer(identity, answer).kind == "no-such-camera"


@pytest.mark.parametrize("uid", ["plain%", "%zz", "%c3%28", "%ff", "%ed%a0%80", "%c0%af"])
def test_a_uid_that_is_not_percent_encoded_utf8_is_refused(web, uid):
    assert check_answer("takeStill", web.post(f"/api/cameras/{uid}/stills", {})).kind == "invalid-request"


def test_the_health_is_that_of_the_way_to_the_hub(web):
    assert check_answer("checkHealth", web.get("/healthz")).json() == {"hub": "reachable"}


def test_a_camera_that_comes_and_goes_is_in_the_list_and_out_of_it(start_hub, start_web):
    hub = start_hub(scenario("one")).wait_for_cameras("one")
    web = start_web(hub.network).wait_for_cameras("one")
    hub.write_scenario(scenario("one", "two"))
    web.wait_for_cameras("one", "two")
    hub.write_scenario(scenario("two"))
    web.wait_for_cameras("two")
    assert check_answer("takeStill", web.post("/api/cameras/one/stills", {})).kind == "no-such-camera"
