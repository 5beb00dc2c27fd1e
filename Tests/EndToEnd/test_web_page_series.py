"""The page: brackets, time-lapses, and the files of all their stills."""

import io
import zipfile

import pytest
from harness.named_cameras import named_cameras
from PIL import Image

NAMES = {"desk": "Desk Camera", "fixed": "Fixed Camera"}
SIZE = (320, 240)


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(named_cameras(NAMES, SIZE, {"fixed": {}})).wait_for_cameras(*NAMES)


@pytest.fixture
def web(hub, start_web):
    # Fewer stills than a series has.
    return start_web(hub.network, "--keep", "2").wait_for_cameras(*NAMES)


@pytest.fixture
def page(open_page, web):
    page = open_page(web).wait_until_ready()
    page.choose("Desk Camera")
    page.set_value("#settle", 50)
    return page


def choose_stops(page, first, last):
    for field, text in (("#bracket-from", first), ("#bracket-to", last)):
        page.js("const [field, text] = arguments; const list = document.querySelector(field);"
                "list.selectedIndex = [...list.options].findIndex((option) => option.text === text);"
                "list.dispatchEvent(new Event('change', {bubbles: true}))", field, text)


def cells(page):
    return page.texts("#series strong")


def saved(page, browser, ending):
    """The ZIP file that the button gives: its files by name, in their order."""
    before = set(browser.downloads.iterdir())
    page.click("#zip")
    (file,) = page.wait_for(lambda _: {path for path in browser.downloads.iterdir() if path.suffix == ".zip"} - before,
                            "the download")
    assert file.name.endswith(ending)
    with zipfile.ZipFile(file) as archive:
        assert archive.testzip() is None
        assert all(entry.compress_type == zipfile.ZIP_STORED for entry in archive.infolist())
        return {entry.filename: archive.read(entry) for entry in archive.infolist()}


