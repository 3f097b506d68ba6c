"""What comes from outside: files of an enemy, commands that go wrong, clients of the network, very many files."""
import io
import os
import shutil
import signal
import socket
import tarfile
import threading
import time

from judge import digest, is_whole
from units import Trouble

HOME = "home/root/tubix4_app"
MOST_MEMORY = 256     # MB above that of a quiet unit
STOP = 15             # s that the service manager waits before it kills (packaging/systemd/tubix4.service)
STREAM = ("127.0.0.1", 1234)
MOST_VIEWERS = 8
NETWORK_BUTTON = (593, 124)
CATALOG = f"{HOME}/damagecatelog/damagecat_en.txt"
TEXTS = (f"{HOME}/globlsystemsettings_default.xml", CATALOG, "etc/hostapd.conf", f"{HOME}/board.conf")
NAMES = (b"TUBX0001.jpg.avi", b"TUBX9999.jpg", b"TUBX-001.jpg", b"%n%s%1%2.jpg", b"\xff\xfe\xc3(.jpg", b"a\nb.jpg",
         b".jpg", b"<b>&\"'.jpg", b"-rf.avi", b"x" * 251 + b".jpg", b"TUBIX4UPDT.tar", b"con.jpg",
         "\u202egpj.exe.jpg".encode())


def mutated(dice, content):
    """A few bytes changed, a piece gone or doubled, or everything noise."""
    data = bytearray(content)
    for _ in range(dice.randrange(1, 6)):
        at = dice.randrange(len(data) + 1)
        piece = dice.randrange(1, 64)
        kind = dice.randrange(5)
        if kind == 0:
            data[at:at + piece] = dice.randbytes(piece)
        elif kind == 1:
            del data[at:]
        elif kind == 2:
            data[at:at] = data[max(0, at - piece):at] * dice.choice((1, 200))
        elif kind == 3:
            data[at:at] = dice.choice((b"\0", b"\xff" * 9, b"%s%n", b"-99999999999", b"<!DOCTYPE a>", b"\r\n" * 50))
        else:
            data = bytearray(dice.randbytes(dice.choice((0, 1, 4096, 200000))))
    return bytes(data)


def archive(dice):
    """An upgrade that wants out of its folder."""
    packed = io.BytesIO()
    steps = [f"{dice.choice(('ADD', 'DELETE', 'MKDIR', 'RMDIR', 'OVERRIGHT'))},{name},{folder}"
             for name in ("x", "../x", "a/../../x") for folder in ("/../../..", "/tmp/../../..", "..", "/link")]
    with tarfile.open(fileobj=packed, mode="w", format=dice.choice((tarfile.USTAR_FORMAT, tarfile.PAX_FORMAT))) as tar:
        def put(name, content=b"x", kind=tarfile.REGTYPE, link=""):
            member = tarfile.TarInfo(name)
            member.type, member.linkname = kind, link
            member.size = len(content) if kind == tarfile.REGTYPE else 0
            tar.addfile(member, io.BytesIO(content))
        put("tubix4_update.txt", "\n".join(steps).encode())
        put("x")
        for hostile in dice.sample((("../x",), ("/x",), ("a/../../x",), ("link", b"", tarfile.SYMTYPE, "../../.."),
                                    ("link/x",), ("hard", b"", tarfile.LNKTYPE, "/etc/passwd"),
                                    ("device", b"", tarfile.CHRTYPE), ("pipe", b"", tarfile.FIFOTYPE)), 2):
            put(*hostile)
    content = packed.getvalue()
    return dice.choice((content, content, mutated(dice, content)))


def fill_card(unit, dice, still):
    folder = unit.folder()
    for name in dice.sample(NAMES, 6):
        try:
            with open(os.path.join(os.fsencode(folder), name), "wb") as file:
                file.write(mutated(dice, still) if dice.random() < 0.7 else still)
        except OSError:
            pass  # a name that this file system does not take
    # The header of a picture of 30,000 x 30,000 before the data of a small one.
    at = still.find(b"\xff\xc0")
    (folder / "huge.jpg").write_bytes(still[:at + 5] + b"\x75\x30\x75\x30" + still[at + 9:])
    film = bytearray(dice.randbytes(5000))
    film[:12] = b"RIFF" + dice.randbytes(4) + b"AVI "
    (folder / "TUBX0500.avi").write_bytes(film)


