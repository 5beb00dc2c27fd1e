"""The folders, logs and crash records that a run of the hub leaves."""

import contextlib
import os
import re
import resource
import signal
import time

import pytest
from harness.hub import DEVICE_LOGGER, HTTP_PORT, IS_SANITIZED, RPC_PORT, SERVICE_LOGGER, LogEntry
from harness.locales import make_locale
from harness.scenario import camera_group, scenario
from harness.wait import PATIENCE

STARTED = LogEntry(
    "INFO", SERVICE_LOGGER, "Larkspur Windows Camera Hub started.  Waiting for Client connections..."
)


def test_a_run_leaves_a_folder_named_by_its_start_time(start_hub):
    hub = start_hub(scenario())
    (run,) = hub.run_folders()
    assert re.fullmatch(r"\d{4}-\d\d-\d\d_\d\d-\d\d-\d\d", run.name)
    assert sorted(entry.name for entry in run.iterdir()) == ["Crash", "Traces", "logs"]
    assert sorted(entry.name for entry in (run / "logs").iterdir()) == [
        "DEFAULT.log", "DEVICE.log", "PRODUCT.log", "TIMING.log",
    ]
    (trace,) = (run / "Traces").iterdir()
    assert re.fullmatch(r"_default_\d{4}-\d\d-\d\d_\d\d-\d\d-\d\d[+-]\d{4}", trace.name)
    assert [entry.name for entry in trace.iterdir()] == ["Data"]


def test_a_start_without_a_debugger_says_so_and_nothing_else(start_hub):
    hub = start_hub(scenario())
    assert hub.stdout() == "Console logging is disabled.\n"
    assert hub.stderr() == ""


def test_the_start_is_logged_before_the_listeners_are_made(start_hub):
    hub = start_hub(scenario(faults={"DeviceInformation.CreateWatcher": {"message": "No devices today."}}))
    failure = LogEntry("ERROR", SERVICE_LOGGER, "CameraEnumeration: could not create watcher - No devices today.")
    assert hub.log() == [STARTED, failure]  # the listener on the RPC port looks for cameras while it is made


def test_the_lines_reach_the_files_of_their_loggers(start_hub):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    assert "resid" in hub.rpc().capture("cam", exposureInUs=1000)
    connected = LogEntry("INFO", DEVICE_LOGGER, "Connected to camera uid cam, camera name: Test Camera")
    assert all(connected in hub.log(name) for name in ("DEFAULT.log", "DEVICE.log", "PRODUCT.log"))
    assert all(STARTED in hub.log(name) for name in ("DEFAULT.log", "PRODUCT.log"))
    assert STARTED not in hub.log("DEVICE.log")
    assert hub.log("TIMING.log") == []


def test_a_data_folder_that_does_not_exist_ends_the_start(start_hub, tmp_path):
    hub = start_hub(
        scenario(), wait_for_ports=False, environment={"CAMERA_HUB_COMMON_DATA": str(tmp_path / "missing")}
    )
    assert hub.process.wait(PATIENCE) == 1
    assert hub.stdout() == "Failed to initialize diagnostics and logging.\n"
    assert not (tmp_path / "missing").exists()


def test_a_configuration_of_the_logging_library_where_the_hub_is_started_is_not_read(start_hub):
    hub = start_hub(scenario(), start=False)
    (hub.folder / "log4j.properties").write_text(
        "log4j.rootLogger=DEBUG, Stray\n"
        "log4j.appender.Stray=org.apache.log4j.FileAppender\n"
        "log4j.appender.Stray.File=stray.log\n"
        "log4j.appender.Stray.layout=org.apache.log4j.SimpleLayout\n"
    )
    hub.start()
    assert STARTED in hub.log()
    assert not (hub.folder / "stray.log").exists()


