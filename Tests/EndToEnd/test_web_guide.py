"""Docs/web.md: its commands, addresses and settings of other programs."""

import base64
import io
import json
import os
import re
import signal
import ssl
import subprocess

import pytest
import yaml
from harness.guides import guide_commands
from harness.hub import ROOT
from harness.scenario import EXPOSURE, camera_group
from harness.wait import PATIENCE, wait_until
from PIL import Image

GUIDE = (ROOT / "Docs/web.md").read_text(encoding="utf-8")
TOKEN = "0123456789abcdef"
HOST = "hub1.example"


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub({"groups": [camera_group("desk", 1280, 720, "Desk Camera")],
                             "cameras": {"desk": {"exposure": EXPOSURE}}}).wait_for_cameras("desk")


@pytest.fixture(scope="module")
def web(hub, start_shared_web):
    return start_shared_web(hub.network, "--listen", "127.0.0.1:8080").wait_for_cameras("desk")


@pytest.fixture(scope="module")
def secrets(tmp_path_factory):
    """A folder with token, certificate and key, made by the guide's command."""
    folder = tmp_path_factory.mktemp("secrets")
    (folder / "token").write_text(f"{TOKEN}\n", encoding="ascii")
    (command,) = guide_commands("Docs/web.md", "sudo openssl req")
    command = command.removeprefix("sudo ").replace("/etc/credstore", str(folder))
    subprocess.run(command.split(), check=True, capture_output=True)
    return folder


@pytest.fixture(scope="module")
def open_web(hub, start_shared_web, secrets):
    """One for others, at the port of the guide, with the arguments that it gives."""
    (arguments,) = re.findall(r'^CAMERA_HUB_WEB_ARGUMENTS="([^"]*)"$', GUIDE, re.MULTILINE)
    words = arguments.replace("/run/credentials/camera-hub-web.service/camera-hub-web.token", str(secrets / "token"))
    words = words.replace("/run/credentials/camera-hub-web.service", str(secrets)).split()
    tls = ssl.create_default_context(cafile=str(secrets / "camera-hub-web.certificate"))
    tls.check_hostname = False  # the certificate has another name than connections here ask for
    return start_shared_web(hub.network, *words, tls=tls)


