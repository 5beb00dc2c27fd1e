"""Runs in the virtual machine of run.sh: the built hub on the kernel's own camera drivers."""

import contextlib
import io
import os
import socket
import sys
from pathlib import Path

import pytest

if not {"KERNEL_TREE", "REAL_DRIVERS_PROGRAMS"} <= set(os.environ):
    raise pytest.UsageError("These tests need the virtual machine of Tests/RealDrivers/run.sh.")

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "EndToEnd")]

from guest import modules  # noqa: E402
from guest.usb_camera import UsbCamera  # noqa: E402
from harness.hub import Hub  # noqa: E402
from harness.wait import PATIENCE  # noqa: E402
from PIL import Image  # noqa: E402


class GuestNetwork:
    """The guest's only one: a hub in a network of its own would not hear of devices that come and go."""

    def run(self, function, *arguments, **keywords):
        return function(*arguments, **keywords)

    def connect(self, port):
        return socket.create_connection(("127.0.0.1", port), PATIENCE)

    def close(self):
        pass


class DriverHub(Hub):
    def __init__(self, folder):
        # Without a choice of the platform the hub has to look for the kernel's cameras.
        environment = {"CAMERA_HUB_PLATFORM": None, "CAMERA_HUB_SIMULATION": None}
        super().__init__(folder, environment=environment, network=GuestNetwork())

    def picture(self, result):
        image = Image.open(io.BytesIO(self.image(result["resid"])))
        assert image.format == "PNG"
        return image.convert("RGB")

    def cpu_seconds(self):
        """What all its threads have run."""
        return sum(spent for spent, _, _ in self._schedule()) / 1e9

    def processor_turns(self):
        """How often one of its threads has been given a processor."""
        return sum(turns for _, _, turns in self._schedule())

    def _schedule(self):
        """Of each thread: nanoseconds run, nanoseconds waited for a processor, turns."""
        statistics = []
        for path in self.proc("task").glob("*/schedstat"):
            with contextlib.suppress(FileNotFoundError, ProcessLookupError):  # a thread that has ended since
                statistics.append(path.read_text())
        return [[int(number) for number in text.split()] for text in statistics]


@pytest.fixture
def start_hub(tmp_path_factory):
    """A function that starts a hub. One at a time: their ports are the same."""
    hubs = []

    def start():
        hubs.append(DriverHub(tmp_path_factory.mktemp("hub")))
        return hubs[-1].start()

    yield start
    for hub in hubs:
        hub.stop()


@pytest.fixture(scope="session")
def usb_bus():
    for module in ("uvcvideo", "vhci-hcd"):
        modules.load(module)


@pytest.fixture
def plug_camera(usb_bus, tmp_path):
    """A function that plugs a USB camera in; its arguments are those of UsbCamera."""
    cameras = []

    def plug(**arguments):
        cameras.append(UsbCamera(tmp_path, **arguments))
        return cameras[-1]

    yield plug
    for camera in cameras:
        camera.end()
