"""Waiting for a condition instead of sleeping."""

import time


def wait_until(condition, what, seconds=20.0, interval=0.01):
    """The first true value of condition(); fails after the time limit with the text."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        assert time.monotonic() < end, f"timed out: {what}"
        time.sleep(interval)
