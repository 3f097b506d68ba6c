"""Ends that nobody asked for: the application killed, the power cut, the card pulled."""
import fcntl
import os
import shutil
import signal
import struct
import subprocess
import time

from judge import captures, faults_of_folder, seconds_of
from tally import Skipped
from units import Trouble

EXT4_SHUTDOWN = 0x8004587D  # EXT4_IOC_SHUTDOWN
WITHOUT_FLUSH = 2
MOST_FILES = 40             # on the card, before it is wiped
MOST_LOST = 2.0             # s of the film that runs


def act(unit, dice):
    """Stills or a film, until a random moment; when the film that still runs had its first picture, or None."""
    if dice.random() < 0.4:
        for _ in range(dice.randrange(1, 3)):
            unit.touch("capture")
        time.sleep(dice.uniform(0, 1.5))
        return None
    unit.touch("mode")
    for _ in range(dice.choice((0, 0, 1))):
        unit.takes_film(dice.uniform(0.2, 1.0))
    since = len(unit.states)
    unit.touch("capture")
    unit.wait("a film", lambda: unit.entered("eStateLiveSavingMovie", since), 20)
    begun = time.time()
    time.sleep(dice.uniform(0, 2.5))
    if dice.random() < 0.3:
        unit.touch("capture")  # the end comes into its being closed
        time.sleep(dice.uniform(0, 0.3))
        return None
    return begun


def earlier_is_unchanged(tally, before, folder, may_be_gone=()):
    now = captures(folder)
    for name, was in before.items():
        if name not in may_be_gone and now.get(name) != was:
            tally.lose(f"{name} was finished and is " + ("changed" if name in now else "gone"))


def called_saved(tally, unit, before, folder):
    """Every still and film that the screen called saved has a file."""
    new = captures(folder).keys() - before.keys()
    for kind, suffix, state in (("still", ".jpg", "eStateCaptureWindowEntry"),
                                ("film", ".avi", "eStateLiveSavingMovie")):
        told, there = unit.told(state), sum(name.endswith(suffix) for name in new)
        for _ in range(told - there):
            tally.lose(f"a {kind} that the screen called saved ({told} told, {there} there)")


def film_runs(unit):
    """A film was begun, and the screen has not told of its end."""
    latest = next((name for _, name in reversed(unit.states) if name in ("eStateLive", "eStateLiveSavingMovie")), "")
    return latest == "eStateLiveSavingMovie"


def start_again(tally, unit, judged):
    """The next start mends what was torn; then nothing may be wrong with the folder."""
    unit.start()
    unit.take_card()
    for fault in faults_of_folder(unit.folder(), judged):
        tally.fail(fault)


def sudden_ends(bench, tally, unit, end, wiped):
    """Work that `end` breaks off at a random moment, and the next start, over and over. A film that ran keeps all but
    its last two seconds: one that had just begun may be empty."""
    judged, earlier, short, most = set(), 0, 0, 0.0
    for _ in tally.rounds():
        folder = unit.folder()  # the round's, even if a day begins meanwhile
        before, begun = captures(folder), None
        earlier += len(before)
        try:
            begun = act(unit, bench.dice)
        except Trouble as trouble:
            tally.fail(trouble)
        ended = time.time()
        end()
        earlier_is_unchanged(tally, before, folder)
        called_saved(tally, unit, before, folder)
        new = sorted(name for name in captures(folder).keys() - before.keys() if name.endswith(".avi"))
        running = set(new[-1:])
        if film_runs(unit) and new and (folder / new[-1]).stat().st_size == 0:
            judged |= running
            short += 1
        finished = captures(folder)
        start_again(tally, unit, judged)
        earlier_is_unchanged(tally, finished, folder, running)
        if begun and new:
            missing = ended - begun - seconds_of(folder / new[-1])
            most = max(most, missing)
            if missing > MOST_LOST:
                tally.lose(f"{missing:.1f} s of the film that ran")
        if len(unit.files()) > MOST_FILES:
            unit.end()
            unit.hand("card", "empty")
            wiped()
            unit.start()
            unit.take_card()
            judged.clear()
    tally.seen.append(f"{earlier} earlier files looked at again; of a film that ran at most {max(0.0, most):.1f} s "
                      f"missing, {short} that had just begun are empty")


