"""The Python client library, on a running hub."""

import ast
import io
import json
import os
import re
import signal
import subprocess
import sys
import threading
from datetime import timedelta

import camera_hub
import numpy
import pytest
from camera_hub import Camera, CaptureRefused, ImageGone, MethodFailed, Percent
from harness.guides import guide_commands
from harness.hub import ROOT, LogEntry, SERVICE_LOGGER
from harness.journal import begins
from harness.python_client import OTHER_ID, client_of
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.wait import PATIENCE, wait_until
from PIL import Image

MODULE = ROOT / "Client/Python/camera_hub.py"
DOCUMENT = ROOT / "Docs/client-libraries.md"


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    group = camera_group("desk", 1280, 720, "Desk Camera")
    group["sources"][0]["device"]["properties"] = {"System.Devices.DeviceInstanceId": "node"}
    cameras = {
        "desk": {"exposure": EXPOSURE},
        "fixed": {},
        "kept": {},
        "lost": {"faults": {"MediaCapture.CapturePhotoToStreamAsync": {"message": "Device lost", "code": 5}}},
        "empty": {"capture": {"outcome": "error"}},
    }
    hub = start_shared_hub({
        "groups": [group, *(camera_group(uid) for uid in ("fixed", "kept", "lost", "empty"))],
        "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "Halden"}}],
        "cameras": cameras,
    }).wait_for_cameras(*cameras)
    hub.rpc().capture("desk", exposureInUs=50000)  # keeps it open, so that no test has to wait for that
    return hub


@pytest.fixture
def client(hub):
    client = client_of(hub)
    yield client
    client.object.close()


def test_the_cameras_are_described(client):
    cameras = client.discover()
    assert [camera.uid for camera in cameras] == ["desk", "empty", "fixed", "kept", "lost"]
    assert cameras[0] == Camera("desk", "Halden", cameras[0].model, 1280, 720, timedelta(microseconds=122),
                                timedelta(seconds=1))


def test_the_version_is_the_hubs(client):
    assert client.version() == "2.9"


def test_the_module_has_the_version_of_the_project():
    project = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    assert re.search(r"^project\(CameraHub VERSION (\S+) ", project, re.MULTILINE)[1] == camera_hub.__version__


def test_the_reference_is_shown_by_the_command_of_the_guide():
    (command,) = guide_commands("Docs/client-libraries.md", "python3 -m pydoc")
    environment = os.environ | {"PYTHONPATH": str(MODULE.parent), "PAGER": "cat"}
    shown = subprocess.run(command.split(), env=environment, capture_output=True, text=True, check=True).stdout
    assert all(f"class {name}(" in shown for name in ("Hub", "Camera", "CaptureRefused"))


def test_a_still_is_the_image_of_its_capture_with_the_exposure_in_force(hub, client):
    still = client.take_still(client.discover()[0], exposure=0.02)
    assert (still.exposure, still.was_taken_twice) == (timedelta(microseconds=15625), False)
    assert still.png == hub.image(still.image_id)
    assert still.png == client.fetch(still) == client.fetch(still.image_id)
    assert f"{still.png[:8]!r}"[2:-1] not in repr(still)


@pytest.mark.parametrize(
    "exposure, in_force",
    [
        (timedelta(milliseconds=250), 250000), (1, 1000000), (1 / 1000, 976), (Percent(50), 500000),
        (Percent(25), 250000), (Percent(0), 122), (Percent(100), 1000000), (0.000001, 122), (2147, 1000000),
    ],
)
def test_each_kind_of_exposure_is_set_and_the_nearest_is_told(client, exposure, in_force):
    capture = client.capture("desk", exposure)
    assert capture.exposure == timedelta(microseconds=in_force)
    assert Image.open(io.BytesIO(client.fetch(capture))).size == (1280, 720)


def test_without_a_wish_the_exposure_is_that_of_the_protocol(client):
    assert client.capture("desk").exposure == client.capture("desk", timedelta(milliseconds=50)).exposure


