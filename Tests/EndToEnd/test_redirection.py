"""Diagnostics that move to a client's folder and come back when it goes."""

import os

from harness.hub import DEVICE_LOGGER, SERVICE_LOGGER, LogEntry, log_entries
from harness.scenario import scenario
from harness.wait import wait_until

import pytest


@pytest.fixture
def hub(start_hub):
    return start_hub(scenario())


def client_folder(folder, name):
    """A folder as a client has to prepare it; its run folder within."""
    run = folder / name / "Diagnostics" / "LarkspurWindowsCameraHub"
    for part in ("logs", "Traces"):
        (run / part).mkdir(parents=True)
    return run.parent, run


def redirect(client, folder):
    return client.request("camera:redirectDiagnostics", path=str(folder))


def service(text, level="INFO"):
    return LogEntry(level, SERVICE_LOGGER, text)


def product_log(run):
    return log_entries(run / "logs" / "PRODUCT.log")


CANCELLING = service("Cancelling diagnostics redirection (likely due to client disconnection)")
CANCELLED = service("Cancelled diagnostics redirection (likely due to client disconnection)")


def test_a_redirection_moves_the_log_and_the_clients_going_brings_it_back(hub, tmp_path):
    folder, run = client_folder(tmp_path, "mine")
    (ordinary,) = hub.run_folders()
    client = hub.rpc()
    assert client.exchange(
        f'{{"id":5,"method":"camera:redirectDiagnostics","params":{{"path":"{folder}"}}}}'
    ) == b'{"id":5,"jsonrpc":"2.0","result":0}\n\r\n\0'
    assert service(f"About to redirect diagnostics to: {folder}") in product_log(ordinary)
    assert product_log(run) == [service(f"Successfully redirected diagnostics from: {ordinary}")]
    assert (run / "Crash").is_dir()
    assert hub.rpc().request("camera:unknown")["error"]
    assert LogEntry("ERROR", DEVICE_LOGGER, "Method not supported: camera:unknown") in product_log(run)

    client.close()
    wait_until(lambda: CANCELLED in hub.log(), "the redirection is cancelled")
    assert CANCELLING in product_log(run)
    assert CANCELLED not in product_log(run)


def test_only_the_departure_of_the_latest_redirecting_client_ends_a_redirection(hub, tmp_path):
    first_folder, first_run = client_folder(tmp_path, "first")
    second_folder, second_run = client_folder(tmp_path, "second")
    first, second = hub.rpc(), hub.rpc()
    assert redirect(first, first_folder)["result"] == 0
    assert redirect(second, second_folder)["result"] == 0
    assert product_log(second_run) == [service(f"Successfully redirected diagnostics from: {first_run}")]
    first.close()
    assert second.request("camera:unknown")["error"]
    assert CANCELLING not in product_log(second_run)
    second.close()
    wait_until(lambda: CANCELLED in hub.log(), "the redirection is cancelled")


def test_a_folder_that_cannot_be_used_is_an_error_and_the_ordinary_place_is_back(hub, tmp_path):
    missing = tmp_path / "missing"
    client = hub.rpc()
    hub.wait_for_the_next_run_name()
    reply = client.exchange(f'{{"id":5,"method":"camera:redirectDiagnostics","params":{{"path":"{missing}"}}}}')
    error = f'{{"message":"Failed redirecting diagnostics to: {missing}"}}'
    assert reply == f'{{"error":{error},"id":5,"jsonrpc":"2.0"}}\n\r\n\0'.encode()
    before, after = hub.run_folders()
    assert product_log(before)[-2:] == [
        service(f"About to redirect diagnostics to: {missing}"),
        service(f"Failed redirecting diagnostics to: {missing}", "ERROR"),
    ]
    assert product_log(after) == [LogEntry("ERROR", DEVICE_LOGGER, f"Failed redirecting diagnostics to: {missing}")]
    client.close()
    assert hub.rpc().request("camera:version")["result"] == "2.9"
    assert CANCELLING not in hub.log()


