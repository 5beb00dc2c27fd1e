"""The page: the live view."""

import pytest
from harness.named_cameras import named_cameras
from harness.wait import wait_until

NAMES = {"desk": "Desk Camera", "lab": "Lab Camera"}
SIZE = (320, 240)


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(named_cameras(NAMES, SIZE)).wait_for_cameras(*NAMES)


@pytest.fixture
def web(hub, start_web):
    return start_web(hub.network).wait_for_cameras(*NAMES)


@pytest.fixture
def page(open_page, web):
    page = open_page(web).wait_until_ready()
    page.choose("Desk Camera")
    return page


def captures(hub, uid):
    name = "MediaCapture.CapturePhotoToStreamAsync"
    return sum(call["call"] == name and call["device"] == uid and "ended" not in call for call in hub.journal())


def goes_on(hub, uid="desk"):
    before = captures(hub, uid)
    wait_until(lambda: captures(hub, uid) >= before + 2, "more frames")


def has_stopped(hub, web, uid="desk"):
    """Of a view that goes on, one frame would be under way within any second."""
    wait_until(lambda: not web.queue(), "nothing is being taken")
    before = captures(hub, uid)
    web.take("lab" if uid == "desk" else "desk", settle="2s", exposure="122us")
    web.take("lab" if uid == "desk" else "desk", settle="2s", exposure="1s")
    return captures(hub, uid) == before


def is_live(page):
    """Whether a frame is to be seen."""
    return page.is_seen("#live-picture") and page.js("return document.getElementById('live-picture').naturalWidth")


def start(page):
    page.click("#live")
    page.wait_for(is_live, "a frame")


def test_it_starts_by_its_button_and_not_before(page, hub, web):
    assert captures(hub, "desk") == 0 and not page.is_seen("#live-picture")
    page.click("#live")
    page.wait_for_text("#live-state", "Waiting for the first frame")
    page.wait_for(is_live, "a frame")
    assert page.attribute("#live", "aria-pressed") == "true"
    assert "Desk Camera" in page.attribute("#live-picture", "alt")
    goes_on(hub)
    assert web.get("/api/stills").json() == {"stills": []}


@pytest.mark.parametrize("how", ["button", "key", "still"])
def test_it_stops_by_hand(page, hub, web, how):
    start(page)
    if how == "button":
        page.click("#live")
    elif how == "key":
        page.press("l", "body")
    else:
        page.click("#take")
        page.wait_for_new_still()
    assert not page.is_seen("#live-picture")
    assert has_stopped(hub, web)


def test_it_stops_when_another_camera_is_chosen(page, hub, web):
    start(page)
    page.choose("Lab Camera")
    assert not page.is_seen("#live-picture") and page.attribute("#live", "aria-pressed") == "false"
    assert has_stopped(hub, web)


def test_it_stops_while_the_page_is_not_seen_and_goes_on_behind_that(page, hub, web):
    start(page)
    driver, here = page.driver, page.driver.current_window_handle
    driver.switch_to.new_window("tab")
    try:
        assert has_stopped(hub, web)
    finally:
        driver.close()
        driver.switch_to.window(here)
    page.wait_for(is_live, "a frame")
    goes_on(hub)


def address(page):
    return page.attribute("#live-picture", "src") or ""


@pytest.mark.parametrize("rate", ["0.5", "1", "2", "5"])
def test_its_rate_can_be_chosen(page, hub, rate):
    page.set_value("#fps", rate)
    start(page)
    assert f"fps={rate}&" in address(page)


def test_it_follows_the_exposure_and_the_rate(page, hub):
    start(page)
    page.set_value("#stop", 5)
    page.wait_for(lambda page: "exposure=3906us" in address(page) and is_live(page), "the new exposure")
    page.set_value("#fps", "5")
    page.wait_for(lambda page: "fps=5&" in address(page) and is_live(page), "the new rate")
    page.click("#as-percent")
    page.set_value("#percent", 10)
    page.wait_for(lambda page: "percent=10&" in address(page) and is_live(page), "the new per cent")
    goes_on(hub)


def test_no_more_is_sent_than_the_screen_shows(page):
    room = page.js("return document.getElementById('stage').clientWidth")
    assert room > SIZE[0]
    start(page)
    assert "width=" not in address(page)
    assert page.js("return document.getElementById('live-picture').naturalWidth") == SIZE[0]


def test_it_pauses_while_the_camera_has_gone_and_goes_on_by_itself(page, hub):
    page.expect("stream.mjpg")
    start(page)
    hub.write_scenario(named_cameras({"lab": "Lab Camera"}, SIZE))
    page.wait_for_text("#live-state", "Paused: the camera has gone")
    assert not page.is_seen("#live-picture")
    hub.write_scenario(named_cameras(NAMES, SIZE))
    page.wait_for(is_live, "a frame")
    goes_on(hub)


def test_it_pauses_while_the_hub_is_away_and_goes_on_by_itself(page, hub):
    page.expect("stream.mjpg")
    start(page)
    hub.process.kill()
    hub.process.wait()
    page.wait_for_text("#live-state", "Paused: the hub is away")
    hub.wait_for_the_next_run_name()
    hub.start()
    page.wait_for(is_live, "a frame")
    goes_on(hub)
