"""Cases with power that goes away, programs that die, hardware that fails and a computer at the other end of the cable."""
import glob
import os
import re
import shlex
import time

from cases import (begin_film, case, goes_on, known, log_marks, mounted, named, outside, remove, repaired_film,
                   switch_off, take_still)
from kit import CARD, Card, Failed, PARTITION_START, PROJECT, WORK, expect, film_facts, run


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


@case("power-cut", "power lost at 20 random moments of filming and capturing; another unit gets the card")
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


@case("power-boot", "power lost in a film, the same unit switched on again")
def power_boot(bench):
    board = bench.ready()
    begin_film(board)
    time.sleep(6)
    disk, card = bench.file("disk.qcow2"), board.card
    board.cut()
    board = bench.cold(disk, card)
    seconds = board.ready()
    mounted(board)
    return f"ready after {seconds:.0f} s; {repaired_film(bench, board)}"


# --- the application ---

def restarted_in_film(bench, signal):
    board = bench.ready()
    begin_film(board)
    time.sleep(3)
    pid = board.sh("pidof tubix4")
    board.mark()
    board.sh(f"kill -{signal} {pid}")
    seconds = started_again(board, pid)
    known(board)
    return f"ready again after {seconds:.0f} s; {repaired_film(bench, board)}"


@case("killed", "the application killed in a film")
def killed(bench):
    return restarted_in_film(bench, "KILL")


@case("hung", "the application's event loop stands still in a film")
def hung(bench):
    return restarted_in_film(bench, "STOP")


@case("late-mount", "a card whose mount takes three seconds")
def late_mount(bench):
    board = bench.ready()
    remove(board)
    board.sh("mv /sbin/mount.tubix4card /sbin/mount.real && printf '#!/bin/sh\\nsleep 3\\nexec /sbin/mount.real \"$@\"\\n' "
             ">/sbin/mount.tubix4card && chmod +x /sbin/mount.tubix4card")
    board.mark()
    board.push(bench.empty_card("other.raw"))
    mounted(board)
    board.holds("lsmod | grep -q ^g_mass_storage")
    hidden = board.sh("mkdir -p /run/root && mount --bind / /run/root && find /run/root/media -type f; umount /run/root")
    expect(not hidden, f"on the unit's own disk, below the mount point: {hidden}")
    goes_on(bench, board, stills=1)
    return "taken and offered over USB once it is there, nothing below the mount point; the next still lies on it, card clean"


# --- from a bare Debian ---

# Commands of docs/bring-up.md that cannot succeed on this machine, or go on until a hand ends them.
NOT_HERE = r"debug-events|kmssink|wlan0|hotspot\.sh|infra\.sh|systemctl kill|-g watchdog"


def commands_of(page):
    """The commands of a page's indented blocks as they stand there, those of several lines as one."""
    commands, begun = [], ""
    with open(os.path.join(PROJECT, "docs", page), encoding="utf-8") as file:
        for line in file:
            if line.startswith("    "):
                begun += line[4:]
                if not begun.endswith("\\\n") and not run("bash", "-n", "-c", begun, check=False):
                    commands.append(begun.strip())
                    begun = ""
    return commands


def without_product(bench):
    """A disk with Debian alone, what the product depends on, and the packages in /root."""
    card = bench.empty_card()
    packages = glob.glob(f"{WORK}/packages/tubix4_*.deb") + glob.glob(f"{WORK}/packages/tubix4-unit_*.deb")
    for package in packages:
        put_on_card(card, package, "/" + os.path.basename(package))
    board = bench.cold(card=card)
    board.ready()
    mounted(board)
    board.sh(f"cp {CARD}/*.deb /root && apt-get -qq purge -y tubix4 tubix4-unit && rm -r /home/root", 300)
    board.sh("sync; systemctl --no-block poweroff")
    board.ended()
    return bench.file("disk.qcow2")


@case("bring-up", "docs/bring-up.md from a bare Debian on, each command as it stands; no board.conf")
def bring_up(bench):
    disk = without_product(bench)
    board = bench.cold(disk)
    seen, bad = 0, []
    with open(bench.file("walk.log"), "w", encoding="utf-8") as log:
        for command in commands_of("bring-up.md"):
            if command == "reboot":  # which ends QEMU
                board.sh("sync; systemctl --no-block reboot")
                board.ended()
                board = bench.cold(disk, board.card)
                seconds = board.ready()
                board.look("bare")
                continue
            mayFail = re.search(NOT_HERE, command)
            status, output = board.ask(f"cd /root; timeout {20 if mayFail else 240} bash -c {shlex.quote(command)}", 300)
            log.write(f"$ {command}\n{output}{f'[{status}]' if status else ''}\n\n")
            log.flush()
            seen += 1
            if status and not mayFail:
                bad.append(f"'{command[:60]}' ends with {status}: {output.strip()[-80:]}")
    expect(not bad, "; ".join(bad))
    return f"{seen} commands; ready after {seconds:.0f} s without a board.conf"


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


@case("no-signal", "no camera head for longer than the watchdog waits, then one")
def no_signal(bench):
    def connect(head):  # neither encoder board nor decoder see one, and no picture comes
        board.sh(f"i2cset -y 4 0x67 10 {head}; v4l2-ctl -d /dev/video0 -c percentage_of_dropped_buffers={100 - 100 * head}")
        board.hardware("decoder", 0x44 + head)

    board = bench.ready()
    before = board.sh("systemctl show -P NRestarts tubix4")
    connect(0)
    time.sleep(150)
    board.look("without")
    restarts = board.sh("systemctl show -P NRestarts tubix4")
    said = [line for line in board.said().splitlines() if "frame" in line or "atchdog" in line or "imeout" in line]
    expect(restarts == before, f"restarted: {'; '.join(dict.fromkeys(said))[-300:]}")
    connect(1)
    take_still(board)
    return "goes on without a restart; with the head again the next still is saved"


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


def with_host(bench, work, ejects=True):
    """A host does its work, writes a file and goes; the unit takes another still."""
    board = bench.ready()
    attach(board)
    board.sh(f"cd /mnt/host && {work} && head -c 5000000 /dev/urandom >HOST.BIN && sync")
    content = board.sh("md5sum </mnt/host/HOST.BIN").split()[0]
    detach(board, ejects)
    folder, files = goes_on(bench, board)
    there = "HOST.BIN" in files and run("md5sum", os.path.join(folder, "HOST.BIN")).split()[0] == content
    expect(there, "the host's file is damaged or gone")
    marks, pages = log_marks(folder, files), named(files, ".html")
    expect(marks == ["[+]", "[+]"], f"log {marks}")
    return f"the host's file is whole, both stills have their rows, pages: {len(pages)}; card clean"


@case("usb-write", "a host writes a file and ejects")
def usb_write(bench):
    return with_host(bench, "true")


@case("usb-pull", "a host writes a file and the cable is pulled")
def usb_pull(bench):
    return with_host(bench, "true", ejects=False)


@case("usb-move", "a host moves the current folder and ejects")
def usb_move(bench):
    return with_host(bench, "mv DCIM/100TUBIX/* .")


@case("usb-page", "a host deletes the folder's page and ejects", quick=True)
def usb_page(bench):
    return with_host(bench, "rm DCIM/100TUBIX/*/*.html")


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


@case("upgrade", "an upgrade from the card, power lost at three steps of it")
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


@case("auto-off", "ten minutes without a touch")
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
