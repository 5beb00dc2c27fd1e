"""The simulated cameras of the benchmarks."""

from pathlib import Path
from typing import Any

from harness.scenario import EXPOSURE, camera_group, scenario

NEUTRAL_EXPOSURE_US = 15625  # at which a scene is shown as it is: two to the power of -6 seconds


def cameras(pictures: dict[str, tuple[Path, int, int]]) -> dict[str, Any]:
    """A scenario: by the camera's uid its scene and the size of its pictures."""
    return {
        "groups": [camera_group(uid, width, height) for uid, (_, width, height) in pictures.items()],
        "cameras": {uid: {"exposure": EXPOSURE, "capture": {"picture": str(file), "neutralExposure": EXPOSURE["value"]}}
                    for uid, (file, _, _) in pictures.items()},
    }


def many_cameras(count: int) -> tuple[list[str], dict[str, Any]]:
    """Their uids and the scenario."""
    uids = [f"camera-{number:03}" for number in range(count)]
    return uids, scenario(*uids)
