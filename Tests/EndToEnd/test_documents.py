"""What the documents show is what happens."""

import io
import json
import re
import subprocess

import pytest
from harness.hub import ROOT
from harness.scenario import scenario
from harness.wait import PATIENCE
from PIL import Image

GUID = "[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}"
CONTROL_PICTURES = str.maketrans({"␀": "\0", "␍": "\r", "␊": "\n"})


def blocks(document, language):
    text = (ROOT / "Docs" / document).read_text(encoding="utf-8")
    found = re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)
    assert found
    return found


def side(block, arrow):
    """All that one side sends, as bytes."""
    lines = [line[2:] for line in block.splitlines() if line.startswith(arrow + " ")]
    return "".join(lines).translate(CONTROL_PICTURES).encode()


def as_pattern(expected):
    """The bytes, with any GUID and any length of an image in the place of those in the document."""
    text = re.sub(f"(?:{GUID})", "GUID", expected.decode())
    text = re.sub(r"(?<=Content-Length: )\d+", "LENGTH", text)
    return re.escape(text).replace("GUID", GUID).replace("LENGTH", r"\d+").encode()


@pytest.fixture(scope="module")
def documented_scenario():
    return json.loads(blocks("simulated-cameras.md", "json")[0])


@pytest.fixture(scope="module")
def hub(start_shared_hub, documented_scenario):
    return start_shared_hub(documented_scenario).wait_for_cameras("desk")


def test_the_exchanges_of_the_protocol_happen_as_shown(hub):
    client = hub.rpc()
    resid = ""
    for block in blocks("protocol.md", "rpc"):
        client.send_bytes(side(block, "→"))
        reply = client.receive_bytes()
        assert re.fullmatch(as_pattern(side(block, "←")), reply)
        if b"resid" in reply:
            resid = json.loads(reply[:-1])["result"]["resid"]

    for block in blocks("protocol.md", "http"):
        connection = hub.http()
        connection.send(re.sub(GUID, resid, side(block, "→").decode()).encode())
        expected = side(block, "←")
        if b"200 OK" in expected:
            assert re.fullmatch(as_pattern(expected), connection.receive_response().head)
        else:
            assert connection.receive_exactly(len(expected)) == expected
            assert not connection.has_bytes_within(0.1)


@pytest.mark.parametrize("block", blocks("protocol.md", "rpc-end"))
def test_the_requests_that_end_the_hub_do_so(start_hub, documented_scenario, block):
    hub = start_hub(documented_scenario)
    client = hub.rpc()
    client.send_bytes(side(block, "→"))
    assert client.rest() == b""
    assert hub.wait_for_end().name == "SIGABRT"


def test_the_documented_journal_line_has_the_members_of_a_real_one(hub):
    documented = json.loads(blocks("simulated-cameras.md", "json")[1])
    hub.rpc().capture("desk", exposureInUs=60000)
    hub.rpc().capture("desk", exposureInUs=1000)
    real = next(line for line in hub.journal() if line["call"] == documented["call"])
    assert {name: type(value) for name, value in real.items()} == {
        name: type(value) for name, value in documented.items()
    }


def test_every_operation_of_the_fault_table_is_accepted_where_it_stands(start_hub):
    text = (ROOT / "Docs/simulated-cameras.md").read_text(encoding="utf-8")
    faults = {
        where: {name: {"fails": False} for name in re.findall(r"`([^`]+)`", operations)}
        for where, operations in re.findall(r"^\| (top level|group|camera) \| (.*) \|$", text, re.MULTILINE)
    }
    assert faults.keys() == {"top level", "group", "camera"}
    complete = scenario("cam", faults=faults["top level"], camera={"faults": faults["camera"]})
    complete["groups"][0]["faults"] = faults["group"]
    start_hub(complete).wait_for_cameras("cam")


