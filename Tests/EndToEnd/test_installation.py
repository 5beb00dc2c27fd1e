"""What `cmake --install` leaves where."""

import os
import re
import shutil
import signal
import subprocess

import pytest
from harness.hub import EXECUTABLE, IS_SANITIZED
from harness.scenario import scenario

BUILD = EXECUTABLE.parent.parent


@pytest.fixture(scope="module")
def installed(tmp_path_factory):
    """The root of a system on which the hub and its page have been installed below /usr/local."""
    root = tmp_path_factory.mktemp("system")
    environment = os.environ | {"DESTDIR": str(root)}
    for component in ("hub", "web"):
        command = ["cmake", "--install", str(BUILD), "--component", component, "--prefix", "/usr/local"]
        subprocess.run(command, env=environment, capture_output=True, check=True)
    return root / "usr/local"


@pytest.fixture(params=["camera-hub", "camera-hub-web"])
def service(request):
    return request.param


@pytest.fixture
def unit(service, installed, tmp_path):
    """The service's unit, of a program that is there."""
    text = (installed / f"lib/systemd/system/{service}.service").read_text(encoding="utf-8")
    file = tmp_path / f"{service}.service"
    file.write_text(re.sub("^ExecStart=.*$", "ExecStart=/bin/true", text, flags=re.MULTILINE), encoding="utf-8")
    return file


def analyze(*arguments):
    command = ["systemd-analyze", "--no-pager", *map(str, arguments)]
    return subprocess.run(command, capture_output=True, text=True, check=False)


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer's own handler takes the signal first")
def test_an_installed_hub_answers_and_finds_its_crash_helper(installed, start_hub):
    hub = start_hub(scenario(), executable=installed / "libexec/camera-hub/LarkspurWindowsCameraHub")
    assert hub.rpc().discover() == []
    os.kill(hub.process.pid, signal.SIGSEGV)
    assert hub.wait_for_end() == signal.SIGSEGV
    (record,) = hub.crash_records()
    assert ", which crashed:" in record, record


def test_the_unit_starts_what_is_installed_with_the_settings_that_are(installed, service):
    text = (installed / f"lib/systemd/system/{service}.service").read_text(encoding="utf-8")
    (program,) = re.findall(r"^ExecStart=/usr/local/(\S*)", text, re.MULTILINE)
    (settings,) = re.findall("^EnvironmentFile=-/usr/local/(.*)$", text, re.MULTILINE)
    assert shutil.which(installed / program)
    assert (installed / settings).is_file()


def test_the_command_that_tells_who_reaches_the_hub_is_installed(installed):
    assert shutil.which(installed / "sbin/camera-hub-expose")


def test_every_line_of_the_unit_means_something_to_systemd(unit):
    result = analyze("verify", "--man=no", unit)
    assert (result.returncode, result.stderr) == (0, "")


def test_a_line_of_a_unit_that_means_nothing_is_told(unit):
    unit.write_text(unit.read_text(encoding="utf-8").replace("MemoryMax=", "MemoryMost="), encoding="utf-8")
    assert "MemoryMost" in analyze("verify", "--man=no", unit).stderr


@pytest.mark.parametrize("opened", ["", "IPAddressAllow=any\n"])
def test_the_service_is_exposed_to_less_than_two_of_ten_also_when_everybody_reaches_it(unit, opened):
    with unit.open("a", encoding="utf-8") as file:
        file.write(f"\n[Service]\n{opened}")
    # In tenths.
    assert analyze("security", "--offline=true", "--threshold=19", unit).returncode == 0
    assert analyze("security", "--offline=true", "--threshold=5", unit).returncode != 0  # or it would judge nothing
