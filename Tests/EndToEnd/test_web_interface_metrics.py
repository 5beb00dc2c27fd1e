"""Numbers for Prometheus."""

import re

import pytest
from harness.openapi import check_answer, operation
from harness.prometheus import parse
from harness.scenario import EXPOSURE, scenario
from harness.wait import wait_until
from harness.web_streams import Events, MovingPictures, closing

P = "camera_hub_web_"


@pytest.fixture
def hub(start_hub):
    return start_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture
def web(hub, start_web):
    return start_web(hub.network).wait_for_cameras("cam")


def metrics(web):
    answer = check_answer("getMetrics", web.get("/metrics"))
    assert answer.header("Content-Type") == "text/plain; version=0.0.4; charset=utf-8"
    return parse(answer.body.decode("ascii"))


def value(web, name, **labels):
    return metrics(web)[P + name].value(**labels)


def test_they_are_those_that_the_document_names_each_of_its_kind(web):
    described = dict(re.findall(r"\| `([a-z_]+)` \| ([a-z]+) \|", operation("getMetrics").value["description"]))
    assert {name: family.kind for name, family in metrics(web).items()} == described


def test_they_are_all_there_before_anything_was_done(web):
    found = metrics(web)
    assert found[P + "hub_reachable"].value() == found[P + "cameras"].value() == 1
    for name, family in found.items():
        if family.kind != "gauge":
            assert set(family.samples.values()) == {0}, name


def test_stills_are_counted_by_what_they_were_for_and_by_what_took_how_long(web):
    web.take("cam", settle="0.5s", exposure="1ms")
    web.take("cam", settle="0")
    web.get("/cameras/cam/still.png?settle=0")
    web.get("/cameras/cam/still.jpg?settle=0")
    with closing(MovingPictures(web, "/cameras/cam/stream.mjpg?fps=30&settle=0")) as stream:
        for _ in range(3):
            stream.next()
    found = metrics(web)
    assert found[P + "stills_total"].value(**{"for": "api"}) == 2
    assert found[P + "stills_total"].value(**{"for": "url"}) == 2
    assert found[P + "stills_total"].value(**{"for": "stream"}) >= 3
    assert found[P + "stream_frames_total"].value() >= 3
    assert found[P + "kept_stills"].value() == 4
    assert found[P + "kept_bytes"].value() == sum(still["bytes"] for still in web.get("/api/stills").json()["stills"])
    samples = found[P + "still_seconds"].samples
    counts = {step: samples[f"{P}still_seconds_count", (("step", step),)] for step in ("capture", "fetch", "encode")}
    assert counts["capture"] == counts["fetch"] >= 7 and counts["encode"] >= 4
    assert samples[f"{P}still_seconds_sum", (("step", "capture"),)] >= 0.5


def test_failures_are_counted_by_their_kind(hub, web):
    assert value(web, "failures_total", kind="no-such-camera") == 0
    web.post("/api/cameras/none/stills", {})
    web.get("/cameras/none/still.png")
    assert value(web, "failures_total", kind="no-such-camera") == 2
    hub.write_scenario(scenario("cam", camera={"exposure": EXPOSURE, "faults": {
        "MediaCapture.CapturePhotoToStreamAsync": {"message": "cold"}}}))
    wait_until(lambda: web.post("/api/cameras/cam/stills", {"settle": "0"}).status == 502, "the camera fails")
    assert value(web, "failures_total", kind="camera-failed") == 1
    hub.process.kill()
    hub.process.wait()
    assert web.post("/api/cameras/cam/stills", {}).status == 503
    wait_until(lambda: value(web, "hub_reachable") == 0, "the hub is away")
    assert value(web, "failures_total", kind="hub-away") == 1
    assert value(web, "cameras") == 0


def test_those_who_listen_and_watch_are_counted_while_they_do(web):
    with closing(Events(web)) as events, closing(MovingPictures(web, "/cameras/cam/stream.mjpg")) as stream:
        events.next()
        stream.next()
        assert (value(web, "event_listeners"), value(web, "stream_viewers")) == (1, 1)
    wait_until(lambda: (value(web, "event_listeners"), value(web, "stream_viewers")) == (0, 0), "they have gone")


def test_what_waits_is_counted(hub, web):
    hub.write_scenario(scenario("cam", camera={"exposure": EXPOSURE, "capture": {"delayMs": 3000}}))
    connections = [web.connect() for _ in range(3)]
    for connection in connections:
        connection.ask("GET", "/cameras/cam/still.png?settle=0")
    wait_until(lambda: value(web, "queue_length") == 3, "all wait")
    for connection in connections:
        assert connection.receive().status == 200
    wait_until(lambda: value(web, "queue_length") == 0, "none waits")
