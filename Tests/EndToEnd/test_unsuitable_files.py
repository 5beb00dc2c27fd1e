"""Pipes, devices, folders and endless files in place of those that the hub reads and writes."""

import fcntl
import os

import pytest
from harness.hub import SERVICE_LOGGER, LogEntry
from harness.scenario import EXPOSURE, scenario
from harness.wait import wait_until

STARTED = LogEntry(
    "INFO", SERVICE_LOGGER, "Larkspur Windows Camera Hub started.  Waiting for Client connections..."
)


def rewrite(file, make):
    """Puts something else in a file's place."""
    file.unlink(missing_ok=True)
    make(file)


def as_endless_file(file):
    file.symlink_to("/dev/zero")


def as_huge_file(file):
    with open(file, "wb") as sparse:
        sparse.truncate(1 << 40)


def as_variable_of_itself(file):
    file.write_text("log4j.rootLogger=${log4j.rootLogger}\n")


def as_variables_of_each_other(file):
    file.write_text("log4j.rootLogger=${a}\na=x${b}\nb=${c}y\nc=${a}\n")


def as_long_chain_of_variables(file):
    links = "".join(f"v{i}=${{v{i + 1}}}\n" for i in range(3000))
    file.write_text("log4j.rootLogger=${v0}\n" + links)


def as_text_that_doubles_with_each_variable(file):
    links = "".join(f"v{i}=${{v{i + 1}}}${{v{i + 1}}}\n" for i in range(60))
    file.write_text("log4j.rootLogger=${v0}\n" + links + "v60=x\n")


UNREADABLE = [os.mkfifo, os.mkdir, as_endless_file, as_huge_file]
ENDLESS_VARIABLES = [
    as_variable_of_itself, as_variables_of_each_other, as_long_chain_of_variables,
    as_text_that_doubles_with_each_variable,
]


@pytest.mark.parametrize("make", UNREADABLE + ENDLESS_VARIABLES, ids=lambda make: make.__name__)
def test_a_log_configuration_that_cannot_be_used_is_told_and_the_hub_serves_without_a_log(start_hub, make):
    hub = start_hub(scenario("cam"))
    rewrite(hub.data_folder / "logging.properties", make)
    hub.restart().wait_for_cameras("cam")
    assert "its configuration can't be used" in hub.stderr()
    assert list((hub.run_folders()[-1] / "logs").iterdir()) == []


@pytest.mark.parametrize("make", UNREADABLE, ids=lambda make: make.__name__)
def test_a_scenario_that_is_no_regular_file_of_sensible_size_is_told_and_the_hub_serves(start_hub, make):
    hub = start_hub(scenario("cam"), start=False)
    rewrite(hub.scenario_file, make)
    hub.start()
    assert "ERROR" in [entry.level for entry in hub.log()]
    assert hub.rpc().discover() == []


@pytest.mark.parametrize("make", UNREADABLE, ids=lambda make: make.__name__)
def test_a_scenario_that_gives_way_to_no_regular_file_is_followed_when_it_is_one_again(start_hub, make):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    rewrite(hub.scenario_file, make)
    wait_until(lambda: "Simulated cameras stay as they are" in hub.stderr(), "the change is passed by")
    if make is os.mkdir:
        hub.scenario_file.rmdir()
    hub.write_scenario(scenario("other"))
    hub.wait_for_cameras("other")


def test_a_huge_picture_is_not_read_and_leaves_stills_of_its_camera_empty(start_hub):
    camera = {"exposure": EXPOSURE, "capture": {"picture": "picture.png"}}
    hub = start_hub(scenario("cam", "other", cameras={"cam": camera}), start=False)
    as_huge_file(hub.folder / "picture.png")
    hub.start().wait_for_cameras("cam", "other")
    client = hub.rpc()
    empty = client.capture("cam", exposureInUs=1000)["resid"]
    assert hub.get(f"/res/{empty}").status == 404
    assert hub.image(client.capture("other", exposureInUs=1000)["resid"]).startswith(b"\x89PNG")


def test_a_journal_that_nobody_reads_is_told_and_the_hub_serves(start_hub):
    hub = start_hub(scenario("cam"), start=False)
    os.mkfifo(hub.journal_file)
    hub.start()
    assert any(entry.level == "ERROR" and str(hub.journal_file) in entry.text for entry in hub.log())


def test_a_journal_whose_reader_does_not_keep_up_loses_lines_without_holding_the_hub_up(start_hub):
    hub = start_hub(scenario("cam"), start=False)
    os.mkfifo(hub.journal_file)
    reader = os.open(hub.journal_file, os.O_RDONLY | os.O_NONBLOCK)
    fcntl.fcntl(reader, fcntl.F_SETPIPE_SZ, 4096)
    hub.start().wait_for_cameras("cam")
    client = hub.rpc()
    for _ in range(30):
        assert "resid" in client.capture("cam", exposureInUs=1000)
    assert b'"call": "DeviceInformation.CreateWatcher"' in os.read(reader, 4096)
    os.close(reader)
    assert "resid" in client.capture("cam", exposureInUs=1000)


def use_log_file(hub, file):
    """Of PRODUCT, from the next start on."""
    properties = hub.data_folder / "logging.properties"
    name = "${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}/PRODUCT.log"
    properties.write_text(properties.read_text().replace(name, str(file)))


def test_a_log_file_that_is_a_pipe_is_told_and_takes_its_own_lines_alone(start_hub):
    hub = start_hub(scenario("cam"))
    pipe = hub.folder / "pipe"
    os.mkfifo(pipe)
    use_log_file(hub, pipe)
    hub.restart().wait_for_cameras("cam")
    assert f"{pipe}: it is no regular file" in hub.stderr()
    assert STARTED in hub.log("DEFAULT.log")


@pytest.mark.parametrize("stream", ["stdout", "stderr"])
def test_a_log_may_go_to_the_hubs_own_streams(start_hub, stream):
    hub = start_hub(scenario("cam"))
    use_log_file(hub, f"/dev/{stream}")
    hub.restart()
    wait_until(lambda: STARTED.text in getattr(hub, stream)(), "the line is there")
