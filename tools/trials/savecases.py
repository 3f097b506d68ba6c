"""Every way onto the card, with every file call on it failing or being the last one; and long runs."""
import re
import shutil
import subprocess
import threading
import time
from pathlib import Path

from judge import GAPS, captures, digest, faults_of_folder, is_whole, seconds_of
from units import BUILD, Trouble, memory_of

SAVEPATHS, SCREENS, FILMS = BUILD / "hurt/savepaths", BUILD / "tests/test_app_screens", BUILD / "tests/test_app_films"
CARD, HOME = "media/mmcblk1p1", "home/root/tubix4_app"
MODES = ("KILL", "EIO", "EIO once", "ENOSPC", "ENOSPC once", "EROFS", "EROFS once")
PATHS = ("still", "film-start", "film-end", "note", "copy", "rename", "settings", "event", "row", "mend")
NEW_FILE = {"still": ".jpg", "film-start": ".avi", "film-end": ".avi", "note": ".wav", "copy": ".jpg"}
EVENT = re.compile(r"\d{4}-\d\d-\d\d/\d\d:\d\d:\d\d,\d+,.*")
FIRST_WRITE = 64 * 1024  # bytes of a film, which has its header
MEMORY_OF_FILMS = 16  # MB between the twentieth film and the last
MEMORY_OF_WALK = 256  # MB


def answer_of(process):
    """The next answer, without the lines that the application prints; empty: it has ended."""
    for line in process.stdout:
        if "answer: " in line:  # which may stand behind one of those, without an end of its own
            return line.split("answer: ")[1].strip()
    return ""


