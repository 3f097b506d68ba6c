"""An emulated board and the hands that work on it: QEMU (TCG) over QMP, a look inside over the guest agent.

Lengths of time are in seconds and generous: an emulated machine is some ten times slower than a desk.
"""
import base64
import contextlib
import json
import os
import re
import shutil
import signal
import socket
import subprocess
import time
import xml.etree.ElementTree as ElementTree

PROJECT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
WORK = os.path.join(PROJECT, "build", "board")
SCREEN = (800, 600)
CARD = "/media/mmcblk1p1"
PARTITION_START = 1 << 20  # bytes, see tools/board/card
START_LIMIT = 300  # seconds from power-on to the first picture
PAINTING = 1.5  # seconds from the journal's line to the picture: what is touched before belongs to the screen before


class Failed(Exception):
    """What a case saw was not what it should have been."""


def expect(condition, what):
    if not condition:
        raise Failed(what)


def missing_package():
    """The package that has to be installed before a board can run; None when all is there."""
    for program, package in (("qemu-system-x86_64", "qemu-system-x86"), ("qemu-img", "qemu-utils"),
                             ("mkfs.vfat", "dosfstools"), ("mcopy", "mtools"), ("ffprobe", "ffmpeg")):
        if not shutil.which(program, path=os.environ["PATH"] + ":/usr/sbin:/sbin"):
            return package
    return None


def run(*command, check=True):
    """A program of this machine: its output, errors among it. Failed when it says so and `check` holds."""
    environment = dict(os.environ, PATH=os.environ["PATH"] + ":/usr/sbin:/sbin", LC_ALL="C.UTF-8")
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env=environment, check=False)
    output = done.stdout.decode(errors="replace")
    if check and done.returncode:
        raise Failed(f"{command[0]} ended with {done.returncode}: {output.strip()[-300:]}")
    return output


# --- what QEMU is told ---

def command_line(disk, card, folder, display=("-display", "none"), serial=None, resume=None):
    """The whole command. `disk`: qcow2 of this run; `card`: raw image, None: the slot is empty."""
    drive = f"if=none,id=card,format=raw,cache=writethrough,file={card}" if card else "if=none,id=card"
    return [
        "nice", "-n", "5", "qemu-system-x86_64", "-machine", "q35", "-accel", "tcg,thread=multi", "-cpu", "max",
        "-smp", "2", "-m", "1536", "-nodefaults", "-no-user-config", "-no-reboot", *display,
        "-kernel", f"{WORK}/vmlinuz", "-initrd", f"{WORK}/initrd.img",
        "-append", "root=/dev/vda rw console=tty0 console=ttyS0 net.ifnames=0 vt.global_cursor_default=0 panic=1",
        # What the guest has flushed is in the file, so that killing QEMU is a power cut for the disk as well.
        "-drive", f"if=none,id=disk,format=qcow2,cache=writeback,file={disk}", "-device", "virtio-blk-pci,drive=disk",
        "-device", f"virtio-vga,xres={SCREEN[0]},yres={SCREEN[1]}", "-device", "virtio-tablet-pci",
        "-device", "virtio-keyboard-pci", "-device", "virtio-rng-pci",
        # The second slot is the card's: /dev/mmcblk1.
        "-device", "sdhci-pci,id=slot0,addr=0x10", "-device", "sdhci-pci,id=slot1,addr=0x11",
        "-drive", drive, "-device", "sd-card,drive=card",
        "-serial", serial or f"file:{folder}/serial.log",
        "-device", "virtio-serial-pci", "-chardev", f"socket,id=agent,path={folder}/agent,server=on,wait=off",
        "-device", "virtserialport,chardev=agent,name=org.qemu.guest_agent.0",
        "-qmp", f"unix:{folder}/qmp,server=on,wait=off", *(("-incoming", f"exec:cat '{resume}'") if resume else ()),
    ]


def overlay(path, base):
    """A disk that keeps what differs from `base`."""
    kind = "raw" if base.endswith(".raw") else "qcow2"
    run("qemu-img", "create", "-q", "-f", "qcow2", "-F", kind, "-b", base, path)
    return path


# --- channels ---

