"""Examples/capture.py and the commands of the README."""

import shlex
import subprocess
import sys

import pytest
from harness.guides import guide_commands
from harness.hub import ROOT
from harness.no_hub import giving_one_reply
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.wait import PATIENCE

CLIENT = ROOT / "Examples/capture.py"


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    group = camera_group("desk", 1920, 1080)
    group["sources"][0]["device"]["properties"] = {"System.Devices.DeviceInstanceId": "node"}
    cameras = {
        "desk": {"exposure": EXPOSURE},
        "fixed": {},
        "lost": {"faults": {"MediaCapture.CapturePhotoToStreamAsync": {"message": "Device lost", "code": 5}}},
        "empty": {"capture": {"outcome": "error"}},
    }
    return start_shared_hub({
        "groups": [group, *(camera_group(uid) for uid in ("fixed", "lost", "empty"))],
        "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "Halden"}}],
        "cameras": cameras,
    }).wait_for_cameras(*cameras)


def run(network, *arguments, folder=None, client=CLIENT):
    return network.run(subprocess.run, [sys.executable, str(client), *arguments], cwd=folder, capture_output=True,
                       text=True, timeout=PATIENCE, check=False)


def fails_with(text, result):
    assert (result.returncode, result.stdout, result.stderr) == (1, "", f"capture.py: {text}\n")


def test_it_is_short_and_needs_the_standard_library_only():
    lines = CLIENT.read_text(encoding="utf-8").splitlines()
    assert len(lines) < 100
    imported = {line.split()[1].partition(".")[0] for line in lines if line.startswith(("import ", "from "))}
    assert imported <= sys.stdlib_module_names


def test_the_commands_of_the_readme_list_the_cameras_and_save_a_picture(hub, tmp_path):
    listing, still = guide_commands("README.md", "python3 Examples/capture.py")
    result = run(hub.network, *shlex.split(listing)[2:], folder=tmp_path)
    assert (result.returncode, result.stderr) == (0, "")
    header, *rows = [line.split() for line in result.stdout.splitlines()]
    assert len(header) == 7 and [row[0] for row in rows] == ["desk", "empty", "fixed", "lost"]
    assert rows[0] == ["desk", "Halden", "1920", "1080", "122", "1000000"]

    result = run(hub.network, *shlex.split(still)[2:], folder=tmp_path)
    assert (result.returncode, result.stdout, result.stderr) == (0, "exposure: 15625 us\n", "")
    assert (tmp_path / "picture.png").read_bytes().startswith(b"\x89PNG")


def test_an_exposure_that_could_not_be_set_is_told(hub, tmp_path):
    result = run(hub.network, "--camera", "fixed", folder=tmp_path)
    assert (result.returncode, result.stdout) == (0, "exposure: could not be set\n")
    assert (tmp_path / "picture.png").read_bytes().startswith(b"\x89PNG")


def test_each_failure_has_a_text(hub, tmp_path):
    fails_with("Camera Disconnected (code 2)", run(hub.network, "--camera", "elsewhere"))
    fails_with("captureImage failed: Device lost(5)", run(hub.network, "--camera", "lost"))
    fails_with("no image: 404 Image does not exist", run(hub.network, "--camera", "empty"))
    fails_with("[Errno 2] No such file or directory: 'no/folder.png'",
               run(hub.network, "-o", "no/folder.png", folder=tmp_path))


def test_a_hub_without_cameras_has_a_text(start_hub):
    hub = start_hub(scenario())
    text = "no camera found; a hub that has just started needs a moment to find its cameras"
    fails_with(text, run(hub.network))
    fails_with(text, run(hub.network, "--list"))


def test_a_refused_connection_has_a_text(network):
    fails_with("[Errno 111] Connection refused", run(network))


@pytest.mark.parametrize(
    "reply, text",
    [
        (b'{"code":-32700,"jsonrpc":"2.0","message":"Parse Error"}\n\r\n\0', "Parse Error (-32700)"),
        (b"", "the hub has closed the connection without an answer"),
    ],
)
def test_replies_that_a_hub_gives_no_correct_client_have_a_text(network, reply, text):
    with giving_one_reply(network, reply):
        fails_with(text, run(network, "--host", "127.0.0.1"))
