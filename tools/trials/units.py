"""Units to be hurt: the real application on a simulated one, with hands that know the way back to live view."""
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from tally import PROJECT

sys.path.insert(0, str(PROJECT / "tests/day"))
from desk import SCREEN, Desk, Trouble  # noqa: E402

BUILD = PROJECT / "build/release"
FIRST = (222, 194)     # the middle of the first thumbnail
LOST_CARD = (76, 154)  # where a box is answered with yes


class Unit(Desk):
    """A desk whose application comes and goes while screen and unit stay."""

    def __init__(self, folder, display):
        super().__init__(folder)
        self.display = display
        self.environment = {**os.environ, "DISPLAY": display, "QT_QPA_PLATFORM": "xcb"}
        self.application = None
        self.followers = []

    def create(self):
        self.unit.mkdir(parents=True, exist_ok=True)
        self.hand("create")
        self.hand("viewer", "off")

    def start(self, seconds=40):
        self.states, self.is_ready = [], threading.Event()
        self.lines = []
        (self.state_folder / "mass_storage").unlink(missing_ok=True)  # the module of the application before
        self.application = subprocess.Popen(
            [PROJECT / "simulator/desk", "--unit", self.unit], env=self.environment, text=True, errors="replace",
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True)
        self.followers = [threading.Thread(target=follow, daemon=True)
                          for follow in (self._follow_output, self._follow_messages)]
        for follower in self.followers:
            follower.start()
        self.wait("the first picture", self.is_ready.is_set, seconds)

    def take_card(self):
        self.wait("the card", self.is_offered, 30)

    def end(self, how=signal.SIGTERM, seconds=30):
        """Ends the application and everything it started; its exit status."""
        if self.application is None:
            return None
        try:
            os.killpg(self.application.pid, how)
        except ProcessLookupError:
            pass
        try:
            status = self.application.wait(seconds)
        except subprocess.TimeoutExpired:
            os.killpg(self.application.pid, signal.SIGKILL)
            status = self.application.wait()
        for follower in self.followers:
            follower.join(10)
        return status

    def told(self, state, since=0):
        return sum(name == state for _, name in self.states[since:])

    def memory(self):
        """Resident memory of the application, in MB."""
        return memory_of(self.application.pid)

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.application.pid}/fd"))

    def threads(self):
        return len(os.listdir(f"/proc/{self.application.pid}/task"))

    def answer_any(self):
        """Answers the box that stands, if one does."""
        place = self.dialog()
        if place:
            self.touch((place[0] + LOST_CARD[0], place[1] + LOST_CARD[1]))
        return bool(place)

    def settle(self, seconds=40):
        """Back to live view, whatever page and box stand there."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            if self.application.poll() is not None:
                raise Trouble(f"the application ended ({self.application.returncode})")
            if self.answer_any():
                continue
            if self.state() == "eStateLive":
                time.sleep(0.3)
                if self.state() == "eStateLive" and not self.dialog():
                    return
            elif self.states[-1][0] < time.time() - 1:
                self.touch("back")
            time.sleep(0.2)
        raise Trouble(f"no way back to live view; the state is {self.state()}")

    def leave_tools(self):
        time.sleep(0.5)
        self.touch_for("back", "eStateLive")

    def open_first(self):
        """From the thumbnails to the first file of the page, a still."""
        self.touch(FIRST)
        self.wait("the file", lambda: self.state() in ("eStatePlaybackSnapshot", "eStatePlaybackMovieQueued"))

    def takes_still(self, seconds=20):
        """One touch in live view, still mode: the file that came of it, once the screen calls it saved."""
        before, since = self.files(), len(self.states)
        self.touch("capture")
        self.wait("a still", lambda: self.entered("eStateCaptureWindowEntry", since), seconds)
        new = {name for name in self.files() - before if name.endswith(".jpg")}
        if len(new) != 1:
            raise Trouble(f"called saved, and new on the card is {sorted(new)}")
        self.wait("live view", lambda: self.state() == "eStateLive", seconds)
        return self.folder() / new.pop()

    def takes_film(self, length=1.0, seconds=20):
        """One film in video mode."""
        since = len(self.states)
        self.touch("capture")
        self.wait("a film", lambda: self.entered("eStateLiveSavingMovie", since), seconds)
        time.sleep(length)
        since = len(self.states)
        self.touch("capture")
        self.wait("the film's end", lambda: self.entered("eStateLive", since), seconds)


def memory_of(process):
    for line in Path(f"/proc/{process}/status").read_text().splitlines():
        if line.startswith("VmRSS"):
            return int(line.split()[1]) // 1024
    return 0


class Bench:
    """Where a case gets its dice, its folder and its units; nothing of it stays."""

    def __init__(self, name, seed):
        self.dice = random.Random(f"{name} {seed}")
        self.seed = seed
        self.work = Path(tempfile.mkdtemp(prefix=f"hurt-{name}."))
        self.units = []
        self.mounts = []
        self.processes = []
        self.display = None

    def screen(self):
        if not self.display:
            read_end, write_end = os.pipe()
            self.processes.append(subprocess.Popen(
                ["Xvfb", "-displayfd", str(write_end), "-screen", "0", SCREEN, "-nolisten", "tcp"],
                pass_fds=[write_end], stderr=subprocess.DEVNULL))
            os.close(write_end)
            with os.fdopen(read_end) as number:
                self.display = ":" + number.readline().strip()
        return self.display

    def unit(self, folder=None):
        unit = Unit(folder or self.work / f"unit{len(self.units)}", self.screen())
        self.units.append(unit)
        unit.create()
        return unit

    def environment(self, **more):
        """For a program that has the real window in it and a unit of its own in our folder."""
        return {**os.environ, "QT_QPA_PLATFORM": "offscreen", "GST_PLUGIN_PATH": str(BUILD / "simulator"),
                "GST_REGISTRY": str(BUILD / "gst-registry.bin"), "GST_REGISTRY_FORK": "no", "LC_ALL": "C.UTF-8",
                "TMPDIR": str(self.work), "LD_PRELOAD": str(BUILD / "cardfaults/libcardfaults.so"), **more}

    def run(self, *command, seconds=600, **more):
        """A program to its end; (status, output). One that does not end in time is killed: status None."""
        process = subprocess.Popen([*map(str, command)], env=self.environment(**more), text=True, errors="replace",
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
        self.processes.append(process)
        try:
            return process.communicate(timeout=seconds)[0], process.returncode
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            return process.communicate()[0], None

    def close(self):
        for unit in self.units:
            unit.end(signal.SIGKILL)
        for process in self.processes:
            if process.poll() is None:
                process.terminate()
                process.wait()
        for mount in reversed(self.mounts):
            subprocess.run(["umount", mount], check=False, stderr=subprocess.DEVNULL)
        shutil.rmtree(self.work, ignore_errors=True)