def kills(bench, tally):
    unit = bench.unit()
    unit.start()
    unit.take_card()
    sudden_ends(bench, tally, unit, lambda: unit.end(signal.SIGKILL), lambda: None)


class LoopCard:
    """An ext4 file system in an image, whose power can be cut."""

    def __init__(self, bench):
        self.image, self.folder = bench.work / "image", bench.work / "card"
        if os.getuid() != 0 or not shutil.which("mkfs.ext4"):
            raise Skipped("not root, or no mkfs.ext4")
        with open(self.image, "wb") as file:
            file.truncate(512 << 20)
        subprocess.run(["mkfs.ext4", "-q", self.image], check=True, stderr=subprocess.DEVNULL)
        self.folder.mkdir()
        if not self.mount():
            raise Skipped("no loop mount")
        bench.mounts.append(self.folder)

    def mount(self):
        return subprocess.run(["mount", "-o", "loop", self.image, self.folder], check=False,
                              stderr=subprocess.DEVNULL).returncode == 0

    def sync(self):
        subprocess.run(["sync", "-f", self.folder], check=True)

    def cut(self):
        """What the kernel still holds is lost from here on."""
        descriptor = os.open(self.folder, os.O_RDONLY)
        try:
            fcntl.ioctl(descriptor, EXT4_SHUTDOWN, struct.pack("I", WITHOUT_FLUSH))
        except OSError as error:
            raise Skipped(f"the file system cannot be shut down: {error.strerror}") from error
        finally:
            os.close(descriptor)

    def power_on(self):
        subprocess.run(["umount", self.folder], check=True)
        subprocess.run(["fsck.ext4", "-p", self.image], check=False, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)
        if not self.mount():
            raise Trouble("the card cannot be mounted any more")


def power_cuts(bench, tally):
    card = LoopCard(bench)
    unit = bench.unit(card.folder / "unit")
    card.sync()
    unit.start()
    unit.take_card()

    def cut():
        card.cut()
        unit.end(signal.SIGKILL)
        card.power_on()
    sudden_ends(bench, tally, unit, cut, card.sync)


def go_to(unit, place):
    if place == "film":
        unit.touch_for("capture", "eStateLiveSavingMovie")
    elif place != "live":
        unit.touch_for("thumbnails", "eStatePlaybackThumbnailsSelectable")
        if place != "thumbnails":
            unit.open_first()
        if place == "note":
            unit.touch_for("note", "eStatePlaybackSnapshotRecordingAudio")


def pull(unit, dice):
    """Pulled and put back after 0 to 1 s, now and then twice; the last try of `offsets` counts."""
    offsets = [round(dice.uniform(0, 1), 2) for _ in range(dice.choice((1, 1, 2)))]
    for offset in offsets:
        unit.hand("card", "remove")
        time.sleep(offset)
        unit.hand("card", "insert")
        time.sleep(dice.uniform(0, 0.3))
    return offsets


def pulls(bench, tally, places=("live", "film", "thumbnails", "file", "note")):
    unit = bench.unit()
    unit.start()
    unit.take_card()
    unit.takes_still()
    unit.touch("mode")
    judged = set()
    for number in tally.rounds():
        folder = unit.folder()  # the round's, even if a day begins meanwhile
        for note in folder.glob("*.wav"):
            note.unlink()  # a still that has one would play it
        before = captures(folder)
        place = places[number % len(places)]
        since = len(unit.states)
        try:
            go_to(unit, place)
            time.sleep(bench.dice.uniform(0, 0.7))
            offsets = pull(unit, bench.dice)
            unit.settle()  # the box that tells of the card is answered; only then it is taken again
            unit.wait("the card", unit.is_offered, 20)
            unit.settle()
            earlier_is_unchanged(tally, before, folder)
            if place == "film" and unit.told("eStateLiveSavingMovie", since) > len(unit.files() - before.keys()):
                tally.lose("the film that was pulled")
            unit.takes_film(0.3)
        except Trouble as trouble:
            tally.fail(f"{place}, put back after {offsets}: {trouble}")
            unit.end(signal.SIGKILL)
            unit.start()
            unit.take_card()
            unit.touch("mode")
        if tally.tried % 10 == 0:
            for fault in faults_of_folder(unit.folder(), judged):
                tally.fail(fault)


def put_back(bench, tally):
    """Out and in within a second while the thumbnails are on the screen; then a film has to be possible."""
    pulls(bench, tally, ("thumbnails",))
