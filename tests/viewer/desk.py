"""A simulated unit with findings on its card, a network stream and the viewer on it, for tests and screenshots."""

import http.client
import os
import re
import shutil
import signal
import socket
import struct
import subprocess
import threading
import time

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
UNIT_TOOL = os.path.join(SOURCE, "simulator", "unit")
ADDRESS = "127.0.0.1"
STREAM_PORT = 1234
BASE = "media/mmcblk1p1/DCIM/100TUBIX"
SETTINGS = "home/root/tubix4_app/globlsystemsettings_default.xml"


def wait_for(condition, what, limit=10):
    """What `condition` returns as soon as it is true."""
    deadline = time.monotonic() + limit
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain: {what}")
        time.sleep(0.02)


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-v", "error", "-y", *arguments], check=True)


class Unit:
    """The folder of a simulated unit."""

    def __init__(self, folder, ports):
        self.folder = folder
        self.control("create")
        self.write("etc/default/tubix4-viewer", f"VIEWER=on\nINTERFACE=lo\nPORT={ports}\n")

    def control(self, *command):
        subprocess.run([UNIT_TOOL, "--unit", self.folder, *command], check=True, stdout=subprocess.DEVNULL)

    def path(self, relative):
        return os.path.join(self.folder, relative)

    def write(self, relative, content):
        os.makedirs(os.path.dirname(self.path(relative)), exist_ok=True)
        with open(self.path(relative), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())

    def read(self, relative):
        with open(self.path(relative), "rb") as file:
            return file.read()

    def set_hotspot(self, on):
        text = re.sub(rb"(<bWIFIHotSpotActive>)\d", rb"\g<1>" + (b"1" if on else b"0"), self.read(SETTINGS))
        self.write(SETTINGS + ".new", text)
        os.replace(self.path(SETTINGS + ".new"), self.path(SETTINGS))

    def add_day(self, name, stills, films):
        """An inspection folder as the application leaves it: page, assets, stills, films, a note."""
        folder = f"{BASE}/{name}"
        template = os.path.join(SOURCE, "resources/html_assets/html.tmpl")
        with open(template, encoding="utf-8") as file:
            page = file.read().replace("logfilename.html", f"{name}.html")
        row = "\n\t<tr>\n\t  <td>012.34</td>\n\t  <td>14:05:09</td>\n\t  <td></td>\n\t  <td><a href=\"{0}\">{0}</a></td>\n\t</tr>\n"
        names = [f"TUBX{i + 1:04}.jpg" for i in range(stills)] + [f"TUBX{stills + i + 1:04}.avi" for i in range(films)]
        self.write(f"{folder}/{name}.html", page.replace("</table>", "".join(map(row.format, names)) + "</table>"))
        self.write(f"{folder}/.html_assets/style.css", "body { max-width: 844px }")
        self.write(f"{folder}/.thumbs/{names[-1].replace('avi', 'jpg')}", b"the application's own")
        ffmpeg("-f", "lavfi", "-i", "testsrc2=size=720x576:rate=25", "-frames:v", "25", "-c:v", "mjpeg", "-q:v", "4",
               self.path(f"{folder}/film.avi"))
        ffmpeg("-f", "lavfi", "-i", "testsrc2=size=720x576:rate=1", "-frames:v", "1", self.path(f"{folder}/still.jpg"))
        ffmpeg("-f", "lavfi", "-i", "sine=duration=1", self.path(f"{folder}/{names[0].replace('jpg', 'wav')}"))
        for each in names:
            shutil.copy(self.path(f"{folder}/{'film.avi' if each.endswith('avi') else 'still.jpg'}"), self.path(f"{folder}/{each}"))
        os.remove(self.path(f"{folder}/film.avi"))
        os.remove(self.path(f"{folder}/still.jpg"))
        return names


