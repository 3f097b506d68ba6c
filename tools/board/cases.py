"""What is tried on an emulated board. A case is a function that gets a bench (tools/board/try) and returns what it saw;
it raises kit.Failed when that is not what it should have been."""
import os
import re
import time
from typing import Callable, NamedTuple

from kit import CARD, Card, expect, film_facts, run

ALL = []
DAY = f"{CARD}/DCIM/100TUBIX/$(date +%d%m%Y)"
MODULE = "/sys/module/tubixboard/parameters"


class Case(NamedTuple):
    name: str
    title: str
    quick: bool
    function: Callable


def case(name, title, quick=False):
    def add(function):
        ALL.append(Case(name, title, quick, function))
        return function
    return add


# --- what several cases do ---

def take_still(board):
    board.mark()
    board.touch("btn_menu_Capture")
    return board.says(r"eStateCaptureWindowExit.* -> .*eStateLive\b")


def begin_film(board):
    board.mark()
    board.touch("btn_menu_CaptureModeSelect")
    board.says("eStateCaptureModeChange")
    board.touch("btn_menu_Capture")
    board.says("-> .*eStateLiveSavingMovie\\b")
    board.holds(f"test $(cat {DAY}/*.avi | wc -c) -gt 200000")


def end_film(board):
    board.mark()
    board.touch("btn_menu_Capture")
    board.says(r"eStateLiveTerminateSavingMovie.* -> .*eStateLive\b")


def thumbnail(number):
    """The place of a page's picture, counted from 0."""
    return 80 + 70 + number % 4 * 145 + 72, 24 + 120 + number // 4 * 112 + 56


def open_browser(board):
    board.mark()
    board.touch("btn_menu_Thumbnails")
    board.says("-> .*eStatePlaybackThumbnailsSelectable")


def mounted(board, limit=60):
    return board.holds(f"mountpoint -q {CARD}", limit)


def unmounted(board, limit=60):
    return board.holds(f"! mountpoint -q {CARD}", limit)


def known(board):
    """Waits until the application has taken the card that was pushed in."""
    return board.says("eStateSDCardInserted.* -> back to")


def insert(board, card=None):
    """Pushes a card in and lets the application take it; the seconds that its mount took."""
    board.mark()
    with board.held():
        board.push(card)
        seconds = mounted(board, 90)
    known(board)
    return seconds


def remove(board):
    """Pulls the card and lets the application see it; the seconds until it is unmounted."""
    board.mark()
    board.pull()
    seconds = unmounted(board)
    board.says("eStateSDCardRemoved")
    return seconds


def switch_off(board):
    """In order, by the power key; seconds."""
    board.power_key()
    return board.ended()


def outside(bench, board):
    """The card's files on this machine, after the unit is off; the card has to be clean."""
    card = Card(board.card)
    damage = card.check()
    expect(not damage, f"the card after power-off: {damage[-300:]}")
    folder = bench.file("card")
    return folder, card.files(folder)


def named(files, ending):
    return [name for name in files if name.endswith(ending) and "/." not in name]


def log_marks(folder, files):
    """The marks of all text logs, in their order."""
    text = ""
    for name in named(files, ".txt"):
        with open(os.path.join(folder, name), encoding="utf-8", errors="replace") as file:
            text += file.read()
    return re.findall(r"\[\+\]|\|--|--\||\[X\]|\[\*\]|\[!\]", text)


def goes_on(bench, board, stills=2):
    """The unit takes another still and is switched off; the card is clean and has that many. Its files."""
    take_still(board)
    switch_off(board)
    folder, files = outside(bench, board)
    expect(len(named(files, ".jpg")) == stills, f"{len(named(files, '.jpg'))} stills on the card instead of {stills}")
    return folder, files


