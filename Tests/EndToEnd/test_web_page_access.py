"""The page: for every screen, by keys alone, and behind a token."""

import pytest
from harness.browser import NARROW, WIDE
from harness.named_cameras import named_cameras
from harness.scenario import EXPOSURE
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

NAMES = {"desk": "Desk Camera", "broken": "Broken Camera", "long": "A camera with a name that is rather long"}
TOKEN = "a-token-of-enough-characters"


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    broken = {"broken": {"exposure": EXPOSURE, "capture": {"outcome": "error"}}}
    return start_shared_hub(named_cameras(NAMES, (1280, 720), broken)).wait_for_cameras(*NAMES)


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network).wait_for_cameras(*NAMES)


@pytest.fixture
def closed_web(hub, start_web, tmp_path):
    (tmp_path / "token").write_text(TOKEN + "\n", encoding="ascii")
    return start_web(hub.network, "--token-file", tmp_path / "token")


def show_start(page):
    pass


def show_waiting(page):
    page.set_value("#stop", 9)
    page.take()  # only a change of the exposure takes the time to settle
    page.set_value("#settle", 5000)
    page.set_value("#stop", 3)
    page.click("#take")
    page.wait_for(lambda page: page.is_seen("#progress"), "the progress")


def show_still(page):
    page.take()
    page.click("#clipping-toggle")
    page.click("#crosshair-toggle")
    page.click("#copy-curl")


def show_bracket(page):
    page.click("#tab-bracket")
    for field in ("#bracket-from", "#bracket-to"):
        page.set_value(field, 15625)
    page.click("#take")
    page.wait_until_ready()


def show_timelapse(page):
    page.click("#tab-timelapse")


def show_comparison(page):
    page.take()
    page.take()
    for mark in page.all("#strip .mark")[:2]:
        mark.click()
    page.wait_for(lambda page: page.is_seen("#other"), "two pictures")


def show_live(page):
    page.click("#live")
    page.wait_for(lambda page: page.is_seen("#live-picture"), "a frame")


def show_error(page):
    page.expect("status of 50")
    page.choose("Broken Camera")
    page.click("#take")
    page.wait_for(lambda page: page.is_seen("#error"), "the error")


def show_keys(page):
    page.click("#show-keys")


SCENES = [show_start, show_waiting, show_still, show_bracket, show_timelapse, show_comparison, show_live, show_error,
          show_keys]


@pytest.mark.parametrize("dark", [False, True], ids=["light", "dark"])
@pytest.mark.parametrize("size", [WIDE, NARROW], ids=["wide", "narrow"])
@pytest.mark.parametrize("scene", SCENES, ids=lambda scene: scene.__name__.removeprefix("show_"))
def test_everybody_can_use_it(open_page, web, scene, size, dark):
    page = open_page(web, size=size, dark=dark).wait_until_ready()
    page.choose("Desk Camera")
    scene(page)
    assert page.findings() == []
    width, room = page.js("return [document.documentElement.scrollWidth, document.documentElement.clientWidth]")
    assert width <= room


def test_the_colours_are_those_of_the_scheme(open_page, web):
    def luminance(dark):
        page = open_page(web, dark=dark)
        ground = page.js("return getComputedStyle(document.body).backgroundColor")
        return sum(int(part) for part in ground.removeprefix("rgb(").removesuffix(")").split(","))

    assert luminance(dark=False) > 3 * 200 and luminance(dark=True) < 3 * 50


def test_a_wide_screen_holds_everything_without_scrolling(open_page, web):
    page = open_page(web).wait_until_ready()
    page.choose("Desk Camera")
    page.take()
    height, room = page.js("return [document.documentElement.scrollHeight, innerHeight]")
    assert height <= room
    stage = page.js("const box = document.getElementById('stage').getBoundingClientRect();"
                    "return box.width * box.height")
    assert stage > 0.4 * WIDE[0] * WIDE[1]


def focused(page):
    """The name of what has the focus; none where nothing has it."""
    return page.js("const one = document.activeElement; return one === document.body ? null"
                   " : one.id || one.className || one.innerText || one.tagName")


def walk(page, back=False):
    """What the tab key stops at, until it begins anew; each with an outline."""
    stops = []
    for _ in range(200):
        keys = ActionChains(page.driver)
        if back:
            keys.key_down(Keys.SHIFT).send_keys(Keys.TAB).key_up(Keys.SHIFT).perform()
        else:
            keys.send_keys(Keys.TAB).perform()
        name = focused(page)
        if name and page.js("return document.activeElement.dataset.isSeen"):
            return stops
        if name:
            stops.append(name)
            assert page.js("document.activeElement.dataset.isSeen = 'yes';"
                           "const style = getComputedStyle(document.activeElement);"
                           "return style.outlineStyle !== 'none' && parseFloat(style.outlineWidth) >= 2"), name
    raise AssertionError(f"caught at {name}: {stops}")


