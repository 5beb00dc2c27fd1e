"""The page: exposures, and stills that are taken one at a time."""

import pytest
from harness.named_cameras import named_cameras
from harness.rpc import TIMED_OUT
from harness.scenario import EXPOSURE
from harness.web import part
from selenium.webdriver.common.keys import Keys

NAMES = {"desk": "Desk Camera", "broken": "Broken Camera", "fixed": "Fixed Camera", "latched": "Latched Camera",
         "rested": "Rested Camera"}
HARDWARE = {
    "broken": {"exposure": EXPOSURE, "capture": {"outcome": "error"}},
    "fixed": {},
    "latched": {"exposure": EXPOSURE | {"latch": -7}},
}
STOPS = 14


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(named_cameras(NAMES, hardware=HARDWARE)).wait_for_cameras(*NAMES)


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network).wait_for_cameras(*NAMES)


@pytest.fixture
def page(open_page, web):
    page = open_page(web).wait_until_ready()
    page.choose("Desk Camera")
    return page


def latest(web):
    return web.get("/api/stills").json()["stills"][0]


def last_still(page, text):
    page.wait_for_text("#in-force", text)


@pytest.mark.parametrize("how", ["click", "Enter", "space", "t", "t elsewhere"])
def test_a_still_is_taken_by_the_button_and_by_its_key(page, web, how):
    if how == "click":
        page.click("#take")
    elif how == "t elsewhere":
        page.press("t", "#stop")
    else:
        page.js("document.getElementById('take').focus()")
        page.press({"Enter": Keys.ENTER, "space": Keys.SPACE}.get(how, how))
    still = page.wait_for_new_still()
    assert latest(web)["id"] == still
    page.wait_until_ready()
    if how != "t elsewhere":
        assert page.driver.switch_to.active_element.get_attribute("id") == "take"


def test_what_is_typed_into_a_field_is_no_key(page, web):
    before = web.get("/api/stills").json()["stills"]
    page.press("tl", "#settle")
    assert page.is_ready() and not page.is_seen("#progress") and page.attribute("#live", "aria-pressed") == "false"
    assert web.get("/api/stills").json()["stills"] == before


def test_single_keys_can_be_switched_off(page, open_page, web):
    page.click("#show-keys")
    page.click("#single-keys")
    page.press(Keys.ESCAPE)
    page.wait_for(lambda page: not page.is_seen("#keys"), "the dialog closes")
    page.driver.refresh()
    page.wait_until_ready()
    page.press("l", "body")
    assert page.attribute("#live", "aria-pressed") == "false"
    page.click("#show-keys")
    page.click("#single-keys")
    page.click("#keys button")
    page.press("l", "body")
    page.wait_for(lambda page: page.attribute("#live", "aria-pressed") == "true", "the key works again")


def test_the_slider_has_the_whole_stops_of_the_camera(page, web):
    stops = next(camera for camera in web.get("/api/cameras").json()["cameras"] if camera["uid"] == "desk")["stops"]
    assert len(stops) == STOPS
    page.js("document.getElementById('stop').focus()")
    page.press(Keys.HOME)
    shown = [(page.text("#exposure-value"), page.text("#exposure-us"))]
    for _ in stops[1:]:
        page.press(Keys.ARROW_RIGHT)
        shown.append((page.text("#exposure-value"), page.text("#exposure-us")))
    digits = [(text, us.replace("\u202f", "")) for text, us in shown]
    assert digits == [(stop["text"], f"{stop['us']} µs") for stop in stops]
    assert page.attribute("#stop", "aria-valuetext").startswith(stops[-1]["text"])


def test_a_still_is_taken_with_the_stop_of_the_slider(page, web):
    page.set_value("#stop", 5)
    text = page.text("#exposure-value")
    page.take()
    assert text == "1/256 s"
    assert latest(web)["asked"] == {"exposureUs": 3906} and latest(web)["exposureUs"] == 3906
    last_still(page, "1/256 s (3.906 ms), as asked")


def test_what_is_in_force_is_told_beside_what_was_asked(page, web):
    page.choose("Latched Camera")
    page.set_value("#stop", STOPS - 1)
    page.take()
    assert latest(web)["exposureUs"] == 7812
    last_still(page, "1/128 s (7.812 ms) in force, 1 s asked")


