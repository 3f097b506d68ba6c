"""What a case hands back, and the table of all."""
import json
import os
import platform
import subprocess
import sys
import time
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]


class Skipped(Exception):
    """The machine lacks what the case needs."""


class Tally:
    """Counts of one case. Lost: what the screen had called saved, or lay on the card before, and is not there as it
    was. Failed: everything else that was not as it should be."""

    def __init__(self, name, seconds, full):
        self.name = name
        self.tried = self.lost = self.failed = 0
        self.full = full
        self.seen = []      # what the row says besides, in few words
        self.faults = []
        self._begun = time.monotonic()
        self._seconds = seconds

    def seconds(self):
        return time.monotonic() - self._begun

    def is_over(self):
        return self.seconds() >= self._seconds

    def rounds(self):
        """Counts the tries: until the case's full number, or until its time is over."""
        while self.tried < self.full and not self.is_over():
            self.tried += 1
            yield self.tried

    def lose(self, what):
        self.lost += 1
        self._tell(f"lost: {what}")

    def fail(self, what):
        self.failed += 1
        self._tell(what)

    def _tell(self, what):
        self.faults.append(f"try {self.tried}: {what}")
        print(f"hurt: {self.name}: {self.faults[-1]}", file=sys.stderr, flush=True)

    def check(self, good, what):
        if not good:
            self.fail(what)
        return good

    def row(self, seed):
        return {"case": self.name, "seed": seed, "tried": self.tried, "full": self.full, "lost": self.lost,
                "failed": self.failed, "seconds": round(self.seconds()), "seen": "; ".join(self.seen),
                "faults": self.faults}


def machine():
    """Date, commit and machine, as the table's first line has them."""
    commit = subprocess.run(["git", "-C", PROJECT, "describe", "--always", "--dirty"], text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.strip() or "no commit"
    processor = next((line.split(":", 1)[1].strip() for line in Path("/proc/cpuinfo").read_text().splitlines()
                      if line.startswith("model name")), platform.machine())
    return f"{time.strftime('%Y-%m-%d %H:%M')}, {commit}, {os.cpu_count()} x {processor}, Linux {platform.release()}"


def table(rows):
    lines = ["| case | seed | tried | lost | failed | s | seen |", "|---|---|---|---|---|---|---|"]
    for row in rows:
        tried = f"{row['tried']}" if row["tried"] == row["full"] else f"{row['tried']} of {row['full']}"
        lines.append(f"| `{row['case']}` | {row['seed']} | {tried} | {row['lost']} | {row['failed']} "
                     f"| {row['seconds']} | {row['seen']} |")
    return "\n".join(lines)


def write_json(path, head, rows):
    new = Path(f"{path}.new")
    new.write_text(json.dumps({"machine": head, "rows": rows}, indent=1, ensure_ascii=False) + "\n")
    new.rename(path)
