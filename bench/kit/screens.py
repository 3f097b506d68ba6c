"""Cases on the real application with its live picture: live view, recording, start, memory."""

import os
import shlex
import signal
import statistics
import subprocess
import tempfile
import threading
import time
from contextlib import contextmanager

from .programs import (
    APPLICATION,
    RATE,
    UNIT_TOOL,
    Application,
    Program,
    bench,
    environment,
    need,
    role,
    simulated_unit,
    virtual_display,
)
from .response import frames_of, in_the_window
from .rows import compared, limited

SETTLE = 2  # seconds that a program gets before it is measured
FFMPEG_PICTURE = ["ffmpeg", "-nostats", "-re", "-f", "lavfi", "-i", f"testsrc2=size=720x576:rate={RATE}"]
FILM_RATE = {True: 15, False: 25}  # frames a second of a film with and without sound
TEXTS = (
    'textoverlay font-desc="Sans 12" halignment=4 valignment=3 xpos=0 ypos=0 deltax=2 deltay=554 text="Wall crack"',
    'textoverlay font-desc="Sans 14" halignment=4 valignment=3 xpos=0 ypos=0 deltax=2 deltay=2 text="12.34 m"',
    'clockoverlay font-desc="Sans 12" halignment=4 valignment=3 xpos=0 ypos=0 deltax=568 deltay=4 '
    'time-format="%H:%M %d.%m.%Y"',
)


def gst_launch(launch, display=None):
    program = Program(["gst-launch-1.0", "-e", *shlex.split(launch)], display, end=signal.SIGINT)
    program.wait_for("PLAYING")
    return program


def per_frame(program, seconds, rate):
    """Milliseconds of processor time for a frame, once the program has settled."""
    time.sleep(SETTLE)
    return program.processor_share(seconds) * 1000 / rate


def live_application(display, seconds):
    with simulated_unit() as unit, Application(unit, display) as application:
        application.wait_for_card()
        return per_frame(application, seconds, RATE)


def camera_alone(seconds):
    with simulated_unit() as unit, gst_launch(f"{role(unit, 'camera')} ! fakesink sync=true") as camera:
        return per_frame(camera, seconds, RATE)


def live_peer(display, seconds):
    with simulated_unit() as unit:
        launch = f"{role(unit, 'camera')} ! videoconvert ! ximagesink"
        with gst_launch(launch, display) as peer:
            return per_frame(peer, seconds, RATE)


def live(options):
    need("Xvfb", "gst-launch-1.0")
    with virtual_display() as display:
        pairs = [
            (live_application(display, options.seconds), live_peer(display, options.seconds))
            for _ in range(options.runs)
        ]
        seen = in_the_window(display, "live", options.seconds)
    note = f"counted in the window: {frames_of(seen)}"
    yield compared("live view, processor time per shown frame", "ms", pairs, 1.1, note)


@contextmanager
def filming(display, sound, extra=None):
    """The application, recording; whoever needs the film ends it."""
    with simulated_unit(sound) as unit, Application(unit, display, extra) as application:
        application.wait_for_card()
        application.select_films()
        application.start_film()
        yield application


def film_application(display, sound, seconds):
    with filming(display, sound) as application:
        used = per_frame(application, seconds, FILM_RATE[sound])
        application.end_film()
        return used


def film_gst(sound, seconds):
    """The recording branch of the same layout: same elements, same texts."""
    with simulated_unit() as unit:
        texts = " ! ".join(TEXTS)
        video = f"{role(unit, 'camera')} ! queue ! videorate ! video/x-raw,framerate={FILM_RATE[sound]}/1 ! {texts}"
        film = os.path.join(unit, "film.avi")
        if sound:
            launch = (
                f"{video} ! {role(unit, 'jpegencoder')} ! queue max-size-buffers=600 max-size-bytes=0 max-size-time=0 "
                f"! mux. {role(unit, 'microphone')} do-timestamp=true ! audioconvert ! audioresample "
                f"! {role(unit, 'mp3encoder')} ! queue max-size-buffers=600 max-size-bytes=0 max-size-time=0 ! mux. "
                f"avimux name=mux ! filesink sync=true location={film}"
            )
        else:
            launch = (
                f"{video} ! queue leaky=2 ! {role(unit, 'jpegencoder')} ! queue ! avimux ! filesink location={film}"
            )
        with gst_launch(launch) as peer:
            return per_frame(peer, seconds, FILM_RATE[sound])


def film_ffmpeg(sound, seconds):
    rate = FILM_RATE[sound]
    texts = "drawtext=text='Wall crack':x=2:y=554:fontsize=16,drawtext=text='12.34 m':x=2:y=2:fontsize=19,"
    texts += r"drawtext=text='%{localtime\:%H\\\:%M %d.%m.%Y}':x=568:y=4:fontsize=16"
    command = list(FFMPEG_PICTURE)
    if sound:
        command += ["-re", "-f", "lavfi", "-i", "sine=frequency=440", "-c:a", "libmp3lame"]
    with tempfile.TemporaryDirectory() as folder:
        command += ["-vf", f"fps={rate},{texts}", "-c:v", "mjpeg", "-q:v", "3", os.path.join(folder, "film.avi")]
        with Program(command, end=signal.SIGINT) as peer:
            peer.wait_for("Output #0")
            return per_frame(peer, seconds, rate)


def ffmpeg_source(seconds):
    """What ffmpeg's test picture costs by itself."""
    with Program([*FFMPEG_PICTURE, "-f", "null", "-"], end=signal.SIGINT) as source:
        source.wait_for("Output #0")
        return per_frame(source, seconds, RATE)