def brightness(file):
    with Image.open(io.BytesIO(file)) as image:
        assert (image.format, image.size) == ("PNG", SIZE)
        pixels = image.convert("L").crop((0, 0, SIZE[0], SIZE[1] * 3 // 4)).getdata()
    return sum(pixels) / len(pixels)


def test_a_bracket_has_one_still_a_stop_with_its_exposure(page, web):
    page.click("#tab-bracket")
    choose_stops(page, "1/128 s", "1/16 s")
    assert page.text("#take") == "Take 4 stills"
    page.click("#take")
    page.wait_until_ready()
    assert cells(page) == ["1/128 s", "1/64 s", "1/32 s", "1/16 s"]
    assert page.text("#series-title").startswith("Bracket of Desk Camera · 4 stills · ")
    assert page.js("return [...document.querySelectorAll('#series img')].every((image) => image.naturalWidth > 0)")
    assert len(web.get("/api/stills").json()["stills"]) == 2


def test_the_ends_of_a_bracket_may_be_chosen_in_either_order(page):
    page.click("#tab-bracket")
    choose_stops(page, "1/16 s", "1/64 s")
    assert page.text("#take") == "Take 3 stills"
    choose_stops(page, "1/16 s", "1/16 s")
    assert page.text("#take") == "Take 1 still"


def test_all_stills_of_a_bracket_are_in_its_file_also_those_that_the_server_does_not_keep(page, browser, web):
    page.click("#tab-bracket")
    choose_stops(page, "1/512 s", "1/32 s")
    page.click("#take")
    page.wait_until_ready()
    files = saved(page, browser, "_bracket.zip")
    ends = ["_01_1953us.png", "_02_3906us.png", "_03_7812us.png", "_04_15625us.png", "_05_31250us.png"]
    assert [name[-len(end):] for name, end in zip(files, ends, strict=True)] == ends
    shades = [brightness(file) for file in files.values()]
    assert shades == sorted(shades) and len(set(shades)) == 5
    kept = web.get("/api/stills").json()["stills"]
    assert [web.get(still["png"]).body for still in reversed(kept)] == list(files.values())[-2:]


def test_a_bracket_tells_how_far_it_is_and_can_be_cancelled(page):
    page.set_value("#settle", 1500)
    page.click("#tab-bracket")
    choose_stops(page, "1/8192 s", "1 s")
    page.click("#take")
    page.wait_for_text("#progress-text", "Still 2 of 14, 1/4096 s")
    assert page.js("const bar = document.getElementById('progress-bar'); return [bar.value, bar.max]") == [1, 14]
    assert not page.is_ready()
    page.click("#cancel")
    page.wait_until_ready()
    assert cells(page) == ["1/8192 s"] and not page.is_seen("#error") and not page.is_seen("#progress")


def test_a_camera_of_one_exposure_has_no_bracket(page):
    page.choose("Fixed Camera")
    page.click("#tab-bracket")
    assert not page.is_ready() and page.text("#take") == "The exposure is fixed"


def test_a_still_of_the_sheet_is_opened_by_a_click(page):
    page.click("#tab-bracket")
    choose_stops(page, "1/32 s", "1/16 s")
    page.click("#take")
    page.wait_until_ready()
    page.all("#series button")[1].click()
    page.wait_for_new_still()
    assert "1/16 s" in page.text("#facts")
    page.click("button[data-mode=series]")
    assert cells(page) == ["1/32 s", "1/16 s"]


def start_lapse(page, every, count):
    page.click("#tab-timelapse")
    page.set_value("#lapse-every", every)
    page.set_value("#lapse-count", count)
    page.click("#take")


def test_a_timelapse_has_so_many_stills_of_the_exposure_chosen(page, browser):
    page.set_value("#stop", 4)
    start_lapse(page, 0.5, 4)
    page.wait_until_ready()
    assert cells(page) == ["1/512 s"] * 4
    assert page.text("#series-title").startswith("Time-lapse of Desk Camera · 4 stills · ")
    files = saved(page, browser, "_timelapse.zip")
    assert len(files) == 4 and list(files) == sorted(files)
    assert len({brightness(file) for file in files.values()}) == 1


def taken_at(page):
    return page.js("return fetch('/api/stills').then((answer) => answer.json())"
                   ".then(({stills}) => stills.map(({takenAt}) => Date.parse(takenAt)))")


def test_a_timelapse_waits_from_the_beginning_of_one_still_to_that_of_the_next(page):
    page.take()  # the camera is open from then on
    start_lapse(page, 3, 2)
    page.wait_for_text("#progress-text", "1 of 2 taken, waiting for the next")
    page.wait_until_ready()
    second, first = taken_at(page)
    assert second - first > 1500


def test_a_timelapse_can_be_stopped_while_it_waits(page):
    start_lapse(page, 3600, 5)
    page.wait_for_text("#progress-text", "1 of 5 taken, waiting for the next")
    page.click("#cancel")
    page.wait_until_ready()
    assert len(cells(page)) == 1 and not page.is_seen("#error")


@pytest.mark.parametrize("every, count", [("", 3), (-1, 3), (1, 0), (1, ""), (1, 1.5), (1, 10000)])
def test_a_timelapse_that_is_none_cannot_be_started(page, every, count):
    page.click("#tab-timelapse")
    page.set_value("#lapse-every", every)
    page.set_value("#lapse-count", count)
    assert not page.is_ready()
    page.set_value("#lapse-every", 0)
    page.set_value("#lapse-count", 1)
    assert page.is_ready()


def test_a_still_that_fails_leaves_a_gap_in_a_timelapse(page, hub):
    page.expect("status of 50", "status of 404")
    start_lapse(page, 1, 8)
    page.wait_for(lambda page: len(cells(page)) >= 1, "the first still")
    hub.write_scenario(named_cameras({"fixed": "Fixed Camera"}, SIZE, {"fixed": {}}))
    page.wait_for_text("#series-title", "failed")
    assert page.is_seen("#error")
    hub.write_scenario(named_cameras(NAMES, SIZE, {"fixed": {}}))
    page.wait_until_ready()
    assert 1 <= len(cells(page)) < 8
