"""The page: cameras, and a hub or a server that goes and comes."""

import pytest
from harness.named_cameras import named_cameras

ODD = "\\\\?\\usb#vid_1&x/a b%41+ä"
NAMES = {"desk": "Desk Camera", ODD: "Halden Lab 4"}
NEUTRAL = "15625us"


def cameras(*uids):
    return named_cameras({uid: NAMES.get(uid, uid) for uid in uids})


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(cameras(*NAMES))


@pytest.fixture
def web(hub, start_web):
    hub.write_scenario(cameras(*NAMES))
    hub.wait_for_cameras(*NAMES)
    return start_web(hub.network).wait_for_cameras(*NAMES)


@pytest.fixture
def page(open_page, web):
    return open_page(web).wait_until_ready()


def names(page):
    return page.texts(".camera .name")


def chosen(page):
    return page.texts(".camera[aria-current=true] .name")


def test_each_camera_has_a_card_with_its_name_and_size(page, web):
    listed = web.get("/api/cameras").json()["cameras"]
    assert names(page) == [camera["name"] for camera in listed]
    assert page.text("#camera-count") == "2"
    for text, camera in zip(page.texts(".camera .minor"), listed):
        assert text.replace("\xa0", " ") == f"320 × 240 · {camera['exposureRange']}"
    assert chosen(page) == names(page)[:1]


def test_looking_at_cameras_takes_no_still(page, hub, web):
    page.choose(names(page)[1])
    assert not any(call["call"] == "MediaCapture.CapturePhotoToStreamAsync" for call in hub.journal())
    assert web.get("/api/stills").json() == {"stills": []}
    assert page.all(".camera .thumb img") == []
    assert len(page.all(".camera .thumb svg")) == 2


def test_a_card_shows_the_latest_kept_still_of_its_camera(page, web):
    web.take("desk", exposure=NEUTRAL)
    latest = web.take("desk", exposure=NEUTRAL)
    page.wait_for(lambda page: latest["id"] in (page.attribute(".camera .thumb img", "src") or ""), "its thumbnail")
    page.wait_for(lambda page: page.js("return document.querySelector('.thumb img').naturalWidth"), "its pixels")
    assert len(page.all(".camera .thumb img")) == 1


def test_cameras_come_and_go_without_a_reload(page, hub):
    page.js("window.isTheSamePage = true")
    hub.write_scenario(cameras("desk"))
    page.wait_for(lambda page: len(names(page)) == 1, "one camera has gone")
    assert "has gone" in page.js("return document.getElementById('camera-news').textContent")
    hub.write_scenario(cameras("desk", "new one", ODD))
    page.wait_for(lambda page: len(names(page)) == 3, "two cameras have come")
    assert "is plugged in" in page.js("return document.getElementById('camera-news').textContent")
    hub.write_scenario(cameras())
    page.wait_for(lambda page: page.is_seen("#no-cameras"), "the list is empty")
    assert page.all(".camera") == []
    assert page.js("return window.isTheSamePage")


def test_a_chosen_camera_that_has_gone_is_chosen_again_when_it_is_back(page, hub):
    page.choose("Halden Lab 4")
    hub.write_scenario(cameras("desk"))
    page.wait_for(lambda page: not page.is_ready(), "nothing can be taken with it")
    assert chosen(page) == []
    page.wait_for_text("#none-text", "The camera has gone")
    hub.write_scenario(cameras(*NAMES))
    page.wait_until_ready()
    assert chosen(page) == [name for name in names(page) if "Halden" in name]


def test_the_focus_stays_on_a_card_while_others_go(page, hub):
    page.choose("Halden Lab 4")
    hub.write_scenario(cameras(ODD))
    page.wait_for(lambda page: len(names(page)) == 1, "the other camera has gone")
    assert "Halden" in page.driver.switch_to.active_element.text


def test_a_camera_of_any_uid_can_be_used(page, web):
    page.choose("Halden Lab 4")
    still = page.take()
    assert web.get("/api/stills").json()["stills"][0]["id"] == still
    assert web.get("/api/stills").json()["stills"][0]["uid"] == ODD


def test_a_hub_that_ends_is_told_at_once_and_its_return_too(page, hub):
    page.js("window.isTheSamePage = true")
    hub.process.kill()
    hub.process.wait()
    banner = page.wait_for(lambda page: page.is_seen("#banner") and page.text("#banner"), "the banner")
    assert banner.startswith("The hub is away.") and banner.endswith("The page goes on by itself once it is back.")
    assert page.text("#hub") == "Hub away" and not page.is_ready()
    hub.wait_for_the_next_run_name()
    hub.start()
    page.wait_for(lambda page: not page.is_seen("#banner"), "the banner goes")
    assert page.text("#hub") == "Hub 2.9"
    page.wait_until_ready().take()
    assert page.js("return window.isTheSamePage")


def test_a_server_that_ends_is_told_and_its_return_too(page, hub, web, start_web):
    page.expect("net::ERR_")
    page.js("window.isTheSamePage = true")
    web.end()
    page.wait_for_text("#banner", "This page has lost its server.")
    assert page.text("#hub") == "Server lost" and not page.is_ready()
    start_web(hub.network, "--listen", f"127.0.0.1:{web.port}")
    page.wait_for(lambda page: not page.is_seen("#banner"), "the banner goes")
    page.wait_until_ready().take()
    assert page.js("return window.isTheSamePage")


def test_pages_in_many_tabs_leave_connections_for_one_another(page):
    driver, first = page.driver, page.driver.current_window_handle
    try:
        for _ in range(8):  # a browser has six for a server
            driver.switch_to.new_window("tab")
            driver.get(page.address)
            page.wait_until_ready()
        page.take()
    finally:
        for tab in driver.window_handles:
            if tab != first:
                driver.switch_to.window(tab)
                driver.close()
        driver.switch_to.window(first)
    page.take()
