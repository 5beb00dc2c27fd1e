"""camera-hub capture"""

import io
import json
import re
import subprocess
import time

import pytest
from harness.command import COMMAND, fails_with, run
from harness.journal import begins
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.wait import PATIENCE
from PIL import Image

FILE_NAME = re.compile(r"(.+)_\d{4}-\d\d-\d\dT\d\d-\d\d-\d\d\.\d{3}Z\.png")
SHOWN_END = re.compile(r"too bright: [\d.< ]+%, too dark: [\d.< ]+%\n")


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    cameras = {
        "desk": {"exposure": EXPOSURE},
        "fixed": {},
        "lost": {"faults": {"MediaCapture.CapturePhotoToStreamAsync": {"message": "Device lost", "code": 5}}},
        "empty": {"capture": {"outcome": "error"}},
    }
    desk = camera_group("desk", 640, 360)
    desk["sources"][0]["device"]["properties"] = {"System.Devices.DeviceInstanceId": "node"}
    return start_shared_hub({
        "groups": [desk, *(camera_group(uid) for uid in list(cameras)[1:])],
        "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "Halden"}}],
        "cameras": cameras,
    }).wait_for_cameras(*cameras)


def size_of(file):
    with Image.open(file) as picture:
        return picture.size


def test_a_still_gets_a_name_of_camera_and_time(hub, tmp_path):
    result = run(hub.network, "capture", "-c", "desk", "-e", "15625us", folder=tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    (file,) = tmp_path.iterdir()
    assert result.stdout == f"{file.name}\n" and FILE_NAME.fullmatch(file.name)
    assert size_of(file) == (640, 360)


def test_a_still_goes_to_the_file_that_was_named_and_takes_its_place(hub, tmp_path):
    (tmp_path / "a.png").write_text("old")
    result = run(hub.network, "capture", "-e", "15625us", "-o", "a.png", folder=tmp_path)
    assert (result.returncode, result.stdout, result.stderr) == (0, "a.png\n", "")
    assert [file.name for file in tmp_path.iterdir()] == ["a.png"]
    assert size_of(tmp_path / "a.png") == (640, 360)


@pytest.mark.parametrize("folder", ["there", "new/"])
def test_in_a_folder_a_still_gets_a_name_of_its_own(hub, tmp_path, folder):
    (tmp_path / "there").mkdir()
    result = run(hub.network, "capture", "-c", "desk", "-e", "1/64s", "-o", folder, folder=tmp_path)
    (file,) = (tmp_path / folder).iterdir()
    assert FILE_NAME.fullmatch(file.name)
    assert (result.returncode, result.stdout) == (0, f"{folder.rstrip('/')}/{file.name}\n")


def test_standard_output_gets_the_picture_and_nothing_else(hub, tmp_path):
    result = run(hub.network, "capture", "-o", "-", folder=tmp_path, text=False)
    assert result.returncode == 0
    assert Image.open(io.BytesIO(result.stdout)).size == (640, 360)
    assert result.stdout.endswith(b"IEND\xaeB`\x82") and list(tmp_path.iterdir()) == []


@pytest.mark.parametrize("arguments, note", [
    (["-e", "20ms"], "exposure in force: 1/64 s (15.625 ms), asked for: 1/50 s (20 ms)\n"),
    (["-e", "1/64s"], ""),
    (["-e", "1/1024s"], ""),
    (["-p", "50"], "exposure in force: 1/2 s (500 ms)\n"),
    ([], "exposure in force: 1/16 s (62.5 ms)\n"),
    (["-e", "20ms", "-q"], ""),
])
def test_the_exposure_in_force_is_told_when_it_is_not_the_one_asked_for(hub, tmp_path, arguments, note):
    result = run(hub.network, "capture", "-c", "desk", "-o", "a.png", *arguments, folder=tmp_path)
    assert (result.returncode, result.stdout, result.stderr) == (0, "a.png\n", note)


def test_an_exposure_that_could_not_be_set_is_told(hub, tmp_path):
    result = run(hub.network, "capture", "-c", "fixed", "-o", "a.png", folder=tmp_path)
    assert (result.returncode, result.stderr) == (
        0, "the exposure could not be set or read back; the still has the one that the camera had\n")


def test_the_settle_time_is_waited_by_the_hub(hub, tmp_path):
    # One at another exposure first, so that there is a change.
    run(hub.network, "capture", "-c", "desk", "-e", "1ms", "--settle", "0", "-o", "a.png", folder=tmp_path)
    hold = hub.rpc()  # keeps the camera open
    hold.capture("desk", exposureInUs=976)
    start = time.monotonic()
    result = run(hub.network, "capture", "-c", "desk", "-e", "1/4s", "--settle", "3s", "-o", "a.png", folder=tmp_path)
    assert result.returncode == 0 and time.monotonic() - start >= 3


def test_several_stills_stand_in_a_folder_in_the_order_of_their_times(hub, tmp_path):
    start = time.monotonic()
    result = run(hub.network, "capture", "-c", "desk", "-e", "1/64s", "-n", "3", "--every", "1500ms", "-o",
                 "new/stills", folder=tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    assert time.monotonic() - start >= 3
    files = sorted((tmp_path / "new/stills").iterdir())
    assert len(files) == 3 and result.stdout.splitlines() == [f"new/stills/{file.name}" for file in files]


def test_several_stills_keep_the_camera_open(start_hub, tmp_path):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    since = len(hub.journal())
    assert run(hub.network, "capture", "-n", "3", folder=tmp_path).returncode == 0
    assert len(begins(hub.journal()[since:], "MediaCapture.InitializeAsync")) == 1


def test_the_json_value_tells_each_still(hub, tmp_path):
    result = run(hub.network, "capture", "-c", "desk", "-e", "20ms", "-n", "2", "--json", "-q", "-o", "out",
                 folder=tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    value = json.loads(result.stdout)
    assert value.keys() == {"camera", "stills"} and value["camera"] == "desk"
    files = sorted((tmp_path / "out").iterdir())
    assert [still["file"] for still in value["stills"]] == [f"out/{file.name}" for file in files]
    still = value["stills"][0]
    assert still.keys() == {"file", "exposureInUs", "width", "height", "tooBright", "tooDark", "wasTakenTwice"}
    assert (still["exposureInUs"], still["width"], still["height"], still["wasTakenTwice"]) == (15625, 640, 360, False)
    with Image.open(tmp_path / still["file"]) as picture:
        pixels = list(picture.convert("RGB").getdata())
    assert still["tooBright"] == pytest.approx(sum(max(pixel) == 255 for pixel in pixels) / len(pixels))
    assert still["tooDark"] == pytest.approx(sum(max(pixel) == 0 for pixel in pixels) / len(pixels))
    result = run(hub.network, "capture", "-c", "fixed", "--json", "-q", "-o", "a.png", folder=tmp_path)
    assert json.loads(result.stdout)["stills"][0]["exposureInUs"] is None


@pytest.mark.parametrize("columns", [80, 200])
def test_a_picture_that_is_shown_fits_into_the_terminal(hub, start_command, tmp_path, columns):
    command = start_command(hub.network, "capture", "-q", "-c", "desk", "--show", "-o", "a.png", columns=columns,
                            rows=50, folder=tmp_path)
    output = command.rest()
    assert command.process.returncode == 0 and "8;2;" in output  # true colour
    plain = re.sub(r"\x1b\[[0-9;]*m", "", output)
    *picture, histogram, file = plain.splitlines()
    assert file == "a.png" and SHOWN_END.search(histogram + "\n") and max(map(len, plain.splitlines())) <= columns
    assert len(set(map(len, picture))) == 1
    # 16 to 9, in characters twice as high as wide, and at most 50 rows less four
    rows = min(columns * 9 / 16 / 2, 46)
    assert abs(len(picture) - rows) <= 1 and abs(len(picture[0]) - rows * 2 * 16 / 9) <= 2


def test_a_picture_in_a_pipe_is_drawn_for_eighty_columns_and_without_colours_where_there_are_none(hub, tmp_path):
    result = run(hub.network, "capture", "-q", "--show", "-o", "a.png", folder=tmp_path, TERM="dumb", COLORTERM="")
    assert result.returncode == 0 and "\x1b" not in result.stdout
    assert max(map(len, result.stdout.splitlines())) <= 80 and SHOWN_END.search(result.stdout)


@pytest.mark.parametrize("columns", [20, 80, 200])
def test_a_terminal_tells_what_is_waited_for_and_keeps_nothing_of_it(start_hub, start_command, tmp_path, columns):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    command = start_command(hub.network, "capture", "-e", "1/64s", "-o", "a.png", columns=columns, folder=tmp_path)
    output = command.rest()
    assert command.process.returncode == 0 and output.endswith("\r\x1b[Ka.png\n")
    lines = [line.removeprefix("\x1b[K") for line in output.split("\r")]
    waits = [line for line in lines if line.startswith("waiting for")]
    assert len(waits) > 1 and max(map(len, waits)) < columns  # two seconds in which the camera settles
    if columns >= 80:
        assert re.fullmatch(r"waiting for the first still of cam: [\d.]+ m?s", waits[0])


def test_quietly_nothing_of_it_is_seen(start_hub, start_command, tmp_path):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    assert start_command(hub.network, "capture", "-q", "-o", "a.png", columns=80, folder=tmp_path).rest() == "a.png\n"


def test_a_camera_is_chosen_by_number_uid_or_part_of_its_name(hub, tmp_path):
    listed = json.loads(run(hub.network, "list", "--json").stdout)
    assert listed[0]["uid"] == "desk"
    for wanted in ("1", "desk", "hald"):
        result = run(hub.network, "capture", "-c", wanted, "--json", "-q", "-o", "a.png", folder=tmp_path)
        assert json.loads(result.stdout)["camera"] == "desk"


def test_a_camera_that_is_not_there_or_not_the_only_one_is_told_with_those_that_are(hub, tmp_path):
    result = run(hub.network, "capture", "-c", "nobody", folder=tmp_path)
    assert (result.returncode, result.stdout) == (4, "")
    assert re.fullmatch(r'camera-hub: no camera is called "nobody", there are: 1 .*\(desk\), 2 .*\(empty\), .*\n',
                        result.stderr)
    assert list(tmp_path.iterdir()) == []


def test_a_camera_that_fails_is_told(hub, tmp_path):
    fails_with(5, "the camera failed: captureImage failed: Device lost(5); try again, and if that does not help, plug "
               "it in anew", run(hub.network, "capture", "-c", "lost", "-o", "a.png", folder=tmp_path))
    fails_with(5, "the image was gone, twice: other clients capture as well, or the camera failed; try again",
               run(hub.network, "capture", "-c", "empty", "-o", "a.png", folder=tmp_path))
    assert list(tmp_path.iterdir()) == []


def test_a_place_that_cannot_be_written_to_is_told(hub, tmp_path):
    fails_with(7, "cannot write no/a.png: No such file or directory; name another place with -o",
               run(hub.network, "capture", "-c", "desk", "-e", "1/64s", "-o", "no/a.png", folder=tmp_path))
    (tmp_path / "file").touch()
    fails_with(7, "cannot write file: Not a directory; name another place with -o",
               run(hub.network, "capture", "-c", "desk", "-e", "1/64s", "-n", "2", "-o", "file", folder=tmp_path))
    with open("/dev/full", "wb") as full:
        result = hub.network.run(subprocess.run, [COMMAND, "list"], stdout=full, stderr=subprocess.PIPE, text=True,
                                 timeout=PATIENCE, check=False)
    assert (result.returncode, result.stderr) == (
        7, "camera-hub: cannot write to standard output: No space left on device; see where it goes\n")


def test_a_terminal_gets_no_png_file(hub, start_command):
    command = start_command(hub.network, "capture", "-o", "-", columns=80)
    assert "give -o a file, or take --show" in command.rest() and command.process.returncode == 2


def test_an_interrupted_capture_leaves_nothing(start_hub, start_command, tmp_path):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    command = start_command(hub.network, "capture", "--settle", "1min", "-o", "a.png", columns=80, folder=tmp_path)
    command.read_until("first still")
    assert command.interrupt() == 130
    assert list(tmp_path.iterdir()) == [] and "camera-hub:" not in command.rest()


def test_an_interrupted_series_keeps_its_stills_whole(start_hub, start_command, tmp_path):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    command = start_command(hub.network, "capture", "-n", "9", "--every", "1h", "-o", "out", columns=80,
                            folder=tmp_path)
    assert "still 2 of 9" in command.read_until("still 2 of 9")
    assert command.interrupt() == 130
    (file,) = (tmp_path / "out").iterdir()
    assert size_of(file) == (64, 48)