def hostile(bench, tally):
    unit = bench.unit()
    canary = bench.work / "canary"
    canary.write_text("outside")
    beside = set(bench.work.iterdir())
    unit.start()
    unit.take_card()
    still = unit.takes_still().read_bytes()
    quiet, most = unit.memory(), 0
    unit.end()
    texts = {text: (unit.unit / text).read_bytes() for text in TEXTS}
    for _ in tally.rounds():
        unit.hand("card", "empty")
        unit.folder().mkdir(parents=True)
        has_archive = bench.dice.random() < 0.3
        if has_archive:
            (unit.card / "DCIM/TUBIX4UPDT504.tar").write_bytes(archive(bench.dice))
        fill_card(unit, bench.dice, still)
        for text, content in texts.items():
            is_board = text.endswith("board.conf")  # the owner's own; who writes it says which elements run
            (unit.unit / text).write_bytes(content if is_board else mutated(bench.dice, content))
        try:
            unit.start()
            if has_archive:
                unit.confirm()
                unit.application.wait(30)
            else:
                unit.take_card()
                unit.touch_for("thumbnails", "eStatePlaybackThumbnailsSelectable")
                unit.touch(bench.dice.choice(((222, 194), (366, 194), (510, 194))))
                time.sleep(0.5)
                most = max(most, unit.memory() - quiet)
                unit.settle()
                tally.check(is_whole(unit.takes_still()), "a still is not whole")
                tally.check(unit.end() == 0, "the application did not end in order")
        except (Trouble, OSError) as trouble:
            tally.fail(f"{'archive' if has_archive else 'files'}: {trouble}")
        unit.end()
        if set(bench.work.iterdir()) != beside or canary.read_text() != "outside":
            tally.lose("something outside the unit was changed")
    tally.check(most <= MOST_MEMORY, f"{most} MB for a page of hostile files")
    tally.seen.append(f"at most {most} MB more than a quiet unit")


def commands(bench, tally):
    unit = bench.unit()
    names = sorted(path.name for path in (unit.unit / "usr/bin").iterdir() if path.name not in ("poweroff", "mount"))
    unit.start()
    unit.take_card()
    longest = 0.0
    for number in tally.rounds():
        name = names[number % len(names)]
        how = bench.dice.choice((("hang", "2"), ("fail",), ("missing",), ("nonsense",), ("hang", "600")))
        what = f"{name} {' '.join(how)}"
        try:
            unit.hand("command", name, *how)
            if how[-1] == "600":
                longest = max(longest, stop(unit, tally, what))
            else:
                unit.hand("card", "remove")
                unit.hand("card", "insert")
                time.sleep(bench.dice.uniform(0, 3))
                unit.touch("capture")
                time.sleep(0.5)
            unit.hand("command", name, "ok")
            if unit.application.poll() is not None:
                unit.start()
            # What was broken is whole again: within this time the card is taken, whatever df had said.
            unit.hand("card", "remove")
            unit.hand("card", "insert")
            unit.take_card()
            unit.settle()
            tally.check(is_whole(unit.takes_still()), f"{what}: a still is not whole")
        except (Trouble, OSError) as trouble:
            tally.fail(f"{what}: {trouble}")
            unit.end(signal.SIGKILL)
            unit.hand("smooth")
            unit.start()
            unit.take_card()
    tally.seen.append(f"a stop with a child that never ends: {longest:.1f} s at most")


def stop(unit, tally, what):
    """As the service manager does: the signal to all of the service's processes, and a limit."""
    unit.touch("capture")
    unit.hand("card", "remove")
    time.sleep(1.5)  # most commands run by now, and hang
    begun = time.monotonic()
    status = unit.end(signal.SIGTERM, STOP)
    tally.check(status == 0, f"{what}: the stop ended with {status}")
    return time.monotonic() - begun


class Watcher(threading.Thread):
    """A good viewer: counts the pictures that come."""

    def __init__(self):
        super().__init__(daemon=True)
        self.socket = connected()
        self.pictures, self.is_over = 0, False

    def run(self):
        try:
            while not self.is_over and (piece := self.socket.recv(65536)):
                self.pictures += piece.count(b"\xff\xd8\xff")
        except OSError:
            pass

    def rate(self, seconds):
        before = self.pictures
        time.sleep(seconds)
        return (self.pictures - before) / seconds

    def end(self):
        self.is_over = True
        self.socket.close()


