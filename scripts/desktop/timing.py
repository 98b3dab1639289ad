"""Waiting for a condition, with a limit that grows on slow builds."""

import os
import time

# Programs built with sanitizers run several times slower: TESSALINE_TIME_SCALE stretches every limit.
TIME_SCALE = float(os.environ.get("TESSALINE_TIME_SCALE", "1"))


class TimedOut(AssertionError):
    """What was waited for did not come."""


def wait_until(condition, what, seconds=10.0, interval=0.01):
    """Calls `condition` until it answers something true, and returns that. `what` completes “Waited in vain …”."""
    limit = time.monotonic() + seconds * TIME_SCALE
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > limit:
            raise TimedOut(f"Waited in vain for {seconds * TIME_SCALE:g} s until {what}.")
        time.sleep(interval)
