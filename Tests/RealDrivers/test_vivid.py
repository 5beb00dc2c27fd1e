"""On the kernel's driver of virtual cameras: two like webcams, whose largest size is slow here and is only looked
at, and two like a capture card, 720x576. Of each pair one has the single-planar interface, one the multi-planar."""

import subprocess
from pathlib import Path

import pytest
from guest import modules
from guest.cameras import wait_for_cameras
from guest.usb_camera import PROGRAM
from guest.video_node import VIDEO_CAPTURE, VIDEO_CAPTURE_MPLANE, VideoNode, capture_nodes
from harness.hub import SERVICE_LOGGER, LogEntry
from harness.wait import wait_until
from PIL import Image

DRIVER = Path("/sys/bus/platform/drivers/vivid")
CAMERAS = 4
WEBCAM, S_VIDEO = 0, 2

# 75 % colour bars from left to right.
BARS = [(191, 191, 191), (191, 191, 0), (0, 191, 191), (0, 191, 0), (191, 0, 191), (191, 0, 0), (0, 0, 191), (0, 0, 0)]
TOLERANCE = 12  # of 255: chroma between two pixels, limited range, the mosaic's interpolation
# The capture card's colours are of another colour space with somewhat other primaries.
OTHER_PRIMARIES = 60

BUFFER_TYPES = {"single-planar": VIDEO_CAPTURE, "multi-planar": VIDEO_CAPTURE_MPLANE}


@pytest.fixture(scope="module", autouse=True)
def vivid():
    inputs = [WEBCAM, WEBCAM, S_VIDEO, S_VIDEO]
    modules.load("vivid", f"n_devs={CAMERAS}", "multiplanar=1,2,1,2", "node_types=1,1,1,1", "num_inputs=1,1,1,1",
                 "input_types=" + ",".join(map(str, inputs)), "ccs_cap_mode=0,0,0,0")
    hide_texts()
    yield
    modules.remove("vivid")


def hide_texts():
    for path in capture_nodes():
        with VideoNode(path) as node:
            node.set("OSD Text Mode", 2)


def bars_of(picture):
    """The colour in the middle of each bar."""
    width, height = picture.size
    colours = []
    for bar in range(len(BARS)):
        x, y = width * (2 * bar + 1) // (2 * len(BARS)), height // 2
        pixels = picture.crop((x - 4, y - 4, x + 4, y + 4)).getdata()
        colours.append(tuple(round(sum(pixel[channel] for pixel in pixels) / len(pixels)) for channel in range(3)))
    return colours


def farthest(colours, expected):
    return max(abs(a - b) for got, wanted in zip(colours, expected) for a, b in zip(got, wanted))


def cards(cameras):
    """The capture cards: single-planar, multi-planar."""
    return [camera for camera in cameras if (camera["resolutionX"], camera["resolutionY"]) == (720, 576)]


def take(hub, client, uid):
    return hub.picture(client.capture(uid, exposureInUs=20000, exposureChangeDelayInMs=0))


def open_card(hub):
    """A client that has taken a picture with the first capture card, and the card's uid."""
    client = hub.rpc()
    uid = cards(client.discover())[0]["uid"]
    take(hub, client, uid)
    return client, uid


def assert_shows_bars(picture):
    colours = bars_of(picture)
    assert farthest(colours, BARS) <= OTHER_PRIMARIES, colours


@pytest.fixture
def hub(start_hub):
    hub = start_hub()
    wait_for_cameras(hub, CAMERAS)
    return hub


def test_cameras_of_both_interfaces_are_found(hub):
    cameras = hub.rpc().discover()
    assert len({camera["uid"] for camera in cameras}) == CAMERAS
    assert [(c["resolutionX"], c["resolutionY"]) for c in cameras] == [(3840, 2160)] * 2 + [(720, 576)] * 2
    assert [camera["model"] for camera in cameras] == [f"vivid-{number:03}-vid-cap" for number in range(CAMERAS)]


@pytest.mark.parametrize("which", [0, 1], ids=BUFFER_TYPES)
def test_a_still_shows_the_colour_bars(hub, which):
    client = hub.rpc()
    card = cards(client.discover())[which]
    result = client.capture(card["uid"], exposureInUs=20000, exposureChangeDelayInMs=0)
    picture = hub.picture(result)
    assert picture.size == (720, 576)
    colours = bars_of(picture)
    assert farthest(colours, BARS) <= OTHER_PRIMARIES, colours
    assert farthest([colours[0], colours[-1]], [BARS[0], BARS[-1]]) <= TOLERANCE, colours


def test_cameras_that_are_unbound_disappear_and_come_back_the_same(hub):
    client = hub.rpc()
    before = client.discover()
    uid = cards(before)[0]["uid"]
    assert take(hub, client, uid).size == (720, 576)
    (DRIVER / "unbind").write_text("vivid.0")
    try:
        hub.wait_for_cameras()
        assert client.capture(uid, exposureInUs=20000)["message"] == "Camera Disconnected"
    finally:
        (DRIVER / "bind").write_text("vivid.0")
    hide_texts()
    assert wait_for_cameras(hub, CAMERAS) == before
    assert_shows_bars(take(hub, client, uid))