def test_per_cent_are_the_other_way(page, web):
    page.click("#as-percent")
    assert not page.is_seen("#stop")
    page.set_value("#percent", 25)
    assert (page.text("#exposure-value"), page.text("#exposure-us")) == ("25 %", "about 250 ms")
    page.take()
    assert latest(web)["asked"] == {"percent": 25} and latest(web)["exposureUs"] == 250000
    last_still(page, "1/4 s (250 ms) in force, 25 % asked")
    page.click("#as-time")
    assert page.is_seen("#stop") and not page.is_seen("#percent")


def test_each_camera_keeps_its_own_exposure(page):
    page.set_value("#stop", 3)
    chosen = page.text("#exposure-value")
    page.choose("Latched Camera")
    assert page.text("#exposure-value") != chosen
    page.choose("Desk Camera")
    assert page.text("#exposure-value") == chosen


def test_a_camera_of_one_exposure_says_so_and_is_taken_with_it(page, web):
    page.choose("Fixed Camera")
    assert page.is_seen("#exposure-fixed") and not page.is_seen("#stop") and not page.is_seen("#percent")
    assert page.text("#exposure-value") == "fixed"
    page.take()
    assert latest(web)["uid"] == "fixed"


def test_the_settle_time_is_what_the_hub_waits(page, web):
    page.take()
    page.set_value("#settle", 3000)
    page.set_value("#stop", 2)
    page.take()
    assert latest(web)["durations"]["captureMs"] >= 3000


def test_the_page_tells_what_is_being_waited_for(page):
    page.choose("Rested Camera")
    page.click("#take")
    page.wait_for_text("#progress-text", "Opening the camera: its automatic controls settle, two seconds")
    page.wait_for(lambda page: float(page.text("#progress-time").removesuffix(" s")) >= 1, "a second has passed")
    page.wait_for_new_still()
    page.set_value("#settle", 1500)
    page.set_value("#stop", 1)
    page.click("#take")
    page.wait_for_text("#progress-text", "Taking the still")
    page.wait_until_ready()
    assert not page.is_seen("#progress")


def test_who_comes_behind_others_sees_the_place_in_the_queue(page, web):
    page.take()
    with web.connection() as other:
        body = b'{"exposure": "122us", "settle": "4s"}'
        other.ask("POST", f"/api/cameras/{part('desk')}/stills", {"Content-Type": "application/json"}, body)
        page.wait_for(lambda page: web.queue(), "the other still is being taken")
        page.click("#take")
        page.wait_for_text("#progress-text", "In the queue: 1 still comes before it")
        assert other.receive().status == 201
    page.wait_until_ready()
    assert latest(web)["id"] == page.wait_for_new_still()


def test_a_still_that_waits_can_be_given_up(page, web):
    page.take()
    before = web.get("/api/stills").json()["stills"]
    with web.connection() as other:
        body = b'{"exposure": "122us", "settle": "4s"}'
        other.ask("POST", f"/api/cameras/{part('desk')}/stills", {"Content-Type": "application/json"}, body)
        page.wait_for(lambda page: web.queue(), "the other still is being taken")
        page.click("#take")
        page.wait_for_text("#progress-text", "In the queue")
        page.click("#cancel")
        page.wait_until_ready()
        assert page.driver.switch_to.active_element.get_attribute("id") == "take"
        page.wait_for(lambda page: len(web.queue()) <= 1, "nobody waits for it any more")
        other.receive()
    page.wait_for(lambda page: not web.queue(), "the queue is empty")
    assert len(web.get("/api/stills").json()["stills"]) == len(before) + 1
    assert not page.is_seen("#error")


def test_a_camera_that_fails_is_told_with_what_to_do(page, web):
    page.expect("status of 502")
    page.choose("Broken Camera")
    page.click("#take")
    page.wait_for(lambda page: page.is_seen("#error"), "the error")
    problem = web.post("/api/cameras/broken/stills", {}).json()
    for member in ("title", "detail", "advice"):
        assert problem[member] in page.text("#error")
    assert TIMED_OUT not in page.text("#error")
    page.click("#error button")
    assert not page.is_seen("#error") and page.is_ready()


def test_an_error_goes_when_the_next_still_is_taken(page):
    page.expect("status of 502")
    page.choose("Broken Camera")
    page.click("#take")
    page.wait_for(lambda page: page.is_seen("#error"), "the error")
    page.choose("Desk Camera")
    page.wait_until_ready().take()
    assert not page.is_seen("#error")