class Channel:
    """JSON objects, a line each, over a socket."""

    def __init__(self, path, limit=30):
        end = time.monotonic() + limit
        while True:
            self.socket = socket.socket(socket.AF_UNIX)
            try:
                self.socket.connect(path)
                break
            except OSError:
                self.socket.close()
                if time.monotonic() > end:
                    raise
                time.sleep(0.05)
        self.rest = b""

    def receive(self, limit):
        end = time.monotonic() + limit
        while b"\n" not in self.rest:
            self.socket.settimeout(max(0.01, end - time.monotonic()))
            data = self.socket.recv(65536)
            if not data:
                raise EOFError("the machine is gone")
            self.rest += data
        line, self.rest = self.rest.split(b"\n", 1)
        return json.loads(line.lstrip(b"\xff"))

    def send(self, name, **arguments):
        self.socket.sendall(json.dumps({"execute": name, "arguments": arguments}).encode() + b"\n")

    def call(self, name, limit=60, **arguments):
        self.send(name, **arguments)
        while True:
            answer = self.receive(limit)
            if "return" in answer:
                return answer["return"]
            if "error" in answer:
                raise Failed(f"{name}: {answer['error'].get('desc', answer['error'])}")


# --- where to touch ---

class Screen:
    """Places of the widgets, out of the application's own .ui files."""

    def __init__(self):
        self.centres = {}
        for folder in ("app", "dialogs", "system", "settings"):
            where = os.path.join(PROJECT, "src", folder)
            for name in sorted(os.listdir(where)):
                if name.endswith(".ui"):
                    self.read(ElementTree.parse(os.path.join(where, name)).getroot().find("widget"))

    def read(self, top):
        _, _, width, height = self.geometry(top)
        isDialog = top.get("class") == "QDialog"
        left, upper = ((SCREEN[0] - width) // 2, (SCREEN[1] - height) // 2) if isDialog else (0, 0)
        self.walk(top, top.get("name"), left, upper)

    def walk(self, widget, top, left, upper):
        for child in widget.findall("widget"):
            x, y, width, height = self.geometry(child)
            centre = (left + x + width // 2, upper + y + height // 2)
            self.centres[f"{top}.{child.get('name')}"] = centre
            self.centres.setdefault(child.get("name"), centre)
            self.walk(child, top, left + x, upper + y)

    @staticmethod
    def geometry(widget):
        rect = widget.find("property[@name='geometry']/rect")
        if rect is None:
            return 0, 0, 0, 0
        return tuple(int(rect.find(side).text) for side in ("x", "y", "width", "height"))


# --- the machine ---

class Board:
    """A machine that runs. `folder` takes its files; `resume`: goes on from a saved machine."""

    screen = None

    def __init__(self, folder, disk, card, resume=None):
        Board.screen = Board.screen or Screen()
        os.makedirs(folder, exist_ok=True)
        self.folder, self.card, self.agent, self.pictures = folder, card, None, 0
        self.journal_file, self.heard, self.marked = None, b"", 0
        for name in ("qmp", "agent"):
            with contextlib.suppress(FileNotFoundError):
                os.unlink(os.path.join(folder, name))
        self.started = time.monotonic()
        with open(os.path.join(folder, "qemu.log"), "wb") as log:
            self.process = subprocess.Popen(command_line(disk, card, folder, resume=resume), stdin=subprocess.DEVNULL,
                                            stdout=log, stderr=log, start_new_session=True)
        try:
            self.qmp = Channel(os.path.join(folder, "qmp"))
            self.qmp.receive(30)
            self.qmp.call("qmp_capabilities")
            if resume:
                self.until(lambda: self.qmp.call("query-status")["status"] == "paused", 120, "the saved machine is read")
                self.qmp.call("cont")
        except BaseException:
            self.cut()
            raise

    def until(self, condition, limit, what, step=0.3):
        """Seconds until the condition holds; Failed after `limit`."""
        begin = time.monotonic()
        while not condition():
            if time.monotonic() - begin > limit:
                raise Failed(f"not within {limit} s: {what}")
            time.sleep(step)
        return time.monotonic() - begin

    # - inside -

    def meet(self, limit):
        """Connects to the guest agent. The connection stays: an agent without one spins."""
        end = time.monotonic() + limit
        while True:
            try:
                self.agent = self.agent or Channel(os.path.join(self.folder, "agent"), 5)
                token = time.monotonic_ns() & 0xFFFFFFF
                self.agent.socket.sendall(b"\xff")
                self.agent.send("guest-sync-delimited", id=token)
                while self.agent.receive(5).get("return") != token:
                    pass
                return
            except (OSError, EOFError, ValueError) as error:
                if self.agent:
                    self.agent.socket.close()
                self.agent = None
                if time.monotonic() > end or self.process.poll() is not None:
                    raise Failed("the machine does not answer") from error

    def ask(self, command, limit=120):
        """Exit status and output (errors behind it) of a shell command in the machine."""
        if not self.agent:
            self.meet(60)
        pid = self.agent.call("guest-exec", path="/bin/sh", arg=["-c", command], **{"capture-output": True})["pid"]
        end = time.monotonic() + limit
        while time.monotonic() < end:
            status = self.agent.call("guest-exec-status", pid=pid)
            if status["exited"]:
                texts = (base64.b64decode(status.get(part, "")).decode(errors="replace")
                         for part in ("out-data", "err-data"))
                return status.get("exitcode", -1), "".join(texts)
            time.sleep(0.05)
        raise Failed(f"not within {limit} s: {command}")

    def sh(self, command, limit=120):
        """Output of a shell command in the machine that has to succeed."""
        status, output = self.ask(command, limit)
        expect(status == 0, f"'{command}' ended with {status}: {output.strip()[-300:]}")
        return output.strip()

    def holds(self, command, limit=60):
        """Waits until a shell command in the machine succeeds; seconds."""
        return self.until(lambda: self.ask(command)[0] == 0, limit, command)

    def follow(self):
        """Lets the machine write the application's journal into a file: read without starting a program."""
        # A pipe to the agent that stays open would keep its answer back.
        self.ask("{ pgrep -x journalctl || setsid journalctl -b -n all -f -u tubix4 -o cat | tee /run/board.log; } "
                 ">/dev/ttyS0 2>&1 & "
                 "until test -s /run/board.log; do sleep 0.2; done")
        self.journal_file = self.agent.call("guest-file-open", path="/run/board.log")

    def journal(self):
        """What the application has said since the machine's start."""
        while True:
            piece = self.agent.call("guest-file-read", handle=self.journal_file, count=1 << 20)
            self.heard += base64.b64decode(piece["buf-b64"])
            if piece["eof"] or not piece["count"]:
                break
        self.agent.call("guest-file-seek", handle=self.journal_file, offset=len(self.heard), whence="set")
        return self.heard.decode(errors="replace")

    def mark(self):
        """From here on `said` looks."""
        self.marked = len(self.journal())

    def said(self):
        return self.journal()[self.marked:]

    def says(self, pattern, limit=60):
        """Waits until the application's journal since the mark has the pattern; the seconds."""
        return self.until(lambda: re.search(pattern, self.said()), limit, f"'{pattern}' in the journal")

    def state(self):
        """The application's main state."""
        found = re.findall(r"-> (?:back to )?(eState\w+)", self.journal())
        return found[-1] if found else ""

    def ready(self, limit=START_LIMIT):
        """Waits for the first picture; seconds since power-on."""
        self.meet(limit)
        self.until(lambda: self.ask("systemctl is-active tubix4")[1].strip() == "active", limit, "the unit is ready", 1)
        seconds = time.monotonic() - self.started
        self.follow()
        return seconds

    def folder_files(self):
        """The day's folder of the card, a file and its size a line."""
        return self.sh(f"cd {CARD}/DCIM/100TUBIX/$(date +%d%m%Y) && stat -c '%n %s' * .thumbs/* 2>/dev/null || true")

    # - hands -

    def monitor(self, line):
        return self.qmp.call("human-monitor-command", **{"command-line": line})

    def point(self, x, y):
        places = [{"type": "abs", "data": {"axis": axis, "value": round(place * 32767 / (size - 1))}}
                  for axis, place, size in (("x", x, SCREEN[0]), ("y", y, SCREEN[1]))]
        self.qmp.call("input-send-event", events=places)

    def finger(self, down):
        self.qmp.call("input-send-event", events=[{"type": "btn", "data": {"down": down, "button": "left"}}])

    def touch(self, where, hold=0.25):
        """A widget's name ("Dialog.widget" where two have it), or a place."""
        x, y = self.screen.centres[where] if isinstance(where, str) else where
        time.sleep(PAINTING)
        self.point(x + 2, y + 2)  # the kernel keeps a place to itself that is the last one, also from a program that is new
        self.point(x, y)
        self.finger(True)
        time.sleep(hold)
        self.finger(False)

    def drag(self, start, end):
        self.point(*start)
        time.sleep(0.5)
        self.finger(True)
        for step in range(1, 9):
            time.sleep(0.2)
            self.point(*(a + (b - a) * step / 8 for a, b in zip(start, end)))
        time.sleep(0.5)
        self.finger(False)

    def look(self, name="screen"):
        """A picture of the screen among the run's files."""
        self.pictures += 1
        path = os.path.join(self.folder, f"{self.pictures:02}-{name}.png")
        self.qmp.call("screendump", filename=path, format="png")
        return path

    def pull(self):
        self.monitor("eject -f card")

    def push(self, card=None):
        self.card = card or self.card
        answer = self.monitor(f"change card {self.card} raw").strip()
        expect(not answer, answer)

    @contextlib.contextmanager
    def held(self):
        """The application stands still meanwhile: a card's mount takes seconds here, and a tenth of one on a board."""
        self.sh("pkill -STOP -x tubix4")
        try:
            yield
        finally:
            self.sh("pkill -CONT -x tubix4")

    def power_key(self):
        self.qmp.call("system_powerdown")

    def hardware(self, part, value):
        """encoder Y/N, usbhost Y/N, decoder 0x45: parameters of the board's module."""
        self.sh(f"echo {value} >/sys/module/tubixboard/parameters/{part}")

    def ended(self, limit=120):
        """Waits until the machine has switched itself off; seconds."""
        begin = time.monotonic()
        try:
            self.process.wait(limit)
        except subprocess.TimeoutExpired as error:
            raise Failed(f"the machine is not off after {limit} s") from error
        return time.monotonic() - begin

    def cut(self):
        """The power goes away."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()

    # - on the shelf -

    # QEMU saves no SD controller. They are taken off their bus before, and found anew afterwards, one after the other:
    # the second one is the card's.
    SLOTS = ("0000:00:10.0", "0000:00:11.0")

    def without_slots(self):
        for slot in self.SLOTS:
            self.sh(f"echo 1 >/sys/bus/pci/devices/{slot}/remove")

    def with_slots(self):
        binds = "; ".join(f"echo {slot} >/sys/bus/pci/drivers/sdhci-pci/bind" for slot in self.SLOTS)
        self.sh(f"cd /sys/bus/pci; echo 0 >drivers_autoprobe; echo 1 >rescan; {binds}; echo 1 >drivers_autoprobe")

    def save(self, path):
        """The machine as it is now into a file, and ends it."""
        self.qmp.call("stop")  # memory that changes while it is written would be torn
        self.qmp.call("migrate", uri=f"exec:cat >'{path}'")
        self.until(lambda: self.qmp.call("query-migrate").get("status") == "completed", 300, "the machine is saved")
        with contextlib.suppress(EOFError, OSError, Failed):
            self.qmp.call("quit")
        self.ended()


# --- the card from outside ---

class Card:
    """A card's image, looked at with this machine's tools while no machine has it."""

    def __init__(self, image):
        self.partition = f"{image}.p1"
        run("dd", f"if={image}", f"of={self.partition}", f"bs={PARTITION_START}", "skip=1", "conv=sparse", "status=none")

    def check(self):
        """What fsck says of it, without changing it; empty when it is clean."""
        exfat = self.kind() == "exfat"
        output = run("fsck.exfat" if exfat else "fsck.fat", "-n", self.partition, check=False)
        good = "clean" in output if exfat else not [
            line for line in output.splitlines()[1:] if not re.search(r"\d+ files, \d+/\d+ clusters", line)]
        return "" if good else output.strip().replace(self.partition, "the card")

    def kind(self):
        with open(self.partition, "rb") as image:
            return "exfat" if image.read(11)[3:8] == b"EXFAT" else "vfat"

    def files(self, folder):
        """All of a FAT card's files into a folder of this machine; their paths below it."""
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        run("mcopy", "-sQnm", "-i", self.partition, "::", folder)
        return sorted(os.path.relpath(os.path.join(where, name), folder)
                      for where, _, names in os.walk(folder) for name in names)


def film_facts(path):
    """Pictures and seconds of a film; Failed when it does not open or a picture is damaged."""
    facts = run("ffprobe", "-v", "error", "-select_streams", "v", "-count_frames", "-show_entries",
                "stream=nb_read_frames,duration", "-of", "csv=p=0", path).strip()
    found = re.fullmatch(r"([\d.]+),(\d+)", facts)
    expect(found, f"{os.path.basename(path)}: {facts[-200:]}")
    damage = run("ffmpeg", "-v", "error", "-xerror", "-i", path, "-f", "null", "-", check=False).strip()
    expect(not damage, f"{os.path.basename(path)}: {damage[-200:]}")
    return int(found[2]), float(found[1])
