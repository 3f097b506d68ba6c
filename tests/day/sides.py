"""Both sides of a day: what the screen called saved, and what the card holds, row by row."""
import datetime
import hashlib
import html
import re
import subprocess
from dataclasses import dataclass, field

MARKS = {"imagecaptured": "[+]", "start": "|--", "stop": "--|", "deleted": "[X]", "renamed": "[*]", "": "[!]"}
UNKNOWN = "---.--"
LATE = 1.5  # s: so old may the count be, and the clock of a row shows whole seconds
HTML_ROW = re.compile(r"<tr>\s*<td>([^<]*)</td>\s*<td>([\d:]+)</td>\s*<td>(?:<img src=\"\./\.html_assets/(\w+)\.png\"/>)?"
                      r"</td>\s*<td>(?:<a href=\"([^\"]*)\">)?([^<]*)(?:</a>)?</td>\s*</tr>")
TEXT_ROW = re.compile(r"(\S+)\s+([\d:]+)  (\[.\]|\|--|--\|) (.*)")


@dataclass
class Saved:
    """One thing that the screen called saved."""
    kind: str           # still, film, note or copy
    name: str
    touched: float      # the touch that began it, and when the screen called it saved
    told: float
    digest: str = ""    # of the file at that moment
    place: str = "card" # or "computer", which took the folder
    fate: str = ""      # "deleted", "renamed", "torn" when its card was pulled
    known: bool = True  # whether the length was known


@dataclass
class Row:
    metres: str
    time: str
    mark: str
    name: str
    link: str = ""


@dataclass
class Found:
    faults: list = field(default_factory=list)
    rows: dict = field(default_factory=lambda: dict.fromkeys(("still", "film", "note", "copy"), 0))
    there: dict = field(default_factory=lambda: dict.fromkeys(("still", "film", "note", "copy"), 0))
    of: dict = field(default_factory=lambda: dict.fromkeys(("still", "film", "note", "copy"), 0))

    def fault(self, kind, text):
        self.faults.append(f"{kind}: {text}")
        self.of[kind] += 1


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def is_whole(path):
    """A foreign program reads the file to its end without a complaint."""
    done = subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-xerror", "-i", path, "-f", "null", "-"],
                          stderr=subprocess.PIPE, text=True)
    return done.returncode == 0 and not done.stderr


def read_rows(folder, found):
    page = (folder / f"{folder.name}.html").read_text()
    rows = [Row(metres, time, MARKS[icon], html.unescape(name), html.unescape(link))
            for metres, time, icon, link, name in HTML_ROW.findall(page)]
    if len(rows) != page.count("<tr>") - 1 or not page.rstrip().endswith("</html>"):
        found.fault("still", f"{folder.name}.html holds something that is no row, or does not end")
    lines = (folder / f"{folder.name}.txt").read_text().splitlines()
    texts = [match.groups() if (match := TEXT_ROW.fullmatch(line)) else (line,) for line in lines]
    shown = [(row.metres, row.time, row.mark, row.name) for row in rows]
    for number, (ours, theirs) in enumerate(zip(shown, texts)):
        if ours != theirs:
            found.fault("still", f"row {number + 1}: the page has {ours}, the text {theirs}")
    if len(shown) != len(texts):
        found.fault("still", f"the page has {len(shown)} rows, the text {len(texts)}")
    return rows


def compare_lengths(rows, lengths, found):
    """Each row's metres are those of the meter at that time."""
    today = datetime.date.today()
    for row in rows:
        moment = datetime.datetime.combine(today, datetime.time.fromisoformat(row.time)).timestamp()
        if row.metres == UNKNOWN:
            continue
        near = [count for when, count in lengths if moment - LATE <= when <= moment + 1]
        if not near or not min(near) / 100 <= float(row.metres) <= max(near) / 100:
            found.fault(kind_of(row.name), f"row {row.time} of {row.name} has {row.metres} m, the meter "
                        + (f"{min(near) / 100:.2f} to {max(near) / 100:.2f}" if near else "was not read"))


def kind_of(name):
    if name.endswith(".avi"):
        return "film"
    if name.endswith(".wav"):
        return "note"
    return "copy" if re.search(r"_\d{6}\.jpg$", name) else "still"


def compare_saved(saved, path, rows, found):
    """The file is there, whole and as it was, and has its rows."""
    kind = saved.kind
    exists = path.is_file()
    if saved.fate == "deleted":
        if exists:
            found.fault(kind, f"{saved.name} was deleted and is there")
    elif not exists:
        found.fault(kind, f"{saved.name} was called saved and is not there")
    else:
        found.there[kind] += 1
        if not is_whole(path):
            found.fault(kind, f"{saved.name} is not whole")
        if saved.digest and digest(path) != saved.digest:
            found.fault(kind, f"{saved.name} is not what was saved")
    names = {saved.name, *(row.name.split(" -> ")[0] for row in rows
                           if row.mark == "[*]" and row.name.endswith(f" -> {saved.name}"))}
    marks = [row.mark for row in rows if row.name in names and row.mark in ("[+]", "|--", "--|")]
    found.rows[kind] += len(marks)
    wanted = {"still": ["[+]"], "film": ["|--", "--|"]}.get(kind, [])
    if marks != wanted and not (saved.fate == "torn" and marks == wanted[:1]):
        found.fault(kind, f"{saved.name} has the rows {marks}")
    for row in rows:
        if row.name not in names or row.mark not in ("[+]", "|--"):
            continue
        clock = datetime.datetime.combine(datetime.date.today(), datetime.time.fromisoformat(row.time)).timestamp()
        if not saved.touched - 1 <= clock <= saved.told + 1:
            found.fault(kind, f"{saved.name} was saved at {saved.told:.0f}, its row says {row.time}")
        if (row.metres != UNKNOWN) != saved.known:
            found.fault(kind, f"{saved.name} has the length {row.metres}")


def compare_folder(folder, ledger, rows, found):
    """Nothing lies there that nobody was told of, and each row names what is there or went by a later row."""
    told = {saved.name for saved in ledger if saved.fate != "deleted"}
    for path in sorted(folder.iterdir()):
        if path.is_file() and path.suffix in (".jpg", ".avi", ".wav") and path.name not in told:
            found.fault(kind_of(path.name), f"{path.name} is there, and the screen never called it saved")
        elif path.is_file() and path.suffix not in (".jpg", ".avi", ".wav", ".html", ".txt"):
            found.fault(kind_of(path.name), f"{path.name} was left behind")
    for number, row in enumerate(rows):
        if row.mark not in ("[+]", "|--", "--|"):
            continue
        later = [other.name for other in rows[number + 1:] if other.mark in ("[X]", "[*]")]
        gone = any(name == row.name or name.startswith(f"{row.name} -> ") for name in later)
        if gone == (folder / row.name).is_file():
            found.fault(kind_of(row.name), f"row {row.time} names {row.name}, which is "
                        + ("gone by a later row and there" if gone else "not there"))
        if row.link and row.link.removeprefix("./") != row.name:
            found.fault(kind_of(row.name), f"row {row.time} of {row.name} links {row.link}")


def compare(ledger, folders, lengths):
    """`folders`: place -> the day's folder there."""
    found = Found()
    for place, folder in folders.items():
        here = [saved for saved in ledger if saved.place == place]
        if not folder.is_dir():
            if here:
                found.fault("still", f"the folder is not on the {place}")
            continue
        rows = read_rows(folder, found)
        compare_lengths(rows, lengths, found)
        for saved in here:
            compare_saved(saved, folder / saved.name, rows, found)
        compare_folder(folder, here, rows, found)
    return found
