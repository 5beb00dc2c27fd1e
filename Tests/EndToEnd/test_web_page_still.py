"""The page: a still, down to its pixels."""

import io
import random
import shlex
import subprocess

import pytest
from harness.command import COMMAND
from harness.named_cameras import named_cameras
from harness.scenario import EXPOSURE
from harness.wait import PATIENCE
from PIL import Image
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

SIZE = (320, 240)
NAMES = {"desk": "Desk Camera", "odd $(uid)'s": "It's odd"}
NEUTRAL = 7  # the stop at which the scene is shown as it is
BRIGHT, DARK = 400, 1000  # pixels of the scene


def make_scene(file):
    """Of colours that differ from pixel to pixel; some at the upper end, some black."""
    source = random.Random(3)
    pixels = [tuple(source.randint(20, 220) for _ in range(3)) for _ in range(SIZE[0] * SIZE[1])]
    pixels[:BRIGHT] = [(255, 100, 100)] * BRIGHT
    pixels[BRIGHT:BRIGHT + DARK] = [(0, 0, 0)] * DARK
    image = Image.new("RGB", SIZE)
    image.putdata(pixels)
    image.save(file)


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    camera = {"exposure": EXPOSURE, "capture": {"picture": "scene.png"}}
    hub = start_shared_hub(named_cameras(NAMES, SIZE, dict.fromkeys(NAMES, camera)), start=False)
    make_scene(hub.folder / "scene.png")
    return hub.start().wait_for_cameras(*NAMES)


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network).wait_for_cameras(*NAMES)


@pytest.fixture(scope="module")
def scene(hub):
    with Image.open(hub.folder / "scene.png") as image:
        return image.convert("RGB")


@pytest.fixture
def page(open_page, web):
    page = open_page(web).wait_until_ready()
    page.choose("Desk Camera")
    page.set_value("#stop", NEUTRAL)
    page.take()
    return page


def box(page, selector):
    """Its left, top, width and height on the screen."""
    return page.js("const box = document.querySelector(arguments[0]).getBoundingClientRect();"
                   "return [box.left, box.top, box.width, box.height]", selector)


def zoom(page):
    """Screen pixels for a pixel of the still, as it is drawn and as it is told."""
    drawn = box(page, "#picture")[2] / SIZE[0]
    assert page.text("#zoom") == f"{round(drawn * 100)} %"
    return drawn


def point_at(page, x, y):
    """Moves the pointer over the middle of a pixel of the still."""
    left, top, width, _ = box(page, "#picture")
    viewer_left, viewer_top, viewer_width, viewer_height = box(page, "#viewer")
    scale = width / SIZE[0]
    dx = left + (x + 0.5) * scale - viewer_left - viewer_width / 2
    dy = top + (y + 0.5) * scale - viewer_top - viewer_height / 2
    ActionChains(page.driver).move_to_element_with_offset(page.find("#viewer"), round(dx), round(dy)).perform()


def pixel_text(scene, x, y):
    r, g, b = scene.getpixel((x, y))
    return f"x {x}  y {y}  R {r}  G {g}  B {b}"


def test_a_still_is_fitted_at_first_and_drawn_to_the_last_pixel(page, scene):
    left, top, width, height = box(page, "#picture")
    room = box(page, "#viewer")
    assert min(room[2] - width, room[3] - height) == pytest.approx(0, abs=1)
    assert left >= room[0] - 1 and top >= room[1] - 1 and width / height == pytest.approx(SIZE[0] / SIZE[1])
    drawn = page.js("const canvas = document.getElementById('picture');"
                    "return [...canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data]")
    assert bytes(drawn) == scene.convert("RGBA").tobytes()


@pytest.mark.parametrize("closer, farther, fit, one", [("#zoom-in", "#zoom-out", "#fit", "#one-to-one"),
                                                       ("+", "-", "0", "1")], ids=["buttons", "keys"])
