"""What the documents show is what happens."""

import json
import re

import pytest
from harness.hub import ROOT
from harness.scenario import scenario

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


def test_no_document_links_to_a_file_that_is_not_there():
    for document in [ROOT / "README.md", *(ROOT / "Docs").glob("*.md")]:
        for target in re.findall(r"\]\(([^)#]+)(?:#[^)]*)?\)", document.read_text(encoding="utf-8")):
            assert (document.parent / target).exists(), f"{document.name}: {target}"
