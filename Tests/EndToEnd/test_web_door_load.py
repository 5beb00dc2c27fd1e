"""Many clients at a time, and such as take what they get slowly or never."""

import contextlib
import re
import select
import socket
import subprocess
import time

import pytest
from harness.hub import IS_SANITIZED
from harness.journal import begins
from harness.openapi import DOCUMENT, check_response, resolved
from harness.scenario import EXPOSURE, camera_group, scenario
from harness.scenes import noise
from harness.wait import PATIENCE, wait_until
from harness.web_streams import MovingPictures, closing

SIZE = (640, 480)
STREAM = "/cameras/cam/stream.mjpg?fps=10&settle=0&quality=100"
STILL_HEADER = re.compile(rb"Camera-Hub-Still: ([0-9a-f]{32})\r\n")
MIB = 1 << 20


@pytest.fixture
def hub(start_hub):
    return start_hub(scenario("cam")).wait_for_cameras("cam")


@pytest.fixture
def noisy_hub(start_hub):
    """Its pictures are of half a megabyte each."""
    hub = start_hub({"groups": [camera_group("cam", *SIZE)],
                     "cameras": {"cam": {"exposure": EXPOSURE, "capture": {"picture": "noise.png"}}}}, start=False)
    noise(hub.folder, SIZE)
    return hub.start().wait_for_cameras("cam")


def stills_begun(hub):
    return len(begins(hub.journal(), "MediaCapture.CapturePhotoToStreamAsync"))


def lives_on(hub, web):
    client = hub.rpc()
    assert client.request("camera:version")["result"] == "2.9"
    client.close()
    assert web.is_running()
    assert web.take("cam", settle="0")["uid"] == "cam"


class Viewers:
    """Those of one stream who take all that comes, on this thread; each keeps the ids of its pictures."""

    def __init__(self, stack, web, count):
        self.seen = {}
        self._poll = select.epoll()
        stack.callback(self._poll.close)
        self._sockets, self._tails = {}, {}
        for _ in range(count):
            connection = web.connect()
            connection.ask("GET", STREAM)
            stack.callback(connection.close)
            number = connection.socket.fileno()
            self._sockets[number], self._tails[number], self.seen[number] = connection.socket, b"", []
            self._poll.register(number, select.EPOLLIN)

    def watch_until_each_has(self, count):
        end = time.monotonic() + PATIENCE
        while min(map(len, self.seen.values())) < count:
            assert time.monotonic() < end, sorted(map(len, self.seen.values()))
            for number, _ in self._poll.poll(1):
                data = self._sockets[number].recv(1 << 20)
                assert data
                text = self._tails[number] + data
                ids = STILL_HEADER.findall(text)
                self.seen[number] += ids
                # A header that has begun, and none that was found.
                self._tails[number] = text[-60:] if not STILL_HEADER.search(text[-60:]) else b""


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer takes more memory for itself")
def test_200_viewers_of_whom_50_are_slow_share_the_stills_of_one_and_take_bounded_memory(noisy_hub, start_web):
    web = start_web(noisy_hub.network).wait_for_cameras("cam")
    with contextlib.ExitStack() as stack:
        with closing(MovingPictures(web, STREAM)) as first:
            size = len(first.next().jpeg)
        assert size > 300_000
        before = web.memory()
        slow = [web.connect() for _ in range(50)]
        for connection in slow:
            connection.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            stack.callback(connection.close)
            connection.ask("GET", STREAM)
        viewers = Viewers(stack, web, 150)
        viewers.watch_until_each_has(1)
        begun = stills_begun(noisy_hub)
        viewers.watch_until_each_has(25)
        taken = stills_begun(noisy_hub) - begun
        growth = web.memory() - before
        shown = {still for ids in viewers.seen.values() for still in ids}
    # Each viewer has seen at least 24 stills since: were they not shared, 150 times as many would have been taken.
    assert len(shown) <= taken + 5 and taken < 24 * 20
    # 50 that take nothing: were all pictures kept for them, this would be 50 times 24 pictures, over 400 MB. A buffer
    # and a picture in work for each of 200 connections, and the latest picture, are not a quarter of that.
    assert growth < 100 * MIB, growth // MIB
    lives_on(noisy_hub, web)


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer takes more memory for itself")
def test_clients_that_never_read_their_pictures_take_bounded_memory_and_hinder_nobody(noisy_hub, start_web):
    web = start_web(noisy_hub.network).wait_for_cameras("cam")
    png = web.take("cam", settle="0")["png"]
    size = len(web.get(png).body)
    before = web.memory()
    with contextlib.ExitStack() as stack:
        for _ in range(100):
            connection = web.connect()
            connection.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            stack.callback(connection.close)
            # Twenty of them in one piece, none of which is read.
            with contextlib.suppress(ConnectionError):
                connection.send(f"GET {png} HTTP/1.1\r\nHost: localhost\r\n\r\n".encode() * 20)
        assert len(web.get(png).body) == size
        lives_on(noisy_hub, web)
        assert web.memory() - before < 100 * size / 2  # the one picture is shared by all