def test_zooming_goes_in_steps_to_single_pixels_and_back(page, closer, farther, fit, one):
    act = page.click if closer.startswith("#") else lambda key: page.press(key, "#viewer")
    fitted = zoom(page)
    act(one)
    assert zoom(page) == 1
    seen = [1]
    for _ in range(12):
        act(closer)
        seen.append(zoom(page))
    assert seen == sorted(seen) and seen[-1] == 64
    act(farther)
    assert zoom(page) == 48
    act(fit)
    assert zoom(page) == pytest.approx(fitted)


def test_pixels_are_squares_above_their_own_size(page):
    page.click("#one-to-one")
    rendering = "return getComputedStyle(document.getElementById('picture')).imageRendering"
    assert page.js(rendering) == "auto"
    page.click("#zoom-in")
    assert page.js(rendering) == "pixelated"


def test_the_wheel_zooms_about_the_pointer(page, scene):
    page.click("#one-to-one")
    point_at(page, 30, 200)
    before = zoom(page)
    page.js("const [left, top, width] = (({left, top, width}) => [left, top, width])("
            "document.getElementById('picture').getBoundingClientRect());"
            "document.getElementById('viewer').dispatchEvent(new WheelEvent('wheel', {deltaY: -800, cancelable: true,"
            "clientX: left + 30.5 * width / 320, clientY: top + 200.5 * width / 320}))")
    assert zoom(page) == pytest.approx(before * 4.95, rel=0.01)
    point_at(page, 30, 200)
    assert page.text("#pixel").split() == pixel_text(scene, 30, 200).split()


def test_the_picture_is_moved_by_dragging_and_by_arrow_keys_but_not_beyond_its_edges(page):
    page.click("#one-to-one")
    for _ in range(4):
        page.click("#zoom-in")
    before = box(page, "#picture")
    ActionChains(page.driver).move_to_element(page.find("#viewer")).click_and_hold().move_by_offset(
        -50, -30).release().perform()
    dragged = box(page, "#picture")
    assert (dragged[0] - before[0], dragged[1] - before[1]) == (-50, -30)
    page.press(Keys.ARROW_LEFT + Keys.ARROW_UP, "#viewer")
    moved = box(page, "#picture")
    assert moved[0] > dragged[0] and moved[1] > dragged[1]
    page.press(Keys.ARROW_LEFT * 60 + Keys.ARROW_UP * 60, "#viewer")
    assert box(page, "#picture")[:2] == box(page, "#viewer")[:2]


def test_the_pixel_under_the_pointer_is_told(page, scene):
    for x, y in ((0, 0), (319, 239), (100, 50)):
        point_at(page, x, y)
        page.wait_for(lambda page, x=x, y=y: page.text("#pixel").split() == pixel_text(scene, x, y).split(),
                      f"the pixel {x}, {y}")
    ActionChains(page.driver).move_to_element(page.find("#take")).perform()
    assert page.text("#pixel") == ""


def test_the_crosshair_is_moved_by_keys_pixel_by_pixel(page, scene):
    def said():
        return page.js("return document.getElementById('pixel-said').textContent").split()

    page.press("c", "body")
    assert page.attribute("#crosshair-toggle", "aria-pressed") == "true" and page.is_seen("#crosshair")
    assert said() == pixel_text(scene, 160, 120).split()
    page.press(Keys.ARROW_RIGHT + Keys.ARROW_DOWN)
    assert said() == pixel_text(scene, 161, 121).split()
    ActionChains(page.driver).key_down(Keys.SHIFT).send_keys(Keys.ARROW_LEFT).key_up(Keys.SHIFT).perform()
    assert said() == pixel_text(scene, 151, 121).split()
    for _ in range(9):
        page.press("+")
    page.press(Keys.ARROW_UP * 130)
    assert said() == pixel_text(scene, 151, 0).split()
    mark, room = box(page, "#crosshair"), box(page, "#viewer")
    assert room[1] - 1 <= mark[1] and mark[1] + mark[3] <= room[1] + room[3]
    page.press("c")
    assert not page.is_seen("#crosshair")


