"""The quick start, word for word, by whoever sits at this machine."""

import shlex
from pathlib import Path

import pytest
from conftest import PACKAGES, Service, follow, run
from harness.guides import guide_commands
from PIL import Image

MAKING = "scripts/package.sh"  # has been done: make_packages.py
SETTINGS = Path("/etc/default/camera-hub")


@pytest.fixture
def folder(tmp_path):
    (tmp_path / "build-package").symlink_to(PACKAGES)
    return tmp_path


def test_the_quick_start_leads_to_pictures(nothing_installed, folder):
    making, *commands = guide_commands("Docs/quick-start.md")
    assert making == MAKING
    for command in commands:
        follow(command, folder)
        if shlex.split(command)[:3] == ["sudo", "systemctl", "restart"]:
            Service().wait_for_cameras(1)
    for name in "picture.png", "shown.png":
        assert Image.open(folder / name).size == (1920, 1080)
    assert len(list((folder / "bracket").glob("*.png"))) > 5


def test_the_readme_leads_to_a_picture(nothing_installed, folder):
    (installing,) = guide_commands("README.md", "sudo apt-get install")
    follow(installing, folder)
    SETTINGS.write_text("CAMERA_HUB_PLATFORM=simulated\n", encoding="ascii")  # in the place of a camera
    run("systemctl", "restart", "camera-hub")
    Service().wait_until_ready().wait_for_cameras(1)
    (taking,) = guide_commands("README.md", "camera-hub capture")
    follow(taking, folder)
    assert Image.open(folder / "picture.png").size == (1920, 1080)
