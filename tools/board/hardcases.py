"""Cases with power that goes away, programs that die, hardware that fails and a computer at the other end of the cable."""
import os
import time

from cases import DAY, begin_film, case, known, log_marks, mounted, named, outside, remove, switch_off, take_still
from kit import CARD, Card, Failed, PARTITION_START, expect, film_facts, run

HOME = "/home/root/tubix4_app"


def put_on_card(image, source, target):
    """A file of this machine onto a card that no machine has."""
    part = f"{image}@@{PARTITION_START}"
    for folder in [target[:at] for at, letter in enumerate(target) if letter == "/" and at]:
        run("mmd", "-D", "s", "-i", part, "::" + folder, check=False)
    run("mcopy", "-D", "o", "-i", part, source, "::" + target)


def random_file(bench, name, size):
    with open(bench.file(name), "wb") as file:
        file.write(bench.random.randbytes(size))
    return bench.file(name)


def same(one, other):
    with open(one, "rb") as a, open(other, "rb") as b:
        return a.read() == b.read()


def started_again(board, pid, limit=240):
    """Waits until another process than `pid` is ready; seconds."""
    return board.until(lambda: board.ask("systemctl is-active tubix4; pidof tubix4")[1].split()[:1] == ["active"]
                       and board.ask("pidof tubix4")[1].strip() not in ("", pid), limit, "the application is ready again", 2)


# --- power ---

def cut_somewhere(bench, board):
    """Loses the power at a random moment of a film, of its end or of a still; says which."""
    kind = bench.random.choice(("film", "film", "end of a film", "still"))
    moment = bench.random.uniform(0, 8 if kind == "film" else 3)
    if kind == "still":
        board.touch("btn_menu_Capture")
    else:
        begin_film(board)
    if kind == "end of a film":
        board.touch("btn_menu_Capture")
    time.sleep(moment)
    board.cut()
    return f"{moment:.2f} s into the {kind}"


def survives(bench, old, first):
    """Lengths of the films, files and stills of 0 bytes on a card after a cut, once a unit has had it."""
    board = bench.ready(bench.file("card.raw"))
    switch_off(board)
    folder, files = outside(bench, board)
    for name, content in (("OLD.BIN", old), ("TUBX0001.jpg", first)):
        there = named(files, name)
        expect(there and same(os.path.join(folder, there[0]), content), f"{name} has changed or is gone")
    lost = [name for name in named(files, ".jpg") if not os.path.getsize(os.path.join(folder, name))]
    for name in set(named(files, ".jpg")) - set(lost):
        seen = run("identify", "-regard-warnings", "-format", "%m %wx%h", os.path.join(folder, name)).strip()
        expect(seen == "JPEG 720x600", f"{name}: {seen}")
    return [film_facts(os.path.join(folder, name))[1] for name in named(files, ".avi")], files, lost


@case("power-cut", "power lost at 20 random moments of filming and capturing; another unit gets the card", quick=False)
def power_cut(bench):
    old = random_file(bench, "old.bin", 3_000_000)
    start = bench.used_card("start.raw")
    put_on_card(start, old, "/DCIM/100TUBIX/01012026/OLD.BIN")
    left = Card(start).files(bench.file("start"))
    first = os.path.join(bench.file("start"), named(left, ".jpg")[0])
    bad, seconds, pieces, empty = [], [], 0, []
    for number in range(1, 21):
        board = bench.ready(bench.copy(start, "card.raw"))
        where = cut_somewhere(bench, board)
        try:
            films, files, lost = survives(bench, old, first)
            seconds += films
            empty += [where] * len(lost)
            pieces += len([name for name in files if name.startswith("FSCK")])
            print(f"      cut {number}: {where}: films of {films} s, {len(lost)} empty stills", flush=True)
        except Failed as failure:
            bad.append(f"{number} ({where}): {failure}")
            print(f"      cut {number}: {where}: BAD {failure}", flush=True)
            run("cp", "--sparse=always", bench.file("card.raw"), bench.file(f"bad-{number}.raw"))
    seen = (f"{20 - len(bad)} of 20: earlier files whole, card clean, {len(seconds)} films of "
            f"{min(seconds, default=0):.1f} to {max(seconds, default=0):.1f} s play; {pieces} FSCK*.REC")
    expect(not bad and not empty, f"{seen}; stills of 0 bytes: {empty}; {'; '.join(bad)}")
    return seen


