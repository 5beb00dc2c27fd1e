"""The program CaptureSteps: the camera's part in a capture, measured by turns with captures."""

import json
import subprocess
from dataclasses import dataclass
from pathlib import Path
from types import TracebackType

from servers import PROGRAMS

SIZES = {"1920x1080": (1920, 1080), "4000x3000": (4000, 3000)}


@dataclass(frozen=True)
class Steps:
    """In seconds; see CaptureSteps.cpp."""

    still: float
    encoding: float
    conversion: float


def pictures(folder: Path) -> dict[str, tuple[Path, int, int]]:
    """Those that it has written, by their sizes; the scenes of cameras."""
    return {name: (folder / f"dense-{name}.png", *size) for name, size in SIZES.items()}


class CaptureSteps:
    def __init__(self, folder: Path) -> None:
        self._process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", PROGRAMS / "CaptureSteps", folder],
                                         stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def __enter__(self) -> "CaptureSteps":
        assert self._read() == "ready\n"
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self._process.kill()
        self._process.wait()

    def _read(self) -> str:
        return self._process.stdout.readline()

    def measure(self, size: str, times: int) -> Steps:
        """The medians of so many."""
        width, height = SIZES[size]
        self._process.stdin.write(f"{width} {height} {times}\n")
        self._process.stdin.flush()
        return Steps(**json.loads(self._read()))
