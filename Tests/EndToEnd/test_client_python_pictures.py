"""What the Python client library does with the PNG file of a still."""

import errno
import io
import os
import stat
import struct
import sys
import zlib
from datetime import timedelta

import numpy
import pytest
from camera_hub import ProtocolError, Still
from harness.python_client import IMAGE_ID
from PIL import Image

SIGNATURE = b"\x89PNG\r\n\x1a\n"
FORM = (8, 2, 0, 0, 0)  # eight bits, RGB, packed and filtered as there is one way to, no interlacing


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png_file(width, height, rows, form=FORM, parts=1):
    """The filtered rows as a file; their packed bytes in so many parts."""
    packed = zlib.compress(rows)
    size = -(-len(packed) // parts)
    data = b"".join(chunk(b"IDAT", packed[begin:begin + size]) for begin in range(0, len(packed), size))
    head = struct.pack(">IIBBBBB", width, height, *form)
    return SIGNATURE + chunk(b"IHDR", head) + data + chunk(b"IEND", b"")


def still_of(png):
    return Still(timedelta(milliseconds=1), IMAGE_ID, png)


def some_rows(width, height, filters, seed=1):
    """Random differences: whatever a filter makes of them is a picture."""
    rows = numpy.random.default_rng(seed).integers(0, 256, (height, 1 + 3 * width), numpy.uint8)
    rows[:, 0] = [filters[row % len(filters)] for row in range(height)]
    return rows.tobytes()


FILTERS = [(0,), (1,), (2,), (3,), (4,), (4, 3, 2, 1, 0), (0, 1, 2, 3, 4), (3, 4), (1, 1, 4, 0, 2)]


@pytest.mark.parametrize("filters", FILTERS, ids=str)
@pytest.mark.parametrize("width, height", [(1, 1), (1, 9), (9, 1), (2, 2), (5, 40), (40, 5), (64, 48), (31, 31)])
def test_the_pixels_are_those_that_another_library_reads(filters, width, height):
    png = png_file(width, height, some_rows(width, height, filters))
    pixels = still_of(png).array()
    assert pixels.shape == (height, width, 3)
    assert numpy.array_equal(pixels, numpy.asarray(Image.open(io.BytesIO(png))))


def test_packed_data_in_many_chunks_and_unknown_chunks_are_read():
    png = png_file(20, 10, some_rows(20, 10, (4,)), parts=7)
    png = png.replace(chunk(b"IEND", b""), chunk(b"tEXt", b"Title\0x") + chunk(b"IEND", b""))
    assert numpy.array_equal(still_of(png).array(), numpy.asarray(Image.open(io.BytesIO(png))))


def test_the_array_is_the_callers_own():
    still = still_of(png_file(2, 2, some_rows(2, 2, (0,))))
    first = still.array()
    assert first.flags.c_contiguous and first.flags.writeable
    first[:] = 7
    assert not numpy.array_equal(still.array(), first)


ROWS = some_rows(4, 3, (1,))


@pytest.mark.parametrize(
    "png",
    [
        SIGNATURE, png_file(4, 3, ROWS)[:-12], png_file(4, 3, ROWS)[:40], png_file(4, 3, ROWS[:-1]),
        png_file(4, 3, ROWS + b"x"), png_file(4, 3, some_rows(4, 3, (5,))), png_file(0, 3, b"\0\0\0"),
        png_file(4, 0, b""), png_file(1 << 31, 1 << 31, ROWS), SIGNATURE + chunk(b"IEND", b""),
        png_file(4, 3, ROWS).replace(b"IDAT", b"tEXt"), png_file(4, 3, ROWS)[:-20] + b"x" * 8 + chunk(b"IEND", b""),
        *(png_file(4, 3, ROWS, form) for form in ((16, 2, 0, 0, 0), (8, 6, 0, 0, 0), (8, 2, 0, 0, 1))),
    ],
    ids=range(15),
)
def test_a_file_that_no_hub_makes_is_told(png):
    with pytest.raises(ProtocolError, match="^the image is no PNG file of a hub"):
        still_of(png).array()


def test_without_numpy_the_error_says_what_is_missing(monkeypatch):
    monkeypatch.setitem(sys.modules, "numpy", None)
    with pytest.raises(ImportError, match="python3-numpy"):
        still_of(png_file(4, 3, ROWS)).array()


def test_saving_makes_the_file_and_replaces_it(tmp_path):
    path = tmp_path / "still.png"
    still_of(b"first").save(path)
    still_of(b"second").save(str(path))
    assert [(file.name, file.read_bytes()) for file in tmp_path.iterdir()] == [("still.png", b"second")]


def test_a_saved_file_has_the_rights_that_the_user_gives_new_files(tmp_path):
    before = os.umask(0o027)
    try:
        still_of(b"x").save(tmp_path / "still.png")
    finally:
        os.umask(before)
    assert stat.S_IMODE((tmp_path / "still.png").stat().st_mode) == 0o640


def test_a_failed_saving_leaves_the_old_file_and_nothing_else(tmp_path, monkeypatch):
    path = tmp_path / "still.png"
    path.write_bytes(b"old")

    def no_room(*_):
        raise OSError(errno.ENOSPC, "No space left on device")

    monkeypatch.setattr("pathlib.Path.replace", no_room)
    with pytest.raises(OSError, match="No space left"):
        still_of(b"new").save(path)
    assert [(file.name, file.read_bytes()) for file in tmp_path.iterdir()] == [("still.png", b"old")]


@pytest.mark.parametrize("name", ["", "folder", "pipe", "missing/still.png"])
def test_nothing_but_a_file_is_replaced(tmp_path, name):
    (tmp_path / "folder").mkdir()
    os.mkfifo(tmp_path / "pipe")
    before = sorted(tmp_path.iterdir())
    with pytest.raises(OSError):
        still_of(b"x").save(tmp_path / name)
    assert sorted(tmp_path.iterdir()) == before
    assert stat.S_ISFIFO((tmp_path / "pipe").stat().st_mode)
