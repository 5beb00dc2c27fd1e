"""With the udev daemon and its database, as on most machines; all other tests go without. The last of the files by
name: the daemon stays."""

import os
import shutil
import subprocess
from pathlib import Path

import pytest
from guest.cameras import wait_for_cameras, wait_for_none
from guest.usb_camera import read
from harness.wait import wait_until


@pytest.fixture(scope="module", autouse=True)
def udev_files():
    """The guest's files are its own."""
    tree = Path(os.environ["UDEV_TREE"])
    for path in tree.rglob("*"):
        if path.is_symlink():  # where the machine has udev, too, it is there, and would not be replaced
            Path("/", path.relative_to(tree)).unlink(missing_ok=True)
    shutil.copytree(tree, "/", symlinks=True, dirs_exist_ok=True)


@pytest.fixture
def start_udev():
    def start():
        subprocess.run(["/lib/systemd/systemd-udevd", "--daemon"], check=True)
        wait_until(Path("/run/udev/control").exists, "the udev daemon")
        subprocess.run(["udevadm", "trigger"], check=True)
        subprocess.run(["udevadm", "settle"], check=True)

    return start


def test_a_camera_without_texts_is_named_by_the_hardware_database(start_hub, plug_camera):
    subprocess.run(["systemd-hwdb", "update"], check=True)
    plug_camera(maker="", product="")
    hub = start_hub()
    (camera,) = wait_for_cameras(hub)
    query = subprocess.run(["systemd-hwdb", "query", "usb:v1209p0001"], check=True, capture_output=True, text=True)
    known = dict(line.split("=", 1) for line in query.stdout.splitlines())
    assert camera["make"] == known["ID_VENDOR_FROM_DATABASE"]
    assert camera["model"] == known["ID_MODEL_FROM_DATABASE"]


def test_with_the_udev_daemon_a_camera_is_the_same_and_comes_and_goes(start_hub, plug_camera, start_udev):
    camera = plug_camera(sizes="320x240")
    hub = start_hub()
    without_daemon = wait_for_cameras(hub)
    hub.stop()
    start_udev()
    hub = start_hub()
    assert wait_for_cameras(hub) == without_daemon
    camera.unplug()
    wait_for_none(hub)
    camera.plug()
    assert wait_for_cameras(hub) == without_daemon
    result = hub.rpc().capture(without_daemon[0]["uid"], exposureInUs=1000, exposureChangeDelayInMs=0)
    assert read(hub.picture(result)).exposure == 10