def recording(options):
    need("Xvfb", "xdotool", "gst-launch-1.0", "ffmpeg")
    runs = {True: [], False: []}
    with virtual_display() as display:
        for _ in range(options.runs):
            live_view = live_application(display, options.seconds)
            camera = camera_alone(options.seconds)
            source = ffmpeg_source(options.seconds)
            for sound in (True, False):
                scale = RATE / FILM_RATE[sound]
                runs[sound].append(
                    {
                        "ours": film_application(display, sound, options.seconds),
                        "gst-launch-1.0": film_gst(sound, options.seconds),
                        "ffmpeg": film_ffmpeg(sound, options.seconds),
                        "live": live_view * scale,
                        # Each peer's own picture: live view has brought one already.
                        "gst-launch-1.0 picture": camera * scale,
                        "ffmpeg picture": source * scale,
                    }
                )
    for sound in (True, False):
        for peer, goal in (("gst-launch-1.0", 1.0), ("ffmpeg", 0.8 if sound else 0.75)):
            picture = f"{peer} picture"
            pairs = [(run["ours"], run[peer] - run[picture] + run["live"]) for run in runs[sound]]
            parts = {name: statistics.median(run[name] for run in runs[sound]) for name in runs[sound][0]}
            note = (
                f"{peer} {parts[peer]:.2f} ms, of which its picture {parts[picture]:.2f} ms; live view "
                f"{parts['live']:.2f} ms; with both pictures the ratio is "
                f"{parts['ours'] / (parts[peer] + parts['live']):.2f}"
            )
            name = f"recording {'with' if sound else 'without'} sound, per frame of the film, to {peer} and live view"
            yield compared(name, "ms", pairs, goal, note)


@contextmanager
def moving_cable(unit):
    drive = subprocess.Popen([UNIT_TOOL, "--unit", unit, "drive"], stdout=subprocess.DEVNULL)
    try:
        yield
    finally:
        drive.terminate()
        drive.wait()


@contextmanager
def synced_thumbnails(folder):
    """Somebody else keeps the card busy: twelve thumbnails a second, each with a sync."""
    ended = threading.Event()

    def write():
        while not ended.wait(1):
            for number in range(12):
                with open(os.path.join(folder, ".thumbs", f"BUSY{number:04}.jpg"), "wb") as file:
                    file.write(os.urandom(8000))
                    os.fsync(file.fileno())

    thread = threading.Thread(target=write)
    thread.start()
    try:
        yield
    finally:
        ended.set()
        thread.join()


def repeated_frames(film):
    """Frames in the film, and how many of them are the frame before once more: the camera's next was lost."""
    result = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", film, "-map", "0:v", "-c", "copy", "-f", "framemd5", "-"],
        stdout=subprocess.PIPE,
        text=True,
        check=True,
    )
    frames = [line.split(",")[-1] for line in result.stdout.splitlines() if not line.startswith("#")]
    return len(frames), sum(a == b for a, b in zip(frames, frames[1:]))


def lost(options):
    need("Xvfb", "xdotool", "ffmpeg")
    trace = {"GST_DEBUG": "queue_dataflow:5", "GST_DEBUG_NO_COLOR": "1"}
    with virtual_display() as display:
        for sound in (True, False):
            with filming(display, sound, trace) as application:
                with moving_cable(application.unit), synced_thumbnails(application.folder()):
                    time.sleep(60)
                application.end_film()
                left_out = application.count("leaking item")
                count, repeated = repeated_frames(os.path.join(application.folder(), "TUBX0001.avi"))
            name = f"frames lost in 60 s of recording {'with' if sound else 'without'} sound"
            note = f"{count} frames in the film, {repeated} repeated, {left_out} left out before the encoder"
            yield limited(name, "frames", repeated + left_out, 0, note)


def start(options):
    need("Xvfb")
    pairs = []
    with virtual_display() as display, simulated_unit() as unit:
        for run in range(2 * options.runs + 1):
            figures = []
            for command in ([APPLICATION, "--root", unit], [bench("barewindow"), unit]):
                with Program(command, display) as program:
                    figures.append((program.wait_for("ready") - program.started) * 1000)
            if run > 0:  # the first fills the caches of both
                pairs.append(tuple(figures))
    yield compared("start to first frame on the screen", "ms", pairs, 1.05)


def memory(options):
    need("Xvfb")
    pairs = []
    with virtual_display() as display, simulated_unit() as unit:
        for _ in range(options.runs):
            with Application(unit, display) as application, Program([bench("barewindow"), unit], display) as bare:
                application.wait_for_card()
                bare.wait_for("ready")
                time.sleep(options.seconds)
                pairs.append((application.resident() / 2**20, bare.resident() / 2**20))
    yield compared("resident memory in live view", "MB", pairs, 1.05)


def growth(options):
    """Resident memory by the number of recordings; the slope after the 50th."""
    need("Xvfb", "xdotool")
    settled, count = 50, 500 if options.long else 80
    sizes = []
    with virtual_display() as display, simulated_unit() as unit, Application(unit, display) as application:
        application.wait_for_card()
        application.select_films()
        for _ in range(count):
            application.start_film()
            time.sleep(0.5)
            application.end_film()
            sizes.append(application.resident())
    slope = statistics.linear_regression(range(count - settled), sizes[settled:]).slope
    note = f"{sizes[0] / 2**20:.1f} MB after the first, {sizes[settled - 1] / 2**20:.1f} after the 50th, " \
        f"{sizes[-1] / 2**20:.1f} at the end"
    if not options.long:
        note += "; --long makes the 500 recordings that judge it"
    yield limited(
        f"growth of resident memory after the 50th of {count} recordings", "B a recording", slope, 1024, note,
        judged=options.long,
    )
