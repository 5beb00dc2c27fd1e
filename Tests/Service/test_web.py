"""The page as a service: what it may do, who reaches it, what becomes of it when it ends."""

import io
import os
import re
import signal
import subprocess
from pathlib import Path
from urllib.parse import quote

import neighbour
import pytest
from conftest import PACKAGES, PAGE_PORT, Page, follow, run, wait_for_port
from harness.guides import guide_commands
from harness.hub import ROOT
from harness.wait import wait_until
from PIL import Image

SETTINGS = Path("/etc/default/camera-hub-web")
SECRETS = Path("/etc/credstore")
ASK = ["curl", "--silent", "--resolve", f"hub1.example:8443:{neighbour.HERE}",
       "--resolve", "hub1.example:443:127.0.0.1"]


@pytest.fixture
def changed(page):
    """The page, of which everything is as before afterwards."""
    before = SETTINGS.read_text(encoding="utf-8")
    yield page
    SETTINGS.write_text(before, encoding="utf-8")
    for file in SECRETS.glob("camera-hub-web.*"):
        file.unlink()
    run("systemctl", "revert", page.unit)
    run("systemctl", "reset-failed", page.unit)
    run("systemctl", "restart", page.unit)


def test_it_serves_this_machine_with_a_picture_of_a_camera(page, camera):
    (uid,) = page.wait_for_cameras(1)

    def picture():  # a busy machine may make no still in the time that the hub waits for one
        answer = page.get(f"/cameras/{quote(uid, safe='')}/still.png?exposure=1ms")
        return answer.status == 200 and Image.open(io.BytesIO(answer.body))

    assert wait_until(picture, "a still in time").size > (0, 0)


def test_it_has_a_user_of_its_own_no_rights_and_no_devices(page, service):
    ids = page.status()
    assert set(ids["Uid"]).isdisjoint({"0", *service.status()["Uid"]})
    assert ids["CapBnd"] == ["0000000000000000"]
    assert ids["NoNewPrivs"] == ["1"]
    devices = os.listdir(f"/proc/{page.process()}/root/dev")
    assert "null" in devices and not [name for name in devices if name.startswith(("video", "sd", "vd", "mem"))]


def test_little_of_the_system_is_open_to_it(page, tmp_path):
    assert page.openness() < 2.0
    (judgement,) = guide_commands("Docs/web.md", "systemd-analyze security")
    text = (ROOT / "Docs/web.md").read_text(encoding="utf-8")
    told = re.search(r"`systemd-analyze security camera-hub-web` gives it ([0-9.]+) of 10", text)[1]
    assert f"Overall exposure level for camera-hub-web.service: {told} " in follow(judgement, tmp_path)


def test_nothing_that_systemd_or_the_page_has_to_complain_of_is_in_the_journal(page, tmp_path):
    assert page.warnings() == ""
    (journal,) = guide_commands("Docs/web.md", "journalctl")
    assert f"camera-hub-web: http://127.0.0.1:{PAGE_PORT}/" in follow(journal, tmp_path)


def test_it_outlives_the_hub_and_finds_it_again(page, service):
    process = page.process()
    wait_until(lambda: page.get("/healthz").status == 200, "the hub is found")
    run("systemctl", "stop", "camera-hub")
    wait_until(lambda: page.get("/healthz").status == 503, "the hub is missed")
    run("systemctl", "start", "camera-hub")
    wait_until(lambda: page.get("/healthz").status == 200, "the hub is found again")
    assert page.process() == process


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM])
def test_a_page_that_a_signal_ends_is_started_again(page, number):
    process = page.process()
    os.kill(process, number)
    wait_until(lambda: page.is_active() and page.process() != process, "another run")
    assert page.get("/healthz").status in (200, 503)


def test_one_with_arguments_that_mean_nothing_is_not_started_again(changed):
    SETTINGS.write_text("CAMERA_HUB_WEB_ARGUMENTS=--unknown\n", encoding="ascii")
    subprocess.run(["systemctl", "restart", changed.unit], check=False)
    wait_until(lambda: changed.property("ActiveState") == "failed", "it has failed")
    assert changed.property("ExecMainStatus") == "2"