def test_an_exposure_that_cannot_be_set_is_none(client):
    assert client.take_still("fixed", 0.01).exposure is None


def test_the_failures_of_the_protocol_are_told_apart_and_the_connection_stays_usable(client):
    with pytest.raises(CaptureRefused, match=r"^Camera Disconnected \(code 2\)$") as refused:
        client.capture("elsewhere")
    assert (refused.value.code, refused.value.message) == (2, "Camera Disconnected")
    with pytest.raises(MethodFailed, match=r"^captureImage failed: Device lost\(5\)$"):
        client.capture("lost")
    with pytest.raises(MethodFailed, match="^Failed redirecting diagnostics to: /nowhere/Diagnostics/mine$"):
        client.redirect_diagnostics("/nowhere/Diagnostics/mine")
    with pytest.raises(ImageGone, match="^the image is gone: 404 Image does not exist$"):
        client.fetch(OTHER_ID)
    with pytest.raises(ImageGone):
        client.take_still("empty")
    assert client.take_still("desk").png


def test_another_clients_capture_displaces_the_image(hub, client):
    capture = client.capture("desk")
    hub.rpc().capture("fixed", exposureInUs=50000)
    with pytest.raises(ImageGone):
        client.fetch(capture)


@pytest.mark.parametrize("uid", ["x" * 1_000_000, '"', "\\", "Gerät\u2028\U0001F4F7", "\r\n", "{}", "\x01\x7f"])
def test_a_uid_of_any_text_is_unknown_and_no_more(client, uid):
    with pytest.raises(CaptureRefused):
        client.capture(uid)
    assert client.version() == "2.9"


def test_the_camera_stays_open_until_the_object_is_closed(hub, client):
    def times(call):
        return [line["device"] for line in begins(hub.journal(), call)].count("kept")

    client.capture("kept")
    opened, closed = times("MediaCapture.InitializeAsync"), times("MediaCapture.Close")
    client.capture("kept")
    assert (times("MediaCapture.InitializeAsync"), times("MediaCapture.Close")) == (opened, closed)
    client.close()
    wait_until(lambda: times("MediaCapture.Close") > closed, "the camera is closed")


def test_a_hub_that_dies_ends_the_call_and_the_object(start_hub):
    hub = start_hub(scenario("cam", camera={"capture": {"outcome": "never"}})).wait_for_cameras("cam")
    client = client_of(hub)
    errors = []

    def capture():
        try:
            client.object.capture("cam")
        except camera_hub.HubError as error:
            errors.append(error)

    thread = threading.Thread(target=capture)
    thread.start()
    wait_until(lambda: begins(hub.journal(), "MediaCapture.CapturePhotoToStreamAsync"), "the still has begun")
    hub.process.kill()
    hub.process.wait()
    thread.join(PATIENCE)
    assert [type(error) for error in errors] == [camera_hub.ConnectionEnded]
    with pytest.raises(camera_hub.NotConnected, match="^an earlier call has lost the connection$"):
        client.version()
    with pytest.raises(camera_hub.ConnectionFailed):
        client_of(hub)


def test_a_hub_that_hangs_does_not_hold_its_clients(start_hub):
    hub = start_hub(scenario())
    client = client_of(hub)
    hub.process.send_signal(signal.SIGSTOP)
    wait_until(lambda: hub.proc("stat").read_text().rpartition(") ")[2].startswith("T"), "the hub stands still")
    with pytest.raises(camera_hub.TimedOut):
        client.version(timeout=0.3)
    with pytest.raises(camera_hub.TimedOut):
        client.fetch(OTHER_ID, timeout=timedelta(milliseconds=300))


