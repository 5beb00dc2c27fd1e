"""A video node of the kernel, used as another program would."""

import errno
import fcntl
import os
import struct
from pathlib import Path

VIDIOC_S_CTRL = 0xC008561C
VIDIOC_QUERYCTRL = 0xC0445624
VIDIOC_REQBUFS = 0xC0145608
NEXT_CONTROL = 0x80000000
VIDEO_CAPTURE, VIDEO_CAPTURE_MPLANE = 1, 9
MEMORY_MMAP = 1

QUERYCTRL = struct.Struct("=II32s5iI2I")


def capture_nodes(device="", folder=Path("/sys/class/video4linux")):
    """Paths of the nodes that frames come from, of those devices in whose own path the text stands. A USB camera's
    node for metadata has index 1."""
    found = []
    for link in folder.iterdir():
        try:
            node = link.resolve()
            index = (node / "index").read_text().strip()
        except OSError as error:
            if error.errno not in (errno.ENOENT, errno.ENODEV):
                raise
            continue  # gone since it was listed: before its link was followed, its file opened, or that read
        if device in str(node) and index == "0":
            found.append(f"/dev/{node.name}")
    return sorted(found)


class VideoNode:
    def __init__(self, path):
        self._file = os.open(path, os.O_RDWR)

    def _controls(self):
        number = 0
        while True:
            query = bytearray(QUERYCTRL.pack(number | NEXT_CONTROL, 0, b"", *[0] * 8))
            try:
                fcntl.ioctl(self._file, VIDIOC_QUERYCTRL, query)
            except OSError:
                return
            number, _, name, *_ = QUERYCTRL.unpack(query)
            yield name.rstrip(b"\0").decode(), number

    def set(self, name, value):
        fcntl.ioctl(self._file, VIDIOC_S_CTRL, struct.pack("=Ii", dict(self._controls())[name], value))

    def occupy(self, buffer_type):
        """Reserves buffers, by which a program makes a camera its own."""
        fcntl.ioctl(self._file, VIDIOC_REQBUFS, bytearray(struct.pack("=5I", 2, buffer_type, MEMORY_MMAP, 0, 0)))

    def close(self):
        os.close(self._file)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
