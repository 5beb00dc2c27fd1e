"""The table of the program for browsers: what it adds to the hub's own work, and what its viewers cost."""

import io
import json
import operator
import re
import select
import statistics
import time
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

from cameras import NEUTRAL_EXPOSURE_US, cameras
from capture_steps import CaptureSteps, pictures
from figures import Figure, Measurement, Round, at_least, at_most
from harness.hub import Hub
from harness.wait import wait_until
from harness.web import Web, part
from PIL import Image
from servers import hub_with, new_folder

MB, MS = 1 << 20, 1e3
UID = "1920x1080"
STILLS = 5  # a round
VIEWERS = 200
STILL = json.dumps({"exposure": f"{NEUTRAL_EXPOSURE_US}us", "settle": "0"}).encode()
PART = re.compile(rb"Content-Type: image/jpeg\r\nContent-Length: ([0-9]+)\r\n")


def web(folder: Path) -> Iterator[Measurement]:
    with CaptureSteps(folder):
        scenario = cameras(pictures(folder))
    with hub_with(folder / "hub", scenario) as hub:
        hub.start().wait_for_cameras(*scenario["cameras"])
        with running_web(folder, hub) as program:
            program.wait_for_cameras(*scenario["cameras"])
            yield beyond_the_hub(hub, program)
            yield frames_of_a_stream(hub, program)
            yield encoding(program)
            yield memory_of_viewers(program)


@contextmanager
def running_web(folder: Path, hub: Hub) -> Iterator[Web]:
    program_folder = new_folder(folder)
    program_folder.mkdir()
    program = Web(program_folder, hub.network)
    try:
        yield program
    finally:
        program.stop()


def seconds_of(action) -> float:
    begin = time.perf_counter()
    action()
    return time.perf_counter() - begin


def beyond_the_hub(hub: Hub, program: Web) -> Measurement:
    """The same still, asked for directly and fetched, by turns with a POST."""
    rpc = hub.rpc()
    connection = program.connect()

    def directly() -> None:
        hub.image(rpc.capture(UID, exposureInUs=NEUTRAL_EXPOSURE_US)["resid"])

    def by_post() -> None:
        target = f"/api/cameras/{part(UID)}/stills"
        answer = connection.request("POST", target, {"Content-Type": "application/json"}, STILL)
        assert answer.status == 201, answer

    def measure() -> list[Round]:
        times = [(seconds_of(by_post), seconds_of(directly)) for _ in range(STILLS)]
        posted, direct = (statistics.median(each) for each in zip(*times))
        return [Round(posted * MS, direct * MS)]

    directly()
    by_post()
    figure = Figure("POST to 201, 1920x1080", at_most(5, 2), "ms", "capture and GET", operator.sub)
    return Measurement([figure], measure, 7)


def is_at_rest(program: Web) -> bool:
    """The hub keeps one image: nobody else may take one between a capture and its GET."""
    viewers = re.search(rb"^camera_hub_web_stream_viewers (.+)$", program.get("/metrics").body, re.MULTILINE)
    return viewers[1] == b"0" and not program.queue()


def frames(program: Web, seconds: float) -> float:
    """A second, of a stream as fast as it goes."""
    connection = program.connect()
    try:
        target = f"/cameras/{part(UID)}/stream.mjpg?fps=30&exposure={NEUTRAL_EXPOSURE_US}us&settle=0"
        connection.send(f"GET {target} HTTP/1.1\r\nHost: localhost\r\n\r\n".encode())
        count, tail = 0, b""
        end = time.perf_counter() + seconds
        while (left := end - time.perf_counter()) > 0:
            if not select.select([connection.socket], [], [], left)[0]:
                break
            data = tail + connection.socket.recv(1 << 20)
            count += len(PART.findall(data)) - len(PART.findall(tail))
            tail = data[-100:]
        return count / seconds
    finally:
        connection.close()
        wait_until(lambda: is_at_rest(program), "the stream's last still has been taken")


def frames_of_a_stream(hub: Hub, program: Web) -> Measurement:
    """Against the same stills taken directly, one after the other."""
    rpc = hub.rpc()

    def measure() -> list[Round]:
        begin, count = time.perf_counter(), 0
        while time.perf_counter() < begin + 1:
            hub.image(rpc.capture(UID, exposureInUs=NEUTRAL_EXPOSURE_US)["resid"])
            count += 1
        return [Round(frames(program, 2), count / (time.perf_counter() - begin))]

    return Measurement([Figure("pictures of a stream, 1920x1080", at_least(0.7, 0.9), "/s", "stills taken directly")],
                       measure, 5)


def encoding_times(program: Web) -> tuple[float, int]:
    text = program.get("/metrics").body.decode()
    seconds, count = (re.search(rf'^camera_hub_web_still_seconds_{name}{{step="encode"}} (.+)$', text, re.MULTILINE)[1]
                      for name in ("sum", "count"))
    return float(seconds), int(count)


def encoding(program: Web) -> Measurement:
    """A still's PNG file as a JPEG file, whole and for a phone; Pillow does the same with the same libraries."""
    still = program.take(UID, exposure=f"{NEUTRAL_EXPOSURE_US}us")
    png = program.get(still["png"]).body

    def mean(query: str) -> float:
        before = encoding_times(program)
        for _ in range(STILLS):
            assert program.get(still["jpeg"] + query).status == 200
        after = encoding_times(program)
        return (after[0] - before[0]) / (after[1] - before[1])

    def pillow(size: tuple[int, int] | None) -> float:
        def convert() -> None:
            picture = Image.open(io.BytesIO(png)).convert("RGB")
            if size:
                picture = picture.resize(size, Image.BOX)
            picture.save(io.BytesIO(), "JPEG", quality=85)

        return statistics.mean(seconds_of(convert) for _ in range(STILLS))

    def measure() -> list[Round]:
        return [Round(mean("") * MS, pillow(None) * MS), Round(mean("?width=640") * MS, pillow((640, 360)) * MS)]

    return Measurement([Figure("JPEG of a still, 1920x1080", at_most(1.0, 0.8), "ms", "Pillow"),
                        Figure("JPEG of a still, 640 wide", at_most(1.0, 0.8), "ms", "Pillow")], measure, 5)


def memory_of_viewers(program: Web) -> Measurement:
    """What 200 viewers of a stream cost, every fourth of which never reads."""
    target = f"/cameras/{part(UID)}/stream.mjpg?fps=2&width=960"

    def measure() -> list[Round]:
        before = program.memory()
        viewers = [program.connect() for _ in range(VIEWERS)]
        for viewer in viewers:
            viewer.send(f"GET {target} HTTP/1.1\r\nHost: localhost\r\n\r\n".encode())
        readers = [viewer.socket for number, viewer in enumerate(viewers) if number % 4]
        end = time.perf_counter() + 5
        while (left := end - time.perf_counter()) > 0:
            for reader in select.select(readers, [], [], left)[0]:
                reader.recv(1 << 18)
        after = program.memory()
        for viewer in viewers:
            viewer.close()
        return [Round((after - before) / MB)]

    return Measurement([Figure("memory of 200 viewers, 50 of which never read", at_most(100, 50), "MB")], measure, 1)