def test_diagnostics_are_redirected_for_as_long_as_the_object_is_open(start_hub, tmp_path):
    hub = start_hub(scenario())
    folder = tmp_path / "Diagnostics"
    for part in ("logs", "Traces"):
        (folder / "LarkspurWindowsCameraHub" / part).mkdir(parents=True)
    client = client_of(hub)
    client.redirect_diagnostics(folder)
    assert (folder / "LarkspurWindowsCameraHub/Crash").is_dir()
    client.close()
    text = "Cancelled diagnostics redirection (likely due to client disconnection)"
    wait_until(lambda: LogEntry("INFO", SERVICE_LOGGER, text) in hub.log(), "the redirection is cancelled")


def test_the_pixels_of_a_still_are_those_of_its_file(client):
    still = client.take_still("desk")
    pixels = still.array()
    assert (pixels.shape, pixels.dtype) == ((720, 1280, 3), numpy.uint8)
    assert numpy.array_equal(pixels, numpy.asarray(Image.open(io.BytesIO(still.png))))


@pytest.fixture(scope="module")
def documented_hub(start_shared_hub):
    text = (ROOT / "Docs/simulated-cameras.md").read_text(encoding="utf-8")
    documented = json.loads(re.search(r"^```json\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)[1])
    hub = start_shared_hub(documented).wait_for_cameras("desk")
    hub.rpc().capture("desk", exposureInUs=50000)
    return hub


def run_python(hub, folder, *arguments):
    environment = os.environ | {"PYTHONPATH": str(MODULE.parent)}
    return hub.network.run(subprocess.run, [sys.executable, *map(str, arguments)], cwd=folder, env=environment,
                           capture_output=True, text=True, timeout=PATIENCE, check=False)


def test_the_examples_in_the_docstrings_happen_as_shown(documented_hub, tmp_path):
    done = run_python(documented_hub, tmp_path, "-m", "doctest", "-v", MODULE)
    assert done.returncode == 0, done.stdout + done.stderr
    assert re.search(r"^[1-9]\d* passed and 0 failed\.$", done.stdout, re.MULTILINE)
    assert (tmp_path / "picture.png").read_bytes().startswith(b"\x89PNG")


def programs_of_the_guide():
    """What stands in its Python blocks, each with the output that the text block behind it shows, if there is one."""
    section = re.search(r"^## Python$(.*?)(?=^## |\Z)", DOCUMENT.read_text(encoding="utf-8"),
                        re.MULTILINE | re.DOTALL)[1]
    return re.findall(r"^```python\n(.*?)^```$(?:\n\n^```text\n(.*?)^```$)?", section, re.MULTILINE | re.DOTALL)


@pytest.mark.parametrize("program, output", programs_of_the_guide(), ids=range(len(programs_of_the_guide())))
def test_the_programs_of_the_guide_run_and_print_what_it_shows(documented_hub, tmp_path, program, output):
    done = run_python(documented_hub, tmp_path, "-c", program)
    assert (done.returncode, done.stderr, done.stdout) == (0, "", output)


def test_installing_puts_the_module_where_the_systems_python_looks(tmp_path):
    project = f"cmake_minimum_required(VERSION 3.25)\nproject(Any NONE)\nadd_subdirectory({MODULE.parent} python)\n"
    (tmp_path / "CMakeLists.txt").write_text(project, encoding="utf-8")
    for command in (["-B", "build"], ["--install", "build", "--prefix", "usr", "--component", "python"]):
        subprocess.run(["cmake", *command], cwd=tmp_path, stdout=subprocess.DEVNULL, timeout=PATIENCE, check=True)
    installed = tmp_path / "usr/lib/python3/dist-packages/camera_hub.py"
    assert installed.read_bytes() == MODULE.read_bytes()


def test_the_module_needs_the_standard_library_only_and_python_3_9():
    tree = ast.parse(MODULE.read_text(encoding="utf-8"), feature_version=(3, 9))
    imported = [node.names[0].name for node in ast.walk(tree) if isinstance(node, ast.Import)]
    imported += [node.module for node in ast.walk(tree) if isinstance(node, ast.ImportFrom)]
    outside = {name.partition(".")[0] for name in imported} - sys.stdlib_module_names
    assert outside == {"numpy"}  # where it is there, which another test holds
