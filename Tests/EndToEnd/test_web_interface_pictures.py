"""Addresses that give a picture at once, which was taken after the request."""

import io
import threading
import time

import pytest
from harness.journal import begins
from harness.openapi import check_answer
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.scenes import plain
from harness.wait import wait_until
from PIL import Image

RED, BLUE = (200, 0, 0), (0, 0, 200)


def painted(picture, *marks, delay=0):
    """A camera that shows that picture, and others without anything that are seen when the scenario is in force."""
    camera = {"exposure": EXPOSURE, "capture": {"picture": picture, "delayMs": delay}}
    return {"groups": [camera_group(uid) for uid in ("cam", *marks)], "cameras": {"cam": camera}}


def put_in_force(hub, new, mark):
    hub.write_scenario(new)
    wait_until(lambda: any(line.get("device") == mark for line in hub.journal()), "the scenario is in force")


def colour(picture):
    with Image.open(io.BytesIO(picture)) as image:
        return image.convert("RGB").getpixel((image.width // 2, image.height // 2))


def stills_begun(hub):
    return [call["t"] for call in begins(hub.journal(), "MediaCapture.CapturePhotoToStreamAsync")]


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network)


@pytest.mark.parametrize("name, identity, form", [("still.png", "takePng", "PNG"), ("still.jpg", "takeJpeg", "JPEG")])
def test_the_picture_is_that_of_the_kept_still_that_its_headers_name(web, name, identity, form):
    answer = check_answer(identity, web.get(f"/cameras/cam/{name}?exposure=1ms"))
    assert answer.status == 200
    assert (answer.header("Camera-Hub-Exposure"), answer.header("Camera-Hub-Queue")) == ("976us", "0")
    kept = web.get("/api/stills").json()["stills"][0]
    assert kept["id"] == answer.header("Camera-Hub-Still")
    assert answer.body == web.get(kept[form.lower()]).body
    assert answer.header("Content-Disposition").startswith("inline")
    with Image.open(io.BytesIO(answer.body)) as picture:
        assert (picture.format, picture.size) == (form, (64, 48))


@pytest.mark.parametrize("query, asked", [
    ("", {"exposureUs": 50000}), ("?exposure=1/50s", {"exposureUs": 20000}), ("?percent=40", {"percent": 40}),
    ("?exposure=1%2F50", {"exposureUs": 20000}), ("?settle=0&exposure=3ms", {"exposureUs": 3000}),
    ("?exposure=976%C2%B5s", {"exposureUs": 976}), ("?exposure=20%20ms", {"exposureUs": 20000}),
])
def test_the_query_says_which_exposure(web, query, asked):
    answer = check_answer("takePng", web.get(f"/cameras/cam/still.png{query}"))
    assert answer.status == 200
    assert web.get("/api/stills").json()["stills"][0]["asked"] == asked


def test_width_and_quality_are_those_of_the_jpeg(web):
    small = web.get("/cameras/cam/still.jpg?width=16&quality=1&settle=0").body
    assert Image.open(io.BytesIO(small)).size == (16, 12)
    assert len(small) < len(web.get("/cameras/cam/still.jpg?settle=0").body)


@pytest.mark.parametrize("query", [
    "exposure=", "exposure", "exposure=20", "exposure=-1ms", "exposure=0", "exposure=2147483648us", "percent=-1",
    "percent=101", "percent=4e1", "percent=40.0", "percent=%2B40", "percent=", "settle=-1ms", "settle=61s",
    "settle=250", "settle=", "exposure=1ms&percent=1", "exposure=1ms&exposure=1ms", "ticket=a", "fps=2", "download",
    "x=1", "=1", "exposure=1ms%00", "exposure=%ff", "exposure=%", "gainInPercent=10", "exposureInUs=5",
])
def test_a_query_that_is_not_as_described_is_refused_and_takes_nothing(hub, web, query):
    before = len(stills_begun(hub))
    for identity, name in (("takePng", "still.png"), ("takeJpeg", "still.jpg")):
        assert check_answer(identity, web.get(f"/cameras/cam/{name}?{query}")).kind == "invalid-request"
    assert len(stills_begun(hub)) == before


def test_a_png_has_no_width_and_no_quality(web):
    for query in ("width=16", "quality=1"):
        assert check_answer("takePng", web.get(f"/cameras/cam/still.png?{query}")).kind == "invalid-request"


@pytest.mark.parametrize("name", ["still.png", "still.jpg", "stream.mjpg"])
def test_asking_for_the_head_alone_takes_nothing(hub, web, name):
    before = len(stills_begun(hub))
    answer = web.request("HEAD", f"/cameras/cam/{name}")
    assert (answer.status, answer.header("Allow")) == (405, "GET, OPTIONS")
    assert len(stills_begun(hub)) == before


def test_a_picture_shows_what_is_there_at_the_time_of_the_request(start_hub, start_web):
    hub = start_hub({}, start=False)
    red, blue = plain(hub.folder, RED), plain(hub.folder, BLUE)
    hub.write_scenario(painted(red))
    hub.start().wait_for_cameras("cam")
    web = start_web(hub.network)
    assert colour(web.get("/cameras/cam/still.png?exposure=15625us").body) == RED
    put_in_force(hub, painted(blue, "mark"), "mark")
    assert colour(web.get("/cameras/cam/still.png?exposure=15625us").body) == BLUE


def test_a_still_that_was_under_way_before_the_request_does_not_answer_it(start_hub, start_web):
    hub = start_hub({}, start=False)
    red, blue = plain(hub.folder, RED), plain(hub.folder, BLUE)
    hub.write_scenario(painted(red, delay=3000))
    hub.start().wait_for_cameras("cam")
    web = start_web(hub.network)
    address = "/cameras/cam/still.png?exposure=15625us"
    with web.connection() as first:
        first.ask("GET", address)
        wait_until(lambda: stills_begun(hub), "a still is under way")
        put_in_force(hub, painted(blue, "mark", delay=0), "mark")
        asked_at = time.monotonic()
        second = web.get(address)
        earlier = first.receive()
    assert colour(second.body) == BLUE
    assert second.header("Camera-Hub-Still") != earlier.header("Camera-Hub-Still")
    assert [begun > asked_at for begun in stills_begun(hub)] == [False, True]
    assert second.header("Camera-Hub-Queue") == "1"


def test_who_goes_before_its_turn_costs_no_still(start_hub, start_web):
    slow = {"exposure": EXPOSURE, "capture": {"delayMs": 2000}}
    hub = start_hub(scenario("cam", camera=slow)).wait_for_cameras("cam")
    web = start_web(hub.network)
    answers = []
    with web.connection() as leaving:
        thread = threading.Thread(target=lambda: answers.append(web.get("/cameras/cam/still.png?settle=0")))
        thread.start()
        wait_until(lambda: len(web.queue()) == 1, "the first is at work")
        leaving.ask("GET", "/cameras/cam/still.png?settle=0")
        wait_until(lambda: len(web.queue()) == 2, "the second waits")
    wait_until(lambda: len(web.queue()) < 2, "it is out of the queue")
    thread.join()
    assert answers[0].status == 200
    assert web.take("cam", settle="0")["durations"]["captureMs"] >= 2000
    assert len(stills_begun(hub)) == 2