@case("power-boot", "power lost in a film, the same unit switched on again", quick=False)
def power_boot(bench):
    board = bench.ready()
    begin_film(board)
    time.sleep(6)
    disk, card = bench.file("disk.qcow2"), board.card
    board.cut()
    board = bench.cold(disk, card)
    seconds = board.ready()
    mounted(board)
    take_still(board)
    switch_off(board)
    folder, files = outside(bench, board)
    length = film_facts(os.path.join(folder, named(files, ".avi")[0]))[1]
    return f"ready after {seconds:.0f} s, film repaired: {length:.1f} s, the next still lies on the card, card clean"


# --- the application ---

@case("killed", "the application killed in a film", quick=False)
def killed(bench):
    board = bench.ready()
    begin_film(board)
    time.sleep(3)
    pid = board.sh("pidof tubix4")
    board.mark()
    board.sh("kill -KILL $(pidof tubix4)")
    seconds = started_again(board, pid)
    known(board)
    take_still(board)
    switch_off(board)
    folder, files = outside(bench, board)
    length = film_facts(os.path.join(folder, named(files, ".avi")[0]))[1]
    return f"ready again after {seconds:.0f} s, film repaired: {length:.1f} s, card clean"


@case("hung", "the application's event loop stands still", quick=False)
def hung(bench):
    board = bench.ready()
    pid = board.sh("pidof tubix4")
    board.sh("pkill -STOP -x tubix4")
    board.mark()
    seconds = started_again(board, pid, 400)
    known(board)
    said = board.sh("journalctl -b -u tubix4 -o cat | grep -ci 'watchdog timeout'")
    take_still(board)
    return f"watchdog: ready again after {seconds:.0f} s ({said} time-out), a touch leaves a still"


@case("late-mount", "a card whose mount takes three seconds")
def late_mount(bench):
    board = bench.ready()
    remove(board)
    board.sh("mv /sbin/mount.tubix4card /sbin/mount.real && printf '#!/bin/sh\\nsleep 3\\nexec /sbin/mount.real \"$@\"\\n' "
             ">/sbin/mount.tubix4card && chmod +x /sbin/mount.tubix4card")
    board.mark()
    board.push(bench.empty_card("other.raw"))
    mounted(board)
    known(board)
    time.sleep(5)
    board.look("mounted")
    folder = board.ask(f"ls -d {DAY}")[1].strip()
    offered = board.ask("lsmod | grep -c ^g_mass_storage")[1].strip()
    hidden = board.sh("mkdir -p /run/root && mount --bind / /run/root && find /run/root/media -type f | wc -l; "
                      "umount /run/root")
    take_still(board)
    switch_off(board)
    files = outside(bench, board)[1]
    expect("No such" not in folder, f"no folder of the day on the card; {hidden} files on the unit's disk below the mount "
           f"point; offered over USB: {offered}; after a touch on the red button the card has {len(files)} files")
    return f"its folder is made, offered over USB: {offered}"


@case("bare", "a fresh install: no board.conf", quick=False)
def bare(bench):
    board = bench.ready()
    pid = board.sh("pidof tubix4")
    board.mark()
    board.sh(f"rm {HOME}/board.conf; systemctl --no-block restart tubix4")
    try:
        seconds = started_again(board, pid, 200)
    except Failed as failure:
        restarts = board.sh("systemctl show -P NRestarts tubix4")
        lines = [line for line in board.said().splitlines() if "rror" in line or "time" in line]
        raise Failed(f"never ready, {restarts} restarts: {'; '.join(dict.fromkeys(lines))[-400:]}") from failure
    board.look("bare")
    return f"ready after {seconds:.0f} s"


# --- hardware ---

