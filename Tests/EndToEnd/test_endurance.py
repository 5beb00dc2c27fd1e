"""What must not grow."""

import os

import pytest
from harness.hub import IS_SANITIZED
from harness.scenario import EXPOSURE, camera_group, scenario
from PIL import Image

CAPTURES, FIRST = 1000, 100


@pytest.fixture(scope="module")
def usage(start_shared_hub):
    """Resident memory in kB and number of descriptors, after the first captures and after all of them."""
    hub = start_shared_hub(scenario("cam")).wait_for_cameras("cam")
    client, http = hub.rpc(), hub.http()
    samples = []
    for number in range(1, CAPTURES + 1):
        result = client.capture("cam", exposureInUs=1000 * (1 + number % 3))
        assert http.get(f"/res/{result['resid']}").status == 200
        if number in (FIRST, CAPTURES):
            samples.append((resident_memory(hub), len(os.listdir(hub.proc("fd")))))
    return samples


def resident_memory(hub):
    status = hub.proc("status").read_text(encoding="ascii")
    return int(status.partition("VmRSS:")[2].split()[0])


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer keeps memory of its own")
def test_900_more_captures_leave_the_memory_where_it_was(usage):
    (before, _), (after, _) = usage
    assert after <= before * 1.05


def test_900_more_captures_leave_no_descriptor_open(usage):
    (_, before), (_, after) = usage
    assert after == before


def page_faults(hub):
    return int(hub.proc("stat").read_text(encoding="ascii").rpartition(")")[2].split()[7])


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer gives memory back as it sees fit")
@pytest.mark.parametrize("size", [(1920, 1080), (4000, 3000)], ids=["1080p", "12MP"])
def test_a_still_finds_its_memory_where_the_ones_before_had_theirs(start_hub, tmp_path, size):
    scene = tmp_path / "scene.png"
    Image.effect_noise(size, 60).convert("RGB").save(scene, compress_level=1)
    camera = {"exposure": EXPOSURE, "capture": {"picture": str(scene)}}
    hub = start_hub({"groups": [camera_group("cam", *size)], "cameras": {"cam": camera}}).wait_for_cameras("cam")
    client, http = hub.rpc(), hub.http()

    def new_pages_of_a_still():
        before = page_faults(hub)
        assert http.get(f"/res/{client.capture('cam', exposureInUs=15625)['resid']}").status == 200
        return page_faults(hub) - before

    # The second file of a size takes its place beside the first; the third replaces that.
    assert max([new_pages_of_a_still() for _ in range(15)][3:]) < 20