class Stream:
    """The network stream: whole JPEGs one after another, each with its number in a comment. In the comment lie
    an end and a start of image, as in the thumbnail of a picture's header: they cut nothing."""

    def __init__(self, folder, rate=25):
        self.count = 0  # pictures so far
        self.open = 0  # connections now
        self.opened = 0  # connections so far
        self._rate = rate
        self._lock = threading.Condition()
        self._running = True
        ffmpeg("-f", "lavfi", "-i", "testsrc2=size=720x576:rate=25", "-frames:v", "25", "-q:v", "3", os.path.join(folder, "live%02d.jpg"))
        self._frames = []
        for i in range(25):
            with open(os.path.join(folder, f"live{i + 1:02}.jpg"), "rb") as file:
                self._frames.append(file.read())
        self._server = socket.create_server((ADDRESS, STREAM_PORT), reuse_port=False)
        self._threads = [threading.Thread(target=work, daemon=True) for work in (self._tick, self._accept)]
        for thread in self._threads:
            thread.start()

    def picture(self, number):
        comment = b"\xff\xd8\xff\xd9" + struct.pack(">I", number)
        frame = self._frames[number % len(self._frames)]
        return frame[:2] + b"\xff\xfe" + struct.pack(">H", len(comment) + 2) + comment + frame[2:]

    @staticmethod
    def number(picture):
        return struct.unpack(">I", picture[10:14])[0]

    def _tick(self):
        while self._running:
            time.sleep(1 / self._rate)
            with self._lock:
                self.count += 1
                self._lock.notify_all()

    def _accept(self):
        while self._running:
            try:
                connection = self._server.accept()[0]
            except OSError:
                return
            threading.Thread(target=self._send, args=[connection], daemon=True).start()

    def _send(self, connection):
        with self._lock:
            self.open += 1
            self.opened += 1
        sent = 0
        try:
            while self._running:
                with self._lock:
                    self._lock.wait_for(lambda: self.count != sent or not self._running)
                    sent = self.count
                connection.sendall(self.picture(sent))
        except OSError:
            pass
        connection.close()
        with self._lock:
            self.open -= 1

    def close(self):
        with self._lock:
            self._running = False
            self._lock.notify_all()
        self._server.shutdown(socket.SHUT_RDWR)
        self._server.close()
        for thread in self._threads:
            thread.join()
        wait_for(lambda: self.open == 0, "the stream's connections end")


class Viewer:
    """The program on a unit."""

    def __init__(self, program, unit):
        self.process = subprocess.Popen([program, "--root", unit.folder], stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.port = int(re.fullmatch(r"viewer: http://127\.0\.0\.1:(\d+)/\n", line)[1])
        self.address = f"http://{ADDRESS}:{self.port}"

    def resident(self):
        """Megabytes."""
        with open(f"/proc/{self.process.pid}/statm", encoding="utf-8") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE") / 2**20

    def open_on(self, folder):
        """The files below `folder` that the program has open at this moment."""
        found = []
        for each in os.scandir(f"/proc/{self.process.pid}/fd"):
            try:
                found.append(os.readlink(each.path))
            except OSError:
                pass
        return [each for each in found if each.startswith(folder)]

    def connect(self, source=None):
        return http.client.HTTPConnection(ADDRESS, self.port, timeout=10, source_address=source and (source, 0))

    def ask(self, address, method="GET", source=None, **headers):
        """Status, headers, content."""
        connection = self.connect(source)
        try:
            connection.request(method, address, headers={name.replace("_", "-"): value for name, value in headers.items()})
            answer = connection.getresponse()
            return answer.status, answer.headers, answer.read()
        finally:
            connection.close()

    def stop(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        self.process.stdout.close()
        return self.process.wait(10)


class Watcher:
    """One who looks at the live picture."""

    def __init__(self, viewer, source=None):
        self._connection = viewer.connect(source)
        self._connection.request("GET", "/live")
        self._answer = self._connection.getresponse()
        self.status = self._answer.status

    def picture(self):
        """The next one; None at the end."""
        length = None
        while True:
            line = self._answer.readline()
            if not line:
                return None
            if line.lower().startswith(b"content-length:"):
                length = int(line.split(b":")[1])
            elif line == b"\r\n" and length is not None:
                return self._answer.read(length)

    def close(self):
        self._answer.close()
        self._connection.close()
