"""What ends the hub on purpose, and what must not: there is no guard against the former anywhere."""

import os
import signal
import socket
import time
from pathlib import Path

import pytest
from harness.hub import ASSERTS, DEVICE_LOGGER, HTTP_PORT, IS_SANITIZED, RPC_PORT, SERVICE_LOGGER, LogEntry
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.system_calls import refuse_threads
from harness.wait import wait_until

NOT_A_TEXT = "Type is not convertible to string"
NOT_A_NUMBER = "Type is not convertible to double"


def assert_ended_without_a_reply(hub, client, *texts):
    assert client.rest() == b""
    assert hub.wait_for_end() == signal.SIGABRT
    (record,) = hub.crash_records()
    for told in (hub.stderr(), record):
        assert all(text in told for text in texts), told


@pytest.mark.parametrize(
    "message, text",
    [
        *[(f'{{"id":1,"method":{value}}}', NOT_A_TEXT) for value in ("1", "1.5", "[]", "{}")],
        *[
            (f'{{"id":1,"method":"camera:capture","params":{{"to":{value}}}}}', NOT_A_TEXT)
            for value in ("5", "0.5", "[]", "{}")
        ],
        *[
            (f'{{"id":1,"method":"camera:redirectDiagnostics","params":{{"path":{value}}}}}', NOT_A_TEXT)
            for value in ("5", "0.5", "[]", "{}")
        ],
        *[
            (f'{{"id":1,"method":"camera:capture","params":{{"to":"","gainInPercent":{value}}}}}', NOT_A_NUMBER)
            for value in ('"5"', "[]", "{}")
        ],
        *[(root, "Type has no members") for root in ("5", "-1", "1.5", '"text"', "true", "false")],
    ],
)
def test_a_value_of_a_type_that_is_not_guarded_ends_the_hub_for_every_client(start_hub, message, text):
    hub = start_hub(scenario())
    bystander, client = hub.rpc(), hub.rpc()
    assert bystander.discover() == []
    client.send(message)
    assert_ended_without_a_reply(hub, client, "std::runtime_error", text)
    assert bystander.rest() == b""


def test_a_reply_before_the_end_is_not_promised_but_the_end_is(start_hub):
    hub = start_hub(scenario())
    client = hub.rpc()
    client.send_bytes(b'{"id":1,"method":"camera:version"}\0{"id":2,"method":7}\0')
    assert b'"id":2' not in client.rest()
    assert hub.wait_for_end() == signal.SIGABRT


def assert_ended_by_a_platform_error(hub, client, error):
    """Standard error tells the type alone, the crash record also the text and the code."""
    assert_ended_without_a_reply(hub, client, "winrt::hresult_error")
    (record,) = hub.crash_records()
    assert error in record, record


def assert_opening_ends_the_hub(hub, error):
    client = hub.rpc()
    client.send('{"id":1,"method":"camera:capture","params":{"to":"cam","exposureInUs":1000}}')
    assert_ended_by_a_platform_error(hub, client, error)


FAULT = {"message": "It broke.", "code": -2147467259}
FAULT_IN_RECORD = "It broke. -2147467259 (0x80004005)"


@pytest.mark.parametrize(
    "camera",
    [
        {"faults": {"MediaCapture.CreateFrameReaderAsync": FAULT}},
        {"faults": {"MediaFrameReader.StartAsync": FAULT}},
        {"exposureControl": {"supported": True}, "faults": {"ExposureControl.SetAutoAsync": FAULT}},
        {"focusControl": {"supported": True}, "faults": {"FocusControl.SetPresetAsync": FAULT}},
        {"whiteBalanceControl": {"supported": True}, "faults": {"WhiteBalanceControl.SetPresetAsync": FAULT}},
    ],
    ids=lambda camera: next(iter(camera["faults"])),
)
def test_a_platform_failure_while_a_camera_is_opened_ends_the_hub(start_hub, camera):
    hub = start_hub(scenario("cam", camera={"exposure": EXPOSURE} | camera)).wait_for_cameras("cam")
    assert_opening_ends_the_hub(hub, FAULT_IN_RECORD)


def test_a_camera_that_fails_to_initialise_a_second_time_ends_the_hub_when_it_is_used(start_hub):
    camera = {"exposure": EXPOSURE, "faults": {"MediaCapture.InitializeAsync": FAULT | {"after": 1}}}
    hub = start_hub(scenario("cam", camera=camera)).wait_for_cameras("cam")
    assert_opening_ends_the_hub(hub, "the capture is closed: It broke. -2147483629 (0x80000013)")


def test_a_camera_with_photo_sources_only_ends_the_hub_when_it_is_opened(start_hub):
    group = camera_group("cam")
    group["sources"][0]["streamType"] = "Photo"
    hub = start_hub({"groups": [group], "cameras": {"cam": {"exposure": EXPOSURE}}}).wait_for_cameras("cam")
    assert_opening_ends_the_hub(hub, "The capture has no such source. -2147024809 (0x80070057)")


@pytest.mark.parametrize("operation", ["MediaFrameReader.StopAsync", "MediaCapture.Close"])
def test_a_platform_failure_while_a_camera_is_closed_ends_the_hub(start_hub, operation):
    camera = {"exposure": EXPOSURE, "faults": {operation: FAULT}}
    hub = start_hub(scenario("cam", camera=camera)).wait_for_cameras("cam")
    client, bystander = hub.rpc(), hub.rpc()
    assert "resid" in client.capture("cam", exposureInUs=1000)
    assert bystander.discover() != []
    client.close()
    assert_ended_by_a_platform_error(hub, bystander, FAULT_IN_RECORD)


