"""Pictures of which no encoder makes less than they are, so that their files have the sizes that a benchmark wants."""

import random
import struct
import zlib
from pathlib import Path


def write_noise(file: Path, width: int, height: int) -> None:
    """A PNG file of about three bytes a pixel; the same each time."""
    generator = random.Random(width * height)
    rows = b"".join(b"\0" + generator.randbytes(3 * width) for _ in range(height))

    def chunk(name: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    file.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 0)) +
                     chunk(b"IEND", b""))