@case("encoder", "the encoder board lost and back")
def encoder(bench):
    board = bench.ready()
    board.sh("i2cset -y 4 0x67 5 210; i2cset -y 4 0x67 4 4")
    time.sleep(3)
    board.look("with")
    board.hardware("encoder", "N")
    time.sleep(10)
    board.look("lost")
    lines = len(board.said().splitlines())
    board.hardware("encoder", "Y")
    board.sh("i2cset -y 4 0x67 5 100")
    time.sleep(10)
    board.look("back")
    before = board.sh("cat /sys/class/i2c-dev/i2c-4/name")
    take_still(board)
    return f"live view goes on, {lines} lines in the journal ({before}); see the pictures"


@case("no-signal", "a camera without a signal for four minutes, then with one", quick=False)
def no_signal(bench):
    board = bench.ready()
    board.sh("v4l2-ctl -d /dev/video0 -c percentage_of_dropped_buffers=100")
    time.sleep(240)
    board.look("without")
    restarts = board.sh("systemctl show -P NRestarts tubix4")
    state = board.sh("systemctl is-active tubix4 || true")
    said = [line for line in board.said().splitlines() if "frame" in line or "atchdog" in line or "imeout" in line]
    board.sh("v4l2-ctl -d /dev/video0 -c percentage_of_dropped_buffers=0")
    seconds = board.until(lambda: board.ask("systemctl is-active tubix4")[1].strip() == "active", 200, "ready", 2)
    expect(restarts == "0", f"{restarts} restarts, {state}: {'; '.join(dict.fromkeys(said))[-300:]}; ready {seconds:.0f} s "
           "after the signal")
    take_still(board)
    return "goes on without a restart, and with the signal again"


# --- a computer at the cable ---

def attach(board):
    board.mark()
    board.hardware("usbhost", "Y")
    board.says("-> .*eStateUsbActive")
    board.holds("test -b /dev/sda", 60)
    board.sh("mkdir -p /mnt/host && mount -t vfat /dev/sda /mnt/host")


def detach(board, ejects=True):
    if ejects:
        board.sh("umount /mnt/host")
    board.mark()
    board.hardware("usbhost", "N")
    board.says("eStateUsbDisconnected.* -> ")
    if not ejects:
        board.sh("umount -l /mnt/host")


def after_host(bench, board):
    take_still(board)
    switch_off(board)
    card = Card(board.card)
    damage = card.check()
    folder = bench.file("card")
    return damage, folder, card.files(folder)


def host_case(bench, work, ejects):
    board = bench.ready()
    attach(board)
    board.sh(f"cd /mnt/host && {work} && head -c 5000000 /dev/urandom >HOST.BIN && sync")
    content = board.sh("md5sum </mnt/host/HOST.BIN")
    detach(board, ejects)
    damage, folder, files = after_host(bench, board)
    wrong = []
    if damage:
        wrong.append(damage.replace("\n", " ")[-250:])
    there = "HOST.BIN" in files and run("md5sum", os.path.join(folder, "HOST.BIN")).split()[0] == content.split()[0]
    if not there:
        wrong.append("the host's file is damaged or gone")
    return wrong, folder, files


@case("usb-write", "a host writes a file and ejects")
def usb_write(bench):
    wrong, folder, files = host_case(bench, "true", True)
    stills = len(named(files, ".jpg"))
    marks = log_marks(folder, files)
    expect(not wrong and stills == 2 and marks == ["[+]", "[+]"], f"{'; '.join(wrong)}; {stills} stills, log {marks}")
    return "the host's file is whole, the next still and its row lie on the card, card clean"


@case("usb-pull", "a host writes a file and the cable is pulled", quick=False)
def usb_pull(bench):
    wrong, folder, files = host_case(bench, "true", False)
    stills = len(named(files, ".jpg"))
    marks = log_marks(folder, files)
    expect(not wrong and stills == 2 and marks == ["[+]", "[+]"], f"{'; '.join(wrong)}; {stills} stills, log {marks}")
    return "the host's file is whole, the next still and its row lie on the card, card clean"


@case("usb-move", "a host moves the current folder and ejects", quick=False)
def usb_move(bench):
    wrong, folder, files = host_case(bench, "mv DCIM/100TUBIX/* .", True)
    stills, marks = named(files, ".jpg"), log_marks(folder, files)
    expect(not wrong and len(stills) == 2 and len(marks) == 2, f"{'; '.join(wrong)}; {stills}, log {marks}")
    return f"the host's file is whole, stills {stills}, log {marks}, card clean"


