"""Rows of the table: figures of alternating runs, their ratio, the goal; as Markdown and as JSON."""

import json
import os
import platform
import statistics
import subprocess
import time
from dataclasses import asdict, dataclass, field


@dataclass
class Row:
    case: str
    unit: str
    ours: float
    goal: float
    peer: float | None = None
    ratio: float | None = None
    spread: list[float] | None = None  # lowest and highest ratio of the runs
    met: bool | None = None  # None: these runs are too few to judge it
    note: str = ""
    runs: list[list[float]] = field(default_factory=list)


def compared(case, unit, pairs, goal, note=""):
    """A row out of (ours, peer) of each run. The ratio is the median of the runs' ratios."""
    ratios = [ours / peer for ours, peer in pairs]
    ratio = statistics.median(ratios)
    return Row(
        case,
        unit,
        ours=statistics.median(ours for ours, _ in pairs),
        peer=statistics.median(peer for _, peer in pairs),
        ratio=ratio,
        spread=[min(ratios), max(ratios)],
        goal=goal,
        met=ratio <= goal,
        note=note,
        runs=[list(pair) for pair in pairs],
    )


def limited(case, unit, ours, goal, note="", judged=True):
    """A row that has a limit instead of a peer."""
    return Row(case, unit, ours=ours, goal=goal, met=ours <= goal if judged else None, note=note)


def figure(value):
    if value is None:
        return "-"
    return f"{value:.0f}" if abs(value) >= 100 or value == int(value) else f"{value:.3g}"


def times(ratio):
    return f"{ratio:.2f}" if ratio >= 0.1 else f"{ratio:.2g}"


def cells(row):
    ratio = "-" if row.ratio is None else times(row.ratio)
    spread = "-" if row.spread is None else f"{times(row.spread[0])} to {times(row.spread[1])}"
    met = {True: "yes", False: "**no**", None: "not judged"}[row.met]
    ours = f"{figure(row.ours)} {row.unit}".rstrip()
    peer = "-" if row.peer is None else f"{figure(row.peer)} {row.unit}".rstrip()
    return [row.case, ours, peer, ratio, spread, figure(row.goal), met]


def table(rows):
    lines = [["case", "ours", "peer", "ratio", "spread", "goal", "met"]] + [cells(row) for row in rows]
    widths = [max(len(line[i]) for line in lines) for i in range(len(lines[0]))]
    text = ["| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |" for line in lines]
    text.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    notes = [f"- {row.case}: {row.note}" for row in rows if row.note]
    return "\n".join(text + ([""] + notes if notes else []))


def value_of(path, key):
    try:
        with open(path, encoding="utf-8") as lines:
            for line in lines:
                name, separator, value = line.partition(":" if ":" in line else "=")
                if separator and name.strip() == key:
                    return value.strip().strip('"')
    except OSError:
        pass
    return "?"


def machine(project):
    """One line on what was measured where."""
    commit = subprocess.run(
        ["git", "-C", project, "describe", "--always", "--dirty"], capture_output=True, text=True, check=False
    ).stdout.strip()
    memory = int(value_of("/proc/meminfo", "MemTotal").split()[0]) / 2**20
    return (
        f"{time.strftime('%Y-%m-%d %H:%M')}, commit {commit or '?'}: {value_of('/proc/cpuinfo', 'model name')}, "
        f"{len(os.sched_getaffinity(0))} processors, {memory:.0f} GB, "
        f"{value_of('/etc/os-release', 'PRETTY_NAME')}, Linux {platform.release()}"
    )


def write_json(path, machine_line, rows):
    with open(path, "w", encoding="utf-8") as file:
        json.dump({"machine": machine_line, "cases": [asdict(row) for row in rows]}, file, indent=2)
        file.write("\n")
