"""Waiting for a condition instead of sleeping."""

import time

# Seconds, for whatever is waited for: they end a hang, and are far beyond what a step takes on a machine that is busy.
PATIENCE = 120


def wait_until(condition, what, interval=0.01):
    """The first true value of condition(); fails after the time limit with the text."""
    end = time.monotonic() + PATIENCE
    while True:
        value = condition()
        if value:
            return value
        assert time.monotonic() < end, f"timed out: {what}"
        time.sleep(interval)