def run(command, network, folder, expected=0):
    """Has curl find the guide's host at this machine, and know its certificate."""
    environment = os.environ | {"HOME": str(folder)}
    result = network.run(subprocess.run, ["bash", "-o", "pipefail", "-c", command], cwd=folder, env=environment,
                         capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert result.returncode == expected, result.stderr
    return result.stdout


def test_the_commands_for_pictures_save_them(web, tmp_path):
    whole, smaller = guide_commands("Docs/web.md", "curl --fail --silent --show-error --output picture.png") + \
        guide_commands("Docs/web.md", "curl --fail --silent 'http://127.0.0.1:8080/cameras/desk/still.jpg")
    run(whole, web.network, tmp_path)
    run(smaller, web.network, tmp_path)
    pictures = [Image.open(tmp_path / name) for name in ("picture.png", "small.jpg")]
    assert [(picture.format, picture.size) for picture in pictures] == [("PNG", (1280, 720)), ("JPEG", (640, 360))]


def test_the_command_for_the_cameras_tells_their_uids(web, tmp_path):
    (command,) = guide_commands("Docs/web.md", "curl --fail --silent http://127.0.0.1:8080/api/cameras |")
    assert run(command, web.network, tmp_path) == "desk\n"


def test_the_command_for_a_kept_still_tells_its_address(web, tmp_path):
    (command,) = guide_commands("Docs/web.md", "curl --fail --silent --json")
    address = run(command, web.network, tmp_path).strip()
    assert web.get(address).header("Content-Type") == "image/png"


def test_the_command_for_events_goes_on_until_ctrl_c(web):
    (command,) = guide_commands("Docs/web.md", "curl --fail --silent --no-buffer")
    process = web.network.run(subprocess.Popen, ["setpriv", "--pdeathsig", "KILL", *command.split()],
                              stdout=subprocess.PIPE, text=True)
    with process:
        wait_until(lambda: process.stdout.readline() == "event: cameras\n", "the event")
        process.send_signal(signal.SIGINT)


def test_the_command_with_a_token_gets_through(open_web, secrets, tmp_path):
    (command,) = guide_commands("Docs/web.md", "curl --fail --silent --header")
    (tmp_path / "token").write_text(TOKEN, encoding="ascii")
    (tmp_path / ".curlrc").write_text(f'resolve = "{HOST}:8443:127.0.0.1"\n'
                                      f'cacert = "{secrets / "camera-hub-web.certificate"}"\n', encoding="ascii")
    assert json.loads(run(command, open_web.network, tmp_path))["cameras"][0]["uid"] == "desk"
    (tmp_path / "token").write_text(TOKEN[::-1], encoding="ascii")
    run(command, open_web.network, tmp_path, expected=22)


def test_the_command_for_monitors_tells_a_hub_that_is_away(web, network, start_web, tmp_path):
    (command,) = guide_commands("Docs/web.md", "curl --fail --silent --max-time")
    run(command, web.network, tmp_path)
    start_web(network, "--listen", "127.0.0.1:8080")
    run(command, network, tmp_path, expected=22)


def test_every_address_that_the_guide_names_is_there(web):
    rows = re.findall(r"^\| `(/[^`]*)` \|", GUIDE, re.MULTILINE)
    assert len(rows) > 10
    for address in rows:
        path = address.replace("UID", "desk")
        if path == "/cameras/desk/stream.mjpg":
            continue  # it has no end: below
        answer = web.post(path, {}) if path == "/api/cameras/desk/stills" else None
        if path == "/api/events":
            connection = web.connect()
            connection.ask("GET", path)
            assert b"event: hub" in connection.receive_through(b"event: hub")
            continue
        assert (answer or web.get(path)).status in (200, 201), path


def authorized():
    user = base64.b64encode(f"any name:{TOKEN}".encode()).decode()
    return {"Authorization": f"Basic {user}", "Host": f"{HOST}:8443"}


def test_home_assistant_gets_pictures_as_it_asks_for_them(open_web):
    still, = re.findall(rf"https://{HOST}:8443(/cameras/[^`]*still[^`]*)`", GUIDE)
    picture = open_web.get(still, authorized())
    assert Image.open(io.BytesIO(picture.body)).size == (1280, 720)
    assert open_web.get(still, {"Host": f"{HOST}:8443"}).status == 401

    stream, = re.findall(rf"https://{HOST}:8443(/cameras/[^`]*stream[^`]*)`", GUIDE)
    connection = open_web.connect()
    connection.ask("GET", stream, authorized())
    head = connection.receive_through(b"\r\n\r\n")
    assert b" 200 " in head and b"multipart/x-mixed-replace" in head
    assert b"Content-Type: image/jpeg" in connection.receive_through(b"image/jpeg")


def test_octoprint_gets_its_snapshot(web):
    path, = re.findall(r"^`http://127.0.0.1:8080(/cameras/desk/still.jpg)`", GUIDE, re.MULTILINE)
    assert web.get(path).header("Content-Type") == "image/jpeg"


def test_a_page_of_another_site_gets_no_stream(web):
    foreign = {"Sec-Fetch-Site": "cross-site", "Sec-Fetch-Mode": "no-cors", "Sec-Fetch-Dest": "image"}
    assert web.get("/cameras/desk/stream.mjpg", foreign).kind == "forbidden"


def test_prometheus_gets_every_number_that_the_guide_names_and_no_other(open_web):
    block = next(yaml.safe_load(text) for text in re.findall(r"^```yaml\n(.*?)^```$", GUIDE, re.MULTILINE | re.DOTALL))
    (job,) = block["scrape_configs"]
    assert (job["scheme"], job["authorization"]["type"]) == ("https", "Bearer")
    (target,) = job["static_configs"][0]["targets"]
    answer = open_web.get("/metrics", {"Authorization": f"Bearer {TOKEN}", "Host": target})
    assert (answer.status, answer.media_type) == (200, "text/plain")
    names = set(re.findall(r"^# TYPE (\S+) ", answer.body.decode(), re.MULTILINE))
    assert set(re.findall(r"`(camera_hub_web_\w+)`", GUIDE)) == names != set()
