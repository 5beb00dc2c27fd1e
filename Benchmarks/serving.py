"""The tables of the two protocols: images beside nginx, messages beside redis."""

import time
from collections.abc import Iterator
from pathlib import Path
from typing import Any

from cameras import NEUTRAL_EXPOSURE_US, cameras, many_cameras
from figures import Figure, Goal, Measurement, Round, at_least, at_most
from harness.hub import HTTP_PORT, RPC_PORT, Hub
from pictures import write_noise
from servers import (NGINX_PORT, PING, VERSION, Peer, Process, call, exchange, exchanging, get, hub_with, image,
                     new_folder, nginx, proc_number, processor_time, redis, wrk)

GB, KB, MS, US = 1e9, 1024, 1e3, 1e6

# About three bytes a pixel.
SIZES = {"43 KB": (160, 90), "280 KB": (432, 216), "7 MB": (2048, 1140)}


def counted(connections: int) -> str:
    return "1 connection" if connections == 1 else f"{connections} connections"


def noise_cameras(folder: Path, *names: str) -> dict[str, tuple[Path, int, int]]:
    pictures = {}
    for name in names:
        file = folder / f"{name}.png"
        write_noise(file, *SIZES[name])
        pictures[name] = (file, *SIZES[name])
    return pictures


def images(folder: Path) -> Iterator[Measurement]:
    """Each image comes from the hub, and as a file from nginx."""
    with hub_with(folder / "hub", cameras(noise_cameras(folder, *SIZES))) as hub:
        hub.start().wait_for_cameras(*SIZES)
        with nginx(folder, hub.network) as reference:
            for name in SIZES:
                resid = hub.rpc().capture(name, exposureInUs=NEUTRAL_EXPOSURE_US)["resid"]
                (folder / "files" / resid).write_bytes(hub.image(resid))
                yield latency(hub, name, resid)
            # The image that is left is the largest.
            for connections, goal in ((1, at_least(1.0, 1.1)), (8, at_least(1.3, 1.5))):
                yield throughput_for_wrk(hub, connections, goal, resid)
            goals = {1: (at_least(0.65, 0.9), at_most(1.6, 1.3)), 8: (at_least(0.8, 1.0), at_most(2.2, 1.7))}
            for connections in goals:
                yield throughput(hub, reference, connections, goals[connections], resid)


def latency(hub: Hub, name: str, resid: str) -> Measurement:
    def measure() -> list[Round]:
        times = [exchange(hub.network, peer, "0.2s").median for peer in (image(resid), get(NGINX_PORT, f"/{resid}"))]
        return [Round(times[0] * MS, times[1] * MS)]

    return Measurement([Figure(f"GET of {name}, median", at_most(1.5, 1.1), "ms", "nginx")], measure)


def throughput_for_wrk(hub: Hub, connections: int, goal: Goal, resid: str) -> Measurement:
    def measure() -> list[Round]:
        return [Round(wrk(hub.network, HTTP_PORT, f"/res/{resid}", connections),
                      wrk(hub.network, NGINX_PORT, f"/{resid}", connections))]

    return Measurement([Figure(f"GET of 7 MB, wrk, {counted(connections)}", goal, "/s", "nginx")], measure, 5)


def throughput(hub: Hub, reference: Process, connections: int, goals: tuple[Goal, Goal], resid: str) -> Measurement:
    def measure() -> list[Round]:
        rates, costs = [], []
        for peer, process in ((image(resid), hub.process), (get(NGINX_PORT, f"/{resid}"), reference)):
            before = processor_time(process)
            result = exchange(hub.network, peer, "0.3s", connections)
            rates.append(result.rate)
            costs.append((processor_time(process) - before) / (result.bytes / GB))
        return [Round(*rates), Round(*costs)]

    return Measurement([Figure(f"GET of 7 MB, reads of 256 KB, {counted(connections)}", goals[0], "/s", "nginx"),
                        Figure(f"processor time a GB, {counted(connections)}", goals[1], "s", "nginx")], measure)


