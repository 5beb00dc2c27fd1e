"""Waiting for what a hub lists."""

from harness.wait import wait_until


def wait_for_cameras(hub, count=1):
    """The list, once it has that many entries."""
    client = hub.rpc()
    cameras = wait_until(lambda: len(found := client.discover()) == count and found, f"{count} cameras")
    client.close()
    return cameras


def wait_for_none(hub):
    client = hub.rpc()
    wait_until(lambda: client.discover() == [], "no camera")
    client.close()
