"""Docs/fleet.md: what it has others do with a hub."""

import re

from harness.hub import ROOT
from harness.scenario import scenario
from harness.wait import wait_until

GUIDE = (ROOT / "Docs/fleet.md").read_text(encoding="utf-8")


def test_the_probe_of_the_blackbox_exporter_knows_a_hub_by_its_reply(start_hub):
    sent, expected = (re.search(rf'- {key}: "(.*)"$', GUIDE, re.MULTILINE)[1] for key in ("send", "expect"))
    connection = start_hub(scenario()).rpc()
    # As the exporter does it: a LF behind what is sent, and the lines of the reply compared one by one.
    connection.send_bytes(sent.encode().decode("unicode_escape").encode() + b"\n")
    line = connection.receive_bytes().partition(b"\n")[0].decode()
    assert re.search(expected.encode().decode("unicode_escape"), line)


def test_the_logging_properties_of_the_guide_send_the_log_to_standard_output(start_hub):
    (content,) = re.findall(r"^```properties\n(.*?)^```$", GUIDE, re.MULTILINE | re.DOTALL)
    hub = start_hub(scenario(), start=False)
    hub.data_folder.mkdir(parents=True)
    (hub.data_folder / "logging.properties").write_text(content, encoding="utf-8")
    hub.start()
    assert hub.rpc().request("camera:unknown")["error"]
    line = "ERROR LarkspurWindowsCameraHub.Device - Method not supported: camera:unknown"
    wait_until(lambda: line in hub.stdout().splitlines(), "the line on standard output")
    assert hub.log() == []
