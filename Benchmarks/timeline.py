"""Where the time of one still goes. What the hub logs at level DEBUG marks its steps: the log comes over a pipe, and a
line's time is that of its arrival. The camera's part is not in the log, and is measured by CaptureSteps beside it."""

import os
import statistics
import threading
import time
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

from cameras import NEUTRAL_EXPOSURE_US, cameras
from capture_steps import SIZES, CaptureSteps, pictures
from harness.hub import Hub
from harness.rpc import RpcClient
from harness.wait import wait_until
from servers import exchange, hub_with, image

STILLS = 11
MS = 1e3

LOGGING = """log4j.rootLogger=DEBUG, out
log4j.appender.out=org.apache.log4j.FileAppender
log4j.appender.out.File=/dev/stdout
log4j.appender.out.layout=org.apache.log4j.PatternLayout
log4j.appender.out.layout.ConversionPattern=%m%n
"""

# The step that a log line ends, by the line's beginning, in their order.
MARKS = {
    "handling method": "request parsed",
    "capturing photo": "setting",
    "waiting... done": "still",
    "capturing photo -- done": "out of the stream",
    "<-- ": "store, reply written",
}

STEPS = {
    "request parsed": "from the client's send to the method's name",
    "setting": "the camera found, its exposure compared with the one in force",
    "wait": "for the client's delay, here 0",
    "frame": "the scene of the simulated camera *",
    "encoding": "pixels to PNG *",
    "hand-over": "to the camera's thread and back, into the stream",
    "out of the stream": "the bytes of the file for the hub",
    "store, reply written": "the image id, the image in place of the one before, JSON",
    "reply": "to the client",
    "request to reply": "all of it",
    "GET": "on a warm connection, reads of 256 KB",
    "conversion": "what a camera's YUYV frame would take besides *",
}


class TimedLines:
    """The lines of a pipe, with the time at which each has come."""

    def __init__(self, descriptor: int) -> None:
        self._lines: list[tuple[float, str]] = []
        threading.Thread(target=self._read, args=(descriptor,), daemon=True).start()

    def _read(self, descriptor: int) -> None:
        while data := os.read(descriptor, 1 << 16):
            now = time.monotonic()
            self._lines += [(now, line) for line in data.decode().splitlines()]

    def forget(self) -> None:
        self._lines.clear()

    def so_far(self) -> list[tuple[float, str]]:
        return list(self._lines)


def marks(lines: list[tuple[float, str]]) -> dict[str, float]:
    """When each of the steps ended: the first line, behind that of the step before, that begins as it does."""
    found: dict[str, float] = {}
    remaining = iter(lines)
    for beginning, step in MARKS.items():
        for when, line in remaining:
            if line.startswith(beginning):
                found[step] = when
                break
    return found


@contextmanager
def hub_that_tells(folder: Path) -> Iterator[tuple[Hub, TimedLines]]:
    reading, writing = os.pipe()
    with hub_with(folder / "hub", cameras(pictures(folder))) as hub:
        hub.data_folder.mkdir(parents=True)
        (hub.data_folder / "logging.properties").write_text(LOGGING, encoding="ascii")
        hub.stdout_file = Path(f"/proc/self/fd/{writing}")
        hub.start()
        os.close(writing)
        yield hub.wait_for_cameras(*SIZES), TimedLines(reading)


def still(hub: Hub, rpc: RpcClient, lines: TimedLines, steps: CaptureSteps, uid: str) -> dict[str, float]:
    """The times of its steps in seconds; of the second of two, since one behind a rest is slower."""
    rpc.capture(uid, exposureInUs=NEUTRAL_EXPOSURE_US)
    lines.forget()
    begin = time.monotonic()
    resid = rpc.capture(uid, exposureInUs=NEUTRAL_EXPOSURE_US)["resid"]
    end = time.monotonic()
    ends = wait_until(lambda: found if len(found := marks(lines.so_far())) == len(MARKS) else None, "a still's log")
    times = dict.fromkeys(STEPS, 0.0)
    last = begin
    for step, when in ends.items():
        times[step], last = when - last, when
    times["reply"] = end - last
    times["request to reply"] = end - begin
    camera = steps.measure(uid, 3)
    times["encoding"], times["frame"] = camera.encoding, camera.still - camera.encoding
    times["hand-over"] = times.pop("still") - camera.still
    times["conversion"] = camera.conversion
    times["GET"] = exchange(hub.network, image(resid), "3").median
    return times


def timeline(folder: Path) -> str:
    """The medians, as a table."""
    with CaptureSteps(folder) as steps, hub_that_tells(folder) as (hub, lines):
        columns = []
        for uid in SIZES:
            rpc = hub.rpc()
            stills = [still(hub, rpc, lines, steps, uid) for _ in range(STILLS)]
            columns.append({step: statistics.median(times[step] for times in stills) * MS for step in STEPS})
    rows = [f"| {step:20} | {columns[0][step]:12.2f} | {columns[1][step]:12.2f} | {what:66} |"
            for step, what in STEPS.items()]
    head = ["### One still, in ms", "", f"| {'step':20} | {'1920x1080':>12} | {'4000x3000':>12} | {'what it is':66} |",
            f"|{'-' * 22}|{'-' * 13}:|{'-' * 13}:|{'-' * 68}|"]
    return "\n".join([*head, *rows, "", "* measured beside the hub, in another process", ""])