@case("usb-page", "a host deletes the folder's page and ejects")
def usb_page(bench):
    wrong, folder, files = host_case(bench, "rm DCIM/100TUBIX/*/*.html", True)
    pages, marks = named(files, ".html"), log_marks(folder, files)
    expect(not wrong and pages, f"{'; '.join(wrong)}; pages {pages}, log {marks}")
    return f"page made again, log {marks}, card clean"


# --- upgrade, clock, auto power-off ---

def upgrade_card(bench):
    """A card with an archive that brings two large files; their contents."""
    new = [random_file(bench, name, 12_000_000) for name in ("first.bin", "second.bin")]
    with open(bench.file("tubix4_update.txt"), "w", encoding="ascii") as steps:
        steps.write("".join(f"ADD,{os.path.basename(name)},/opt\n" for name in new))
    run("tar", "-C", bench.folder, "--format=ustar", "-cf", bench.file("TUBIX4UPDT0400.tar"), "first.bin", "second.bin",
        "tubix4_update.txt")
    card = bench.empty_card("upgrade.raw")
    put_on_card(card, bench.file("TUBIX4UPDT0400.tar"), "/DCIM/TUBIX4UPDT0400.tar")
    return card, [run("md5sum", name).split()[0] for name in new]


def apply_upgrade(board):
    board.look("question")
    board.touch("ConfirmationBox.btn_Confirm")


@case("upgrade", "an upgrade from the card, power lost at three steps of it", quick=False)
def upgrade(bench):
    seen = []
    moments = (("while unpacking", "test -e /home/root/tmp/first.bin"), ("after the first file", "test -e /opt/first.bin"),
               ("after the second file", "test -e /opt/second.bin"))
    for where, sign in moments:
        card, sums = upgrade_card(bench)
        board = bench.ready()
        remove(board)
        board.mark()
        with board.held():
            board.push(card)
            mounted(board)
        time.sleep(8)
        apply_upgrade(board)
        board.until(lambda: board.ask(sign)[0] == 0, 120, where, 0.05)
        board.cut()
        board = bench.cold(bench.file("disk.qcow2"), card)
        board.ready()
        mounted(board)
        time.sleep(10)
        there = board.sh("md5sum /opt/*.bin 2>/dev/null | cut -d ' ' -f 1; true").split()
        expect(all(value in sums for value in there), f"{where}: a half file in /opt")
        archive = board.ask(f"ls {CARD}/DCIM/*.tar")[0] == 0
        if archive:
            apply_upgrade(board)
            board.ended(200)
        else:
            switch_off(board)
        damage = Card(card).check()
        expect(not damage, f"{where}: {damage[-200:]}")
        seen.append(f"{where}: {len(there)} of 2 files new and whole, {'offered again and done' if archive else 'done'}")
    return "; ".join(seen)


@case("clock", "the hour set by hand")
def clock(bench):
    board = bench.ready()
    board.touch("btn_menu_Tools")
    board.says("-> .*eStateToolsMenu\\b")
    time.sleep(2)
    before = int(board.sh("date +%s"))
    board.touch("btn_tools_SetTime")
    time.sleep(4)
    board.touch("btn_settime_hour_up")
    time.sleep(1)
    board.look("clock")
    board.touch("btn_settime_confirm")
    board.holds(f"test $(date +%s) -gt {before + 3500}", 30)
    board.holds('t=$(hwclock --get) && d=$(($(date -d "$t" +%s) - $(date +%s))) && test ${d#-} -lt 60', 30)
    return "system and hardware clock follow"


@case("auto-off", "ten minutes without a touch", quick=False)
def auto_off(bench):
    board = bench.ready()
    board.touch("btn_menu_Tools")
    board.says("-> .*eStateToolsMenu\\b")
    time.sleep(2)
    board.touch("btn_tools_Auto_On_Off")
    time.sleep(2)
    board.look("ten-minutes")
    board.touch("btn_menu_BackButton")
    seconds = board.ended(900)
    folder, files = outside(bench, board)
    expect(named(files, ".jpg"), f"{files}")
    return f"off after {seconds / 60:.1f} minutes, card clean"