def repaired_film(bench, board):
    """The unit goes on, and a film that was cut off plays: its length in words."""
    folder, files = goes_on(bench, board)
    pictures, seconds = film_facts(os.path.join(folder, named(files, ".avi")[0]))
    return f"film repaired: {seconds:.1f} s, {pictures} pictures; the next still lies on the card, card clean"


# --- the unit itself ---

@case("boot", "power on, with an empty card", quick=True)
def boot(bench):
    board = bench.cold()
    seconds = board.ready()
    where = board.sh(f"findmnt -no SOURCE,FSTYPE {CARD}; ls /dev/i2c-4 /dev/fb0")
    expect("/dev/mmcblk1p1 vfat" in where, f"the card is not mounted: {where}")
    take_still(board)
    board.look("live")
    expect("TUBX0001.jpg" in board.folder_files(), board.folder_files())
    failed = board.sh("systemctl --failed --plain --no-legend | cut -d ' ' -f 1")
    expect(not failed, f"failed units: {failed}")
    bench.shelve(board)
    return f"ready after {seconds:.0f} s, card mounted, a touch leaves a still"


@case("still", "the red button, then off", quick=True)
def still(bench):
    board = bench.ready()
    seconds = take_still(board)
    off = switch_off(board)
    folder, files = outside(bench, board)
    pictures = named(files, ".jpg")
    expect(len(pictures) == 2, f"{pictures}")
    for name in pictures:
        seen = run("identify", "-regard-warnings", "-format", "%m %wx%h", os.path.join(folder, name)).strip()
        expect(seen == "JPEG 720x600", f"{name}: {seen}")
    expect(log_marks(folder, files) == ["[+]", "[+]"], f"log: {log_marks(folder, files)}")
    return f"live again after {seconds:.1f} s, JPEG 720x600, row in both logs; off after {off:.0f} s, card clean"


@case("film", "a film of some ten seconds, then off", quick=True)
def film(bench):
    board = bench.ready()
    begin_film(board)
    time.sleep(10)
    board.look("film")
    end_film(board)
    switch_off(board)
    folder, files = outside(bench, board)
    name = named(files, ".avi")[0]
    pictures, seconds = film_facts(os.path.join(folder, name))
    expect(seconds > 4, f"{seconds} s")
    expect(log_marks(folder, files) == ["[+]", "|--", "--|"], f"log: {log_marks(folder, files)}")
    stored = [other for other in files if "/.thumbs/" in other]
    expect(stored and os.path.getsize(os.path.join(folder, stored[0])) > 0, f"thumbnail: {stored}")
    return f"{seconds:.1f} s, {pictures} pictures, thumbnail, begin and end in the log, card clean"


@case("note", "a voice note on a still, played")
def note(bench):
    board = bench.ready()
    open_browser(board)
    board.touch(thumbnail(0))
    board.says("-> .*eStatePlaybackSnapshot\\b")
    board.mark()
    board.touch("btn_menu_ThumbnailAnnotateRecordPlayPause")
    board.says("-> .*eStatePlaybackSnapshotRecordingAudio")
    time.sleep(6)
    board.touch("btn_menu_ThumbnailAnnotateRecordPlayPause")
    board.says("eStatePlaybackSnapshotTerminateRecordingAudio.* -> .*eStatePlaybackSnapshot\\b")
    board.mark()
    board.touch("btn_menu_ThumbnailAnnotateRecordPlayPause")
    board.says("-> .*eStatePlaybackSnapshotAudioPlaying")
    board.look("note")
    switch_off(board)
    folder, files = outside(bench, board)
    name = named(files, ".wav")[0]
    seconds = float(run("ffprobe", "-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0",
                        os.path.join(folder, name)))
    expect(seconds > 2, f"{seconds} s")
    return f"{seconds:.1f} s of sound in {os.path.basename(name)}, card clean"


