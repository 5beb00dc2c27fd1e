"""Installed, upgraded, removed, purged."""

import pwd
import time
from pathlib import Path

import pytest
from conftest import PACKAGE, Service, install, run

PROGRAMS = Path("/usr/libexec/camera-hub")
STATE = Path("/var/lib/camera-hub")


@pytest.fixture
def newer_package(tmp_path):
    """The same files under the next version."""
    tree = tmp_path / "tree"
    run("dpkg-deb", "--raw-extract", PACKAGE, tree)
    control = tree / "DEBIAN/control"
    text = control.read_text(encoding="utf-8")
    assert "\nVersion: 2.9-1\n" in text
    control.write_text(text.replace("\nVersion: 2.9-1\n", "\nVersion: 2.9-2\n"), encoding="utf-8")
    run("dpkg-deb", "--build", tree, tmp_path / "newer.deb")
    return tmp_path / "newer.deb"


def has_user():
    try:
        return bool(pwd.getpwnam("camera-hub"))
    except KeyError:
        return False


def test_an_upgrade_ends_the_hub_for_its_clients_and_starts_the_new_one(service, newer_package):
    process, client = service.process(), service.rpc()
    client.discover()
    begin = time.monotonic()
    install(newer_package)
    seconds = service.time_until_another_answers(process, begin)
    print(f"Upgraded: {seconds:.1f} s from the beginning of the installation until it answers again")
    assert client.rest() == b""
    assert "Version: 2.9-2" in run("dpkg", "--status", "camera-hub")


def test_a_service_that_was_switched_off_stays_so_after_an_upgrade(service, newer_package):
    run("systemctl", "disable", "--quiet", "--now", "camera-hub")
    install(newer_package)
    assert run("systemctl", "show", "--value", "--property=UnitFileState", "camera-hub").strip() == "disabled"
    run("systemctl", "enable", "--quiet", "--now", "camera-hub")


def test_a_removed_package_leaves_what_is_the_users(service):
    run("camera-hub-expose", "all")
    service.wait_until_ready()
    run("dpkg", "--remove", "camera-hub")
    assert not service.is_active()
    assert not PROGRAMS.exists()
    assert STATE.exists() and Path("/etc/default/camera-hub").exists() and has_user()
    install(PACKAGE)
    service.wait_until_ready()
    assert run("camera-hub-expose").startswith("all:")
    run("camera-hub-expose", "local")


def test_a_purged_package_leaves_nothing(service):
    run("camera-hub-expose", "all")
    run("dpkg", "--purge", "camera-hub")
    assert not has_user()
    left = run("find", "/etc", "/usr", "/var/lib", "/var/cache", "-xdev", "-name", "*camera-hub*")
    assert left == ""


def test_an_installation_starts_the_hub_and_says_who_reaches_it(service):
    run("dpkg", "--purge", "camera-hub")
    assert "to this machine only" in run("dpkg", "--install", PACKAGE)
    assert Service().wait_until_ready().rpc().discover() == []
    assert Service().property("UnitFileState") == "enabled"
