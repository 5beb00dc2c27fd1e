"""A hub for which the system has too little of something. Threads are with the ends of the process, descriptors with
the connections, room on the disk with the diagnostics and redirections."""

import subprocess

import pytest
from harness.hub import IS_SANITIZED
from harness.scenario import EXPOSURE, camera_group, scenario

# No user may have an inotify instance in a namespace of its own, in which the hub runs on as the same process.
NO_INOTIFY = """exec unshare --user --map-root-user sh -ec '
    echo 0 > /proc/sys/user/max_inotify_instances
    exec "$@"' sh "$@" """


def may_limit_inotify():
    command = ["sh", "-c", NO_INOTIFY, "sh", "true"]
    return subprocess.run(command, stderr=subprocess.DEVNULL, check=False).returncode == 0


@pytest.mark.skipif(IS_SANITIZED, reason="a sanitizer takes more memory for itself")
def test_a_still_for_which_there_is_no_memory_is_empty_and_the_hub_serves_on(start_hub):
    groups = [camera_group("small", 1920, 1080), camera_group("large", 4000, 3000)]
    cameras = {uid: {"exposure": EXPOSURE} for uid in ("small", "large")}
    # At its start the hub takes 75 MB with stacks of that size, a still of 1920x1080 40 MB, one of 4000x3000 100 MB.
    hub = start_hub({"groups": groups, "cameras": cameras}, prepare="ulimit -s 1024; ulimit -v 140000")
    hub.wait_for_cameras("small", "large")
    client = hub.rpc()
    for uid, status in (("small", 200), ("large", 404), ("small", 200)):
        still = client.capture(uid, exposureInUs=15625)["resid"]
        assert hub.get(f"/res/{still}").status == status
    assert {entry.level for entry in hub.log()} <= {"INFO", "DEBUG"}
    (failed,) = [call for call in hub.journal() if "error" in call]
    assert (failed["call"], failed["device"], failed["error"]) == (
        "MediaCapture.CapturePhotoToStreamAsync", "large", -2147024882)


@pytest.mark.skipif(not may_limit_inotify(), reason="the system does not allow a limit of its own")
def test_where_no_inotify_instance_is_left_the_cameras_stay_as_they_are_and_a_line_says_what_is_lacking(start_hub):
    hub = start_hub(scenario("cam"), prepare=NO_INOTIFY).wait_for_cameras("cam")
    client = hub.rpc()
    assert hub.image(client.capture("cam", exposureInUs=15625)["resid"]).startswith(b"\x89PNG")
    reason = "Too many open files (fs.inotify.max_user_instances, or the descriptors of the process)"
    assert hub.stderr() == (
        f"Simulated cameras do not follow their file: inotify_init1 on {hub.folder}: {reason}\n")
