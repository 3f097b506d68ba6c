"""A simulated unit on a screen of its own: started, touched as by a finger, and watched."""
import datetime
import os
import re
import subprocess
import threading
import time
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
SCREEN = "800x600x16"
PACE = 0.4  # s between what the screen shows and the next touch: the application drops touches that come sooner

BUTTONS = {
    "zoom in": (40, 189), "zoom out": (40, 263), "light": (40, 41), "mode": (40, 337), "tools": (40, 411),
    "capture": (40, 485), "thumbnails": (40, 559), "back": (40, 559), "next": (40, 115), "previous": (40, 41),
    "play": (40, 189), "note": (40, 189), "edit": (40, 263), "rename": (40, 337), "delete": (40, 485),
    "arrow": (40, 41), "circle": (40, 115), "text": (40, 189), "save": (40, 411),
    "microphone": (401, 334),
}


class Trouble(Exception):
    """What makes it senseless to go on with the day."""


class Desk:
    def __init__(self, folder):
        self.unit = folder
        self.card = folder / "media/mmcblk1p1"
        self.state_folder = folder / ".simulator"
        self.states = []  # (time, name), as the application tells them
        self.lines = []
        self.lengths = []  # (time, count of the meter)
        self.is_ready = threading.Event()
        self.running = []
        self.repeated = 0

    def hand(self, *command):
        subprocess.run([PROJECT / "simulator/unit", "--unit", self.unit, *command], check=True)

    def start(self):
        self.unit.mkdir(parents=True, exist_ok=True)
        read_end, write_end = os.pipe()
        self.running.append(subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", SCREEN, "-nolisten", "tcp"],
            pass_fds=[write_end], stderr=subprocess.DEVNULL))
        os.close(write_end)
        with os.fdopen(read_end) as number:
            self.display = ":" + number.readline().strip()
        self.environment = {**os.environ, "DISPLAY": self.display, "QT_QPA_PLATFORM": "xcb"}
        self.application = subprocess.Popen(
            [PROJECT / "simulator/desk", "--unit", self.unit], env=self.environment, text=True, errors="replace",
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.running.insert(0, self.application)
        for follow in (self._follow_output, self._follow_messages, self._follow_meter):
            threading.Thread(target=follow, daemon=True).start()
        self.wait("the first picture", self.is_ready.is_set, 30)
        self.wait("the card", self.is_offered, 30)

    def drive(self):
        """The cable moves from now on."""
        self.running.insert(0, subprocess.Popen([PROJECT / "simulator/unit", "--unit", self.unit, "drive"],
                                                stdout=subprocess.DEVNULL))

    def stop(self):
        for process in self.running:
            process.terminate()
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()

    def _follow_output(self):
        for line in self.application.stdout:
            if line.startswith("ready:"):
                self.is_ready.set()

    def _follow_messages(self):
        for line in self.application.stderr:
            self.lines.append((time.time(), line.rstrip()))
            if found := re.search(r"tubix\.app\.state: .* -> (?:back to )?(\w+)", line):
                self.states.append((time.time(), found[1]))

    def _follow_meter(self):
        while self.application.poll() is None:
            for place in (self.unit / "dev/i2c-4", self.state_folder / "i2c-4"):
                try:
                    bytes_read = place.read_bytes() if place.is_file() else b""
                except OSError:  # moved meanwhile
                    continue
                if len(bytes_read) > 5:
                    self.lengths.append((time.time(), bytes_read[4] * 256 + bytes_read[5]))
            time.sleep(0.05)

    def wait(self, what, condition, limit=15.0):
        deadline = time.monotonic() + limit
        while not (result := condition()):
            if self.application.poll() is not None:
                raise Trouble(f"the application ended ({self.application.returncode}) while {what} was awaited")
            if time.monotonic() > deadline:
                raise Trouble(f"{what} did not come within {limit} s; the state is {self.state()}")
            time.sleep(0.02)
        return result

    def state(self):
        return self.states[-1][1] if self.states else "eStateLive"

    def entered(self, state, since):
        """When the state was entered, counted from the entry `since` of the states on, or None."""
        return next((when for when, name in self.states[since:] if name == state), None)

    def is_offered(self):
        """The application has the card and is done with it: a computer may have it."""
        return (self.state_folder / "mass_storage").exists()

    def touch(self, where):
        """A finger's touch, after the time that a person takes to see the screen."""
        x, y = BUTTONS.get(where, where)
        while self.states and (left := self.states[-1][0] + PACE - time.time()) > 0:
            time.sleep(left)
        self.xdo("mousemove", x, y, "mousedown", 1, "sleep", 0.04, "mouseup", 1)

    def drag(self, start, end):
        time.sleep(PACE)
        middle = [(a + b) // 2 for a, b in zip(start, end)]
        self.xdo("mousemove", *start, "mousedown", 1, "sleep", 0.05, "mousemove", *middle, "sleep", 0.05,
                 "mousemove", *end, "sleep", 0.05, "mouseup", 1)

    def touch_for(self, where, state, limit=15.0):
        """Touches until the state comes; returns the times of the touch and of the state."""
        since = len(self.states)
        for attempt in range(3):
            touched = time.time()
            self.touch(where)
            try:
                return touched, self.wait(state, lambda: self.entered(state, since), limit if attempt == 2 else 9)
            except Trouble:
                if attempt == 2 or self.application.poll() is not None or len(self.states) > since:
                    raise
                self.repeated += 1

    def dialog(self):
        """Place of the dialog that is open, or None."""
        found = self.xdo("search", "--onlyvisible", "--name", "^Dialog$", check=False).split()
        if not found:
            return None
        place = dict(line.split("=") for line in
                     self.xdo("getwindowgeometry", "--shell", found[-1], check=False).split() if "=" in line)
        return (int(place["X"]), int(place["Y"])) if "X" in place else None

    def answer(self, dx, dy, what="the question"):
        """Touches the dialog that comes, at a place within it, and waits until it is gone."""
        place = self.wait(what, self.dialog)
        time.sleep(PACE)
        self.touch((place[0] + dx, place[1] + dy))
        self.wait(f"the end of {what}", lambda: self.dialog() != place)
        time.sleep(PACE)

    def confirm(self, yes=True):
        self.answer(76 if yes else 204, 154)

    def xdo(self, *arguments, check=True):
        done = subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        if check and done.returncode != 0:
            raise Trouble("xdotool " + " ".join(map(str, arguments)) + " failed")
        return done.stdout

    def picture(self, path):
        """What the screen shows, as a file."""
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "x11grab", "-video_size", "800x600", "-i",
                        self.display, "-frames:v", "1", path], check=True)

    def folder(self):
        """The day's folder on the card."""
        return self.card / "DCIM/100TUBIX" / datetime.date.today().strftime("%d%m%Y")

    def files(self):
        folder = self.folder()
        return {path.name for path in folder.iterdir() if path.is_file()} if folder.is_dir() else set()