def connected(seconds=10):
    """A client of the stream, as soon as it is there."""
    deadline = time.monotonic() + seconds
    while True:
        try:
            return socket.create_connection(STREAM, 5)
        except OSError as error:
            if time.monotonic() > deadline:
                raise Trouble(f"nobody serves the stream: {error}") from error
            time.sleep(0.2)


def stall(dice):
    return [connected() for _ in range(dice.randrange(1, 8))]


def flood(dice):
    clients = []
    for _ in range(dice.randrange(20, 80)):
        client = socket.socket()
        client.setblocking(False)
        client.connect_ex(STREAM)
        clients.append(client)
    return clients


def drop(dice):
    for _ in range(dice.randrange(20, 80)):
        connected().close()
    return []


def talk(dice):
    clients = stall(dice)
    for client in clients:
        try:
            client.sendall(dice.randbytes(200000))
        except OSError:
            pass  # let go already
    return clients


def trickle(dice):
    """Readers that take 2 kB now and then."""
    clients = stall(dice)
    for _ in range(20):
        for client in clients:
            client.settimeout(0.05)
            try:
                client.recv(2000)
            except OSError:
                pass
        time.sleep(0.1)
    return clients


def viewers(bench, tally):
    unit = bench.unit()
    unit.start()
    unit.take_card()
    unit.touch_for("tools", "eStateToolsMenu")
    unit.touch(NETWORK_BUTTON)
    unit.leave_tools()
    try:
        connected().close()
    except Trouble as trouble:
        tally.fail(trouble)
        return
    time.sleep(1)
    quiet, slowest, highest = unit.descriptors(), 99.0, 0
    for number in tally.rounds():
        act = (stall, flood, drop, talk, trickle)[number % 5]
        watcher = Watcher()
        watcher.start()
        clients = act(bench.dice)
        try:
            slowest = min(slowest, watcher.rate(2))
            highest = max(highest, unit.descriptors() - quiet)
            if act is not flood and act is not drop:
                tally.check(watcher.pictures > 0, f"{act.__name__}: the viewer that takes its pictures gets none")
            watcher.end()
            for client in clients:
                client.close()
            unit.wait("the clients' end", lambda: unit.descriptors() <= quiet, 30)
            tally.check(unit.state() == "eStateLive", f"{act.__name__}: {unit.state()}")
        except (Trouble, OSError) as trouble:
            tally.fail(f"{act.__name__}: {trouble}")
    tally.check(highest <= 4 * MOST_VIEWERS, f"{highest} descriptors for viewers")
    tally.check(is_whole(unit.takes_still()), "a still is not whole")
    tally.seen.append(f"{slowest:.0f} pictures/s at least, {highest} descriptors at most")


def many(bench, tally):
    for _ in tally.rounds():
        unit = bench.unit()
        unit.start()
        unit.take_card()
        still = unit.takes_still()
        was, folder = digest(still), still.parent
        unit.end()
        if tally.tried == 1:
            what, content = "12,000 files", still.read_bytes()
            for number in range(2, 12001):
                (folder / (f"TUBX{number:04}.jpg" if number < 9000 else f"other{number}.jpg")).write_bytes(content)
        else:
            what = "3,000 folders"
            for number in range(3000):
                shutil.copytree(folder / ".html_assets", folder.parent / f"inspection{number:04}")
        begun = time.monotonic()
        unit.start()
        unit.take_card()
        started = time.monotonic() - begun
        unit.touch_for("thumbnails", "eStatePlaybackThumbnailsSelectable", 60)
        for _ in range(3):
            unit.touch_for("next" if tally.tried == 1 else "back", "eStatePlaybackThumbnailsSelectable"
                           if tally.tried == 1 else "eStateLive", 60)
            if tally.tried != 1:
                break
        memory = unit.memory()
        unit.settle()
        tally.check(is_whole(unit.takes_still()), f"{what}: a still is not whole")
        if digest(still) != was:
            tally.lose(f"{what}: the first still")
        tally.seen.append(f"{what}: card taken {started:.1f} s after the start, {memory} MB")
        unit.end()
        shutil.rmtree(unit.unit)