def test_a_failed_redirection_leaves_the_earlier_client_on_record(hub, tmp_path):
    folder, run = client_folder(tmp_path, "mine")
    first, second = hub.rpc(), hub.rpc()
    assert redirect(first, folder)["result"] == 0
    assert "error" in redirect(second, tmp_path / "missing")
    first.close()
    wait_until(lambda: CANCELLED in hub.log(), "the redirection is cancelled")


def test_the_same_client_may_redirect_twice(hub, tmp_path):
    folder, run = client_folder(tmp_path, "mine")
    client = hub.rpc()
    assert redirect(client, folder)["result"] == 0
    assert redirect(client, folder)["result"] == 0
    assert product_log(run) == [service(f"Successfully redirected diagnostics from: {run}")]


def test_a_client_that_never_redirected_goes_without_a_line(hub):
    before = hub.log()
    client = hub.rpc()
    assert client.request("camera:version")["result"] == "2.9"
    client.close()
    assert hub.rpc().request("camera:version")["result"] == "2.9"
    assert hub.log() == before


def test_a_redirection_that_has_ended_concerns_no_later_client(hub, tmp_path):
    folder, _ = client_folder(tmp_path, "mine")
    client = hub.rpc()
    assert redirect(client, folder)["result"] == 0
    client.close()
    wait_until(lambda: CANCELLED in hub.log(), "the redirection is cancelled")
    hub.wait_for_the_next_run_name()
    before = hub.log()
    followers = [hub.rpc() for _ in range(20)]  # one of them has the descriptor that the first client had
    for follower in followers:
        assert follower.request("camera:version")["result"] == "2.9"
    for follower in followers:
        follower.close()
    assert hub.rpc().request("camera:version")["result"] == "2.9"
    assert hub.log() == before


def test_without_a_path_there_is_no_folder_to_redirect_to(hub):
    hub.wait_for_the_next_run_name()
    reply = hub.rpc().request("camera:redirectDiagnostics")
    assert reply["error"] == {"message": "Failed redirecting diagnostics to: "}


def test_a_crash_during_a_redirection_leaves_its_record_in_the_clients_folder(hub, tmp_path):
    folder, run = client_folder(tmp_path, "mine")
    client = hub.rpc()
    assert redirect(client, folder)["result"] == 0
    client.send('{"method":7}')
    hub.wait_for_end()
    (record,) = (run / "Crash").glob("crash-*.txt")
    assert "Type is not convertible to string" in record.read_text(encoding="utf-8")
    assert hub.crash_records() == []


def test_two_hundred_redirections_leave_no_log_file_of_an_earlier_run_open(hub, tmp_path):
    folder, run = client_folder(tmp_path, "mine")
    for _ in range(200):
        client = hub.rpc()
        assert redirect(client, folder)["result"] == 0
        client.close()
        assert hub.rpc().request("camera:version")["result"] == "2.9"
    wait_until(lambda: not open_files_below(hub, tmp_path), "the last redirection is cancelled")
    (latest,) = {path.parent for path in open_files_below(hub, hub.data_folder)}
    assert latest == hub.run_folders()[-1] / "logs"
    assert len(open_files_below(hub, hub.data_folder)) == 4


def open_files_below(hub, folder):
    return [path for path in hub.open_files() if path.is_relative_to(folder)]


def entries(folder, besides=None):
    """All that is below a folder, without the one named."""
    return sorted(path for path in folder.rglob("*") if not (besides and path.is_relative_to(besides)))


def missing_logs(folder):
    (folder / "Diagnostics/mine/LarkspurWindowsCameraHub/Traces").mkdir(parents=True)
    return "Diagnostics/mine"


def missing_traces(folder):
    (folder / "Diagnostics/mine/LarkspurWindowsCameraHub/logs").mkdir(parents=True)
    return "Diagnostics/mine"