@case("browser", "a film played in the browser")
def browser(bench):
    board = bench.ready()
    begin_film(board)
    time.sleep(5)
    end_film(board)
    board.holds(f"test -s {DAY}/.thumbs/*.jpg")
    open_browser(board)
    board.look("thumbnails")
    board.touch(thumbnail(1))
    board.says("-> .*eStatePlaybackMovieQueued")
    board.mark()
    board.touch("btn_menu_ThumbnailVideoPlayPause")
    board.says("-> .*eStatePlaybackMoviePlaying")
    time.sleep(4)
    board.look("playing")
    board.says("eStatePlaybackMoviePlaying.* -> ", 60)
    return "both thumbnails, the film plays to its end"


@case("edited", "a circle drawn on a still, saved as a copy")
def edited(bench):
    board = bench.ready()
    open_browser(board)
    board.touch(thumbnail(0))
    board.says("-> .*eStatePlaybackSnapshot\\b")
    board.touch("btn_menu_ThumbnailEditImage")
    board.says("-> .*eStatePlaybackEditImage")
    board.touch("btn_menu_ThumbnailImageEditCircle")
    board.says("-> .*eStatePlaybackEditAddCircle")
    time.sleep(2)
    board.drag((300, 150), (600, 450))
    time.sleep(2)
    board.look("circle")
    board.touch("btn_menu_ThumbnailImageEditSave")
    board.says("eStatePlaybackEditSaveImageExit.* -> .*eStatePlaybackEditImage")
    switch_off(board)
    folder, files = outside(bench, board)
    pictures = named(files, ".jpg")
    expect(len(pictures) == 2, f"{pictures}")
    return f"{' and '.join(os.path.basename(name) for name in pictures)}, card clean"


@case("power-key", "the power key in a film", quick=True)
def power_key(bench):
    board = bench.ready()
    begin_film(board)
    time.sleep(3)
    off = switch_off(board)
    folder, files = outside(bench, board)
    pictures, seconds = film_facts(os.path.join(folder, named(files, ".avi")[0]))
    expect(log_marks(folder, files) == ["[+]", "|--", "--|"], f"log: {log_marks(folder, files)}")
    return f"off after {off:.0f} s, film of {seconds:.1f} s ({pictures} pictures) closed and logged, card clean"


# --- cards that come and go ---

@case("pull-live", "card pulled in live view, put back")
def pull_live(bench):
    board = bench.ready()
    gone = remove(board)
    board.says("eStateSDCardRemoved.* -> back to")
    board.look("pulled")
    back = insert(board)
    goes_on(bench, board)
    return f"unmounted after {gone:.1f} s, mounted again after {back:.1f} s; the next still lies on it, card clean"


@case("pull-still", "card pulled three seconds after a still", quick=True)
def pull_still(bench):
    board = bench.ready()
    take_still(board)
    time.sleep(3)
    remove(board)
    card = Card(board.card)
    damage = card.check().replace("\n", " ")
    folder = bench.file("card")
    files = card.files(folder)
    sizes = {os.path.basename(name): os.path.getsize(os.path.join(folder, name))
             for name in files if "/.html_assets/" not in name}
    expect(sizes.get("TUBX0002.jpg"), f"on the pulled card: {sizes}; {damage[-200:]}")
    return "the still is whole on the pulled card"


@case("pull-film", "card pulled in a film, checked and put back", quick=True)
def pull_film(bench):
    repairs = "journalctl -b -u media-mmcblk1p1.mount -o cat --no-pager | grep -c 'Filesystem was changed' || true"
    board = bench.ready()
    before = int(board.sh(repairs))
    begin_film(board)
    time.sleep(5)
    gone = remove(board)
    time.sleep(3)
    board.look("pulled")
    board.touch("ConfirmationBox.btn_Confirm")
    board.says("-> .*eStateLive\\b")
    damage = Card(board.card).check()
    expect("Dirty bit" in damage, f"the pulled card is clean: {damage}")
    back = insert(board)
    expect(int(board.sh(repairs)) == before + 1, "the check repaired nothing")
    board.touch("btn_menu_CaptureModeSelect")
    board.says("eStateCaptureModeChange")
    return f"unmounted after {gone:.1f} s, checked and mounted again after {back:.1f} s; {repaired_film(bench, board)}"


