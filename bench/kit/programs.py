"""What is measured: programs on a virtual display and a simulated unit, seen from outside."""

import os
import re
import select
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import xml.etree.ElementTree
from contextlib import contextmanager

PROJECT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.path.join(PROJECT, "build", "bench")
APPLICATION = os.path.join(BUILD, "tubix4")
UNIT_TOOL = os.path.join(PROJECT, "simulator", "unit")

PACKAGES = {
    "Xvfb": "xvfb",
    "xdotool": "xdotool",
    "gst-launch-1.0": "gstreamer1.0-tools",
    "ffmpeg": "ffmpeg",
    "ffprobe": "ffmpeg",
    "vipsthumbnail": "libvips-tools",
    "ffmpegthumbnailer": "ffmpegthumbnailer",
    "nc": "netcat-openbsd",
    "curl": "curl",
}
# The simulated unit's df weighs its folder and keeps a record: several programs, where a unit runs one small one.
PLAIN_DF = """#!/bin/sh
echo 'Filesystem     1K-blocks    Used Available Use% Mounted on
/dev/root        3768344 1204816   2352388  34% /
/dev/mmcblk1p1   7766016  120000   7646016   2% /media/mmcblk1p1'
"""
NEW_SCREEN = 0.5  # seconds: the window drops what is touched sooner, as meant for the screen before
RATE = 25  # frames a second that the camera delivers


class Missing(Exception):
    """Packages that a case needs and this machine lacks."""


def need(*names):
    missing = {PACKAGES[name] for name in names if shutil.which(name) is None}
    if missing:
        raise Missing(*sorted(missing))


def need_built(*benches):
    if not all(os.path.exists(bench(name)) for name in benches):
        raise Missing("libbenchmark-dev")


def bench(name):
    return os.path.join(BUILD, "bench", name)


def environment(display=None):
    variables = dict(
        os.environ,
        LC_ALL="C.UTF-8",
        GST_PLUGIN_PATH=os.path.join(BUILD, "simulator"),
        GST_REGISTRY=os.path.join(BUILD, "gst-registry.bin"),
        QT_ASSUME_STDERR_HAS_CONSOLE="1",
        QT_QPA_PLATFORM="xcb" if display else "offscreen",
    )
    variables.pop("WAYLAND_DISPLAY", None)
    if display:
        variables["DISPLAY"] = display
    return variables


@contextmanager
def virtual_display():
    """A screen of the unit's size, on a display number that is free."""
    reader, writer = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writer), "-screen", "0", "800x600x24", "-nolisten", "tcp"],
        pass_fds=[writer],
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
    )
    os.close(writer)
    try:
        if not select.select([reader], [], [], 30)[0]:
            raise RuntimeError("the virtual display does not start")
        yield ":" + os.read(reader, 16).decode().strip()
    finally:
        os.close(reader)
        server.terminate()
        server.wait()


@contextmanager
def simulated_unit(sound=True):
    """A fresh unit in a temporary folder; it never switches itself off."""
    with tempfile.TemporaryDirectory(prefix="tubix-bench-") as folder:
        subprocess.run([UNIT_TOOL, "--unit", folder, "create"], check=True)
        settings = os.path.join(folder, "home/root/tubix4_app/globlsystemsettings_default.xml")
        with open(settings, encoding="utf-8") as file:
            text = file.read()
        for name, value in (("bMicrophoneActive", int(sound)), ("AutoShutdownIdx", 0)):
            text = re.sub(rf"<{name}>\d+</{name}>", f"<{name}>{value}</{name}>", text)
        with open(settings, "w", encoding="utf-8") as file:
            file.write(text)
        with open(os.path.join(folder, "usr/bin/df"), "w", encoding="utf-8") as file:
            file.write(PLAIN_DF)
        yield folder


def role(unit, name):
    """The launch fragment that fills a role of the unit's pipelines."""
    with open(os.path.join(unit, "home/root/tubix4_app/board.conf"), encoding="utf-8") as lines:
        for line in lines:
            key, _, value = line.strip().partition("=")
            if key == name:
                return re.sub(r'^"(.*)"$', r"\1", value).replace('\\"', '"').replace("${root}", unit)
    raise KeyError(name)


