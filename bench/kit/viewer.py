"""The viewer: what a picture for browsers costs, beside nc, which hands the same stream on as it is."""

import os
import socket
import statistics
import subprocess
import time
from contextlib import ExitStack, contextmanager

from . import programs
from .programs import RATE, Program, need, role, simulated_unit
from .rows import compared

HOST, STREAM_PORT, VIEWER_PORT, RELAY_PORT = "127.0.0.1", 1234, 18098, 18099
SETTLE = 2
MOST = 8  # viewers


def wait_for_port(port):
    deadline = time.monotonic() + 20
    while time.monotonic() < deadline:
        with socket.socket() as probe:
            if probe.connect_ex((HOST, port)) == 0:
                return
        time.sleep(0.05)
    raise RuntimeError(f"nothing listens on port {port}")


@contextmanager
def network_stream(unit):
    """The unit's network stream, without the rest of the application."""
    sink = f"tcpserversink host={HOST} port={STREAM_PORT}"
    launch = f"{role(unit, 'camera')} ! queue ! {role(unit, 'jpegencoder')} ! queue ! {sink}"
    with Program(["sh", "-c", f"exec gst-launch-1.0 {launch}"]):
        wait_for_port(STREAM_PORT)
        yield


@contextmanager
def running(*command, **streams):
    process = subprocess.Popen(command, **{"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL} | streams)
    try:
        yield process
    finally:
        process.terminate()
        process.wait()


def processor_time(process):
    """Seconds of all threads. A picture costs a hundredth of a clock tick: this count is the scheduler's own."""
    used = 0
    for task in os.listdir(f"/proc/{process.pid}/task"):
        with open(f"/proc/{process.pid}/task/{task}/schedstat", encoding="utf-8") as file:
            used += int(file.read().split()[0])
    return used / 1e9


def a_picture(seconds, *processes):
    """Milliseconds of processor time for a picture, all processes together."""
    time.sleep(SETTLE)
    before, begin = sum(map(processor_time, processes)), time.monotonic()
    time.sleep(seconds)
    used = sum(map(processor_time, processes)) - before
    return used * 1000 / ((time.monotonic() - begin) * RATE)


def viewer_for(count, unit, seconds):
    with open(os.path.join(unit, "etc/default/tubix4-viewer"), "w", encoding="utf-8") as file:
        file.write(f"VIEWER=on\nINTERFACE=lo\nPORT={VIEWER_PORT}\n")
    with ExitStack() as stack:
        viewer = stack.enter_context(running(os.path.join(programs.BUILD, "tubix4-viewer"), "--root", unit))
        wait_for_port(VIEWER_PORT)
        for _ in range(count):
            stack.enter_context(running("curl", "-sN", "-o", "/dev/null", f"http://{HOST}:{VIEWER_PORT}/live"))
        return a_picture(seconds, viewer)


def taking(seconds):
    """An nc that takes the stream and drops it."""
    with running("nc", "-d", HOST, str(STREAM_PORT)) as nc:
        return a_picture(seconds, nc)


def handing_on(seconds):
    """An nc that takes the stream, and one that sends it to a third: what both of them need."""
    with ExitStack() as stack:
        taker = stack.enter_context(running("nc", "-d", HOST, str(STREAM_PORT), stdout=subprocess.PIPE))
        sender = stack.enter_context(running("nc", "-l", HOST, str(RELAY_PORT), stdin=taker.stdout))
        time.sleep(1)  # a look at the port would be its one connection
        stack.enter_context(running("nc", "-d", HOST, str(RELAY_PORT)))
        return a_picture(seconds, taker, sender)


def viewer(options):
    need("gst-launch-1.0", "nc", "curl")
    one, many, bare = [], [], []
    for _ in range(options.runs):
        with simulated_unit() as unit, network_stream(unit):
            taken, handed = taking(options.seconds), handing_on(options.seconds)
            single, eight = viewer_for(1, unit, options.seconds), viewer_for(MOST, unit, options.seconds)
        bare.append(taken)
        one.append((single, handed))
        many.append((eight, single + (MOST - 1) * (handed - taken)))
    note = f"an nc that takes the stream and drops it needs {statistics.median(bare):.2f} ms"
    yield compared("viewer, a picture for one who looks, to nc", "ms", one, 1.5, note)
    yield compared("viewer, a picture for eight, to one and nc's sending to seven", "ms", many, 1)