@pytest.mark.parametrize(
    "fault, value",
    [
        ("Inject V4L2_BUF_FLAG_ERROR", 1),
        ("Inject VIDIOC_QBUF Error", 1),
        ("Inject Fatal Streaming Error", 1),
        ("Percentage of Dropped Buffers", 50),
    ],
)
def test_a_fault_of_the_stream_of_an_open_camera_does_not_show_in_a_capture(hub, fault, value):
    client, uid = open_card(hub)
    with VideoNode(capture_nodes()[2]) as node:
        node.set(fault, value)
        picture = take(hub, client, uid)
        if value > 1:
            node.set(fault, 0)
    assert_shows_bars(picture)


def test_a_stream_that_cannot_be_started_again_at_once_is_tried_anew(hub):
    client, uid = open_card(hub)
    with VideoNode(capture_nodes()[2]) as node:
        node.set("Inject VIDIOC_STREAMON Error", 1)
        node.set("Inject Fatal Streaming Error", 1)
    assert_shows_bars(take(hub, client, uid))


def test_a_camera_whose_driver_lets_it_go_fails_the_capture_and_works_again_when_opened_anew(hub):
    client, uid = open_card(hub)
    with VideoNode(capture_nodes()[2]) as node:
        node.set("Disconnect", 1)  # for as long as somebody has the node open
    reply = client.request("camera:capture", to=uid, exposureInUs=20000, exposureChangeDelayInMs=0)
    assert "(the camera has been unplugged)" in reply["error"]["message"]
    client.close()
    assert_shows_bars(take(hub, hub.rpc(), uid))


BUSY_TEXT = "VIDIOC_S_FMT on {}: Device or resource busy (the camera is in use by another program)"
BUSY = BUSY_TEXT + " -2147024726"


@pytest.mark.parametrize("which", [0, 1], ids=BUFFER_TYPES)
def test_a_camera_in_use_by_another_program_is_left_out_and_the_log_says_why(start_hub, which):
    path = capture_nodes()[2 + which]
    with VideoNode(path) as node:
        node.occupy(list(BUFFER_TYPES.values())[which])
        hub = start_hub()
        client = hub.rpc()
        wait_until(lambda: len(client.discover()) == CAMERAS - 1, "the other cameras")
        hub.wait_for_log("ERROR", SERVICE_LOGGER, BUSY.format(path))
        assert len(cards(client.discover())) == 1


@pytest.mark.parametrize("which", [0, 1], ids=BUFFER_TYPES)
def test_a_camera_taken_by_another_program_since_ends_the_hub_and_the_log_says_why(hub, which):
    """There is no guard around opening a camera, on purpose."""
    path = capture_nodes()[2 + which]
    client = hub.rpc()
    uid = cards(client.discover())[which]["uid"]
    with VideoNode(path) as node:
        node.occupy(list(BUFFER_TYPES.values())[which])
        client.send(f'{{"id":1,"method":"camera:capture","params":{{"to":"{uid}","exposureInUs":1000}}}}')
        assert client.rest() == b""
        hub.wait_for_end()
    assert LogEntry("ERROR", SERVICE_LOGGER, BUSY.format(path)) in hub.log()
    (record,) = hub.crash_records()
    assert f"{path}: the capture is closed: {BUSY_TEXT.format(path)}" in record.splitlines()[0]


@pytest.fixture(scope="module")
def stills(vivid, tmp_path_factory):
    """Of each webcam a still in each format, by the format's name."""
    folder = tmp_path_factory.mktemp("stills")
    subprocess.run([PROGRAM.with_name("EveryFormat"), "320", "180", folder], check=True)
    cameras = sorted(path for path in folder.iterdir() if any(path.iterdir()))
    return [{still.stem: Image.open(still) for still in camera.iterdir()} for camera in cameras]


YUV = ["YUYV", "UYVY", "YVYU", "VYUY", "NV12", "NV21", "YU12", "YV12", "NV16"]
SEPARATE_PLANES = ["NM12", "NM21", "YM12", "YM21", "NM16"]
RGB = ["RGB3", "BGR3", "RGB4", "BGR4", "BX24", "XR24", "BA24", "AR24", "XB24", "RX24", "AB24", "RA24"]
BAYER = ["BA81", "GBRG", "GRBG", "RGGB", "BG10", "GB10", "BA10", "RG10"]
SINGLE = YUV + RGB + BAYER


@pytest.mark.parametrize(
    "which, name",
    [(0, name) for name in SINGLE] + [(1, name) for name in SINGLE + SEPARATE_PLANES],
    ids=lambda value: list(BUFFER_TYPES)[value] if isinstance(value, int) else value,
)
def test_the_colour_bars_are_right_in_the_format(stills, which, name):
    colours = bars_of(stills[which][name].convert("RGB"))
    assert farthest(colours, BARS) <= TOLERANCE, colours


@pytest.mark.parametrize("which", [0, 1], ids=BUFFER_TYPES)
def test_grey_frames_show_the_brightness_of_the_colour_bars(stills, which):
    """The driver makes it as BT.709 does, in the full range."""
    colours = bars_of(stills[which]["GREY"].convert("RGB"))
    greys = [(round(0.2126 * r + 0.7152 * g + 0.0722 * b),) * 3 for r, g, b in BARS]
    assert farthest(colours, greys) <= TOLERANCE, colours
