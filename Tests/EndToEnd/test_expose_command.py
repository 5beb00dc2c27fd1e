"""camera-hub-expose, on a system below a folder."""

import shlex
import subprocess
from xml.etree import ElementTree

import pytest
from harness.guides import guide_commands
from harness.hub import HTTP_PORT, ROOT, RPC_PORT

COMMAND = ROOT / "Packaging/camera-hub-expose"
DROP_IN = "etc/systemd/system/camera-hub.service.d/expose.conf"
ANNOUNCEMENT = "etc/avahi/services/camera-hub.service"
LOCAL = "local: only this machine reaches its ports 3141 and 3142.\n"
ALL = "all: everybody reaches the ports 3141 and 3142 of this machine.\n"


def expose(system, *arguments):
    """On a system below that folder."""
    command = [str(COMMAND), "--root", str(system), *arguments]
    return subprocess.run(command, capture_output=True, text=True, check=False)


def told(system, *arguments):
    result = expose(system, *arguments)
    assert (result.returncode, result.stderr) == (0, "")
    return result.stdout


def allowed(system):
    lines = (system / DROP_IN).read_text(encoding="utf-8").splitlines()
    assert lines[1:-1] == ["[Service]"]
    return lines[-1]


def test_a_machine_is_closed_until_something_else_is_said(tmp_path):
    assert told(tmp_path) == LOCAL
    assert not (tmp_path / DROP_IN).exists()


@pytest.mark.parametrize(
    "subnets",
    [
        ["192.168.7.0/24"],
        ["10.0.0.0/8", "fd00:7::/64", "192.168.1.9"],
        ["::/1"],
        ["fe80::1"],
        ["1:2:3:4:5:6:7:8/128"],
        ["::ffff"],
        ["0.0.0.0/1", "255.255.255.255/32"],
    ],
)
def test_networks_that_are_named_reach_it_and_are_shown(tmp_path, subnets):
    text = f"{' '.join(subnets)}: these and this machine reach its ports 3141 and 3142.\n"
    assert told(tmp_path, *subnets) == text
    assert allowed(tmp_path) == f"IPAddressAllow={' '.join(subnets)}"
    assert told(tmp_path) == text


def test_everybody_reaches_it_when_that_is_said(tmp_path):
    assert told(tmp_path, "all") == ALL
    assert allowed(tmp_path) == "IPAddressAllow=any"
    assert told(tmp_path) == ALL


def test_what_is_said_last_counts(tmp_path):
    told(tmp_path, "all")
    told(tmp_path, "10.0.0.0/8")
    assert allowed(tmp_path) == "IPAddressAllow=10.0.0.0/8"


def test_the_commands_of_the_guide_close_and_open_as_they_say(tmp_path):
    local, networks, everybody = [shlex.split(line)[1:]
                                  for line in guide_commands("Docs/service.md", "camera-hub-expose")]
    assert told(tmp_path, *networks).startswith("192.168.7.0/24 fd00:7::/64: these and this machine")
    assert told(tmp_path, *everybody) == told(tmp_path) == ALL
    assert told(tmp_path, *local) == told(tmp_path) == LOCAL


def test_closing_leaves_nothing_behind(tmp_path):
    told(tmp_path, "all")
    assert told(tmp_path, "local") == LOCAL
    assert not (tmp_path / DROP_IN).parent.exists()
    assert told(tmp_path, "local") == LOCAL


def test_what_an_administrator_has_put_beside_it_stays(tmp_path):
    told(tmp_path, "all")
    other = (tmp_path / DROP_IN).with_name("memory.conf")
    other.write_text("[Service]\nMemoryMax=4G\n", encoding="utf-8")
    told(tmp_path, "local")
    assert [path.name for path in other.parent.iterdir()] == ["memory.conf"]


def test_only_what_others_reach_is_announced(tmp_path):
    told(tmp_path)
    assert not (tmp_path / ANNOUNCEMENT).exists()
    told(tmp_path, "10.0.0.0/8")
    (service,) = ElementTree.parse(tmp_path / ANNOUNCEMENT).iter("service")
    assert {part.tag: part.text for part in service} == {
        "type": "_camera-hub._tcp",
        "port": str(RPC_PORT),
        "txt-record": f"http-port={HTTP_PORT}",
    }
    told(tmp_path, "local")
    assert not (tmp_path / ANNOUNCEMENT).exists()


@pytest.mark.parametrize(
    "word",
    [
        "everybody",
        "",
        "any",
        "10.0.0",
        "10.0.0.256",
        "10.0.0.0/33",
        "10.0.0.0/",
        "10.0.0.0/8/8",
        "1000.0.0.0",
        "fd00",
        "fd00::7::1",
        "fd00:7",
        ":::",
        ":1:2:3:4:5:6:7:8",
        "1:2:3:4:5:6:7:8:9",
        "12345::",
        "fd00::/129",
        "fd00::g",
        "10.0.0.0/8\nUser=root",
        "--help",
        "local",
    ],
)
def test_what_is_no_network_is_refused_and_changes_nothing(tmp_path, word):
    told(tmp_path, "192.168.7.0/24")
    result = expose(tmp_path, "10.0.0.0/8", word)
    assert (result.returncode, result.stdout) == (2, "")
    assert result.stderr.startswith(f"camera-hub-expose: {word} is no network address")
    assert allowed(tmp_path) == "IPAddressAllow=192.168.7.0/24"


def test_a_folder_that_is_not_there_is_refused(tmp_path):
    result = expose(tmp_path / "gone")
    assert (result.returncode, result.stdout) == (2, "")
    assert result.stderr == f"camera-hub-expose: there is no folder {tmp_path}/gone\n"


def test_help_tells_how_it_is_used():
    result = subprocess.run([str(COMMAND), "--help"], capture_output=True, text=True, check=False)
    assert result.returncode == 0
    assert "Usage: camera-hub-expose [--root FOLDER] [local | all | SUBNET...]" in result.stdout
    assert all(not line.startswith("#") for line in result.stdout.splitlines())