def test_a_client_that_takes_nothing_is_dropped_after_30_seconds(noisy_hub, start_web):
    web = start_web(noisy_hub.network).wait_for_cameras("cam")
    with web.connection() as connection:
        connection.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        connection.ask("GET", STREAM)
        wait_until(lambda: b"camera_hub_web_stream_viewers 1\n" in web.get("/metrics").body, "it watches")
        wait_until(lambda: b"camera_hub_web_stream_viewers 0\n" in web.get("/metrics").body, "it is dropped", 0.5)
    lives_on(noisy_hub, web)


def test_50_that_send_slowly_hinder_nobody_and_are_told_that_they_were_too_slow(hub, start_web):
    web = start_web(hub.network).wait_for_cameras("cam")
    slow = [web.connect() for _ in range(50)]
    heads = [b"GET /api/cameras HTTP/1.1\r\nHost: localhost\r\nX: ",
             b"POST /api/cameras/cam/stills HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
             b"Content-Length: 10000\r\n\r\n"]
    for number, connection in enumerate(slow):
        connection.send(heads[number % 2])
    served = 0
    while not all(connection.has_bytes_within(0) for connection in slow):
        assert web.get("/api/cameras").status == 200
        served += 1
        for connection in slow:
            if not connection.has_bytes_within(0):
                with contextlib.suppress(ConnectionError):
                    connection.send(b" ")
        time.sleep(0.2)  # as slowly as they are
    assert served > 10
    for connection in slow:
        answer = connection.receive("POST")
        check_response(resolved(DOCUMENT["components"]["responses"]["RequestTimeout"]), answer)
        assert connection.rest() == b""
    lives_on(hub, web)


def test_a_flood_of_connections_is_turned_away_and_those_that_are_there_are_served(hub, start_web):
    web = start_web(hub.network, "--max-connections", 40).wait_for_cameras("cam")
    here = [web.connect() for _ in range(30)]
    for connection in here:
        assert connection.request("GET", "/healthz").status == 200
    flood = [web.connect() for _ in range(200)]
    for connection in flood:
        with contextlib.suppress(ConnectionError):
            connection.ask("GET", "/healthz")
    statuses = [status_or_none(connection) for connection in flood]
    # Ten have found room, some are told that there is none, and the others are turned away without a word.
    assert set(statuses) == {200, 503, None} and statuses.count(200) == 10
    for connection in here:
        assert connection.request("GET", "/healthz").status == 200
    for connection in [*flood, *here]:
        connection.close()
    wait_until(lambda: is_served(web), "there is room again")
    lives_on(hub, web)


def status_or_none(connection):
    try:
        answer = connection.receive()
    except (ConnectionError, AssertionError):
        return None
    if answer.status != 200:
        check_response(resolved(DOCUMENT["components"]["responses"]["ServerFull"]), answer)
        assert connection.rest() == b""
    return answer.status


def is_served(web):
    with web.connection() as connection, contextlib.suppress(ConnectionError, AssertionError):
        return connection.request("GET", "/healthz").status == 200


def test_connections_that_come_and_go_leave_nothing_behind(hub, start_web):
    web = start_web(hub.network).wait_for_cameras("cam")
    requests = [b"", b"G", b"GET / HTTP/1.1\r\n", b"GET /api/events HTTP/1.1\r\nHost: localhost\r\n\r\n",
                b"GET /cameras/cam/stream.mjpg?fps=30 HTTP/1.1\r\nHost: localhost\r\n\r\n", b"\0" * 100,
                b"POST /api/cameras/cam/stills HTTP/1.1\r\nHost: localhost\r\nContent-Length: 100\r\n\r\n{"]

    def come_and_go(times):
        for number in range(times):
            connection = web.connect()
            connection.send(requests[number % len(requests)])
            if number % 2:  # else it ends without a farewell
                connection.finish()
            web.forget(connection)

    come_and_go(300)
    wait_until(lambda: web.get("/healthz").status == 200, "it answers")
    wait_until(lambda: web.descriptors() <= 40, "the connections are closed")
    before = web.memory()
    come_and_go(1500)
    wait_until(lambda: web.descriptors() <= 40, "the connections are closed")
    # A connection that is not given back keeps at least its head's buffer: some kilobytes each.
    assert web.memory() - before < (8 if not IS_SANITIZED else 80) * MIB
    lives_on(hub, web)


def test_an_address_has_a_limited_number_of_connections_beyond_this_machine(hub, start_web):
    hub.network.run(add_address, "10.1.2.3")
    web = start_web(hub.network, "--listen", "0.0.0.0:0", "--no-token").wait_for_cameras("cam")
    with contextlib.ExitStack() as stack:
        connections = []
        for _ in range(300):
            connections.append(web.connect(source="10.1.2.3", target="10.1.2.3"))
            stack.callback(connections[-1].close)
        answers = [connection.request("GET", "/healthz", {"Host": "10.1.2.3"}) for connection in connections]
        assert [answer.status for answer in answers] == [200] * 256 + [429] * 44
        for connection, answer in list(zip(connections, answers))[256:]:
            check_response(resolved(DOCUMENT["components"]["responses"]["TooMany"]), answer)
            assert connection.rest() == b""
        assert web.get("/healthz").status == 200  # another address, this machine's


def add_address(address):
    """Gives the loopback interface of this thread's network another address."""
    subprocess.run(["ip", "address", "add", f"{address}/32", "dev", "lo"], check=True)
