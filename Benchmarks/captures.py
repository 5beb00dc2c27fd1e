"""The tables of captures: time, page faults and memory of the hub."""

import operator
import time
from collections.abc import Iterator
from pathlib import Path

from cameras import NEUTRAL_EXPOSURE_US, cameras
from capture_steps import SIZES, CaptureSteps, pictures
from figures import Figure, Goal, Measurement, Round, at_most
from harness.hub import RPC_PORT, Hub
from harness.rpc import RpcClient
from servers import call, exchange, hub_with, new_folder, page_faults, proc_number

MB, MS = 1 << 20, 1e3
CAPTURES = 3  # a round: the first one is slow, on a connection that is new, behind a rest


def captures(folder: Path) -> Iterator[Measurement]:
    with CaptureSteps(folder) as steps, hub_with(folder / "hub", cameras(pictures(folder))) as hub:
        hub.start().wait_for_cameras(*SIZES)
        for uid, goal in zip(SIZES, (at_most(1.2, 0.8), at_most(5, 3))):
            open_camera(hub, uid)
            yield beyond_the_camera(hub, steps, uid, goal)
    for uid in SIZES:
        yield faults_of_a_still(folder, uid)


def open_camera(hub: Hub, uid: str) -> None:
    """Which stays open for as long as this connection lives, that is as long as the hub."""
    hub.rpc().capture(uid, exposureInUs=NEUTRAL_EXPOSURE_US)


def beyond_the_camera(hub: Hub, steps: CaptureSteps, uid: str, goal: Goal) -> Measurement:
    peer = call("camera:capture", to=uid, exposureInUs=NEUTRAL_EXPOSURE_US)

    def measure() -> list[Round]:
        captured = exchange(hub.network, peer, str(CAPTURES)).median
        return [Round(captured * MS, steps.measure(uid, CAPTURES).still * MS)]

    return Measurement([Figure(f"capture, {uid}", goal, "ms", "scene and encoding", operator.sub)], measure, 7)


def capture_and_get(hub: Hub, rpc: RpcClient, uid: str) -> None:
    hub.image(rpc.capture(uid, exposureInUs=NEUTRAL_EXPOSURE_US)["resid"])


def faults_of_a_still(folder: Path, uid: str, stills: int = 10) -> Measurement:
    def measure() -> list[Round]:
        with hub_with(new_folder(folder), cameras(pictures(folder))) as hub:
            hub.start().wait_for_cameras(*SIZES)
            rpc = hub.rpc()
            for _ in range(3):
                capture_and_get(hub, rpc, uid)
            before = page_faults(hub)
            for _ in range(stills):
                capture_and_get(hub, rpc, uid)
            return [Round((page_faults(hub) - before) / stills)]

    return Measurement([Figure(f"page faults a still and GET, {uid}", at_most(19, 0))], measure, 1)


def process(folder: Path) -> Iterator[Measurement]:
    """Start and memory."""
    with CaptureSteps(folder):
        scenario = cameras(pictures(folder))

    def start() -> list[Round]:
        with hub_with(new_folder(folder), scenario) as hub:
            return [Round(seconds_to_the_first_answer(hub) * MS)]

    def memory_in_use() -> list[Round]:
        with hub_with(new_folder(folder), scenario) as hub:
            hub.start().wait_for_cameras(*SIZES)
            time.sleep(1)
            idle = proc_number(hub, "status", "VmRSS")
            rpc = hub.rpc()
            for _ in range(20):
                capture_and_get(hub, rpc, "1920x1080")
            return [Round(idle / MB), Round(proc_number(hub, "status", "VmRSS") / MB)]

    def peak() -> list[Round]:
        with hub_with(new_folder(folder), scenario) as hub:
            hub.start().wait_for_cameras(*SIZES)
            rpc = hub.rpc()
            for _ in range(3):
                capture_and_get(hub, rpc, "4000x3000")
            return [Round(proc_number(hub, "status", "VmHWM") / MB)]

    yield Measurement([Figure("start to the first answer", at_most(25, 12), "ms")], start, 10)
    yield Measurement([Figure("memory, idle", at_most(20, 17), "MB"),
                       Figure("memory after 20 captures and GETs, 1920x1080", at_most(50, 42), "MB")], memory_in_use, 1)
    yield Measurement([Figure("memory, peak of 3 captures and GETs, 4000x3000", at_most(170, 130), "MB")], peak, 1)


def seconds_to_the_first_answer(hub: Hub) -> float:
    begin = time.monotonic()
    hub.start(wait_for_ports=False)
    while True:
        try:
            connection = hub.network.connect(RPC_PORT)
        except ConnectionRefusedError:
            time.sleep(0.0005)  # leaves the processors to the hub
            continue
        with connection:
            RpcClient(connection).request("camera:version")
            return time.monotonic() - begin
