"""Whether the machine has nothing else to do: the processor time of all that we did not start."""

import os
import sys
import time

LIMIT = 0.05  # of all processors
LOOK = 4  # seconds
LONGEST_WAIT = 120  # seconds


class Others:
    """What others used since this was made. Of our own programs those count that have ended."""

    def __init__(self):
        self._before = self._ticks()

    @staticmethod
    def _ticks():
        """(all, used by others) in ticks of all processors."""
        with open("/proc/stat", encoding="utf-8") as file:
            user, nice, system, idle, wait, *rest = map(int, file.readline().split()[1:9])  # without guests
        own = sum(os.times()[:4]) * os.sysconf("SC_CLK_TCK")
        used = user + nice + system + sum(rest)
        return used + idle + wait, used - own

    def share(self):
        total, used = (after - before for after, before in zip(self._ticks(), self._before))
        return max(0, used / total) if total else 0


def wait_for_quiet():
    """Until others use little, or for two minutes."""
    deadline = time.monotonic() + LONGEST_WAIT
    while True:
        others = Others()
        time.sleep(LOOK)
        if others.share() <= LIMIT or time.monotonic() > deadline:
            return
        print(f"compare: others use {others.share():.0%} of the processors; waiting", file=sys.stderr)


def in_words(others):
    share = others.share()
    loud = "" if share <= LIMIT else ", **which was not quiet**"
    return f"others used {share:.1%} of the machine meanwhile{loud}"
