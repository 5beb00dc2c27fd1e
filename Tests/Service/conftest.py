"""Runs in the virtual machine of run.sh: the hub's package on a bare system."""

import contextlib
import os
import socket
import subprocess
import sys
import time
from pathlib import Path

import pytest

if not {"HUB_PACKAGES", "KERNEL_TREE", "REAL_DRIVERS_PROGRAMS"} <= set(os.environ):
    raise pytest.UsageError("These tests need the virtual machine of Tests/Service/run.sh.")

TESTS = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(TESTS / "RealDrivers"), str(TESTS / "EndToEnd")]

import neighbour  # noqa: E402
from guest import modules  # noqa: E402
from guest.usb_camera import UsbCamera  # noqa: E402
from harness.http import HttpConnection  # noqa: E402
from harness.hub import HTTP_PORT, RPC_PORT  # noqa: E402
from harness.rpc import RpcClient  # noqa: E402
from harness.wait import PATIENCE, wait_until  # noqa: E402
from harness.web_connection import WebConnection  # noqa: E402

PACKAGES = Path(os.environ["HUB_PACKAGES"])
(PACKAGE,) = PACKAGES.glob("camera-hub_*.deb")
UNIT = "camera-hub.service"
PAGE_PORT = 8080


def run(*command):
    """What it writes to standard output; fails if it fails."""
    result = subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False)
    assert result.returncode == 0, f"{command}: {result.stdout}{result.stderr}"
    return result.stdout


def connect(port):
    return socket.create_connection(("127.0.0.1", port), PATIENCE)


def wait_for_port(port):
    """A connection to it, once somebody listens."""

    def connected():
        try:
            return connect(port)
        except ConnectionRefusedError:
            return None

    return wait_until(connected, f"port {port} is open")


class Unit:
    """A service of this machine."""

    def __init__(self, unit):
        self.unit = unit

    def property(self, name):
        return run("systemctl", "show", "--value", f"--property={name}", self.unit).strip()

    def process(self):
        """The process of the run that answers, or 0."""
        return int(self.property("MainPID"))

    def is_active(self):
        return self.property("ActiveState") == "active"

    def wait_until_ready(self):
        wait_until(self.is_active, "the service is ready")
        return self

    def status(self):
        """What the kernel tells of its process."""
        text = Path(f"/proc/{self.process()}/status").read_text(encoding="ascii")
        return {line.split(":")[0]: line.split()[1:] for line in text.splitlines()}

    def warnings(self):
        """Of systemd and the program, in the journal."""
        return run("journalctl", "--quiet", "--priority=warning", f"_PID={self.process()}")

    def openness(self):
        """What systemd gives it of 10."""
        *_, last = run("systemd-analyze", "security", "--no-pager", self.unit).splitlines()
        print(last)
        return float(last.partition(": ")[2].split()[0])


class Page(Unit):
    """The installed page."""

    def __init__(self):
        super().__init__("camera-hub-web.service")

    def connect(self, port=PAGE_PORT):
        return WebConnection(connect(port))

    def get(self, target, headers=None):
        """Its answer, on a connection of its own."""
        with contextlib.closing(self.connect()) as connection:
            return connection.request("GET", target, headers)

    def wait_for_cameras(self, count):
        """Their uids."""

        def uids():
            answer = self.get("/api/cameras")
            found = [camera["uid"] for camera in answer.json()["cameras"]] if answer.status == 200 else []
            return len(found) == count and [found]

        return wait_until(uids, f"{count} cameras")[0]


class Service(Unit):
    """The installed hub, as whoever uses this machine meets it."""

    data = Path("/var/lib/camera-hub/Halden Imaging Group/Larkspur Windows Camera Hub 2.9")

    def __init__(self):
        super().__init__(UNIT)

    def rpc(self):
        return RpcClient(connect(RPC_PORT))

    def http(self):
        return HttpConnection(connect(HTTP_PORT))

    def time_until_another_answers(self, process, since):
        """Seconds from the moment to the first answer of another run than that of the process."""

        def answers():
            try:
                with contextlib.closing(self.rpc()) as client:
                    return client.request("camera:version")["result"] == "2.9" and self.process() != process
            except ConnectionError:  # there is none, or the old one has just ended
                return False

        wait_until(answers, "another run of the hub answers")
        return time.monotonic() - since

    def crash_records(self):
        return [path.read_text(encoding="utf-8") for path in sorted(self.data.glob("Diagnostics/*/Crash/crash-*.txt"))]

    def wait_for_cameras(self, count):
        client = self.rpc()
        cameras = wait_until(lambda: [found] if len(found := client.discover()) == count else None, f"{count} cameras")
        client.close()
        return cameras[0]


def install(package):
    run("dpkg", "--install", package)


def follow(command, folder, answer=""):
    """Does in a folder what a guide says, and answers what it asks; tells what it said. The user is root already."""
    environment = os.environ | {"DEBIAN_FRONTEND": "noninteractive", "TERM": "xterm", "COLUMNS": "80"}
    result = subprocess.run(["bash", "-c", command.replace("sudo ", "")], cwd=folder, env=environment, input=answer,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    print(f"$ {command}\n{result.stdout}")
    assert result.returncode == 0, command
    return result.stdout


@pytest.fixture
def tree():
    """The sources with what has been built of them, at the place where that was done."""
    here = TESTS.parent
    there = Path("/") / here.relative_to("/host")
    if not there.exists():
        there.parent.mkdir(parents=True, exist_ok=True)
        there.symlink_to(here)
    return there


@pytest.fixture
def nothing_installed():
    """Before the test, nor behind it, whose settings go with it."""
    purge = ["dpkg", "--purge", *sorted(run("dpkg-deb", "--field", package, "Package").strip()
                                        for package in PACKAGES.glob("*.deb"))]
    run(*purge)
    yield
    run(*purge)


@pytest.fixture
def service():
    """The package as it is after its installation, and with it the service."""
    if not Path("/usr/sbin/camera-hub-expose").exists():
        install(PACKAGE)
    return Service().wait_until_ready()


@pytest.fixture
def page(service):
    """The same of the page, beside the hub."""
    if not Path("/usr/bin/camera-hub-web").exists():
        for name in ("libcamera-hub-client2", "camera-hub-web"):
            (package,) = PACKAGES.glob(f"{name}_*.deb")
            install(package)
    return Page().wait_until_ready()


@pytest.fixture(scope="module")
def cable():
    """To the neighbour."""
    neighbour.plug()
    yield
    neighbour.unplug()


@pytest.fixture(scope="session")
def usb_bus():
    for module in ("uvcvideo", "vhci-hcd"):
        modules.load(module)


@pytest.fixture
def camera(usb_bus, tmp_path):
    camera = UsbCamera(tmp_path)
    yield camera
    camera.end()
