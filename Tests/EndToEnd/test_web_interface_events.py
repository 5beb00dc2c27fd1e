"""What is told while it happens: events, and the queue."""

import contextlib

import pytest
from harness.journal import begins
from harness.openapi import check_answer
from harness.scenario import EXPOSURE, scenario
from harness.wait import wait_until
from harness.web_streams import Events, MovingPictures, closing, wait_for_queue

NEVER = {"exposure": EXPOSURE, "capture": {"outcome": "never"}}
SLOW = {"exposure": EXPOSURE, "capture": {"delayMs": 2500}}
STILLS = "/api/cameras/cam/stills"


@pytest.fixture
def hub(start_hub):
    return start_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture
def slow_hub(start_hub):
    return start_hub(scenario("cam", "other", camera=SLOW)).wait_for_cameras("cam", "other")


@contextlib.contextmanager
def asking(web, *requests):
    """Connections on which stills are asked for, each when that before is in the queue: (source address, ticket)."""
    with contextlib.ExitStack() as stack:
        connections = []
        for source, ticket in requests:
            connections.append(web.connect(source=source))
            stack.callback(connections[-1].close)
            body = b'{"settle":"0","ticket":"%s"}' % ticket.encode()
            connections[-1].ask("POST", STILLS, {"Content-Type": "application/json"}, body)
            wait_for_queue(web, lambda queue, ticket=ticket: ticket in tickets(queue), f"{ticket} is in the queue")
        yield connections


@pytest.fixture
def stuck_hub(start_hub):
    """A still of "cam" ends only by the hub's patience."""
    return start_hub(scenario("cam", "other", cameras={"cam": NEVER})).wait_for_cameras("cam", "other")


def unplug_in_the_middle_of_a_still(hub):
    wait_until(lambda: begins(hub.journal(), "MediaCapture.CapturePhotoToStreamAsync"), "a still is under way")
    hub.write_scenario(scenario("other"))


def tickets(queue):
    return [entry["ticket"] for entry in queue]


def test_the_first_events_are_the_hub_and_then_its_cameras(hub, start_web):
    web = start_web(hub.network).wait_for_cameras("cam")
    for _ in range(3):
        with closing(Events(web)) as events:
            check_answer("followEvents", events.head)
            first, second = events.next(), events.next()
        assert (first.name, first.data) == ("hub", {"reachable": True, "version": "2.9"})
        assert (second.name, second.data["cameras"]) == ("cameras", web.get("/api/cameras").json()["cameras"])


def test_a_hub_that_is_away_and_comes_and_goes_is_told(start_hub, start_web):
    hub = start_hub(scenario("cam"), start=False)
    with closing(Events(start_web(hub.network))) as events:
        first = events.next()
        assert first.name == "hub" and first.data["reachable"] is False
        assert events.next().name == "cameras"
        hub.start()
        events.wait_for("hub", lambda data: data["reachable"])
        events.wait_for("cameras", lambda data: [camera["uid"] for camera in data["cameras"]] == ["cam"])
        hub.process.kill()
        hub.process.wait()
        events.wait_for("hub", lambda data: not data["reachable"])


def test_cameras_that_come_and_go_are_told(hub, start_web):
    with closing(Events(start_web(hub.network).wait_for_cameras("cam"))) as events:
        for uids in (["cam", "two"], ["two"], []):
            hub.write_scenario(scenario(*uids))
            events.wait_for("cameras", lambda data, uids=uids: [each["uid"] for each in data["cameras"]] == uids)


def test_a_still_that_anybody_takes_is_told_to_all_as_it_was_to_who_took_it(hub, start_web):
    web = start_web(hub.network)
    with closing(Events(web)) as one, closing(Events(web)) as other:
        taken = web.take("cam", settle="0", ticket="mine")
        assert one.wait_for("still") == other.wait_for("still") == taken
        assert web.get("/cameras/cam/still.png?settle=0").status == 200
        assert one.wait_for("still") == other.wait_for("still") == web.get("/api/stills").json()["stills"][0]


def test_a_sign_of_life_comes_while_nothing_happens(hub, start_web):
    with closing(Events(start_web(hub.network).wait_for_cameras("cam"))) as events:
        events.through(b"\n: alive\n\n")


def test_stills_of_streams_are_not_told(hub, start_web):
    web = start_web(hub.network)
    with closing(Events(web)) as events:
        with closing(MovingPictures(web, "/cameras/cam/stream.mjpg?fps=30&settle=0")) as stream:
            shown = {stream.next().still for _ in range(3)}
            taken = web.take("cam", settle="0")
        assert events.wait_for("still") == taken
    assert taken["id"] not in shown