@pytest.mark.usefixtures("cable")
def test_it_is_opened_encrypted_with_a_token_and_closed_again_as_the_guide_says(changed, tmp_path):
    assert not neighbour.reaches(PAGE_PORT)
    for command in [
        *guide_commands("Docs/web.md", "sudo install"),
        *guide_commands("Docs/web.md", "openssl rand"),
        *guide_commands("Docs/web.md", "sudo openssl req"),
    ]:
        follow(command, tmp_path)
    (settings,) = re.findall(r"^```sh\n(.*?)^```$", (ROOT / "Docs/web.md").read_text(encoding="utf-8"),
                             re.MULTILINE | re.DOTALL)
    SETTINGS.write_text(settings, encoding="utf-8")
    for command in guide_commands("Docs/web.md", "sudo systemctl set-property"):
        follow(command, tmp_path)
    (restart,) = guide_commands("Docs/web.md", "sudo systemctl restart")
    follow(restart, tmp_path)
    changed.wait_until_ready()

    def status(token):
        options = ["--cacert", SECRETS / "camera-hub-web.certificate", "--header", f"Authorization: Bearer {token}",
                   "--output", "/dev/null", "--write-out", "%{http_code}"]
        return run(*neighbour.ON_IT, *ASK, *options, "https://hub1.example:8443/api/stills")

    assert status((SECRETS / "camera-hub-web.token").read_text(encoding="ascii").strip()) == "200"
    assert status("0" * 48) == "401"

    (close,) = guide_commands("Docs/web.md", "sudo systemctl revert")
    follow(close, tmp_path)
    assert not neighbour.reaches(8443)


@pytest.fixture
def nginx():
    yield
    for name in ("ssl/certs/camera-hub.pem", "ssl/private/camera-hub.key", "nginx/conf.d/camera-hub-web.conf"):
        Path("/etc", name).unlink(missing_ok=True)
    run("systemctl", "reload", "nginx")


def test_nginx_serves_it_after_what_the_guide_says(changed, nginx, tree):
    SETTINGS.write_text("CAMERA_HUB_WEB_ARGUMENTS=--allow-host=hub1.example\n", encoding="ascii")
    run("systemctl", "restart", changed.unit)
    for command in [
        *guide_commands("Docs/fleet.md", "openssl req"),
        *guide_commands("Docs/web.md", "cp Examples/nginx-web.conf"),
        *guide_commands("Docs/web.md", "nginx -t"),
    ]:
        follow(command, tree)
    wait_for_port(443).close()
    page = run(*ASK, "--fail", "--cacert", "/etc/ssl/certs/camera-hub.pem", "https://hub1.example/page/index.html")
    assert "Camera Hub" in page


def test_it_is_not_installed_without_the_library_that_it_is_linked_with(nothing_installed):
    (package,) = PACKAGES.glob("camera-hub-web_*.deb")
    result = subprocess.run(["dpkg", "--install", package], capture_output=True, text=True, check=False)
    assert result.returncode != 0 and "depends on libcamera-hub-client2" in result.stderr


def test_it_is_installed_and_shown_as_the_guide_says(nothing_installed, tmp_path):
    (tmp_path / "build-package").symlink_to(PACKAGES)
    (install,) = guide_commands("Docs/web.md", "sudo apt-get install")
    assert "for this machine only" in follow(install, tmp_path)
    page = Page().wait_until_ready()
    (status,) = guide_commands("Docs/web.md", "systemctl status")
    assert "Active: active (running)" in follow(status, tmp_path)
    assert page.property("UnitFileState") == "enabled"


def test_a_purged_package_leaves_nothing_and_lets_nobody_in_later(page):
    run("systemctl", "set-property", page.unit, "IPAddressAllow=any")
    run("dpkg", "--purge", "camera-hub-web")
    left = run("find", "/etc", "/usr", "/var/lib", "/var/cache", "-xdev", "-name", "*camera-hub-web*")
    assert left == ""