def test_an_edited_configuration_is_kept_and_obeyed(start_hub):
    hub = start_hub(scenario())
    file = hub.data_folder / "logging.properties"
    logger = "log4j.logger.LarkspurWindowsCameraHub"
    edited = file.read_text().replace(f"{logger}=INFO", f"{logger}=DEBUG")
    file.write_text(edited)
    hub.restart()
    hub.rpc().request("camera:version")
    assert file.read_text() == edited
    assert "DEBUG" not in [entry.level for entry in hub.log() if entry.logger.startswith(DEVICE_LOGGER)]
    file.write_text(edited.replace("Hub.Device=INFO", "Hub.Device=DEBUG"))
    hub.restart()
    hub.rpc().request("camera:version")
    assert "DEBUG" in [entry.level for entry in hub.log() if entry.logger.startswith(DEVICE_LOGGER)]


def test_at_most_ten_run_folders_stay(start_hub):
    hub = start_hub(scenario())
    diagnostics = hub.data_folder / "Diagnostics"
    for day in range(1, 13):
        (diagnostics / f"2019-01-{day:02}_00-00-00").mkdir()
        time.sleep(0.02)  # the order of creation is what counts
    first = hub.run_folders()[-1]
    hub.restart()
    names = [folder.name for folder in hub.run_folders()]
    assert len(names) == 10
    assert first.name not in names
    assert names[0] == "2019-01-04_00-00-00"


def check_log_of_foreign_text(start_hub, environment):
    name = "Kamera Süd 摄像头 📷"
    groups = [camera_group("cam-é", name=name)]
    hub = start_hub({"groups": groups, "cameras": {}}, environment=environment).wait_for_cameras("cam-é")
    assert LogEntry("INFO", SERVICE_LOGGER, "Device added: cam-é") in hub.log()
    hub.rpc().capture("cam-é", exposureInUs=1000)
    hub.wait_for_log("INFO", DEVICE_LOGGER, f"Connected to camera uid cam-é, camera name: {name}")
    log = (hub.run_folders()[0] / "logs" / "DEFAULT.log").read_text(encoding="utf-8")
    months = "Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec"
    assert re.match(rf"\d{{4}}-({months})-\d\d \d\d:\d\d:\d\d  \[", log)


@pytest.mark.parametrize("locale", ["C", "C.UTF-8", "POSIX", "no_SUCH.UTF-8", None])
def test_the_log_is_utf8_whatever_the_locale(start_hub, locale):
    check_log_of_foreign_text(start_hub, {"LC_ALL": locale, "LANG": locale})


@pytest.mark.parametrize("charset", ["UTF-8", "ISO-8859-1"])
def test_the_log_is_utf8_with_english_months_in_a_users_language(start_hub, tmp_path, charset):
    check_log_of_foreign_text(start_hub, make_locale(tmp_path, charset))


def test_a_hub_that_was_killed_starts_again(start_hub):
    hub = start_hub(scenario("cam"))
    for moment in (0.0, 0.02, 0.05, 0.1, 0.2, 0.4, 0.8):
        hub.process.kill()
        hub.process.wait()
        hub.start(wait_for_ports=False)
        time.sleep(moment)
    hub.restart()
    hub.wait_for_cameras("cam")


def test_the_crash_switch_waits_logs_and_leaves_a_record_without_opening_a_port(start_hub):
    hub = start_hub(scenario(), start=False)
    hub.write_registry('"SimulatedCrashModeEnabled"=hex:01,00,00,00', encoding="utf-16")
    begin = time.monotonic()
    hub.start(wait_for_ports=False)
    while hub.is_running():
        for port in (RPC_PORT, HTTP_PORT):
            with pytest.raises(ConnectionRefusedError):
                hub.network.connect(port)
        time.sleep(0.02)
    assert hub.wait_for_end() == signal.SIGABRT
    assert time.monotonic() - begin >= 2.5
    text = "Simulated crash mode is enabled.  About to throw an unhandled exception..."
    assert hub.log() == [LogEntry("INFO", SERVICE_LOGGER, text)]
    (record,) = hub.crash_records()
    assert re.match(
        r"What happened:  Uncaught exception of type \(anonymous namespace\)::SimulatedCrash: simulated crash\n"
        r"When:           \d{4}-\d\d-\d\d \d\d:\d\d:\d\d [+-]\d\d:\d\d \(local time\)\n"
        r"Application:    Larkspur Windows Camera Hub\n"
        r"Version:        2\.9\n",
        record,
    )
    frame = r"  #\d+ +0x[0-9a-f]+ main(\.cold)? at .*/main\.cpp:\d+ "
    assert re.search(rf", which crashed:\n(  .*\n)*{frame}", record), record


