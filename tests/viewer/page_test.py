#!/usr/bin/env python3
"""The viewer's page in a real browser, on a phone and on a desk. Usage: page_test.py PROGRAM FOLDER
Status 77 where Debian's chromium and its driver are not installed."""

import io
import os
import sys
import tempfile
import unittest
import zipfile
from urllib.parse import quote

sys.dont_write_bytecode = True
import browser  # noqa: E402
from desk import Stream, Unit, Viewer, wait_for  # noqa: E402

PROGRAM, FOLDER = sys.argv[1:3]
LIVE = "document.getElementById('live').dataset.state"


class TestPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = cls.enterClassContext(tempfile.TemporaryDirectory(prefix="page test.", dir=FOLDER))
        cls.folder = folder
        cls.unit = Unit(os.path.join(folder, "unit"), "18080-18180")
        cls.unit.add_day("24112026", 20, 2)
        cls.viewer = Viewer(PROGRAM, cls.unit)
        cls.addClassCleanup(cls.viewer.stop)
        cls.browser = browser.Browser()
        cls.addClassCleanup(cls.browser.close)

    def look(self, width, height):
        page = self.browser
        page.size(width, height)
        page.open("about:blank")
        page.open(self.viewer.address + "/")
        page.wait(f"{LIVE} === 'on'")
        self.assertEqual(page.run("return document.getElementById('stream').naturalWidth"), 720)
        self.assertLessEqual(page.run("return document.documentElement.scrollWidth"), width, "nothing sticks out")
        before = page.screenshot()
        wait_for(lambda: page.screenshot() != before, "the picture moves")
        # Here the browser grants a wake lock; on the hotspot, which is no secure context, this film has to do.
        page.run("playPoint()")
        page.wait("!document.getElementById('awake').paused && document.getElementById('awake').videoWidth === 16")

    def find_a_still_and_a_film(self):
        page = self.browser
        page.click("#folders .name")
        page.wait("document.querySelectorAll('.capture').length === 22")
        page.click(".capture")
        page.wait("location.hash === '#/24112026/TUBX0001.jpg' && document.getElementById('still').naturalWidth === 720")
        self.assertTrue(page.run("return getComputedStyle(document.getElementById('filmmark')).display === 'none'"))
        self.assertFalse(page.run("return document.getElementById('voice').hidden"), "it has a note")
        page.run("location.hash = '#/24112026/TUBX0022.avi'")
        page.wait("document.getElementById('still').src.includes('/first/') && document.getElementById('still').complete")
        self.assertEqual(page.run("return document.getElementById('still').naturalWidth"), 720, "a film's first picture")
        self.assertTrue(page.run("return document.getElementById('keep').href.endsWith('/files/24112026/TUBX0022.avi')"))
        page.click("#close")
        page.wait("document.getElementById('capture').hidden")
        page.open(self.viewer.address + page.run("return new URL(document.querySelector('.row .tile').href).pathname"))
        self.look_at_the_days_page()

    def look_at_the_days_page(self):
        page = self.browser
        self.assertEqual(page.run("return document.querySelectorAll('#box-table-a a').length"), 22)
        page.wait("getComputedStyle(document.body).maxWidth === '844px'")  # with its style
        page.click("#box-table-a a")
        page.wait("document.images.length === 1 && document.images[0].naturalWidth === 720")

    def test_picture_and_findings(self):
        for width, height in ((360, 740), (1280, 800)):
            with self.subTest(width=width):
                stream = Stream(self.folder)
                self.look(width, height)
                wait_for(lambda: stream.open == 1, "one connection for the page")
                self.browser.click("#larger")
                self.browser.wait("document.getElementById('stream').getBoundingClientRect().width >= innerWidth - 1")
                self.browser.click("#larger")
                stream.close()
                self.browser.wait(f"{LIVE} === 'off'")
                stream = Stream(self.folder)
                self.browser.wait(f"{LIVE} === 'on'")
                self.find_a_still_and_a_film()
                stream.close()

    def test_the_archive_works_offline(self):
        with zipfile.ZipFile(io.BytesIO(self.viewer.ask("/zip/24112026")[2])) as archive:
            archive.extractall(os.path.join(self.folder, "home"))
        self.browser.open("file://" + quote(os.path.abspath(os.path.join(self.folder, "home/24112026/24112026.html"))))
        self.look_at_the_days_page()

    def test_a_card_that_goes(self):
        self.browser.size(360, 740)
        self.browser.open(self.viewer.address + "/")
        self.browser.wait("document.querySelectorAll('#folders li').length === 1")
        self.unit.control("card", "remove")
        self.browser.wait("document.getElementById('findings').dataset.state === 'closed'")
        self.unit.control("card", "insert")
        self.browser.wait("document.getElementById('findings').dataset.state === 'open'")


if __name__ == "__main__":
    if not browser.is_there():
        print("chromium and chromedriver are not installed")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