def test_the_documented_probe_tells_a_hub_that_answers_from_one_that_hangs_or_is_not_there(start_hub, network):
    text = (ROOT / "Docs/operating.md").read_text(encoding="utf-8")
    (command,) = re.findall(r"^    timeout (60 .*)$", text, re.MULTILINE)

    def probe(network, minute):
        return network.run(subprocess.run, ["bash", "-c", f"timeout {minute}{command[2:]}"], check=False).returncode

    hub = start_hub(scenario())
    assert probe(hub.network, PATIENCE) == 0
    hub.http().send(b"\r\n")
    assert probe(hub.network, 1) == 124  # timeout's own
    assert probe(network, PATIENCE) == 1


DOCUMENTS = sorted([*ROOT.glob("*.md"), *ROOT.glob("Docs/**/*.md"), *ROOT.glob(".github/**/*.md")])

# What looks like a path of the tree, but is made by a build, by a run of the hub, by a client, or by whoever adds a
# platform.
MADE_ELSEWHERE = ("build/", "build-", ".../", "P/", "Platform/Mine", "Tests/Platform/Mine")


def dead_links(document):
    """The targets of its links that lead to no file; those that leave the tree are not followed."""
    text = re.sub(r"^    .*$", "", document.read_text(encoding="utf-8"), flags=re.MULTILINE)  # code
    targets = re.findall(r"\]\(([^)#]+)(?:#[^)]*)?\)", text)
    return [target for target in targets if "://" not in target and not (document.parent / target).exists()]


def is_in_tree(path):
    """From the root; a header with its source also without their ending, a bare name wherever it lies."""
    if "/" in path:
        return (ROOT / path).exists() or (ROOT / f"{path}.h").exists()
    return (ROOT / path).exists() or any(ROOT.glob(f"[A-Z]*/**/{path}"))  # not in a build


def missing_paths(document):
    """What stands in backticks outside of blocks, is made of the characters of a path, and either has a slash that it
    does not begin with or ends like a source of ours, is a path of the tree."""
    text = re.sub(r"^```.*?^```$", "", document.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)
    named = re.findall(r"`([\w.-]+(?:/[\w.-]*)+|[\w.-]+\.(?:h|cpp|py|sh|md|cmake))`", text)
    return [path for path in named if not path.startswith(MADE_ELSEWHERE) and not is_in_tree(path)]


@pytest.mark.parametrize("document", DOCUMENTS, ids=lambda document: document.relative_to(ROOT).as_posix())
def test_the_links_and_paths_of_a_document_lead_to_what_is_there(document):
    assert (dead_links(document), missing_paths(document)) == ([], [])


def test_a_link_or_path_that_leads_nowhere_is_found(tmp_path):
    document = tmp_path / "page.md"
    document.write_text("""[here](page.md#top), [there](https://there.example/), [gone](gone.md), ![gone](gone.png)
`README.md`, `Docs`, `Docs/`, `conftest.py`, `Framework/CXX/Common/Clock`, `/res/`, `build/bin`, `GET /res/`, `a.png`
`Docs/gone`, `Gone/`, `gone.py`, `Framework/CXX/Common/Gone`
""", encoding="utf-8")
    assert dead_links(document) == ["gone.md", "gone.png"]
    assert missing_paths(document) == ["Docs/gone", "Gone/", "gone.py", "Framework/CXX/Common/Gone"]


def test_the_picture_of_the_readme_is_what_the_hub_takes(start_hub):
    hub = start_hub(environment={"CAMERA_HUB_SIMULATION": None}).wait_for_cameras("simulated-camera")
    exposure = int(re.search(r"--exposure-us (\d+)", (ROOT / "README.md").read_text(encoding="utf-8"))[1])
    resid = hub.rpc().capture("simulated-camera", exposureInUs=exposure)["resid"]
    taken = Image.open(io.BytesIO(hub.image(resid))).reduce(3)
    with Image.open(ROOT / "Docs/images/first-picture.png") as shown:
        above_the_caption = (0, 0, 640, 330)  # which tells the time
        assert shown.size == taken.size
        assert shown.crop(above_the_caption).tobytes() == taken.crop(above_the_caption).tobytes()
