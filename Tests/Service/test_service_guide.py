"""The commands of Docs/service.md, word for word, and those of Docs/fleet.md for nginx."""

import io
import re
import ssl
from pathlib import Path

import pytest
from conftest import PACKAGES, Service, follow, run, wait_for_port
from harness.guides import guide_commands
from harness.http import HttpConnection
from PIL import Image

DROP_IN = Path("/etc/systemd/system/camera-hub.service.d")


@pytest.fixture
def folder(tmp_path, tree):
    """Where the packages lie as they do in the sources, and what else of these is named."""
    for name, target in {"build-package": PACKAGES, "Examples": tree / "Examples"}.items():
        (tmp_path / name).symlink_to(target)
    return tmp_path


def test_the_hub_is_installed_shown_upgraded_removed_and_purged(nothing_installed, folder):
    install, upgrade = guide_commands("Docs/service.md", "sudo apt-get install")
    assert "to this machine only" in follow(install, folder)
    service = Service().wait_until_ready()
    (status,) = guide_commands("Docs/service.md", "systemctl status")
    assert "Active: active (running)" in follow(status, folder)
    follow(upgrade, folder)
    service.wait_until_ready()
    (remove,) = guide_commands("Docs/service.md", "sudo apt-get remove")
    follow(remove, folder, answer="y\n")
    assert not service.is_active() and Path("/var/lib/camera-hub").exists()
    (purge,) = guide_commands("Docs/service.md", "sudo apt-get purge")
    follow(purge, folder, answer="y\n")
    assert not Path("/var/lib/camera-hub").exists()


def test_the_example_lists_a_camera(service, camera, folder):
    (found,) = service.wait_for_cameras(1)
    (listing,) = guide_commands("Docs/service.md", "python3 Examples/capture.py")
    assert found["uid"] in follow(listing, folder)


@pytest.fixture
def gone_again(tree):
    """What cmake installs is taken away afterwards."""
    yield
    run("systemctl", "disable", "--now", "camera-hub")
    manifest = (tree / "build/install_manifest_hub.txt").read_text(encoding="utf-8")
    for name in manifest.splitlines():
        Path(name).unlink()
    run("systemctl", "daemon-reload")
    run("deluser", "--system", "camera-hub")


def test_what_cmake_installs_becomes_a_service(nothing_installed, tree, gone_again):
    for command in [
        *guide_commands("Docs/service.md", "sudo cmake --install build"),
        *guide_commands("Docs/service.md", "sudo adduser"),
        *guide_commands("Docs/service.md", "sudo systemctl"),
    ]:
        follow(command, tree)
    service = Service().wait_until_ready()
    assert service.property("FragmentPath") == "/usr/local/lib/systemd/system/camera-hub.service"
    assert service.property("UnitFileState") == "enabled"
    assert service.rpc().discover() == []


def crash(service):
    """The record of a run that a request has ended."""
    process, before = service.process(), service.crash_records()
    service.rpc().send("42")
    service.time_until_another_answers(process, 0)
    (record,) = [record for record in service.crash_records() if record not in before]
    return record


def test_crash_records_have_names_and_source_lines_once_their_package_is_installed(service, folder):
    in_source = re.compile(r"PavoCameraClient\.cpp:\d+")
    assert not in_source.search(crash(service))
    (command,) = guide_commands("Docs/service.md", "sudo dpkg --install build-package/camera-hub-dbgsym")
    follow(command, folder)
    record = crash(service)
    run("dpkg", "--purge", "camera-hub-dbgsym")
    assert in_source.search(record), record


@pytest.fixture
def unchanged_at_the_end(service):
    yield
    run("systemctl", "revert", "camera-hub")
    run("systemctl", "restart", "camera-hub")


def test_a_folder_that_systemctl_edit_allows_takes_redirected_diagnostics(service, unchanged_at_the_end, tmp_path):
    redirected = Path("/data/Diagnostics/mine/LarkspurWindowsCameraHub")
    for name in ("logs", "Traces"):
        (redirected / name).mkdir(parents=True)
    run("chown", "-R", "camera-hub:", "/data")
    process, client = service.process(), service.rpc()
    with pytest.raises(ConnectionError):  # the hub ends when it may not write there
        client.request("camera:redirectDiagnostics", path=str(redirected.parent))
    service.time_until_another_answers(process, 0)

    editor = tmp_path / "editor"
    setting = "[Service]\\nReadWritePaths=/data/Diagnostics/mine\\n"
    editor.write_text(f"#!/bin/sh\nprintf '{setting}' >\"$1\"\n", encoding="ascii")
    editor.chmod(0o755)
    edit, *_ = guide_commands("Docs/service.md", "systemctl edit")
    # It wants a terminal, which script gives it.
    run("env", f"SYSTEMD_EDITOR={editor}", "script", "--quiet", "--return", "--command", edit, "/dev/null")
    (restart,) = guide_commands("Docs/service.md", "systemctl restart")
    follow(restart, tmp_path)
    client = service.wait_until_ready().rpc()
    assert client.request("camera:redirectDiagnostics", path=str(redirected.parent))["result"] == 0
    assert "Successfully redirected" in (redirected / "logs/PRODUCT.log").read_text(encoding="utf-8")


def test_the_journal_and_the_judgement_of_systemd_are_shown(service, tmp_path):
    (journal,) = guide_commands("Docs/service.md", "journalctl")
    assert "Started camera-hub.service" in follow(journal, tmp_path)
    (judgement,) = guide_commands("Docs/service.md", "systemd-analyze security")
    assert "Overall exposure level for camera-hub.service: 1.3" in follow(judgement, tmp_path)


@pytest.fixture
def nginx():
    yield
    for name in ("certs/camera-hub.pem", "private/camera-hub.key"):
        Path("/etc/ssl", name).unlink(missing_ok=True)
    Path("/etc/nginx/conf.d/camera-hub-images.conf").unlink(missing_ok=True)
    run("systemctl", "reload", "nginx")


def test_nginx_serves_images_after_what_the_guide_says(service, camera, tree, nginx):
    for command in [
        *guide_commands("Docs/fleet.md", "openssl req"),
        *guide_commands("Docs/fleet.md", "cp Examples/nginx-images.conf"),
        *guide_commands("Docs/fleet.md", "nginx -t"),
    ]:
        follow(command, tree)
    (found,) = service.wait_for_cameras(1)
    client = service.rpc()
    resid = client.capture_in_time(found["uid"], exposureInUs=1000)["resid"]
    tls = ssl.create_default_context(cafile="/etc/ssl/certs/camera-hub.pem")
    plain = wait_for_port(443)  # the reload has been asked for, and follows
    connection = HttpConnection(tls.wrap_socket(plain, server_hostname="hub1.example"))
    picture = Image.open(io.BytesIO(connection.get(f"/res/{resid}").body))
    connection.close()
    assert picture.size == (found["resolutionX"], found["resolutionY"])
