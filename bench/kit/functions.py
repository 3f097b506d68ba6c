"""Cases where a function is the unit (Google Benchmark), and the browser's pages."""

import json
import os
import shlex
import shutil
import statistics
import subprocess
import tempfile
import time

from .programs import bench, environment, need, need_built, role, simulated_unit
from .rows import compared

SCALE = {"ns": 1e-3, "us": 1, "ms": 1e3}  # to microseconds
FILES_ON_PAGE = 12


def pairs_of(name, runs, clock):
    """{size: [(ours, peer) of each run]} in microseconds. A run is the median of five turns, ours and peer mixed."""
    need_built(name)
    pairs = {}
    for _ in range(runs):
        with tempfile.NamedTemporaryFile(suffix=".json") as out:
            subprocess.run(
                [
                    bench(name),
                    "--benchmark_min_time=0.1",
                    "--benchmark_repetitions=5",
                    "--benchmark_report_aggregates_only=true",
                    "--benchmark_enable_random_interleaving=true",
                    f"--benchmark_out={out.name}",
                    "--benchmark_out_format=json",
                ],
                env=environment(),
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
                check=True,
            )
            results = json.load(out)["benchmarks"]
        figures = {}
        for result in results:
            if result.get("error_occurred"):
                raise RuntimeError(f"{name}, {result['name']}: {result['error_message']}")
            if result["aggregate_name"] != "median":
                continue
            side, size = result["run_name"].split("/")[:2]
            figures[side, int(size)] = result[clock] * SCALE[result["time_unit"]]
        for side, size in figures:
            if side == "ours":
                pairs.setdefault(size, []).append((figures["ours", size], figures["peer", size]))
    return pairs


def tick(options):
    pairs = pairs_of("tick", options.runs, "cpu_time")
    for level in sorted(pairs):
        case = "one pump tick, " + (f"zoom {level}" if level else "no zoom")
        yield compared(case, "us", pairs[level], 0.12 if level else 0.15)


def listing(options):
    pairs = pairs_of("listing", options.runs, "cpu_time")
    for size in sorted(pairs):
        yield compared(f"listing {size} files", "us", pairs[size], 0.9 if size == max(pairs) else 1.5)
    small, *_, large = sorted(pairs)
    growth = [tuple(a / b for a, b in zip(*run)) for run in zip(pairs[large], pairs[small])]
    yield compared(f"listing, growth from {small} to {large} files", "times", growth, 1.0)


def log(options):
    pairs = pairs_of("logentry", options.runs, "real_time")
    for size in sorted(pairs):
        yield compared(f"one log entry, page of {size} rows", "us", pairs[size], 2)


def thumbnail_of(film, where):
    subprocess.run(
        ["ffmpeg", "-v", "error", "-i", film, "-frames:v", "1", "-vf", "scale=128:102", where], check=True
    )


def page_of_pictures(unit, folder):
    """Pictures as the unit's stills are: 720 x 600."""
    launch = f"{role(unit, 'camera')} num-buffers={FILES_ON_PAGE} ! videoscale ! " \
        "video/x-raw,width=720,height=600 ! jpegenc quality=85 ! " \
        f"multifilesink index=1 location={folder}/TUBX%04d.jpg"
    subprocess.run(["gst-launch-1.0", "-q", *shlex.split(launch)], env=environment(), check=True)


def fill_with_pictures(unit, folder, count):
    """So many pictures, links to those of one page."""
    page_of_pictures(unit, folder)
    for number in range(FILES_ON_PAGE + 1, count + 1):
        first = (number - 1) % FILES_ON_PAGE + 1
        os.link(os.path.join(folder, f"TUBX{first:04}.jpg"), os.path.join(folder, f"TUBX{number:04}.jpg"))


def page_of_films(unit, folder):
    """Films as the unit records them, three seconds each."""
    first = os.path.join(folder, "TUBX0001.avi")
    launch = f"{role(unit, 'camera')} num-buffers=75 ! videorate ! video/x-raw,framerate=25/1 ! " \
        f"jpegenc ! avimux ! filesink location={first}"
    subprocess.run(["gst-launch-1.0", "-q", *shlex.split(launch)], env=environment(), check=True)
    for number in range(2, FILES_ON_PAGE + 1):
        shutil.copy(first, os.path.join(folder, f"TUBX{number:04}.avi"))


def time_of_page(folder):
    """Milliseconds of one page: the median of nine, after the one that enters the browser."""
    result = subprocess.run(
        [bench("pages"), folder, "9"], env=environment(), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
        text=True, check=True,
    )
    return statistics.median(float(line) for line in result.stdout.split() if line[0].isdigit())


def time_of(commands):
    begin = time.monotonic()
    for command in commands:
        subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
    return (time.monotonic() - begin) * 1000


def pages(options):
    need("gst-launch-1.0", "ffmpeg", "vipsthumbnail", "ffmpegthumbnailer")
    with simulated_unit() as unit, tempfile.TemporaryDirectory() as folder:
        names = ("pictures", "films", "bare")
        pictures, films, bare = (os.path.join(folder, name) for name in names)
        for name in (pictures, films, bare):
            os.makedirs(os.path.join(name, ".thumbs"))
        page_of_pictures(unit, pictures)
        page_of_films(unit, bare)
        page_of_films(unit, films)
        for film in sorted(os.listdir(films)):
            if film.endswith(".avi"):
                thumbnail_of(os.path.join(films, film), os.path.join(films, ".thumbs", film[:-4] + ".jpg"))

        def files(of):
            return sorted(os.path.join(of, name) for name in os.listdir(of) if name.startswith("TUBX"))

        vips = [["vipsthumbnail", "-s", "128", "-o", os.path.join(folder, "%s-small.jpg"), *files(pictures)]]
        thumbnailer = [
            ["ffmpegthumbnailer", "-i", film, "-o", os.path.join(folder, "film.jpg"), "-s", "128", "-t", "0"]
            for film in files(films)
        ]
        cases = (
            ("page of 12 pictures", pictures, vips, 0.025),
            ("page of 12 films", films, thumbnailer, 0.1),
            ("page of 12 films without stored thumbnails", bare, thumbnailer, 0.01),
        )
        for case, page, peer, goal in cases:
            yield compared(
                case, "ms", [(time_of_page(page), time_of(peer)) for _ in range(options.runs)], goal
            )