class Driver:
    """The real window that saves by order (savepaths.cpp)."""

    def __init__(self, bench):
        self.process = subprocess.Popen([SAVEPATHS], env=bench.environment(), text=True, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        bench.processes.append(self.process)
        self.root = Path(answer_of(self.process))
        self.dial = self.root / ".simulator/change_fault"
        self.changes = self.root / ".simulator/changes"
        self.folder = next((self.root / CARD / "DCIM/100TUBIX").iterdir())

    def order(self, path, seconds=60):
        """True: saved, False: refused, None: it is dead."""
        watch = threading.Timer(seconds, self.process.kill)
        watch.start()
        try:
            self.process.stdin.write(path + "\n")
            self.process.stdin.flush()
            answer = answer_of(self.process)
        except BrokenPipeError:
            answer = ""
        finally:
            watch.cancel()
        if not answer:
            self.process.wait()
        return {"saved": True, "refused": False}.get(answer)

    def faulty(self, path, number, mode):
        """The same while the change of that number meets its fault: (answer, whether there were as many)."""
        self.changes.unlink(missing_ok=True)
        self.dial.write_text(f"{number} {mode}\n")
        answer = self.order(path)
        self.dial.unlink()
        made = self.changes.stat().st_size if self.changes.exists() else 0
        return answer, made >= number

    def take_over(self, dead):
        """The card and the folder of a unit whose application was killed."""
        for place in (CARD, HOME):
            shutil.rmtree(self.root / place)
            shutil.copytree(dead.root / place, self.root / place)
        shutil.rmtree(dead.root)


class Try:
    """One save with one fault, and what has to be true afterwards."""

    def __init__(self, driver, path):
        self.driver, self.path, self.folder = driver, path, driver.folder
        self.prepare()
        self.before = captures(self.folder)
        self.settings = self.text("globlsystemsettings_default.xml")
        self.events = self.text("eventlog.csv")

    def text(self, name):
        file = self.driver.root / HOME / name
        return file.read_text(errors="replace") if file.exists() else ""

    def prepare(self):
        if self.path in ("note", "copy"):
            for note in self.folder.glob("*.wav"):
                note.unlink()
            if not self.driver.order("open"):
                raise Trouble("no picture could be opened")
        elif self.path == "film-end":
            # A camera that brings no picture in time costs the film, and is no fault of the card's.
            if not any(self.driver.order("film-start") for _ in range(2)):
                raise Trouble("no film could be started")
            time.sleep(0.3)
        elif self.path == "rename":
            still = next(path for path in sorted(self.folder.glob("TUBX*.jpg")))
            for name in ("NEW.jpg", "NEW.wav"):
                (self.folder / name).unlink(missing_ok=True)
            shutil.copy(still, self.folder / "OLD.jpg")
            (self.folder / "OLD.wav").write_bytes(b"a note")
        elif self.path == "mend":
            for log in (f"{self.folder.name}.html", f"{self.folder.name}.txt"):
                content = (self.folder / log).read_bytes()
                (self.folder / log).write_bytes(content[:-5])
            (self.folder / "TUBX0001.jpg.tubix-new").write_bytes(b"half")

    def renamed_whole(self, now):
        """Picture and note are both under the old name or both under the new one."""
        return {name for name in now if name[:3] in ("OLD", "NEW")} in ({"OLD.jpg", "OLD.wav"}, {"NEW.jpg", "NEW.wav"})

    def excuse(self, answer, judged):
        """A still has its row whether it could be saved or not; a film that had just begun when the application was
        killed, or a write failed and the screen told so, may be empty; a note may lack its end then. Where a write
        failed, a line of the text log may be missing."""
        text = self.folder / f"{self.folder.name}.txt"
        if self.path == "still" and not answer and text.is_file():
            judged |= {line.split()[-1] for line in text.read_text(errors="replace").splitlines()[-1:] if line}
        if self.path in ("film-start", "film-end") and not answer:
            judged |= {film.name for film in self.folder.glob("*.avi") if film.stat().st_size < FIRST_WRITE}
        if self.path == "note" and not answer:
            judged |= {note.name for note in self.folder.glob("*.wav")}
        if answer is not None:
            judged.add(GAPS)

    def judge(self, tally, answer, what, driver, judged):
        """`driver`: the one that goes on, which has mended what a kill left."""
        self.folder = driver.folder
        now = captures(self.folder)
        changing = ("OLD", "NEW") if self.path == "rename" else ("?",)
        running = {name for name in self.before if self.path == "film-end" and name.endswith(".avi")} - judged
        for name, was in self.before.items():
            if not name.startswith(changing) and name not in running and now.get(name) != was:
                tally.lose(f"{what}: {name} was finished and is " + ("changed" if name in now else "gone"))
        if self.path in NEW_FILE and answer and not any(
                name.endswith(NEW_FILE[self.path]) for name in now.keys() - self.before.keys() | running):
            tally.lose(f"{what}: called saved, and nothing is there")
        if self.path == "rename":
            if set(now.values()) < set(self.before.values()):
                tally.lose(f"{what}: the renamed file is gone")
            # Known to be weak: a kill between the two calls, a card that takes nothing more from the second on.
            if what.endswith("once"):
                tally.check(self.renamed_whole(now), f"{what}: picture and note have parted")
            now = {name: was for name, was in now.items() if not name.endswith(".wav")}
            (self.folder / "OLD.wav").unlink(missing_ok=True)
            (self.folder / "NEW.wav").unlink(missing_ok=True)
        self.excuse(answer, judged)
        self.driver = driver
        written = self.text("globlsystemsettings_default.xml")
        tally.check(written.endswith("</systemsettings>\n") and len(written) == len(self.settings),
                    f"{what}: the settings are not whole")
        events = self.text("eventlog.csv")
        if not events.startswith(self.events):
            tally.lose(f"{what}: lines of the event log")
        tally.check(all(EVENT.fullmatch(line) for line in events.splitlines()), f"{what}: a half line in the event log")
        for fault in faults_of_folder(self.folder, judged):
            tally.fail(f"{what}: {fault}")


def one_call(bench, tally, driver, path, number, mode, judged):
    """The driver that goes on, and whether the save has that many calls."""
    wrong = tally.lost + tally.failed
    attempt = Try(driver, path)
    answer, reached = driver.faulty(path, number, mode)
    what = f"{path}, change {number}, {mode}"
    following = driver
    if answer is None:
        if mode != "KILL":
            tally.fail(f"{what}: the application ended or hangs")
        following = Driver(bench)
        following.take_over(driver)
    elif path == "film-start" and answer:
        driver.order("film-end")
    tally.check(following.order("mend"), f"{what}: no mending")
    attempt.judge(tally, answer, what, following, judged)
    if tally.lost + tally.failed > wrong or len(attempt.before) > 30:
        begin_anew(following, judged)
    return following, reached


def begin_anew(driver, judged):
    """A folder without faults, so that none is told twice."""
    for path in driver.folder.rglob("*"):
        if path.is_file() and path.parent.name != ".html_assets":
            path.unlink()
    judged.clear()
    if not (driver.order("mend") and driver.order("still")):
        raise Trouble("no still in a new folder")


def calls(bench, tally):
    driver, judged, complete = Driver(bench), set(), 0
    if not driver.order("still"):
        raise Trouble("no still without a fault")
    ways = [(path, mode) for path in PATHS for mode in MODES]
    bench.dice.shuffle(ways)
    numbers = tally.rounds()
    for path, mode in ways:
        if mode == "KILL":
            begin_anew(driver, judged)
        for number in numbers:
            try:
                driver, reached = one_call(bench, tally, driver, path, tally.tried - complete, mode, judged)
            except (Trouble, OSError, StopIteration) as trouble:
                tally.fail(f"{path}, {mode}: {trouble}")
                driver.process.kill()
                driver, reached = Driver(bench), False
                driver.order("still")
            if not reached:
                complete = number
                break
    if not tally.is_over():
        tally.full = tally.tried
    tally.seen.append(f"{len(PATHS)} ways onto the card and into the settings, {len(MODES)} faults")


def torn_film(bench):
    """A film of which nobody wrote the end."""
    driver = Driver(bench)
    driver.order("film-start")
    time.sleep(1.5)
    film = next(driver.folder.glob("*.avi"))
    shutil.copy(film, bench.work / "torn.avi")
    driver.process.kill()
    driver.process.wait()
    return bench.work / "torn.avi"


def repair(bench, tally):
    torn = torn_film(bench)
    root = bench.work / "unit"
    (root / CARD).mkdir(parents=True)
    (root / ".simulator").mkdir()
    film, dial, changes = root / CARD / "film.avi", root / ".simulator/change_fault", root / ".simulator/changes"
    shutil.copy(torn, film)
    bench.run(FILMS, "--repair", film)
    whole, seconds = digest(film), seconds_of(film)
    number, mode = 0, 0
    for _ in tally.rounds():
        number += 1
        shutil.copy(torn, film)
        changes.unlink(missing_ok=True)
        dial.write_text(f"{number} {MODES[mode]}\n")
        bench.run(FILMS, "--repair", film)
        dial.unlink()
        bench.run(FILMS, "--repair", film)
        if digest(film) != whole or not is_whole(film):
            tally.lose(f"change {number}, {MODES[mode]}: {seconds_of(film)} s of {seconds} s")
        if not changes.exists() or changes.stat().st_size < number:
            tally.seen.append(f"{MODES[mode]}: {number - 1} places")
            number, mode = 0, mode + 1
            if mode == len(MODES):
                tally.full = tally.tried
                return


def recordings(bench, tally):
    process = subprocess.Popen([SAVEPATHS, "--films", str(tally.full)], text=True, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL,
                               env=bench.environment(MALLOC_ARENA_MAX="1"))  # as the program has it
    bench.processes.append(process)
    films = []
    for _ in tally.rounds():
        line = answer_of(process).split()
        if len(line) != 3 or line[0] == "-1":
            tally.fail("no film" if line else "the application ended")
            break
        films.append([int(number) for number in line])
    first, later = films[5:20], films[20:]
    for column, what in enumerate(("threads", "descriptors")):
        if later and max(film[column] for film in later[-20:]) > max(film[column] for film in first):
            tally.fail(f"{what} grew from {first[0][column]} to {later[-1][column]}")
        tally.seen.append(f"{films[-1][column] if films else 0} {what}")
    if later:
        grown = (later[-1][2] - first[-1][2]) / 1024
        tally.check(grown <= MEMORY_OF_FILMS, f"memory grew by {grown:.0f} MB")
        tally.seen.append(f"{later[-1][2] / 1024:.0f} MB, {grown:+.1f} MB since the twentieth film")


def walk(bench, tally):
    steps, heights = min(tally.full, 1000), []
    while tally.tried < tally.full and (tally.tried == 0 or not tally.is_over()):
        seed = bench.seed + tally.tried
        process = subprocess.Popen([SCREENS, "everyStepOfAWalkShowsWhatTheRulesSay", "-maxwarnings", "0"],
                                   env=bench.environment(TUBIX_WALK=f"{seed} {steps}"), text=True, errors="replace",
                                   stdout=open(bench.work / "walk", "w"), stderr=subprocess.STDOUT)
        bench.processes.append(process)
        heights.append([])
        while process.poll() is None:
            heights[-1].append(memory_of(process.pid))
            time.sleep(0.5)
        tally.tried += steps
        if process.returncode != 0:
            wrong = [line for line in (bench.work / "walk").read_text(errors="replace").splitlines() if "FAIL!" in line]
            tally.fail(f"seed {seed}, {steps} steps: {(wrong or ['status ' + str(process.returncode)])[0]}")
        tally.check(max(heights[-1]) <= MEMORY_OF_WALK, f"seed {seed}: {max(heights[-1])} MB")
    tally.seen.append(f"{max(map(max, heights))} MB at most")
