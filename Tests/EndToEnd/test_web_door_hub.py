"""A hub that is not there, goes, hangs or comes back, and cameras that fail."""

import contextlib
import io
import signal
import socket
import threading

import pytest
from harness.hub import RPC_PORT
from harness.journal import begins
from harness.openapi import check_answer
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.wait import PATIENCE, wait_until
from harness.web_streams import MovingPictures, closing
from PIL import Image

STILLS = "/api/cameras/cam/stills"
SLOW = {"exposure": EXPOSURE, "capture": {"delayMs": 8000}}


def faulty(operation, **fault):
    return {"exposure": EXPOSURE, "faults": {operation: fault}}


def is_taking(hub):
    return begins(hub.journal(), "MediaCapture.CapturePhotoToStreamAsync")


def opened(hub):
    """How often a camera was: once each when it is found."""
    return len(begins(hub.journal(), "MediaCapture.InitializeAsync"))


def is_told_that_the_hub_is_away(identity, answer):
    check_answer(identity, answer)
    assert (answer.kind, answer.header("Retry-After")) == ("hub-away", "2")


def ask(connection):
    connection.ask("POST", STILLS, {"Content-Type": "application/json"}, b'{"settle":"0"}')


@contextlib.contextmanager
def listening(network, answer):
    """Something else in the place of the hub: gives that answer to whatever comes, and goes on."""
    def serve(connection):
        with connection, contextlib.suppress(OSError):
            while connection.recv(65536):
                connection.sendall(answer)

    def accept():
        with contextlib.suppress(OSError):
            while True:
                connection, _ = listener.accept()
                connection.settimeout(PATIENCE)
                threading.Thread(target=serve, args=(connection,), daemon=True).start()

    with network.run(socket.create_server, ("127.0.0.1", RPC_PORT)) as listener:
        thread = threading.Thread(target=accept, daemon=True)
        thread.start()
        yield
        listener.shutdown(socket.SHUT_RDWR)


def test_without_a_hub_it_starts_and_says_so_and_serves_when_there_is_one(start_hub, start_web):
    hub = start_hub(scenario("cam"), start=False)
    web = start_web(hub.network)
    is_told_that_the_hub_is_away("listCameras", web.get("/api/cameras"))
    is_told_that_the_hub_is_away("takeStill", web.post(STILLS, {}))
    is_told_that_the_hub_is_away("takePng", web.get("/cameras/cam/still.png"))
    is_told_that_the_hub_is_away("takeJpeg", web.get("/cameras/cam/still.jpg"))
    is_told_that_the_hub_is_away("checkHealth", web.get("/healthz"))
    assert check_answer("getPage", web.get("/")).status == 200
    assert check_answer("listStills", web.get("/api/stills")).json() == {"stills": []}
    hub.start()
    web.wait_for_cameras("cam")
    assert web.get("/healthz").status == 200
    assert web.take("cam", settle="0")["uid"] == "cam"


def test_a_hub_that_ends_during_a_still_is_told_at_once_and_a_new_one_is_found(start_hub, start_web):
    hub = start_hub(scenario("cam", camera=SLOW)).wait_for_cameras("cam")
    web = start_web(hub.network).wait_for_cameras("cam")
    with contextlib.ExitStack() as stack:
        connections = [stack.enter_context(web.connection()) for _ in range(3)]
        for connection in connections:
            ask(connection)
        wait_until(lambda: is_taking(hub), "a still is under way")
        hub.process.kill()
        hub.process.wait()
        # Those that wait behind it as well; and not as one that did not answer in time.
        for connection in connections:
            is_told_that_the_hub_is_away("takeStill", connection.receive("POST"))
    is_told_that_the_hub_is_away("takePng", web.get("/cameras/cam/still.png"))
    hub.write_scenario(scenario("cam"))
    hub.wait_for_the_next_run_name()
    hub.start().wait_for_cameras("cam")
    web.wait_for_cameras("cam")
    assert web.take("cam", settle="0")["uid"] == "cam"


def test_kept_stills_are_there_while_the_hub_is_away(start_hub, start_web):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    web = start_web(hub.network)
    still = web.take("cam", settle="0")
    hub.process.kill()
    hub.process.wait()
    wait_until(lambda: web.get("/healthz").status == 503, "the hub is away")
    assert web.get("/api/stills").json() == {"stills": [still]}
    assert len(web.get(still["png"]).body) == still["bytes"]


def test_a_hub_that_does_not_answer_is_not_waited_for_without_an_end(start_hub, start_web):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    web = start_web(hub.network).wait_for_cameras("cam")
    web.take("cam", settle="0")
    hub.process.send_signal(signal.SIGSTOP)
    with web.connection() as first, web.connection() as second:
        ask(first)
        ask(second)
        wait_until(lambda: len(web.queue()) == 2, "both wait")
        for target in ("/", "/api/queue", "/api/stills", "/metrics"):
            assert web.get(target).status == 200
        assert check_answer("takeStill", first.receive("POST")).kind == "hub-timeout"
        hub.process.send_signal(signal.SIGCONT)
        check_answer("takeStill", second.receive("POST"))
    web.wait_for_cameras("cam")
    assert web.take("cam", settle="0")["uid"] == "cam"


@pytest.mark.parametrize("answer", [b"HTTP/1.1 400 Bad Request\r\n\r\n\0", b"\0", b"{}\0", b"[]\r\n\0", b"SSH-2.0-x\0",
                                    b'{"id":1,"jsonrpc":"2.0","result":42}\n\r\n\0'])