def test_a_crash_switch_of_another_type_is_no_switch(start_hub):
    hub = start_hub(scenario(), start=False)
    hub.write_registry('"SimulatedCrashModeEnabled"=dword:00000001')
    hub.start()
    assert hub.log()[0] == STARTED


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer's own handler takes the signal first")
def test_a_fatal_signal_leaves_a_record_and_still_ends_the_hub(start_hub):
    hub = start_hub(scenario())
    os.kill(hub.process.pid, signal.SIGSEGV)
    assert hub.wait_for_end() == signal.SIGSEGV
    (record,) = hub.crash_records()
    assert "SIGSEGV" in "\n".join(record.splitlines()[:12])


def test_captures_go_on_when_the_data_folder_has_gone(start_hub):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    client = hub.rpc()
    assert "resid" in client.capture("cam", exposureInUs=1000)
    hub.common_data.rename(hub.folder / "moved")
    result = client.capture("cam", exposureInUs=20000)
    assert hub.image(result["resid"]).startswith(b"\x89PNG")
    assert hub.is_running()


def test_captures_go_on_when_a_log_has_no_room(start_hub):
    hub = start_hub(scenario("cam"))
    file = hub.data_folder / "logging.properties"
    file.write_text(file.read_text().replace("${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}/PRODUCT.log", "/dev/full"))
    hub.restart().wait_for_cameras("cam")
    result = hub.rpc().capture("cam", exposureInUs=20000)
    assert hub.image(result["resid"]).startswith(b"\x89PNG")
    assert hub.stderr().count("Lines of the log are lost, appender PRODUCT") == 1
    assert STARTED in hub.log("DEFAULT.log")


ON_A_SMALL_DISK = """exec unshare --mount sh -e -c '
    mount -t tmpfs -o size=256k none "$CAMERA_HUB_COMMON_DATA"
    exec "$@"' sh "$@"
"""


def test_a_full_disk_costs_lines_until_there_is_room_again(start_hub):
    hub = start_hub(scenario("cam"), prepare=ON_A_SMALL_DISK)
    hub.common_data = hub.proc("root") / hub.common_data.relative_to("/")  # as the hub sees it
    ballast = hub.common_data / "ballast"
    with contextlib.suppress(OSError), open(ballast, "wb", buffering=0) as file:
        while True:
            file.write(bytes(1024))
    check_captures_without_room(hub, ballast.unlink)


def test_a_limit_of_file_sizes_costs_lines_until_there_is_room_again(start_hub):
    hub = start_hub(scenario("cam"))
    soft, hard = resource.prlimit(hub.process.pid, resource.RLIMIT_FSIZE)
    size = (hub.run_folders()[-1] / "logs" / "PRODUCT.log").stat().st_size
    resource.prlimit(hub.process.pid, resource.RLIMIT_FSIZE, (size + 200, hard))
    check_captures_without_room(
        hub, lambda: resource.prlimit(hub.process.pid, resource.RLIMIT_FSIZE, (soft, hard))
    )


def check_captures_without_room(hub, make_room):
    hub.wait_for_cameras("cam")
    client = hub.rpc()
    for number in range(50):
        assert "error" in client.request(f"lost:{number}:{'x' * 1000}")
    result = client.capture("cam", exposureInUs=1000)
    assert hub.image(result["resid"]).startswith(b"\x89PNG")
    assert hub.stderr().count("Lines of the log are lost, appender PRODUCT") == 1
    assert not any("lost:49:" in entry.text for entry in hub.log("PRODUCT.log"))
    make_room()
    for _ in range(2):  # the first stands behind the torn piece of a line that is lost
        client.request("kept")
    hub.wait_for_log("ERROR", DEVICE_LOGGER, "Method not supported: kept")
