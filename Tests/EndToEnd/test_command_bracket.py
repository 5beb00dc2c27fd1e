"""camera-hub bracket"""

import json
import re

import pytest
from harness.command import fails_with, run
from harness.scenario import EXPOSURE, camera_group
from PIL import Image

STILLS = [(number, exposure) for number, exposure in enumerate(
    (976, 1953, 3906, 7812, 15625, 31250, 62500, 125000, 250000, 500000), 1)]


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    cameras = {"desk": {"exposure": EXPOSURE}, "fixed": {}}
    return start_shared_hub({"groups": [camera_group(uid, 640, 480) for uid in cameras], "cameras": cameras},
                            ).wait_for_cameras(*cameras)


def brightness(file):
    with Image.open(file) as picture:
        pixels = list(picture.convert("L").crop((0, 0, picture.width, picture.height * 3 // 4)).getdata())
    return sum(pixels) / len(pixels)


def test_there_is_one_still_a_stop_and_a_contact_sheet(hub, tmp_path):
    result = run(hub.network, "bracket", "-c", "desk", "--from", "1ms", "--to", "500ms", "-o", "new/stops",
                 folder=tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    files = sorted((tmp_path / "new/stops").iterdir())
    assert result.stdout.splitlines() == [f"new/stops/{file.name}" for file in files]
    ends = [re.fullmatch(r"desk_[^_]+Z_(.*)\.png", file.name)[1] for file in files]
    assert ends == [*(f"{number:02}_{exposure}us" for number, exposure in STILLS), "contact-sheet"]
    shades = [brightness(file) for file in files[:-1]]
    assert shades == sorted(shades) and len(set(shades)) > 5
    with Image.open(files[-1]) as sheet:
        assert sheet.size == (12 + 4 * 332, 12 + 3 * 282)
        cells = [sheet.convert("L").crop((12 + column * 332, 12 + row * 282, 332 * (column + 1), 12 + row * 282 + 180))
                 for row in range(3) for column in range(4)][:10]
        shades = [sum(cell.getdata()) for cell in cells]
    assert shades == sorted(shades) and len(set(shades)) > 5


def test_the_json_value_tells_each_still_and_the_sheet(hub, tmp_path):
    result = run(hub.network, "bracket", "-c", "desk", "--from", "1/64s", "--to", "1/16s", "--json", "-q",
                 folder=tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    value = json.loads(result.stdout)
    assert value.keys() == {"camera", "stills", "contactSheet"} and value["camera"] == "desk"
    assert [still["exposureInUs"] for still in value["stills"]] == [15625, 31250, 62500]
    assert sorted(path.name for path in tmp_path.iterdir()) == [
        *(still["file"] for still in value["stills"]), value["contactSheet"]]


def test_two_brackets_in_one_folder_leave_each_other_alone(hub, tmp_path):
    for _ in range(2):
        assert run(hub.network, "bracket", "-c", "desk", "--from", "1/64s", "--to", "1/64s",
                   folder=tmp_path).returncode == 0
    assert len(list(tmp_path.iterdir())) == 4


def test_a_range_that_is_none_is_told(hub, tmp_path):
    fails_with(2, "--from is the shorter exposure, --to the longer one: exchange them",
               run(hub.network, "bracket", "-c", "desk", "--from", "2ms", "--to", "1ms", folder=tmp_path))
    fails_with(2, "the camera has no exposure in that range; it has: 1/8192 s to 1 s",
               run(hub.network, "bracket", "-c", "desk", "--from", "2s", "--to", "4s", folder=tmp_path))
    fails_with(2, "the camera has no exposure in that range; it has: fixed",
               run(hub.network, "bracket", "-c", "fixed", "--from", "1ms", "--to", "4ms", folder=tmp_path))
    assert list(tmp_path.iterdir()) == []


def test_an_interrupted_bracket_keeps_whole_stills_and_makes_no_sheet(hub, start_command, tmp_path):
    command = start_command(hub.network, "bracket", "-c", "desk", "--from", "1ms", "--to", "1s", "--settle", "2s",
                            columns=80, folder=tmp_path)
    command.read_until("_01_976us.png")
    assert command.interrupt() == 130
    for file in tmp_path.iterdir():
        assert re.search(r"_\d\d_\d+us\.png$", file.name)
        with Image.open(file) as picture:
            picture.load()
