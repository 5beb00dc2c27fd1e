"""The tests' own way of looking at what changes meanwhile."""

import errno
import os
import sys
from pathlib import Path

import pytest
from harness.hub import ROOT, LogEntry, log_entries

sys.path.append(str(ROOT / "Tests/RealDrivers"))

from guest.video_node import capture_nodes  # noqa: E402


@pytest.mark.parametrize("error", [errno.ENOENT, errno.ENODEV], ids=errno.errorcode.get)
def test_a_video_node_that_goes_while_it_is_read_is_left_out(tmp_path, monkeypatch, error):
    for name, index in (("video0", "0"), ("video1", "1"), ("video2", "0"), ("video3", "0")):
        (tmp_path / name).mkdir()
        (tmp_path / name / "index").write_text(f"{index}\n")
    read_text = Path.read_text

    def read(path):
        if path.parent.name == "video2":
            raise OSError(error, "gone")
        return read_text(path)

    monkeypatch.setattr(Path, "read_text", read)
    assert capture_nodes(folder=tmp_path) == ["/dev/video0", "/dev/video3"]


def test_a_video_node_that_goes_while_its_link_is_followed_is_left_out(tmp_path, monkeypatch):
    links = tmp_path / "links"
    links.mkdir()
    for name in ("video0", "video2"):
        (tmp_path / name).mkdir()
        (tmp_path / name / "index").write_text("0\n")
        (links / name).symlink_to(tmp_path / name)
    readlink = os.readlink

    def follow(path, *arguments, **options):
        if Path(path) == links / "video2":
            raise FileNotFoundError(errno.ENOENT, "gone")
        return readlink(path, *arguments, **options)

    monkeypatch.setattr(os, "readlink", follow)
    assert capture_nodes(folder=links) == ["/dev/video0"]


@pytest.mark.parametrize("half", [b"2026-Nov-22 02:43:58  [1] INFO  A.Logger - Sec", b"\xc3", b""])
def test_a_log_line_that_is_still_being_written_is_not_read(tmp_path, half):
    file = tmp_path / "DEFAULT.log"
    file.write_bytes("2026-Nov-22 02:43:58  [1] INFO  A.Logger - Süd\n".encode() + half)
    assert log_entries(file) == [LogEntry("INFO", "A.Logger", "Süd")]
    assert log_entries(tmp_path / "not there") == []
