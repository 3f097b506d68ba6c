"""What lies on a card, and what of it is not as it should be."""
import hashlib
import subprocess

from units import BUILD, PROJECT  # noqa: F401  (PROJECT: its path is set there)
from sides import MARKS, TEXT_ROW, HTML_ROW, is_whole

GAPS = "gaps"  # among the judged names: lines of the text log may be missing
CAPTURES = (".jpg", ".avi", ".wav")


def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def captures(folder):
    """name -> digest of the finished captures below a day's folder."""
    if not folder.is_dir():
        return {}
    return {path.name: digest(path) for path in folder.iterdir() if path.is_file() and path.suffix in CAPTURES}


def seconds_of(film):
    shown = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v", "-show_entries", "stream=duration", "-of",
                            "csv=p=0", film], text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    try:
        return float(shown)
    except ValueError:
        return 0.0


def faults_of_folder(folder, judged):
    """Everything wrong with a day's folder after the application has taken it. `judged`: names found whole, or of
    which nothing is to be expected."""
    faults = []
    for path in sorted(folder.rglob("*")):
        if path.name.endswith(".tubix-new"):
            faults.append(f"{path.name} was left behind")
        elif path.is_file() and path.suffix in CAPTURES and path.stat().st_size == 0 and path.name not in judged:
            faults.append(f"{path.name} is empty")
            judged.add(path.name)  # told once
        elif path.parent == folder and path.suffix in CAPTURES and path.name not in judged:
            judged.add(path.name)
            if not is_whole(path):
                faults.append(f"{path.name} is not whole")
    return faults + faults_of_logs(folder, judged)


def faults_of_logs(folder, judged):
    page, text = folder / f"{folder.name}.html", folder / f"{folder.name}.txt"
    if not page.is_file():
        return [f"{page.name} is missing"]
    faults = []
    content = page.read_text(errors="replace")
    rows = [(metres, time, MARKS[icon], name) for metres, time, icon, _, name in HTML_ROW.findall(content)]
    if len(rows) != content.count("<tr>") - 1 or not content.rstrip().endswith("</html>"):
        faults.append(f"{page.name} holds something that is no row, or does not end")
    lines = text.read_text(errors="replace").splitlines() if text.is_file() else []
    texts = [match.groups() if (match := TEXT_ROW.fullmatch(line)) else (line,) for line in lines]
    rest = iter(rows)
    if rows != texts and not (GAPS in judged and all(line in rest for line in texts)):
        first = next((pair for pair in zip(rows, texts) if pair[0] != pair[1]), "at the end")
        faults.append(f"the page has {len(rows)} rows, the text {len(texts)}, and they differ: {first}")
    for _, _, mark, name in rows:
        if mark in ("[+]", "|--") and name not in judged and not (folder / name).is_file():
            faults.append(f"a row names {name}, which is not there")
    return faults