def messages(folder: Path) -> Iterator[Measurement]:
    uids, scenario = many_cameras(100)
    with hub_with(folder / "hub", scenario) as hub:
        hub.start().wait_for_cameras(*uids)
        with redis(folder, hub.network) as reference:
            yield ping_pong(hub, reference, 1, [at_least(0.85, 1.0)])
            yield ping_pong(hub, reference, 50, [at_least(0.65, 0.72), at_most(1.6, 1.4)])
        yield beside_idle_connections(hub)
        yield discovery(hub)


def ping_pong(hub: Hub, reference: Process, connections: int, goals: list[Goal]) -> Measurement:
    def measure() -> list[Round]:
        rates, costs = [], []
        for peer, process in ((VERSION, hub.process), (PING, reference)):
            before = processor_time(process)
            result = exchange(hub.network, peer, "0.25s", connections)
            rates.append(result.rate)
            costs.append((processor_time(process) - before) / result.requests * US)
        return [Round(*rates), Round(*costs)][:len(goals)]

    figures = [Figure(f'"camera:version", {counted(connections)}', goals[0], "/s", "redis PING")]
    if len(goals) > 1:
        figures.append(Figure(f"processor time a request, {counted(connections)}", goals[1], "us", "redis PING"))
    return Measurement(figures, measure)


def rate_of_one(hub: Hub, peer: Peer) -> float:
    return exchange(hub.network, peer, "0.25s").rate


def beside_idle_connections(hub: Hub) -> Measurement:
    def measure() -> list[Round]:
        alone = rate_of_one(hub, VERSION)
        idle = [hub.network.connect(RPC_PORT) for _ in range(1000)]
        beside = rate_of_one(hub, VERSION)
        for connection in idle:
            connection.close()
        return [Round(beside, alone)]

    return Measurement([Figure('"camera:version" beside 1000 idle connections', at_least(0.7, 0.95), "/s", "alone")],
                       measure)


def discovery(hub: Hub) -> Measurement:
    def measure() -> list[Round]:
        return [Round(rate_of_one(hub, call("camera:discover")), rate_of_one(hub, VERSION))]

    return Measurement([Figure('"camera:discover" with 100 cameras', at_least(0.3, 0.5), "/s", '"camera:version"')],
                       measure)


def crowds(folder: Path) -> Iterator[Measurement]:
    """Many who fetch one image."""
    scenario = cameras(noise_cameras(folder, "7 MB"))
    with hub_with(folder / "hub", scenario) as hub:
        yield messages_beside_images(hub, large_image(hub))
    yield readers_that_do_not_read(folder, scenario)


def large_image(hub: Hub) -> Peer:
    """Of a hub that is started."""
    hub.start().wait_for_cameras("7 MB")
    resid = hub.rpc().capture("7 MB", exposureInUs=NEUTRAL_EXPOSURE_US)["resid"]
    hub.image(resid)
    return image(resid)


def messages_beside_images(hub: Hub, peer: Peer) -> Measurement:
    def measure() -> list[Round]:
        with exchanging(hub.network, peer, 8):
            return [Round(exchange(hub.network, VERSION, "1s").p99 * MS)]

    return Measurement([Figure('"camera:version" while 8 connections GET 7 MB, p99', at_most(5, 2), "ms")], measure, 3)


def readers_that_do_not_read(folder: Path, scenario: dict[str, Any], count: int = 200) -> Measurement:
    def measure() -> list[Round]:
        # A new one each time, as a process does not give back all that it once had.
        with hub_with(new_folder(folder), scenario) as hub:
            peer = large_image(hub)
            before = settled_memory(hub)
            readers = [hub.network.connect(HTTP_PORT) for _ in range(count)]
            for reader in readers:
                reader.sendall(peer.request)
            growth = settled_memory(hub) - before
            for reader in readers:
                reader.close()
        return [Round(growth / KB / count)]

    return Measurement([Figure(f"memory a reader, {count} that do not read 7 MB", at_most(64, 16), "KB")], measure, 1)


def settled_memory(hub: Hub) -> int:
    """Bytes, once the hub has rested for a while."""
    while True:
        before = processor_time(hub.process)
        time.sleep(0.3)
        if processor_time(hub.process) - before < 0.001:
            return proc_number(hub, "smaps_rollup", "Pss")