@pytest.mark.parametrize("taken, free", [(RPC_PORT, HTTP_PORT), (HTTP_PORT, RPC_PORT)])
def test_a_port_that_is_taken_leaves_a_hub_without_it(start_hub, network, taken, free):
    with network.run(socket.create_server, ("", taken)):
        hub = start_hub(scenario(), wait_for_ports=False, network=network)
        wait_until(lambda: is_open(network, free), f"port {free} is open")
        if free == RPC_PORT:
            assert hub.rpc().discover() == []
        else:
            assert hub.get("/res/x").status == 404
        assert hub.is_running()
        assert "ERROR" not in [entry.level for entry in hub.log()]


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer takes more addresses than that")
def test_listeners_that_cannot_be_made_leave_a_hub_that_serves_nothing(start_hub, network):
    more_than_memory = {"unused": [1] * 4_000_000}  # 12 MB of text; half a gigabyte of values
    hub = start_hub(scenario() | more_than_memory, wait_for_ports=False, network=network, prepare="ulimit -v 300000")
    hub.wait_for_log("ERROR", SERVICE_LOGGER, "CameraHub encountered an error: std::bad_alloc")
    time.sleep(1)
    assert hub.is_running()
    assert not is_open(network, RPC_PORT)
    assert not is_open(network, HTTP_PORT)


def is_open(network, port):
    try:
        network.connect(port).close()
    except ConnectionRefusedError:
        return False
    return True


def test_an_endless_exposure_delay_hangs_the_hub_without_ending_it(start_hub):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    client, bystander = hub.rpc(), hub.rpc()
    client.send(
        '{"id":1,"method":"camera:capture",'
        '"params":{"to":"cam","exposureInUs":1000,"exposureChangeDelayInMs":-1}}'
    )
    hub.wait_for_log("INFO", DEVICE_LOGGER, "Try set to 2^[-10.000000] s, camera name: Test Camera")
    bystander.send('{"id":1,"method":"camera:version"}')
    assert not bystander.has_bytes_within(2)
    assert not client.has_bytes_within(0)
    assert hub.is_running()


def test_the_throttle_sets_how_long_the_simulated_crash_waits(start_hub):
    hub = start_hub(scenario(), start=False)
    hub.write_registry('"SimulatedCrashModeEnabled"=hex:01,00,00,00', '"AppThrottle"=dword:00001770')
    begin = time.monotonic()
    assert hub.start(wait_for_ports=False).wait_for_end() == signal.SIGABRT
    assert time.monotonic() - begin >= 3  # half of 6000 ms; without the value it would be 2.5 s


@pytest.mark.skipif(not ASSERTS, reason="assertions are off")
def test_a_capture_without_any_exposure_ends_a_hub_whose_assertions_are_on(start_hub):
    hub = start_hub(scenario("D", cameras={"D": {"exposure": EXPOSURE}})).wait_for_cameras("D")
    client = hub.rpc()
    client.send('{"id":1,"method":"camera:capture","params":{"to":"D"}}')
    assert client.rest() == b""
    assert hub.wait_for_end() == signal.SIGABRT
    assert "Assertion `0' failed" in hub.stderr()


def test_standard_output_that_nobody_reads_any_more_does_not_end_the_hub(start_hub, tmp_path):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
    hub = start_hub(scenario(), prepare=f"exec > '{pipe}'")
    os.close(reader)
    client = hub.rpc()
    client.request("camera:redirectDiagnostics", path="/missing")  # begins a new run, which is told there
    assert client.request("camera:version")["result"] == "2.9"


@pytest.mark.parametrize("closed", ["<&-", ">&-", "2>&-", "<&- >&- 2>&-"])
def test_standard_streams_that_are_closed_become_no_other_file(start_hub, closed):
    hub = start_hub(scenario(), prepare=f"exec {closed}")
    streams = {"<&-": 0, ">&-": 1, "2>&-": 2}
    for redirection in closed.split():
        assert hub.proc("fd").joinpath(str(streams[redirection])).resolve() == Path("/dev/null")
    assert hub.rpc().request("camera:version")["result"] == "2.9"


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer's own handler takes the signal first")
def test_a_crash_without_standard_streams_leaves_its_whole_record(start_hub):
    hub = start_hub(scenario(), prepare="exec <&- >&- 2>&-")
    os.kill(hub.process.pid, signal.SIGSEGV)
    assert hub.wait_for_end() == signal.SIGSEGV
    (record,) = hub.crash_records()
    assert ", which crashed:" in record, record


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer makes threads of its own")
def test_a_hub_for_which_the_system_has_no_thread_answers_on_both_ports_and_says_why_it_finds_no_cameras(start_hub):
    hub = start_hub(scenario("usb-1"), start=False)
    hub.network.run(refuse_threads)
    hub.start()
    assert hub.rpc().discover() == []
    assert hub.get("/res/x").status == 404
    reason = "pthread_create on the worker pool: Resource temporarily unavailable"
    line = f"CameraEnumeration: could not create watcher - {reason}"
    assert LogEntry("ERROR", SERVICE_LOGGER, line) in hub.log()
