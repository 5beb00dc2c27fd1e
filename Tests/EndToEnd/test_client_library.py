"""The C++ client library, called by Tests/Client/ClientProbe.cpp, with a running hub."""

import contextlib
import io
import re
import socket
import subprocess
import threading

import pytest
from harness.console import read_within
from harness.hub import EXECUTABLE, HTTP_PORT, RPC_PORT
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.wait import PATIENCE, wait_until
from PIL import Image

PROBE = EXECUTABLE.parent / "ClientProbe"
GUID = "[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}"


class Probe:
    """A client that makes one call after the other."""

    def __init__(self, hub, image_port=HTTP_PORT):
        command = [PROBE, "localhost", str(RPC_PORT), str(image_port)]
        self._process = hub.network.run(subprocess.Popen, command, stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def call(self, *words):
        """What it tells of the call."""
        self._process.stdin.write(" ".join(map(str, words)).encode() + b"\n")
        self._process.stdin.flush()
        told = b""
        while not told.endswith(b"\n"):
            more = read_within(self._process.stdout.fileno(), 65536)
            assert more, f"the probe has ended: {self._process.wait(PATIENCE)}"
            told += more
        return told.decode().removesuffix("\n")

    def close(self):
        self._process.stdin.close()
        assert self._process.wait(PATIENCE) == 0
        self._process.stdout.close()


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    cameras = {
        "desk": {"exposure": EXPOSURE},
        "fixed": {},
        "lost": {"faults": {"MediaCapture.CapturePhotoToStreamAsync": {"message": "Device\nlost", "code": 5}}},
        "empty": {"capture": {"outcome": "error"}},
    }
    desk = camera_group("desk", 320, 240)
    desk["sources"][0]["device"]["properties"] = {"System.Devices.DeviceInstanceId": "node"}
    return start_shared_hub({
        "groups": [desk, *(camera_group(uid) for uid in ("fixed", "lost", "empty"))],
        "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "Größe"}}],
        "cameras": cameras,
    }).wait_for_cameras(*cameras)


@pytest.fixture
def probe(hub):
    with contextlib.closing(Probe(hub)) as client:
        yield client


def picture(digits):
    return Image.open(io.BytesIO(bytes.fromhex(digits)))


def test_the_version_and_the_cameras_are_those_of_the_hub(hub, probe):
    assert probe.call("version") == "2.9"
    members = "uid", "make", "model", "resolutionX", "resolutionY", "exposureMinValueInUs", "exposureMaxValueInUs"
    expected = "".join("|".join(str(camera[name]) for name in members) + ";" for camera in hub.rpc().discover())
    assert probe.call("discover") == expected
    assert "desk|Größe||320|240|122|1000000;" in expected


def test_a_still_is_captured_and_fetched(hub, probe):
    exposure, resid = probe.call("capture", "desk").split()
    assert exposure == "15625" and re.fullmatch(GUID, resid)
    fetched = bytes.fromhex(probe.call("fetch", resid))
    assert fetched == hub.image(resid)
    exposure, resid, times, digits = probe.call("still", "desk").split()
    assert (exposure, times, picture(digits).size) == ("15625", "once", (320, 240))
    assert bytes.fromhex(digits) == hub.image(resid)


def test_a_hundred_per_cent_are_the_longest_exposure(probe):
    assert probe.call("capture-longest", "desk").startswith("1000000 ")


def test_an_exposure_that_could_not_be_set_is_told_as_none(probe):
    assert probe.call("still", "fixed").startswith("unset ")


def test_each_refusal_of_the_hub_has_its_class_and_the_client_goes_on(hub, probe):
    assert probe.call("capture") == "CaptureRefused: Unknown camera"
    assert probe.call("capture", "elsewhere") == "CaptureRefused: Camera Disconnected"
    assert probe.call("capture", "lost") == "MethodFailed: captureImage failed: Device lost(5)"
    gone = "ImageGone: the hub no longer has the image, or never had it"
    assert probe.call("still", "empty") == gone
    _, resid = probe.call("capture", "desk").split()
    hub.rpc().capture("desk", exposureInUs=1000)
    assert probe.call("fetch", resid) == gone
    assert probe.call("redirect", "/nowhere/Diagnostics") == (
        "MethodFailed: Failed redirecting diagnostics to: /nowhere/Diagnostics")
    assert probe.call("version") == "2.9"


class DisplacingWay:
    """A way to the hub's images on which another client captures first, so many times."""

    def __init__(self, hub, times):
        self._hub = hub
        self._times = times
        self._listener = hub.network.run(socket.create_server, ("localhost", 0))
        self.port = self._listener.getsockname()[1]
        self._thread = threading.Thread(target=self._run)
        self._thread.start()

    def _run(self):
        with contextlib.suppress(OSError):  # closed
            while True:
                connection, _ = self._listener.accept()
                with connection:
                    self._pass_on(connection)

    def _pass_on(self, connection):
        request = b""
        while not request.endswith(b"\r\n\r\n"):
            request += connection.recv(65536)
        if self._times > 0:
            self._times -= 1
            assert "resid" in self._hub.rpc().capture("desk", exposureInUs=1000)
        image = self._hub.http()
        image.send(request)
        response = image.receive_response()
        connection.sendall(response.head + response.body)

    def close(self):
        self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
        self._thread.join()


@pytest.mark.parametrize("times", [0, 1, 2])
def test_a_still_that_another_client_displaces_is_taken_again_once(hub, times):
    with contextlib.closing(DisplacingWay(hub, times)) as way, contextlib.closing(Probe(hub, way.port)) as probe:
        words = probe.call("still", "desk").split()
    if times == 2:
        assert words[0] == "ImageGone:"
    else:
        assert (words[0], words[2]) == ("15625", ["once", "twice"][times])
        assert bytes.fromhex(words[3]) == hub.image(words[1])


def test_a_hub_that_ends_without_a_reply_is_told_so_and_the_connection_is_gone(start_hub):
    fault = {"message": "It broke.", "code": -2147483629}
    camera = {"exposure": EXPOSURE, "faults": {"MediaCapture.CreateFrameReaderAsync": fault}}
    hub = start_hub(scenario("cam", camera=camera)).wait_for_cameras("cam")
    with contextlib.closing(Probe(hub)) as probe:
        told = probe.call("still", "cam")
        assert told.startswith("ConnectionEnded: localhost, port 3141: the hub has ended the connection")
        assert hub.wait_for_end().name == "SIGABRT"
        assert probe.call("version") == "NotConnected: an earlier request has lost the connection to the hub"


def test_diagnostics_are_redirected_for_as_long_as_the_client_lives(start_hub, tmp_path):
    hub = start_hub(scenario())
    run = tmp_path / "Diagnostics/LarkspurWindowsCameraHub"
    for name in ("logs", "Traces"):
        (run / name).mkdir(parents=True)
    with contextlib.closing(Probe(hub)) as probe:
        assert probe.call("redirect", run.parent) == "done"
        assert (run / "logs/PRODUCT.log").is_file()
    cancelled = "Cancelled diagnostics redirection (likely due to client disconnection)"
    wait_until(lambda: cancelled in [entry.text for entry in hub.log()], "the redirection is cancelled")