def test_the_histogram_tells_what_is_clipped(page, scene):
    count = SIZE[0] * SIZE[1]
    assert page.text("#histogram-text").split("\n") == [f"too dark {DARK / count * 100:.1f} %",
                                                        f"too bright {BRIGHT / count * 100:.1f} %"]
    assert f"{DARK / count * 100:.1f} % too dark" in page.attribute("#histogram", "aria-label")
    columns = page.js(
        "const canvas = document.getElementById('histogram'); const {width, height} = canvas;"
        "const data = canvas.getContext('2d').getImageData(0, 0, width, height).data; const columns = [];"
        "for (let x = 0; x < width; x += 2) { let filled = 0;"
        "for (let y = 0; y < height; ++y) filled += data[4 * (y * width + x) + 3] > 0; columns.push(filled); }"
        "return columns")
    counts = scene.histogram()
    there = [any(counts[channel * 256 + value] for channel in range(3)) for value in range(256)]
    assert [filled > 0 for filled in columns] == there


@pytest.mark.parametrize("how", ["button", "key"])
def test_what_is_clipped_is_marked_on_demand(page, how):
    toggle = (lambda: page.click("#clipping-toggle")) if how == "button" else (lambda: page.press("h", "body"))
    assert not page.is_seen("#clipped")
    toggle()
    assert page.is_seen("#clipped")
    marks = page.js("const canvas = document.getElementById('clipped');"
                    "return [...canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data]")
    marked = [index for index, alpha in enumerate(marks[3::4]) if alpha]
    assert marked == list(range(BRIGHT + DARK))
    assert len({tuple(marks[4 * index:4 * index + 3]) for index in marked}) == 2
    toggle()
    assert not page.is_seen("#clipped")


def test_the_file_is_downloaded_under_its_name(page, web, browser):
    still = web.get("/api/stills").json()["stills"][0]
    page.click("#download")
    assert browser.saved_file(still["fileName"]).read_bytes() == web.get(still["png"]).body


def copied(page, button):
    """What the button has put into the clipboard."""
    page.browser.devtools("Browser.grantPermissions", origin=page.address,
                          permissions=["clipboardReadWrite", "clipboardSanitizedWrite"])
    page.click(button)
    page.wait_for_text("#copied", "Copied:")
    text = page.driver.execute_async_script("navigator.clipboard.readText().then(arguments[0])")
    assert text in page.text("#copied").replace("\n", " ")
    return text


@pytest.mark.parametrize("exposure", ["time", "percent"])
@pytest.mark.parametrize("button, first", [("#copy-curl", "curl"), ("#copy-command", "camera-hub")])
def test_the_copied_command_takes_such_a_still_again(page, hub, web, tmp_path, button, first, exposure):
    page.choose("It's odd")
    page.set_value("#settle", 300)
    page.set_value("#stop", 4)
    if exposure == "percent":
        page.click("#as-percent")
        page.set_value("#percent", 25)
    page.take()
    still = web.get("/api/stills").json()["stills"][0]
    command = copied(page, button)
    assert shlex.split(command)[0] == first
    result = hub.network.run(subprocess.run, ["sh", "-c", command.replace("camera-hub ", f"{COMMAND} ", 1)],
                             cwd=tmp_path, capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert result.returncode == 0, result.stderr
    (file,) = tmp_path.iterdir()
    assert file.name == still["fileName"]
    with Image.open(file) as again:
        assert again.convert("RGB").tobytes() == page_picture(web, still)


def page_picture(web, still):
    with Image.open(io.BytesIO(web.get(still["png"]).body)) as image:
        return image.convert("RGB").tobytes()


def test_without_a_clipboard_the_command_can_be_copied_by_hand(page):
    page.js("navigator.clipboard.writeText = () => Promise.reject(new Error('refused'));"
            "document.execCommand = () => false")
    page.click("#copy-curl")
    assert page.wait_for_text("#copied", "To be copied by hand").split("\n")[-1].startswith("curl --fail -o ")


def test_a_still_of_the_same_size_keeps_the_place_and_zoom(page):
    page.click("#one-to-one")
    for _ in range(5):
        page.click("#zoom-in")
    page.press(Keys.ARROW_RIGHT + Keys.ARROW_DOWN, "#viewer")
    before = box(page, "#picture")
    page.take()
    assert box(page, "#picture") == before
