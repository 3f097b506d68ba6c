#!/usr/bin/env python3
"""The viewer on a simulated unit, asked by good and by hostile neighbours. Usage: viewer_test.py PROGRAM FOLDER"""

import http.client
import io
import json
import os
import socket
import subprocess
import sys
import tempfile
import unittest
import zipfile
from urllib.parse import quote

sys.dont_write_bytecode = True
from desk import ADDRESS, BASE, Stream, Unit, Viewer, Watcher, wait_for  # noqa: E402

PROGRAM, FOLDER = sys.argv[1:3]
STRANGE = "Müller & Söhne #7 100% 漢字"  # a folder's name


class TestViewer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="viewer test.", dir=FOLDER))
        cls.unit = Unit(os.path.join(cls.folder, "unit"), "18080-18180")
        cls.unit.add_day("24112026", 3, 1)
        cls.unit.add_day(STRANGE, 1, 1)
        cls.viewer = Viewer(PROGRAM, cls.unit)
        cls.addClassCleanup(cls.end)

    @classmethod
    def end(cls):
        assert cls.viewer.stop() == 0, "it ends in order"

    def stream(self, rate=25):
        stream = Stream(self.folder, rate)
        self.addCleanup(stream.close)
        return stream

    def watch(self, source=None):
        watcher = Watcher(self.viewer, source)
        self.addCleanup(watcher.close)
        return watcher

    def state(self):
        return json.loads(self.viewer.ask("/state")[2])

    def test_it_is_off_until_the_owner_turns_it_on(self):
        with tempfile.TemporaryDirectory(dir=self.folder) as folder:
            unit = Unit(folder, "1")
            with open(os.path.join(os.path.dirname(__file__), "../../packaging/systemd/tubix4-viewer.default"), "rb") as file:
                unit.write("etc/default/tubix4-viewer", file.read())
            run = subprocess.run([PROGRAM, "--root", folder], capture_output=True, text=True, check=False)
            self.assertEqual((run.returncode, run.stdout), (0, "viewer: off, see /etc/default/tubix4-viewer\n"))
            for line in ("VIEWER=yes", "PORT=0", "PORT=90-80", "PORT=http", "WHAT=1", "on"):
                unit.write("etc/default/tubix4-viewer", f"VIEWER=on\n{line}\n")
                run = subprocess.run([PROGRAM, "--root", folder], capture_output=True, text=True, check=False)
                self.assertEqual((run.returncode, run.stderr.count("\n"), line in run.stderr), (2, 1, True), line)

    def test_eight_see_one_stream_and_a_stalled_one_the_latest_picture(self):
        stream = self.stream(100)
        self.state()
        self.assertEqual(stream.opened, 0, "nobody looks, nothing is connected")
        watchers = [self.watch(f"127.0.0.{i // 4 + 2}") for i in range(8)]
        stalled = watchers.pop()
        self.assertEqual(self.watch().status, 503, "a ninth")
        self.assertTrue(self.state()["full"])
        stalled.picture()
        stalled_at = stream.count
        for watcher in watchers:
            numbers = []
            for _ in range(20):
                picture = watcher.picture()
                numbers.append(Stream.number(picture))
                self.assertEqual(picture, stream.picture(numbers[-1]), "a whole picture")
            self.assertEqual(numbers, sorted(set(numbers)), "in order, none twice")
        self.assertEqual(stream.opened, 1)
        wait_for(lambda: stream.count > stalled_at + 300, "three hundred pictures")
        # What the kernel held comes first; then the stream is up to date.
        now, held = stream.count, 0
        while Stream.number(stalled.picture()) < now:
            held += 1
        self.assertLess(held, 120)
        for watcher in [*watchers, stalled]:
            watcher.close()
        wait_for(lambda: stream.open == 0, "nobody looks, the connection is closed")

    def test_the_stream_goes_and_comes_back(self):
        self.assertEqual(self.watch().status, 503)
        stream = Stream(self.folder)
        watcher = wait_for(lambda: (lambda each: each if each.status == 200 else None)(self.watch()), "a picture")
        watcher.picture()
        self.assertTrue(self.state()["live"])
        stream.close()
        wait_for(lambda: watcher.picture() is None, "the end of the stream")
        wait_for(lambda: not self.state()["live"], "the stream is off")
        self.stream()
        wait_for(lambda: self.watch().status == 200, "a picture again")

    def test_files_whole_and_in_parts(self):
        film = self.unit.read(f"{BASE}/24112026/TUBX0004.avi")
        size = len(film)
        address = "/files/24112026/TUBX0004.avi"
        status, headers, content = self.viewer.ask(address)
        self.assertEqual((status, content), (200, film))
        self.assertIn("attachment", headers["Content-Disposition"])
        for asked, part in ((f"bytes=100-{size + 5}", film[100:]), ("bytes=0-0", film[:1]), ("bytes=-7", film[-7:]),
                            (f"bytes=-{size + 9}", film)):  # fmt: skip
            status, headers, content = self.viewer.ask(address, Range=asked)
            self.assertEqual((status, content), (206, part), asked)
            first = size - len(part) if asked != "bytes=0-0" else 0
            self.assertEqual(headers["Content-Range"], f"bytes {first}-{first + len(part) - 1}/{size}")
        for asked in (f"bytes={size}-", "bytes=-0"):
            self.assertEqual(self.viewer.ask(address, Range=asked)[0], 416, asked)
        for asked in ("bytes=5-2", "bytes=a-b", "bytes=+1-2", "bytes=0-1,4-5", "lines=1-2", "bytes=-"):
            self.assertEqual(self.viewer.ask(address, Range=asked)[::2], (200, film), asked)
        self.assertEqual(self.viewer.ask(address, Range="bytes=0-9", If_Range='"another"')[0], 200)
        self.assertEqual(self.viewer.ask(address, If_None_Match=headers["ETag"])[::2], (304, b""))
        status, headers, content = self.viewer.ask(address, "HEAD")
        self.assertEqual((status, headers["Content-Length"], content), (200, str(size), b""))
        status, headers, content = self.viewer.ask("/first/24112026/TUBX0004.avi")
        self.assertEqual((status, headers["Content-Type"], content in film), (200, "image/jpeg", True))
        listed = json.loads(self.viewer.ask("/folders")[2])
        self.assertEqual({each["name"]: each["page"] for each in listed}, {each: f"{each}.html" for each in ("24112026", STRANGE)})
        captures = json.loads(self.viewer.ask(f"/folders/{quote(STRANGE)}")[2])
        self.assertEqual([(each["name"], each.get("note")) for each in captures], [("TUBX0001.jpg", "TUBX0001.wav"), ("TUBX0002.avi", None)])

    def test_a_folder_as_one_archive(self):
        status, headers, content = self.viewer.ask(f"/zip/{quote(STRANGE)}")
        self.assertEqual((status, headers["Content-Type"]), (200, "application/zip"))
        self.assertIn(quote(f"{STRANGE}.zip", safe=""), headers["Content-Disposition"])
        with zipfile.ZipFile(io.BytesIO(content)) as archive:
            self.assertIsNone(archive.testzip())
            names = archive.namelist()
            for each in names:
                self.assertEqual(archive.read(each), self.unit.read(f"{BASE}/{each}"), each)
        self.assertEqual(sorted(names), sorted(f"{STRANGE}/{each}" for each in (
            ".html_assets/style.css", f"{STRANGE}.html", "TUBX0001.jpg", "TUBX0001.wav", "TUBX0002.avi")))  # fmt: skip
        path = os.path.join(self.folder, "day.zip")
        with open(path, "wb") as file:
            file.write(content)
        self.assertEqual(subprocess.run(["unzip", "-tqq", path], check=False).returncode, 0)
        self.assertEqual(self.viewer.ask("/zip/no%20such")[0], 404)

    def test_nothing_outside_the_base_folder_is_found(self):
        self.unit.write("media/mmcblk1p1/DCIM/beside.txt", "beside")
        links = {"file.txt": self.unit.path("etc/hostapd.conf"), "folder": self.unit.path("etc"), "up": "..", "self": "."}
        for name, target in links.items():
            os.symlink(target, self.unit.path(f"{BASE}/24112026/{name}"))
            self.addCleanup(os.remove, self.unit.path(f"{BASE}/24112026/{name}"))
        os.mkfifo(self.unit.path(f"{BASE}/24112026/pipe.jpg"))
        self.addCleanup(os.remove, self.unit.path(f"{BASE}/24112026/pipe.jpg"))
        paths = ["../beside.txt", "..%2fbeside.txt", "%2e%2e/beside.txt", "24112026/../../beside.txt", "%252e%252e/beside.txt",
                 "24112026/up/../beside.txt", "24112026/up/beside.txt", "24112026/file.txt", "24112026/folder/hostapd.conf",
                 "/etc/hostapd.conf", "%2fetc/hostapd.conf", quote(self.unit.path("etc/hostapd.conf")), "24112026/TUBX0001.jpg%00", "%00",
                 "24112026%00/TUBX0001.jpg", "%c0%ae%c0%ae/beside.txt", "..\\beside.txt", "24112026/pipe.jpg", "24112026", "", ".",
                 "%ff%fe", "%", "%zz", "a" * 5000]  # fmt: skip
        for room in ("files", "first", "zip", "folders"):
            for path in paths:
                if (room, path) in (("zip", "24112026"), ("folders", "24112026")):
                    continue
                status, _, content = self.viewer.ask(f"/{room}/{path}")
                self.assertEqual((status, content), (404, b""), f"/{room}/{path}")
        with zipfile.ZipFile(io.BytesIO(self.viewer.ask("/zip/24112026")[2])) as archive:
            self.assertFalse({f"24112026/{name}" for name in (*links, "pipe.jpg")} & set(archive.namelist()))

    def test_other_sites_and_other_methods_are_kept_out(self):
        for method in ("POST", "PUT", "DELETE", "OPTIONS", "PATCH", "TRACE", "MKCOL", "get"):
            self.assertEqual(self.viewer.ask("/files/24112026/TUBX0001.jpg", method)[0], 405, method)
        for host in ("evil.example", f"evil.example:{self.viewer.port}", "127.0.0.1", f"localhost:{self.viewer.port}"):
            self.assertEqual(self.viewer.ask("/state", Host=host)[0], 421, host)
        for address in ("/", "/page.js", "/state", "/folders", "/files/24112026/24112026.html", "/zip/24112026", "/nothing", "/live"):
            _, headers, _ = self.viewer.ask(address, Origin="http://evil.example")
            policy = headers["Content-Security-Policy"]
            self.assertIn("default-src 'none'", policy, address)
            self.assertNotIn("script-src 'unsafe-inline'", policy, address)
            self.assertEqual((headers["X-Content-Type-Options"], headers["Cross-Origin-Resource-Policy"]), ("nosniff", "same-origin"), address)
            self.assertIsNone(headers["Access-Control-Allow-Origin"], address)
        self.assertIn("sandbox", self.viewer.ask("/files/24112026/24112026.html")[1]["Content-Security-Policy"])

    def test_a_flood_changes_nothing(self):
        stream = self.stream()
        watcher = self.watch()
        before = self.viewer.resident()
        slow = []
        for i in range(200):
            each = socket.socket()
            self.addCleanup(each.close)
            each.bind((f"127.0.1.{i + 1}", 0))
            each.connect((ADDRESS, self.viewer.port))
            slow.append(each)
            try:
                each.sendall(b"GET / HTTP/1.1\r\nX-Slow: ")
            except OSError:
                pass  # let go already
        head = socket.create_connection((ADDRESS, self.viewer.port))
        self.addCleanup(head.close)
        sent = 0
        try:
            head.sendall(b"GET / HTTP/1.1\r\n")
            while sent < 2**30:
                head.sendall(b"X-Long: " + b"a" * 65536 + b"\r\n")
                sent += 65546
        except OSError:
            pass
        self.assertLess(sent, 2**23, "a gigabyte of headers is not taken")
        self.assertEqual(self.viewer.ask("/state", X_Long="a" * 9000)[0], 431)
        first = Stream.number(watcher.picture())
        numbers = [Stream.number(watcher.picture()) for _ in range(25)]
        self.assertLessEqual(numbers[-1] - first, 50, "the picture moves on")
        self.assertEqual(stream.opened, 1)
        self.assertEqual(self.viewer.ask("/state")[0], 200)
        self.assertLess(self.viewer.resident() - before, 64)

    def test_a_card_that_goes_is_let_go_at_once(self):
        self.unit.write(f"{BASE}/24112026/TUBX0009.avi", os.urandom(2**20) * 64)
        self.addCleanup(os.remove, self.unit.path(f"{BASE}/24112026/TUBX0009.avi"))
        for take, give in ((["usb", "attach"], ["usb", "detach"]), (["card", "remove"], ["card", "insert"])):
            connections = [self.viewer.connect() for _ in range(2)]
            answers = []
            for connection, address in zip(connections, ("/files/24112026/TUBX0009.avi", "/zip/24112026")):
                self.addCleanup(connection.close)
                connection.request("GET", address)
                answers.append(connection.getresponse())
                answers[-1].read(1000)
            wait_for(lambda: not self.viewer.open_on(self.unit.path("media")), "nothing is held while the phone waits")
            self.unit.control(*take)
            wait_for(lambda: not self.state()["files"], "the files' part is closed")
            for address in ("/folders", "/files/24112026/TUBX0001.jpg", "/zip/24112026", "/first/24112026/TUBX0004.avi"):
                self.assertEqual(self.viewer.ask(address)[0], 503, address)
            for answer in answers:
                with self.assertRaises((http.client.IncompleteRead, OSError)):
                    answer.read()
            self.unit.control(*give)
            wait_for(lambda: self.state()["files"], "the card is back")
            self.assertEqual(self.viewer.ask("/files/24112026/TUBX0001.jpg")[0], 200)

    def test_without_the_hotspot_nobody_is_let_in(self):
        self.stream()
        watcher = self.watch()
        port = self.viewer.port
        self.unit.set_hotspot(False)
        self.addCleanup(self.unit.set_hotspot, True)

        def is_open():
            with socket.socket() as probe:
                return probe.connect_ex((ADDRESS, port)) == 0

        wait_for(lambda: not is_open(), "the port is closed")
        wait_for(lambda: watcher.picture() is None, "who looked sees no more")
        self.unit.set_hotspot(True)
        wait_for(is_open, "the port is open")
        self.assertTrue(wait_for(self.state, "the state")["files"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
