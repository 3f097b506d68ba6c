"""What a finger feels: standstills of the event loop, answers to a touch, frames painted late."""

import json
import os
import subprocess
import tempfile

from .functions import FILES_ON_PAGE, fill_with_pictures, page_of_films
from .programs import BUILD, bench, environment, need, simulated_unit, virtual_display
from .rows import limited

LONGEST_GAP, LONGEST_ANSWER = 100, 33  # milliseconds


def in_the_window(display, situation, seconds, folder=None):
    """What the window was seen to do for so many seconds, touched five times in each."""
    preload = {"LD_PRELOAD": os.path.join(BUILD, "cardfaults", "libcardfaults.so")}  # for the slow card
    result = subprocess.run(
        [bench("response"), situation, str(seconds), *([folder] if folder else [])],
        env=environment(display) | preload,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        text=True,
        check=True,
    )
    return json.loads(next(line for line in result.stdout.splitlines() if line.startswith("{")))


def frames_of(seen):
    return f"{seen['received']} frames received, {seen['unpainted']} of them not painted"


def break_films(folder):
    """Two pages of films: cut off behind the header, with nothing but zeros in the pictures, and something else."""
    with open(os.path.join(folder, "TUBX0001.avi"), "rb") as file:
        whole = file.read()
    begin = whole.index(b"movi") + 4
    broken = (whole[:begin], whole[:begin] + bytes(len(whole) - begin), b"no film\n" * 10000)
    for number in range(1, 2 * FILES_ON_PAGE + 1):
        with open(os.path.join(folder, f"TUBX{number:04}.avi"), "wb") as file:
            file.write(broken[number % len(broken)])


def response(options):
    need("Xvfb", "gst-launch-1.0")
    with virtual_display() as display, simulated_unit() as unit, tempfile.TemporaryDirectory() as folder:
        pages, broken = (os.path.join(folder, name) for name in ("pages", "broken"))
        for name in (pages, broken):
            os.makedirs(os.path.join(name, ".thumbs"))
        fill_with_pictures(unit, pages, 2000)
        page_of_films(unit, broken)
        break_films(broken)
        for situation, name, files in (
            ("live", "live view", None),
            ("recording", "recording on a card that takes 50 ms a write", None),
            ("paging", "paging through 2000 pictures", pages),
            ("broken", "a page of 12 broken films", broken),
        ):
            seen = in_the_window(display, situation, options.watched, files)
            touches = f"{seen['touches']} touches in {options.watched} s, the slowest answer after {seen['slowest']} ms"
            yield limited(f"longest gap of the event loop, {name}", "ms", seen["gap"], LONGEST_GAP)
            yield limited(
                f"touch to painted answer, 99th percentile, {name}", "ms", seen["answer"], LONGEST_ANSWER, touches
            )
            if situation == "live":
                case = f"frames painted late in {options.watched} s of live view"
                yield limited(case, "frames", seen["late"], 0, frames_of(seen))
