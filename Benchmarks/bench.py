#!/usr/bin/python3
"""Measures the built hub and its parts beside others and prints the tables; scripts/bench.sh builds all that and tells
the arguments."""

import argparse
import contextlib
import os
import resource
import signal
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable, Iterator
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "Tests/EndToEnd"))

from captures import captures, process
from figures import Figure, Measurement, table
from harness import hub
from harness.network import allow_networks
from machine import description
from programs import NotBuilt, table_of
from serving import crowds, images, messages
from timeline import timeline
from web import web

Table = Callable[[Path], Iterator[Measurement]]

# In the order of a run: those of a hub, and those of its parts.
TABLES: dict[str, tuple[str, Table]] = {
    "images": ("Images, beside nginx", images),
    "messages": ("Messages, beside redis", messages),
    "crowds": ("Many connections and large images", crowds),
    "captures": ("Captures of a dense picture", captures),
    "process": ("The process", process),
    "web": ("The program for browsers", web),
    "png": ("Pixels to PNG", table_of("PngBenchmark")),
    "frames": ("Frames to pixels", table_of("FrameBenchmark")),
}
OF_PARTS = ("png", "frames")


def measured(measurements: Table) -> list[Figure]:
    figures: list[Figure] = []
    with tempfile.TemporaryDirectory(prefix="camera-hub-bench-") as folder:
        for measurement in measurements(Path(folder)):
            measurement.take()
            figures += measurement.figures
    return figures


def print_table(name: str) -> bool:
    """False if a must is missed, or the table could not be made."""
    title, measurements = TABLES[name]
    try:
        figures = measured(measurements)
    except NotBuilt as program:
        print(f"### {title}\n\n{program} has not been built.\n", flush=True)
        return True
    except (AssertionError, OSError, ValueError, subprocess.CalledProcessError) as error:
        print(f"### {title}\n\nThis could not be measured: {error!r}\n", flush=True)
        return False
    print(table(title, figures), flush=True)
    return bool(figures) and not any(figure.has_failed() for figure in figures)


def print_timeline() -> None:
    with tempfile.TemporaryDirectory(prefix="camera-hub-bench-") as folder:
        print(timeline(Path(folder)), flush=True)


def prepare() -> None:
    """This process, for those that it starts."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that they are stopped, and folders removed
    descriptors = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors))
    with contextlib.suppress(PermissionError):
        os.setpriority(os.PRIO_PROCESS, 0, -15)  # what else runs on the machine disturbs less
    allow_networks()


def parse(arguments: list[str]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="scripts/bench.sh")
    parser.add_argument("--timeline", action="store_true")
    parser.add_argument("--table", action="append", choices=TABLES)
    parser.add_argument("--hub", action="append", type=lambda path: Path(path).resolve(strict=True))
    return parser.parse_args(arguments)


def main(arguments: list[str]) -> int:
    options = parse(arguments)
    prepare()
    print(description(), flush=True)
    begin = time.monotonic()
    tables = options.table or list(TABLES)
    is_good = True
    for number, executable in enumerate(options.hub or [hub.EXECUTABLE]):
        hub.EXECUTABLE = executable
        if options.hub:
            print(f"## {executable}\n", flush=True)
        if options.timeline:
            print_timeline()
            continue
        for name in tables:
            if number == 0 or name not in OF_PARTS:
                is_good &= print_table(name)
    print(f"{time.monotonic() - begin:.0f} s", file=sys.stderr)
    return 0 if is_good else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