@case("pull-browser", "card pulled while a picture is shown, put back")
def pull_browser(bench):
    board = bench.ready()
    open_browser(board)
    board.touch(thumbnail(0))
    board.says("-> .*eStatePlaybackSnapshot\\b")
    remove(board)
    board.says("-> .*eStatePlaybackNothingSaved")
    board.look("pulled")
    insert(board)
    board.touch("btn_menu_ThumbnailBack")
    board.says("-> .*eStateLive\\b")
    goes_on(bench, board)
    return "empty page, then the card's files again; the next still lies on it, card clean"


@case("pull-twice", "card out, in, out, in within a second")
def pull_twice(bench):
    board = bench.ready()
    for _ in range(2):
        board.pull()
        time.sleep(0.25)
        board.push()
        time.sleep(0.25)
    board.says("eStateSDCardInserted.* -> back to")
    mounted(board)
    time.sleep(8)
    mounts = board.sh(f"grep -c ' {CARD} ' /proc/mounts")
    expect(mounts == "1", f"mounted {mounts} times")
    goes_on(bench, board)
    return "mounted once; the next still lies on it, card clean"


@case("pull-other", "another card instead")
def pull_other(bench):
    board = bench.ready()
    first = board.card
    remove(board)
    insert(board, bench.empty_card("other.raw", 128))
    goes_on(bench, board, stills=1)
    left = Card(first).files(bench.file("first"))
    expect(len(named(left, ".jpg")) == 1, f"{left}")
    return "its folder is made, the next still lies on it alone"


@case("read-only", "a card with its write protection on")
def read_only(bench):
    board = bench.ready()
    remove(board)
    before = run("md5sum", board.card).split()[0]
    # QEMU has no card with a switch; the kernel keeps everybody from writing to this one.
    board.sh("mkdir -p /run/udev/rules.d && echo 'ACTION==\"add\", KERNEL==\"mmcblk1\", ATTR{force_ro}=\"1\"' "
             ">/run/udev/rules.d/10-write-protection.rules && udevadm control --reload")
    insert(board)
    board.touch("btn_menu_Capture")
    time.sleep(8)
    board.look("after-touch")
    said = board.said()
    state = board.state()
    options = board.sh(f"findmnt -no OPTIONS {CARD}")
    expect(options.startswith("ro"), options)
    switch_off(board)
    expect(run("md5sum", board.card).split()[0] == before, "the card was written to")
    return f"mounted ro, nothing written; after the red button: {state}, {len(said.splitlines())} lines in the journal"


@case("exfat", "an exFAT card")
def exfat(bench):
    board = bench.ready()
    remove(board)
    insert(board, bench.empty_card("exfat.raw", 512, "exfat"))
    kind = board.sh(f"findmnt -no FSTYPE {CARD}")
    expect(kind == "exfat", kind)
    take_still(board)
    files = board.folder_files()
    expect("TUBX0001.jpg" in files, files)
    switch_off(board)
    damage = Card(board.card).check()
    expect(not damage, damage[-300:])
    return "mounted, a still lies on it, card clean"


@case("unmount", "the tools page's unmount button, then off", quick=True)
def unmount(bench):
    board = bench.ready()
    board.touch("btn_menu_Tools")
    board.says("-> .*eStateToolsMenu\\b")
    board.mark()
    board.touch("btn_menu_UnmountMedia")
    gone = unmounted(board)
    board.says("eStateSDCardRemoved.* -> back to")
    board.look("unmounted")
    damage = Card(board.card).check()
    expect(not damage, f"the card while the unit runs: {damage[-300:]}")
    return f"unmounted after {gone:.1f} s, card clean while the unit runs"