def test_the_steps_of_a_still_are_told_in_their_order(slow_hub, start_web):
    web = start_web(slow_hub.network)
    with closing(Events(web)) as events:
        for ticket, step in (("first", "opening"), ("second", "taking")):
            web.take("cam", settle="0", ticket=ticket)
            seen = []
            while "gone" not in seen:
                queue = events.wait_for("queue")["queue"]
                states = [entry["state"] for entry in queue if entry["ticket"] == ticket]
                seen += states or (["gone"] if seen else [])
            order = ["waiting", "opening", "taking", "fetching", "gone"]
            assert step in seen and sorted(seen, key=order.index) == seen
            assert ("opening" in seen) == (ticket == "first")


def test_the_queue_has_the_one_at_work_first_and_the_places_of_the_others(slow_hub, start_web):
    web = start_web(slow_hub.network)
    assert check_answer("showQueue", web.get("/api/queue")).json() == {"queue": []}
    with asking(web, *(("127.0.0.1", ticket) for ticket in ("a", "b", "c"))) as connections:
        queue = wait_for_queue(web, lambda queue: len(queue) == 3 and queue[0]["state"] == "opening",
                               "all are in the queue, and the first has begun")
        assert [(entry["ticket"], entry["place"], entry["uid"]) for entry in queue] == [
            ("a", 0, "cam"), ("b", 1, "cam"), ("c", 2, "cam")]
        assert {entry["state"] for entry in queue[1:]} == {"waiting"}
        assert queue[0]["forMs"] >= queue[1]["forMs"] >= queue[2]["forMs"]
        for connection in connections:
            assert check_answer("takeStill", connection.receive()).status == 201
    assert wait_for_queue(web, lambda queue: not queue, "nothing is left") == []


def test_a_request_without_a_ticket_has_none(slow_hub, start_web):
    web = start_web(slow_hub.network)
    with web.connection() as connection:
        connection.ask("GET", "/cameras/cam/still.png?settle=0")
        (entry,) = wait_for_queue(web, lambda queue: queue, "it is in the queue")
        assert entry["ticket"] is None
        assert connection.receive().status == 200


def test_those_who_ask_take_turns_however_many_requests_each_has(slow_hub, start_web):
    web = start_web(slow_hub.network)
    many = [("127.0.0.1", f"many-{number}") for number in range(5)]
    with asking(web, *many, ("127.0.0.2", "one")) as connections:
        queue = wait_for_queue(web, lambda queue: "one" in tickets(queue), "the other is in the queue")
        assert tickets(queue).index("one") <= 2
        stills = [connection.receive().json() for connection in connections]
    order = sorted(range(6), key=lambda number: stills[number]["takenAt"])
    assert order.index(5) <= 2
    assert [number for number in order if number != 5] == [0, 1, 2, 3, 4]


def test_a_stream_takes_turns_with_who_takes_stills(start_hub, start_web):
    hub = start_hub(scenario("cam", camera={"exposure": EXPOSURE, "capture": {"delayMs": 300}})).wait_for_cameras("cam")
    web = start_web(hub.network)
    with closing(MovingPictures(web, "/cameras/cam/stream.mjpg?fps=30&settle=0")) as stream:
        stream.next()
        with asking(web, *(("127.0.0.1", f"many-{number}") for number in range(6))) as connections:
            shown = {stream.next().still for _ in range(3)}
            for connection in connections:
                assert connection.receive().status == 201
            shown |= {stream.next().still for _ in range(2)}
    assert len(shown) == 5


def test_a_camera_that_is_unplugged_while_requests_wait_is_no_such_camera_for_them(stuck_hub, start_web):
    web = start_web(stuck_hub.network)
    with asking(web, ("127.0.0.1", "first"), ("127.0.0.1", "second"), ("127.0.0.2", "third")) as connections:
        unplug_in_the_middle_of_a_still(stuck_hub)
        answers = [check_answer("takeStill", connection.receive()) for connection in connections]
    assert [answer.kind for answer in answers] == ["camera-failed", "no-such-camera", "no-such-camera"]
    assert check_answer("takeStill", web.post("/api/cameras/other/stills", {"settle": "0"})).status == 201


def test_who_comes_when_the_queue_is_full_is_told_to_come_again(stuck_hub, start_web):
    web = start_web(stuck_hub.network)
    with contextlib.ExitStack() as stack:
        waiting, refused = [], None
        for number in range(1, 100):
            connection = web.connect(source=f"127.0.1.{number}")
            stack.callback(connection.close)
            connection.ask("POST", STILLS, {"Content-Type": "application/json"}, b'{"settle":"0"}')
            length = len(waiting)
            # Either it is one more in the queue, or it is answered.
            wait_until(lambda c=connection, n=length: c.has_bytes_within(0) or len(web.queue()) > n, "it was looked at")
            if connection.has_bytes_within(0) and len(web.queue()) > 10:
                refused = check_answer("takeStill", connection.receive())
                break
            waiting.append(connection)
        assert (refused.kind, refused.header("Retry-After")) == ("queue-full", "5")
        unplug_in_the_middle_of_a_still(stuck_hub)
        for connection in waiting:
            check_answer("takeStill", connection.receive())
    assert web.post("/api/cameras/other/stills", {"settle": "0"}).status == 201
