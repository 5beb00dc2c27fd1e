"""The quick start, word for word, by whoever sits at this machine."""

import os
import re
import shlex
import subprocess
from pathlib import Path

import pytest
from conftest import PACKAGES, Service, run
from PIL import Image

GUIDE = Path(__file__).resolve().parents[2] / "Docs/quick-start.md"
MAKING = "scripts/package.sh"  # has been done


@pytest.fixture
def nothing_installed():
    """Before the test, nor behind it: it changes the service's settings."""
    purge = ["dpkg", "--purge", "camera-hub-client", "libcamera-hub-client-dev", "libcamera-hub-client2",
             "python3-camera-hub", "camera-hub"]
    run(*purge)
    yield
    run(*purge)


@pytest.fixture
def folder(tmp_path):
    (tmp_path / "build-package").symlink_to(PACKAGES)
    return tmp_path


def commands():
    return re.findall(r"^    (\S.*)$", GUIDE.read_text(encoding="utf-8"), re.MULTILINE)


def test_the_quick_start_leads_to_pictures(nothing_installed, folder):
    assert commands()[0] == MAKING
    for command in commands()[1:]:
        words = command.replace("sudo ", "")  # the user here is root already
        environment = os.environ | {"DEBIAN_FRONTEND": "noninteractive", "TERM": "xterm", "COLUMNS": "80"}
        result = subprocess.run(["bash", "-c", words], cwd=folder, env=environment, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True, check=False)
        print(f"$ {command}\n{result.stdout}")
        if shlex.split(words)[:2] == ["systemctl", "restart"]:
            Service().wait_for_cameras(1)
        assert result.returncode == 0, command
    for name in "picture.png", "shown.png":
        assert Image.open(folder / name).size == (1920, 1080)
    assert len(list((folder / "bracket").glob("*.png"))) > 5