def nothing_prepared(folder):
    (folder / "Diagnostics/mine").mkdir(parents=True)
    return "Diagnostics/mine"


def out_of_a_folder_of_that_name(folder):
    (folder / "Diagnostics").mkdir()
    (folder / "elsewhere").mkdir()
    return "Diagnostics/../elsewhere"


def out_of_the_hubs_own_folder(folder):
    (folder / "elsewhere").mkdir()
    return "common/Halden Imaging Group/Larkspur Windows Camera Hub 2.9/Diagnostics/../../../../elsewhere"


def behind_a_link(folder):
    (folder / "elsewhere").mkdir()
    (folder / "Diagnostics").symlink_to("elsewhere")
    return "Diagnostics"


def links_to_nowhere(folder):
    run = folder / "Diagnostics/mine/LarkspurWindowsCameraHub"
    run.mkdir(parents=True)
    for name in ("logs", "Traces"):
        (run / name).symlink_to(folder / "elsewhere" / name)
    return "Diagnostics/mine"


@pytest.mark.parametrize("prepare", [
    missing_logs, missing_traces, nothing_prepared, out_of_a_folder_of_that_name, out_of_the_hubs_own_folder,
    behind_a_link,
], ids=lambda prepare: prepare.__name__)
def test_a_refused_redirection_leaves_nothing_behind(hub, prepare):
    path = hub.folder / prepare(hub.folder)
    before = entries(hub.folder, besides=hub.data_folder)
    assert "error" in redirect(hub.rpc(), path)
    assert entries(hub.folder, besides=hub.data_folder) == before


def test_links_that_lead_nowhere_are_not_followed(hub):
    path = hub.folder / links_to_nowhere(hub.folder)
    before = entries(hub.folder, besides=hub.data_folder)
    redirect(hub.rpc(), path)
    crash = path / "LarkspurWindowsCameraHub" / "Crash"
    assert entries(hub.folder, besides=hub.data_folder) in (before, sorted([*before, crash]))


def test_a_redirection_makes_logs_and_the_crash_folder_in_the_prepared_folder_alone(hub, tmp_path):
    _, run = client_folder(tmp_path, "mine")
    (tmp_path / "Diagnostics").mkdir()
    (tmp_path / "link").symlink_to("mine")
    before = entries(hub.folder) + entries(tmp_path)
    made = [run / "Crash", *(run / "logs" / f"{name}.log" for name in ("DEFAULT", "DEVICE", "PRODUCT", "TIMING"))]
    client = hub.rpc()
    assert redirect(client, tmp_path / "Diagnostics/../link/Diagnostics")["result"] == 0
    assert entries(hub.folder) + entries(tmp_path) == sorted([*before, *made])


@pytest.mark.parametrize("name", [
    "${HOME}", "${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}", "${log4j.rootLogger}", "${", "$${}}${$}", "$"
])
def test_a_folder_named_like_a_variable_is_taken_as_it_is_named(hub, tmp_path, name):
    folder, run = client_folder(tmp_path, name)
    client = hub.rpc()
    assert redirect(client, folder)["result"] == 0
    assert service(f"Successfully redirected diagnostics from: {hub.run_folders()[0]}") in product_log(run)


def test_a_configuration_that_cannot_be_read_leaves_the_log_where_it_is(hub, tmp_path):
    folder, run = client_folder(tmp_path, "mine")
    (ordinary,) = hub.run_folders()
    file = hub.data_folder / "logging.properties"
    file.unlink()
    os.mkfifo(file)
    client = hub.rpc()
    assert redirect(client, folder)["result"] == 0
    text = f"The log stays as it was, for its configuration can't be used: open on {file}: it is no regular file"
    assert LogEntry("ERROR", "Diagnostics.LoggingConfiguration", text) in hub.log()
    assert service(f"Successfully redirected diagnostics from: {ordinary}") in product_log(ordinary)
    assert entries(run / "logs") == []