def test_what_is_no_hub_is_told_to_be_none(network, start_web, answer):
    with listening(network, answer):
        web = start_web(network)
        wait_until(lambda: check_answer("takeStill", web.post(STILLS, {"settle": "0"})).kind == "hub-unusable",
                   "it is told")
        assert web.get("/api/cameras").status in (502, 503)


def test_a_hub_that_ends_because_of_its_camera_is_away_until_it_is_back(start_hub, start_web):
    hub = start_hub(scenario("cam", camera=faulty("MediaCapture.InitializeAsync", after=1))).wait_for_cameras("cam")
    web = start_web(hub.network).wait_for_cameras("cam")
    is_told_that_the_hub_is_away("takeStill", web.post(STILLS, {"settle": "0"}))
    hub.wait_for_end()
    hub.write_scenario(scenario("cam"))
    hub.wait_for_the_next_run_name()
    hub.start()
    web.wait_for_cameras("cam")
    assert web.take("cam", settle="0")["uid"] == "cam"


@pytest.mark.parametrize("camera, words", [
    (faulty("MediaCapture.CapturePhotoToStreamAsync", message="The lens is cold."), "The lens is cold."),
    ({"exposure": EXPOSURE, "capture": {"outcome": "never"}}, "Timed out waiting for camera capture"),
])
def test_a_camera_that_fails_is_told_in_the_words_of_the_hub_and_works_again(start_hub, start_web, camera, words):
    hub = start_hub(scenario("cam", camera=camera)).wait_for_cameras("cam")
    web = start_web(hub.network).wait_for_cameras("cam")
    for identity, answer in (("takeStill", web.post(STILLS, {"settle": "0"})),
                             ("takePng", web.get("/cameras/cam/still.png?settle=0"))):
        assert check_answer(identity, answer).kind == "camera-failed"
        assert words in answer.json()["detail"]
    hub.write_scenario(scenario("cam"))
    wait_until(lambda: web.post(STILLS, {"settle": "0"}).status == 201, "the camera works again")
    assert web.get("/api/stills").json()["stills"][0]["uid"] == "cam"


def test_a_still_without_a_picture_is_a_failure_of_the_camera(start_hub, start_web):
    broken = {"exposure": EXPOSURE, "capture": {"outcome": "error"}}
    hub = start_hub(scenario("cam", camera=broken)).wait_for_cameras("cam")
    web = start_web(hub.network).wait_for_cameras("cam")
    assert check_answer("takeStill", web.post(STILLS, {"settle": "0"})).kind == "camera-failed"
    assert web.get("/api/stills").json() == {"stills": []}


def test_a_still_is_never_that_of_another_client_of_the_hub(start_hub, start_web):
    groups = [camera_group("cam", 64, 48), camera_group("other", 32, 24)]
    hub = start_hub({"groups": groups, "cameras": {uid: {"exposure": EXPOSURE} for uid in ("cam", "other")}})
    web = start_web(hub.wait_for_cameras("cam", "other").network).wait_for_cameras("cam", "other")
    rival = hub.rpc()
    rival.capture("other", exposureInUs=1000)
    web.take("cam", settle="0")
    stop, taken = threading.Event(), []

    def disturb():
        while not stop.is_set():
            rival.capture("other", exposureInUs=1000)
            taken.append(1)

    thread = threading.Thread(target=disturb)
    thread.start()
    try:
        answers = [check_answer("takeStill", web.post(STILLS, {"settle": "0"})) for _ in range(20)]
    finally:
        stop.set()
        thread.join()
    assert taken
    answers.append(web.post(STILLS, {"settle": "0"}))
    stills = [answer.json() for answer in answers if answer.status == 201]
    # Where the second one was lost as well there is none; never is it the picture of the other.
    assert stills and {answer.kind for answer in answers if answer.status != 201} <= {"camera-failed"}
    for still in stills:
        assert Image.open(io.BytesIO(web.get(still["png"]).body)).size == (64, 48)


def test_the_connection_of_a_camera_that_nobody_uses_is_dropped(start_hub, start_web):
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    found, closed = opened(hub), len(begins(hub.journal(), "MediaCapture.Close"))
    web = start_web(hub.network, "--idle", "1s")
    web.take("cam", settle="0")
    assert opened(hub) == found + 1
    wait_until(lambda: len(begins(hub.journal(), "MediaCapture.Close")) > closed, "the hub closes the camera")
    web.take("cam", settle="0")
    assert opened(hub) == found + 2


def test_a_camera_that_is_used_stays_open(start_hub, start_web):
    hub = start_hub(scenario("cam", "other")).wait_for_cameras("cam", "other")
    found, closed = opened(hub), len(begins(hub.journal(), "MediaCapture.Close"))
    web = start_web(hub.network)
    for uid in ("cam", "other", "cam", "other"):
        web.take(uid, settle="0")
    assert opened(hub) == found + 2
    assert len(begins(hub.journal(), "MediaCapture.Close")) == closed


def test_a_stream_of_a_camera_that_fails_goes_on_when_it_works_again(start_hub, start_web):
    broken = faulty("MediaCapture.CapturePhotoToStreamAsync", message="The lens is cold.")
    hub = start_hub(scenario("cam")).wait_for_cameras("cam")
    web = start_web(hub.network).wait_for_cameras("cam")
    with closing(MovingPictures(web, "/cameras/cam/stream.mjpg?fps=30&settle=0")) as stream:
        stream.next()
        hub.write_scenario(scenario("cam", camera=broken))
        wait_until(lambda: any(call["call"] == "MediaCapture.CapturePhotoToStreamAsync" and "error" in call
                               for call in hub.journal()), "it fails")
        hub.write_scenario(scenario("cam"))
        begun = len(is_taking(hub))
        wait_until(lambda: stream.next() and len(is_taking(hub)) > begun, "it goes on")
