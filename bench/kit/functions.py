"""Cases where a function is the unit (Google Benchmark), and the browser's pages."""

import json
import math
import os
import shlex
import shutil
import statistics
import subprocess
import tempfile
import time

from .programs import bench, environment, need, need_built, role, simulated_unit
from .rows import compared, limited

SCALE = {"ns": 1e-3, "us": 1, "ms": 1e3}  # to microseconds
FILES_ON_PAGE = 12
SORTING = 1.13  # the exponent of n log n between 1000 and 9999
FLAT = 1.2  # runs of the same differ by up to a fifth; a thousandth more for each file would be ten times as much


def figures_of(name, runs, clock):
    """[{(side, size): microseconds} of each run]. A run is the median of five turns, the sides mixed."""
    need_built(name)
    all_runs = []
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
        all_runs.append(figures)
    return all_runs


def pairs_of(runs):
    """{size: [(ours, peer) of each run]}, smallest size first."""
    sizes = sorted(size for side, size in runs[0] if side == "ours")
    return {size: [(run["ours", size], run["peer", size]) for run in runs] for size in sizes}


def flat(case, runs, side):
    """A row that sets the largest size beside the smallest: nothing in it may grow."""
    sizes = [size for name, size in runs[0] if name == side]
    return compared(case, "us", [(run[side, max(sizes)], run[side, min(sizes)]) for run in runs], FLAT)


def exponent(small, large):
    """Of the growth between two (size, time)."""
    return math.log(large[1] / small[1]) / math.log(large[0] / small[0])


def tick(options):
    pairs = pairs_of(figures_of("tick", options.runs, "cpu_time"))
    for level in pairs:
        case = "one pump tick, " + (f"zoom {level}" if level else "no zoom")
        yield compared(case, "us", pairs[level], 0.12 if level else 0.15)


def listing(options):
    runs = figures_of("listing", options.runs, "cpu_time")
    pairs = pairs_of(runs)
    for size in pairs:
        yield compared(f"listing {size} files", "us", pairs[size], 0.9 if size == max(pairs) else 1.5)
    *_, middle, large = pairs
    growth = [
        tuple(exponent((middle, run[side, middle]), (large, run[side, large])) for side in ("ours", "peer"))
        for run in runs
    ]
    yield compared(f"listing, exponent of growth from {middle} to {large} files", "", growth, 1)
    yield flat("name of the next capture, 9999 files to 10", runs, "name")


def log(options):
    runs = figures_of("logentry", options.runs, "real_time")
    pairs = pairs_of(runs)
    for size in pairs:
        yield compared(f"one log entry, page of {size} rows", "us", pairs[size], 2)
    yield flat("one log entry, 10000 rows and files to 10", runs, "ours")
    yield flat("one line of the event log, 100 MB to none", runs, "event")


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


def times_of_page(folder):
    """Milliseconds of one page and of the way into the browser: the medians of nine, after a first time."""
    result = subprocess.run(
        [bench("pages"), folder, "9"], env=environment(), stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
        text=True, check=True,
    )
    lines = [line.split() for line in result.stdout.splitlines() if line[:1].isdigit()]
    return tuple(statistics.median(float(line[i]) for line in lines) for i in (0, 1))


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
                case, "ms", [(times_of_page(page)[0], time_of(peer)) for _ in range(options.runs)], goal
            )


def folders(options):
    """The browser's first page and the way to it, in folders of more and more pictures."""
    need("gst-launch-1.0")
    sizes = (FILES_ON_PAGE, 1000, 9999)
    with simulated_unit() as unit, tempfile.TemporaryDirectory() as folder:
        places = {size: os.path.join(folder, str(size)) for size in sizes}
        for size, place in places.items():
            os.makedirs(os.path.join(place, ".thumbs"))
            fill_with_pictures(unit, place, size)
        runs = [{size: times_of_page(place) for size, place in places.items()} for _ in range(options.runs)]
    small, middle, large = sizes
    pairs = [(run[large][0], run[small][0]) for run in runs]
    yield compared(f"page of 12 pictures, of {large} files to {small}", "ms", pairs, FLAT)
    growth = statistics.median(exponent((middle, run[middle][1]), (large, run[large][1])) for run in runs)
    note = ", ".join(f"{statistics.median(run[size][1] for run in runs):.1f} ms with {size} files" for size in sizes)
    case = f"way into the browser (listing and page), exponent of growth from {middle} to {large} files"
    yield limited(case, "", growth, SORTING, note)
