"""Debian's chromium without a screen, through its driver: plain JSON over HTTP."""

import base64
import json
import shutil
import socket
import subprocess
import tempfile
import urllib.request

from desk import wait_for

OPTIONS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
           "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage"]  # fmt: skip


def is_there():
    return bool(shutil.which("chromedriver") and shutil.which("chromium"))


class Browser:
    def __init__(self):
        self._profile = tempfile.TemporaryDirectory(prefix="viewer-browser-")
        with socket.create_server(("127.0.0.1", 0)) as probe:
            port = probe.getsockname()[1]
        self._driver = subprocess.Popen(["chromedriver", f"--port={port}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self._address = f"http://127.0.0.1:{port}"
        self._session = ""
        wait_for(self._is_ready, "the browser's driver", 20)
        arguments = [*OPTIONS, f"--user-data-dir={self._profile.name}"]
        capabilities = {"alwaysMatch": {"goog:chromeOptions": {"args": arguments, "binary": shutil.which("chromium")}, "pageLoadStrategy": "eager"}}
        self._session = "/session/" + self._command("/session", {"capabilities": capabilities})["sessionId"]

    def _is_ready(self):
        try:
            return self._command("/status")["ready"]
        except OSError:
            return False

    def _command(self, address, body=None, method=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self._address + self._session + address, data, {"Content-Type": "application/json"}, method=method)
        with urllib.request.urlopen(request, timeout=30) as answer:
            return json.load(answer)["value"]

    def _tool(self, name, **parameters):
        return self._command("/goog/cdp/execute", {"cmd": name, "params": parameters})

    def size(self, width, height):
        self._tool("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=width < 640)

    def open(self, address):
        self._command("/url", {"url": address})

    def run(self, script):
        """What the script returns."""
        return self._command("/execute/sync", {"script": script, "args": []})

    def wait(self, expression, limit=10):
        """Until the expression is true in the page."""
        return wait_for(lambda: self.run(f"return {expression}"), expression, limit)

    def click(self, selector):
        element = self._command("/element", {"using": "css selector", "value": selector})
        self._command(f"/element/{next(iter(element.values()))}/click", {})

    def screenshot(self):
        """As JPEG."""
        return base64.b64decode(self._tool("Page.captureScreenshot", format="jpeg", quality=85)["data"])

    def close(self):
        try:
            if self._session:
                self._command("", method="DELETE")
        finally:
            self._driver.terminate()
            self._driver.wait()
            self._profile.cleanup()
