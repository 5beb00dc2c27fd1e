"""The page: the film strip, and two stills beside each other."""

import pytest
from harness.named_cameras import named_cameras
from selenium.webdriver.common.keys import Keys

NAMES = {"desk": "Desk Camera", "lab": "Lab Camera"}
SIZE = (320, 240)
EXPOSURES = {"3906us": "1/256 s", "15625us": "1/64 s", "62500us": "1/16 s"}


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(named_cameras(NAMES, SIZE)).wait_for_cameras(*NAMES)


@pytest.fixture
def web(hub, start_web):
    return start_web(hub.network, "--keep", "4").wait_for_cameras(*NAMES)


@pytest.fixture
def stills(web):
    """Those that were taken before the page was opened, newest first."""
    return [web.take("desk", exposure=exposure, settle="50ms") for exposure in EXPOSURES][::-1]


@pytest.fixture
def page(open_page, web, stills):
    page = open_page(web).wait_until_ready()
    page.wait_for(lambda page: len(frames(page)) == len(stills), "the strip is there")
    return page


def frames(page):
    """The ids of the stills in the strip."""
    return page.js("return [...document.querySelectorAll('#strip li')].map((frame) => frame.dataset.key)")


def open_frame(page, number):
    before = page.shown_still()
    page.all("#strip .frame")[number].click()
    return page.wait_for_new_still(before)


def test_the_latest_stills_are_there_from_the_start_newest_first(page, stills):
    assert frames(page) == [still["id"] for still in stills]
    assert page.texts("#strip .frame") == list(EXPOSURES.values())[::-1]
    assert not page.is_seen("#no-stills")


def test_stills_of_everybody_come_and_the_oldest_go(page, web, stills):
    more = [web.take("lab", settle="50ms") for _ in range(2)]
    kept = [still["id"] for still in [*more[::-1], *stills]][:4]
    page.wait_for(lambda page: frames(page) == kept, "the strip is that of the server")
    assert page.attribute("#strip .frame", "aria-label").startswith("Lab Camera, 1/16 s, ")


def test_without_stills_the_strip_says_what_it_is_for(open_page, hub, start_web):
    page = open_page(start_web(hub.network)).wait_until_ready()
    assert page.is_seen("#no-stills") and frames(page) == []


def test_a_still_of_the_strip_is_shown(page, stills):
    assert open_frame(page, 1) == stills[1]["id"]
    assert stills[1]["exposureText"] in page.text("#facts")
    assert [frame.get_attribute("aria-current") for frame in page.all("#strip .frame")] == ["false", "true", "false"]


def test_brackets_go_along_the_strip(page, stills):
    seen = []
    for key in "]]]]][":
        page.press(key, "body")
        page.wait_for(lambda page: page.attribute("#about", "data-still") == page.shown_still(), "the still")
        seen.append(page.js("return document.querySelector('.frame[aria-current=true]').parentElement.dataset.key"))
    newest, middle, oldest = [still["id"] for still in stills]
    assert seen == [newest, middle, oldest, oldest, oldest, middle]


def test_a_still_that_is_shown_stays_when_the_server_drops_it(page, web, stills, browser):
    shown = open_frame(page, 2)
    for _ in range(3):
        web.take("lab", settle="50ms")
    page.wait_for(lambda page: shown not in frames(page), "it is not kept any more")
    assert page.shown_still() == shown == stills[2]["id"]
    page.click("#download")
    assert browser.saved_file(stills[2]["fileName"]).stat().st_size == stills[2]["bytes"]


def compare(page, first, second):
    marks = page.all("#strip .mark")
    marks[first].click()
    marks[second].click()
    page.wait_for(lambda page: page.is_seen("#other"), "two pictures")


def share_of_second(page):
    """Of the picture's width, by what is cut off."""
    cut = page.js("return document.getElementById('other').style.clipPath")
    return 100 - float(cut.removeprefix("inset(0px 0px 0px ").removesuffix("%)"))


def pixels(page, canvas):
    return page.js("const canvas = document.getElementById(arguments[0]);"
                   "return [...canvas.getContext('2d').getImageData(0, 0, canvas.width, 40).data]", canvas)


def test_two_stills_are_compared(page, stills):
    assert page.find("button[data-mode=compare]").get_attribute("disabled")
    compare(page, 0, 2)
    assert page.texts("#strip .mark") == ["A", "", "B"]
    assert page.text("#compare-a").startswith("1/16 s") and page.text("#compare-b").startswith("1/256 s")
    assert page.shown_still() == stills[0]["id"]
    assert sum(pixels(page, "picture")) > sum(pixels(page, "other"))
    assert share_of_second(page) == 50


@pytest.mark.parametrize("keys, share", [(Keys.ARROW_RIGHT * 3, 47), (Keys.ARROW_LEFT, 51), (Keys.HOME, 100),
                                         (Keys.END, 0)])
def test_the_divider_is_moved_by_keys(page, keys, share):
    compare(page, 0, 1)
    page.press(keys, "#split")
    assert share_of_second(page) == share
    left, width = page.js("const box = document.getElementById('picture').getBoundingClientRect();"
                          "return [box.left, box.width]")
    divider = page.js("const box = document.getElementById('divider').getBoundingClientRect();"
                      "return box.left + box.width / 2")
    assert divider == pytest.approx(left + width * (100 - share) / 100, abs=1)


def test_a_third_still_takes_the_place_of_the_second(page, stills):
    compare(page, 0, 1)
    page.all("#strip .mark")[2].click()
    page.wait_for_text("#compare-b", "1/256 s")
    assert page.texts("#strip .mark") == ["A", "", "B"]


def test_the_comparison_ends_when_a_mark_is_taken_away(page):
    open_frame(page, 1)
    compare(page, 0, 2)
    page.all("#strip .mark")[0].click()
    page.wait_for(lambda page: not page.is_seen("#split"), "one still again")
    assert page.texts("#strip .mark") == ["", "", "A"]
    assert page.is_seen("#picture") and not page.is_seen("#other")