def test_the_tab_key_reaches_everything_in_both_directions_and_is_caught_nowhere(open_page, web):
    page = open_page(web).wait_until_ready()
    page.choose("Desk Camera")
    page.take()
    page.js("document.activeElement.blur()")
    there = walk(page)
    for name in ("skip", "show-keys", "live", "fit", "crosshair-toggle", "viewer", "frame", "mark", "tab-still",
                 "as-time", "stop", "settle", "take", "download", "copy-curl", "copy-command"):
        assert name in there
    assert there.count("camera") == len(NAMES)
    page.js("document.activeElement.blur();"
            "for (const one of document.querySelectorAll('[data-is-seen]')) delete one.dataset.isSeen")
    assert sorted(walk(page, back=True)) == sorted(there)


def test_a_bracket_is_taken_and_looked_at_by_keys_alone(open_page, web):
    page = open_page(web).wait_until_ready()
    page.js("document.querySelector('.camera').focus()")
    card = next(card for card in page.all(".camera") if "Desk" in card.text)
    while page.driver.switch_to.active_element != card:
        page.press(Keys.TAB)
    page.press(Keys.ENTER)
    page.js("document.getElementById('tab-still').focus()")
    page.press(Keys.ARROW_RIGHT)
    assert focused(page) == "tab-bracket" and page.is_seen("#pane-bracket") and not page.is_seen("#exposure")
    page.press(Keys.TAB)
    page.press("1/64 s")
    page.press(Keys.TAB)
    page.press("1/32 s")
    page.press(Keys.TAB)
    page.press(Keys.TAB)
    assert focused(page) == "take" and page.text("#take") == "Take 2 stills"
    page.press(Keys.ENTER)
    page.wait_for(lambda page: len(page.all("#series button")) == 2, "two stills")
    page.wait_until_ready()
    page.js("document.querySelector('#series button').focus()")
    page.press(Keys.ENTER)
    page.wait_for_new_still()
    assert "1/64 s" in page.text("#facts")


def test_nothing_moves_for_those_who_do_not_want_that(open_page, web):
    page = open_page(web, **{"prefers-reduced-motion": "reduce"}).wait_until_ready()
    assert page.js("return [...document.querySelectorAll('*')].every((one) => {"
                   "const style = getComputedStyle(one);"
                   "return style.transitionDuration === '0s' && style.animationName === 'none'; })")


def test_nothing_is_loaded_from_elsewhere(open_page, web):
    page = open_page(web).wait_until_ready()
    loaded = page.js("return performance.getEntriesByType('resource').map(({name}) => name)")
    assert len(loaded) > 20 and all(name.startswith(page.address + "/") for name in loaded)


@pytest.mark.parametrize("dark", [False, True], ids=["light", "dark"])
@pytest.mark.parametrize("size", [WIDE, NARROW], ids=["wide", "narrow"])
def test_everybody_can_sign_in(open_page, closed_web, size, dark):
    page = open_page(closed_web, "/login", size=size, dark=dark)
    assert page.findings() == []


def test_a_token_opens_the_page_until_one_signs_out(open_page, closed_web):
    page = open_page(closed_web)
    page.wait_for(lambda page: page.is_seen("#login"), "the page asks for the token")
    page.press("not that one" + Keys.ENTER)
    page.wait_for_text("#wrong", "That is not the token.")
    page.press(TOKEN + Keys.ENTER, "#token")
    page.wait_until_ready()
    page.choose("Desk Camera")
    page.take()
    assert page.driver.get_cookies()[0]["httpOnly"]
    page.click("#logout button")
    page.wait_for(lambda page: page.is_seen("#login"), "the page asks for the token")
    page.driver.get(page.address)
    page.wait_for(lambda page: page.is_seen("#login"), "it is closed again")


def test_without_a_token_there_is_no_signing_out(open_page, web):
    assert not open_page(web).wait_until_ready().is_seen("#logout")


def test_a_session_that_has_ended_leads_to_the_token(open_page, closed_web):
    page = open_page(closed_web, "/login")
    page.press(TOKEN + Keys.ENTER, "#token")
    page.wait_until_ready()
    page.expect("status of 401")
    page.driver.delete_all_cookies()
    page.click("#take")
    page.wait_for(lambda page: page.is_seen("#login"), "the page asks for the token")
