"""From the scene to the client's PNG file."""

import io
import os
import random

import pytest
from harness.scenario import EXPOSURE, camera_group
from PIL import Image, ImageFilter

NEUTRAL_US = 15625  # 2^-6 s: the neutral exposure of a simulated camera, unless its scenario says otherwise


def make_photograph(size):
    """What makes a photograph hard for codecs: soft gradients, edges, colour noise. The same in every run."""
    noise = random.Random(f"photograph {size}")
    picture = Image.radial_gradient("L").resize(size)
    picture = Image.merge("RGB", (picture, picture.transpose(Image.Transpose.FLIP_LEFT_RIGHT), picture.rotate(180)))
    for _ in range(40):
        box = sorted(noise.sample(range(size[0]), 2)), sorted(noise.sample(range(size[1]), 2))
        colour = tuple(noise.randrange(256) for _ in range(3))
        picture.paste(colour, (box[0][0], box[1][0], box[0][1], box[1][1]))
    picture = picture.filter(ImageFilter.GaussianBlur(1))
    grain = Image.frombytes("RGB", (640, 480), noise.randbytes(640 * 480 * 3)).resize(size)
    return Image.blend(picture, grain, 0.1)


def photographs():
    """Two sizes of each format, one of more than 12 megapixels, and those of the environment variable
    HUB_PHOTOGRAPHS: files, separated by colons."""
    made = [("PNG", (1280, 960)), ("PNG", (4200, 3000)), ("JPEG", (1600, 1063)), ("JPEG", (4608, 3456))]
    given = [name for name in os.environ.get("HUB_PHOTOGRAPHS", "").split(":") if name]
    return made + [(name, None) for name in given]


@pytest.mark.parametrize("source, size", photographs(), ids=lambda value: str(value).replace(", ", "x"))
def test_a_photograph_comes_out_to_the_last_bit_at_the_neutral_exposure(start_hub, tmp_path, source, size):
    if size:
        file = tmp_path / f"scene.{source.lower()}"
        make_photograph(size).save(file, source, **({"quality": 92} if source == "JPEG" else {"compress_level": 1}))
    else:
        file = source
    scene = Image.open(file).convert("RGB")
    camera = {"exposure": EXPOSURE, "capture": {"picture": str(file)}}
    group = camera_group("cam", *scene.size)
    hub = start_hub({"groups": [group], "cameras": {"cam": camera}}).wait_for_cameras("cam")
    result = hub.rpc().capture_in_time("cam", exposureInUs=NEUTRAL_US)
    assert result["exposureInUs"] == NEUTRAL_US
    still = Image.open(io.BytesIO(hub.image(result["resid"])))
    assert (still.format, still.mode, still.size) == ("PNG", "RGB", scene.size)
    assert still.tobytes() == scene.tobytes()


@pytest.fixture(scope="module")
def chart_hub(start_shared_hub):
    return start_shared_hub({
        "groups": [camera_group("cam", 640, 480), camera_group("fixed", 320, 240)],
        "cameras": {"cam": {"exposure": EXPOSURE}},
    }).wait_for_cameras("cam", "fixed")


def brightness(hub, client, exposure_in_us):
    resid = client.capture("cam", exposureInUs=exposure_in_us)["resid"]
    histogram = Image.open(io.BytesIO(hub.image(resid))).convert("L").histogram()
    return sum(value * count for value, count in enumerate(histogram)) / sum(histogram)


def test_the_picture_becomes_brighter_with_the_exposure(chart_hub):
    client = chart_hub.rpc()
    values = [brightness(chart_hub, client, us) for us in (244, 976, 3906, 15625, 62500)]
    assert all(brighter > 1.2 * darker for darker, brighter in zip(values, values[1:]))


@pytest.mark.parametrize("uid, size", [("cam", (640, 480)), ("fixed", (320, 240))])
def test_the_test_chart_has_the_size_of_the_format_and_many_colours(chart_hub, uid, size):
    resid = chart_hub.rpc().capture(uid, exposureInUs=NEUTRAL_US)["resid"]
    chart = Image.open(io.BytesIO(chart_hub.image(resid)))
    assert chart.size == size
    assert len(chart.getcolors(maxcolors=size[0] * size[1])) > 50


def test_automatic_exposure_settles_at_the_neutral_one(start_hub, tmp_path):
    scene = make_photograph((320, 240))
    scene.save(tmp_path / "scene.png")
    camera = {
        "exposure": EXPOSURE | {"value": -12},
        "capture": {"picture": str(tmp_path / "scene.png"), "neutralExposure": -5},
    }
    hub = start_hub({"groups": [camera_group("cam", *scene.size)], "cameras": {"cam": camera}}).wait_for_cameras("cam")
    # A negative exposure comes to no number at all, which the camera refuses: what it has settled at stays.
    resid = hub.rpc().capture("cam", exposureInUs=-1)["resid"]
    assert Image.open(io.BytesIO(hub.image(resid))).tobytes() == scene.tobytes()
