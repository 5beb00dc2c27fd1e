"""Moving pictures of a camera."""

import io

import pytest
from harness.journal import begins
from harness.openapi import check_answer
from harness.scenario import scenario
from harness.wait import wait_until
from harness.web_streams import MovingPictures, closing
from PIL import Image

STREAM = "/cameras/cam/stream.mjpg"


def stills_begun(hub):
    return [call["t"] for call in begins(hub.journal(), "MediaCapture.CapturePhotoToStreamAsync")]


@pytest.fixture
def hub(start_hub):
    return start_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture
def web(hub, start_web):
    return start_web(hub.network)


def test_it_is_one_jpeg_after_the_other_each_of_a_still_of_its_own(web):
    with closing(MovingPictures(web, f"{STREAM}?fps=30&settle=0")) as stream:
        check_answer("watchCamera", stream.head)
        assert stream.head.header("Content-Type") == "multipart/x-mixed-replace; boundary=frame"
        pictures = [stream.next() for _ in range(5)]
    assert len({picture.still for picture in pictures}) == 5
    for picture in pictures:
        with Image.open(io.BytesIO(picture.jpeg)) as image:
            image.load()
            assert (image.format, image.size) == ("JPEG", (64, 48))


def test_they_are_not_among_the_kept_stills(web):
    with closing(MovingPictures(web, f"{STREAM}?fps=30&settle=0")) as stream:
        picture = stream.next()
    assert web.get("/api/stills").json() == {"stills": []}
    assert web.get(f"/api/stills/{picture.still}.png").kind == "not-found"


def test_width_and_exposure_are_as_asked_for(hub, web):
    with closing(MovingPictures(web, f"{STREAM}?fps=30&settle=0&width=16&quality=100&exposure=1s")) as stream:
        with Image.open(io.BytesIO(stream.next().jpeg)) as image:
            assert image.size == (16, 12)
            bright = sum(image.convert("L").getdata())
    with closing(MovingPictures(web, f"{STREAM}?fps=30&settle=0&width=16&quality=100&exposure=1ms")) as stream:
        with Image.open(io.BytesIO(stream.next().jpeg)) as image:
            assert sum(image.convert("L").getdata()) < bright / 4


@pytest.mark.parametrize("query", [
    "fps=0", "fps=0.09", "fps=30.1", "fps=-1", "fps=", "fps", "fps=a", "fps=nan", "fps=inf", "fps=2,5",
    "width=15", "quality=0", "exposure=1", "x=1", "settle=-1ms", "percent=101", "exposure=1ms&percent=1",
    "download", "ticket=a",
])
def test_a_query_that_is_not_as_described_is_refused(web, query):
    problem = check_answer("watchCamera", web.get(f"{STREAM}?{query}"))
    assert problem.kind == "invalid-request"
    assert query.partition("=")[0] in problem.json()["detail"]


@pytest.mark.parametrize("fps", [0.5, 2])
def test_there_are_no_more_pictures_in_a_second_than_asked_for(hub, web, fps):
    query = "" if fps == 2 else f"&fps={fps}"
    with closing(MovingPictures(web, f"{STREAM}?settle=0{query}")) as stream:
        for _ in range(5):
            stream.next()
    begun = stills_begun(hub)[:5]
    assert begun[-1] - begun[0] >= 0.9 * 4 / fps - 1 / fps  # one may come late and the next in time


def test_a_faster_stream_has_its_pictures_sooner(hub, web):
    for fps in (1, 30):
        with closing(MovingPictures(web, f"{STREAM}?settle=0&fps={fps}")) as stream:
            for _ in range(6):
                stream.next()
        if fps == 1:
            slow = stills_begun(hub)
    fast = stills_begun(hub)[len(slow):]
    assert fast[5] - fast[0] < slow[5] - slow[0]


def test_those_who_watch_the_same_share_its_stills(hub, web):
    address = f"{STREAM}?fps=5&settle=0"
    with closing(MovingPictures(web, address)) as one, closing(MovingPictures(web, address)) as other:
        seen = [[stream.next().still for _ in range(6)] for stream in (one, other)]
        common = set(seen[0]) & set(seen[1])
        begun = len(stills_begun(hub))
    assert len(common) >= 4  # the second may come in later, and the newest goes ahead
    assert begun <= len(set(seen[0]) | set(seen[1])) + 6  # what came while they were read one after the other


def test_nothing_is_taken_when_nobody_watches_any_more(hub, web):
    with closing(MovingPictures(web, f"{STREAM}?fps=30&settle=0")) as stream:
        stream.next()
    wait_until(lambda: web.get("/metrics").body.count(b"camera_hub_web_stream_viewers 0\n") == 1, "nobody watches")
    wait_until(lambda: web.queue() == [], "nothing is asked for")
    before = len(stills_begun(hub))
    web.take("cam", exposure="2ms", settle="1s")
    assert len(stills_begun(hub)) == before + 1


def test_a_still_can_be_taken_while_somebody_watches(web):
    with closing(MovingPictures(web, f"{STREAM}?fps=30&settle=0")) as stream:
        shown = {stream.next().still}
        stills = [web.take("cam", settle="0", exposure="1ms") for _ in range(3)]
        shown |= {stream.next().still for _ in range(3)}
    assert [still["exposureUs"] for still in stills] == [976] * 3
    assert not shown & {still["id"] for still in stills}


def test_it_goes_on_when_the_hub_is_back(hub, web):
    with closing(MovingPictures(web, f"{STREAM}?fps=30&settle=0")) as stream:
        stream.next()
        hub.process.kill()
        hub.process.wait()
        wait_until(lambda: web.get("/healthz").status == 503, "the hub is away")
        hub.wait_for_the_next_run_name()
        hub.start()
        begun = len(stills_begun(hub))
        wait_until(lambda: stream.next() and len(stills_begun(hub)) > begun, "pictures of the new hub")


def test_it_goes_on_when_the_camera_is_back(hub, web):
    with closing(MovingPictures(web, f"{STREAM}?fps=30&settle=0")) as stream:
        stream.next()
        hub.write_scenario(scenario())
        web.wait_for_cameras()
        begun = len(stills_begun(hub))
        hub.write_scenario(scenario("cam"))
        web.wait_for_cameras("cam")
        wait_until(lambda: stream.next() and len(stills_begun(hub)) > begun, "pictures of the camera that is back")
