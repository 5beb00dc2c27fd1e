"""The emulated USB camera, and what its pictures tell."""

import os
import subprocess
from dataclasses import dataclass
from math import log2
from pathlib import Path

from guest.video_node import capture_nodes
from harness.files import complete_lines
from harness.wait import PATIENCE, wait_until

PROGRAM = Path(os.environ["REAL_DRIVERS_PROGRAMS"]) / "UsbCamera"
BLOCK = 16  # pixels


class UsbCamera:
    """Plugged in as it is made. The arguments are those of the program: rate=10, formats="mjpeg"."""

    def __init__(self, folder, port=0, **arguments):
        self._device = f"/vhci_hcd.0/usb1/1-{port + 1}/"
        self._events_file = folder / f"camera-at-port-{port}.txt"
        arguments["port"] = port
        command = [PROGRAM, *(f"{name}={value}" for name, value in arguments.items())]
        with open(self._events_file, "wb") as events:
            self._process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=events)
        self.wait_for_node()

    def wait_for_node(self):
        wait_until(self._has_node, "a video node for the camera")

    def _has_node(self):
        assert self._process.poll() is None, "the camera has ended"
        return self.nodes()

    def nodes(self):
        return capture_nodes(self._device)

    def command(self, text):
        done = f"command {text}"
        before = self.events().count(done)
        self._process.stdin.write(f"{text}\n".encode())
        self._process.stdin.flush()
        wait_until(lambda: self.events().count(done) > before, done)

    def events(self):
        return complete_lines(self._events_file)

    def wait_for_event(self, event):
        wait_until(lambda: event in self.events(), f"event {event}")

    def frames_made(self):
        """The number of its latest frame, whether anybody takes it or not."""
        self.command("count")
        return max(int(event.split()[1]) for event in self.events() if event.startswith("made "))

    def unplug(self):
        self.command("unplug")
        self.wait_until_gone()

    def wait_until_gone(self):
        wait_until(lambda: not self.nodes(), "the camera has gone")

    def plug(self):
        self.command("plug")
        self.wait_for_node()

    def end(self):
        """Without a complaint of one that has ended already."""
        self._process.stdin.close()
        self._process.wait(PATIENCE)
        self.wait_until_gone()


@dataclass(frozen=True)
class Shown:
    """What a picture tells of the frame that it was made from."""

    number: int
    exposure: int  # 100 us
    automatics: int  # 1 exposure, 2 focus, 4 white balance
    grey: float  # 0 to 255
    colours: tuple  # three of R, G, B


def read(picture):
    def block(column, row):
        left, top = column * BLOCK + BLOCK // 4, row * BLOCK + BLOCK // 4
        pixels = picture.crop((left, top, left + BLOCK // 2, top + BLOCK // 2)).getdata()
        return tuple(sum(pixel[channel] for pixel in pixels) / len(pixels) for channel in range(3))

    def bits(row):
        value = 0
        for column in range(16):
            red, green, blue = block(column, row)
            assert max(red, green, blue) < 64 or min(red, green, blue) > 192, "neither black nor white"
            value = value << 1 | (green > 128)
        return value

    last_row = picture.height // BLOCK - 1
    greys = [sum(block(column, last_row)) / 3 for column in range(picture.width // BLOCK)]
    return Shown(bits(0), bits(1), bits(2), sum(greys) / len(greys), tuple(block(5 * i + 2, 3) for i in range(3)))


def grey_of(exposure):
    """The brightness of a picture with that exposure in 100 us, 0 to 255."""
    return 20 + 18 * log2(exposure)