class Program:
    """A running program, its lines and what it uses."""

    def __init__(self, command, display=None, end=signal.SIGTERM, extra=None):
        self._end = end
        self._lines = []
        self._news = threading.Condition()
        self.started = time.monotonic()
        self._process = subprocess.Popen(
            command,
            env=environment(display) | (extra or {}),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            errors="replace",
        )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self._process.stdout:
            with self._news:
                self._lines.append((time.monotonic(), line))
                self._news.notify_all()
        with self._news:
            self._lines.append((time.monotonic(), None))
            self._news.notify_all()

    def mark(self):
        with self._news:
            return len(self._lines)

    def wait_for(self, text, since=0, limit=60):
        """The moment of the first line with `text` after `since` lines."""
        deadline = time.monotonic() + limit
        with self._news:
            while True:
                for moment, line in self._lines[since:]:
                    if line is None:
                        raise RuntimeError(f"ended before '{text}':\n" + self._tail())
                    if text in line:
                        return moment
                if not self._news.wait(deadline - time.monotonic()):
                    raise RuntimeError(f"waited in vain for '{text}':\n" + self._tail())

    def _tail(self):
        return "".join(line or "" for _, line in self._lines[-15:])

    def count(self, text):
        with self._news:
            return sum(text in (line or "") for _, line in self._lines)

    def processor_time(self):
        """Seconds, user and system, of the process and the children it has waited for."""
        with open(f"/proc/{self._process.pid}/stat", encoding="utf-8") as file:
            fields = file.read().rpartition(")")[2].split()
        return sum(int(ticks) for ticks in fields[11:15]) / os.sysconf("SC_CLK_TCK")

    def processor_share(self, seconds):
        """Processor seconds a second, over so many seconds from now."""
        used, begin = self.processor_time(), time.monotonic()
        time.sleep(seconds)
        return (self.processor_time() - used) / (time.monotonic() - begin)

    def resident(self):
        """Resident memory in bytes."""
        with open(f"/proc/{self._process.pid}/statm", encoding="utf-8") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")

    def stop(self):
        if self._process.poll() is None:
            self._process.send_signal(self._end)
        try:
            self._process.wait(20)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        self._reader.join()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()


class Application(Program):
    """The application on a unit, touched through the virtual display."""

    def __init__(self, unit, display, extra=None):
        self._display = display
        self.unit = unit
        super().__init__([APPLICATION, "--root", unit], display, extra=extra)

    def touch(self, button):
        x, y = centre_of(button)
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], env=environment(self._display), check=True)

    def wait_for_card(self):
        self.wait_for("-> back to eStateLive")

    def select_films(self):
        since = self.mark()
        self.touch("btn_menu_CaptureModeSelect")
        self.wait_for("eStateCaptureModeChange -> eStateLive", since)

    def start_film(self):
        since = self.mark()
        self.touch("btn_menu_Capture")
        self.wait_for("-> eStateLiveSavingMovie", since)

    def end_film(self):
        since = self.mark()
        self.touch("btn_menu_Capture")
        self.wait_for("eStateLiveTerminateSavingMovie -> eStateLive", since)
        time.sleep(NEW_SCREEN)

    def folder(self):
        """The host folder of today's captures."""
        return os.path.join(self.unit, "media/mmcblk1p1/DCIM/100TUBIX", time.strftime("%d%m%Y"))


def centre_of(button):
    """Where a button of the left menu lies on the screen, as the window's form has it."""
    form = xml.etree.ElementTree.parse(os.path.join(PROJECT, "src/app/mainwindow.ui"))
    rect = form.find(f".//widget[@name='{button}']/property[@name='geometry']/rect")
    x, y, width, height = (int(rect.find(part).text) for part in ("x", "y", "width", "height"))
    return x + width // 2, y + height // 2
