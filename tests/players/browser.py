"""Chromium without a screen, driven through its WebDriver (W3C) on the loopback interface."""

import base64
import json
import os
import re
import shutil
import subprocess
import tempfile
import threading
import urllib.error
import urllib.request
from pathlib import Path

STARTED = re.compile(r"started successfully on port (\d+)")
COMMAND_TIMEOUT_SECONDS = 600  # a watchdog
SCRIPT_TIMEOUT_MS = 30_000
ELEMENT_KEY = "element-6066-11e4-a52e-4f735466cecf"  # so named by the WebDriver standard


def browser_arguments(profile):
    arguments = [
        "--headless=new", "--disable-gpu", "--no-first-run", "--disable-background-networking", "--disable-sync",
        "--disable-component-update", "--disable-default-apps", "--autoplay-policy=no-user-gesture-required",
        "--force-device-scale-factor=1", "--force-color-profile=srgb", "--window-size=640,480",
        "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1", f"--user-data-dir={profile}"]
    return arguments + (["--no-sandbox"] if os.geteuid() == 0 else [])  # its sandbox refuses to run as root


class Browser:
    """Runs from its construction until close(). A program that is missing is an error, as is all it answers so."""

    def __init__(self):
        for program in ("chromium", "chromedriver"):
            if shutil.which(program) is None:
                raise RuntimeError(f"{program} is not installed")
        self._home = tempfile.mkdtemp(prefix="qrx_chromium_")
        self._driver = subprocess.Popen(
            ["chromedriver", "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            env={**os.environ, "HOME": self._home})
        self._session = ""
        try:
            self._address = self._wait_for_address()
            self._session = f"/session/{self._open_session()}"
        except BaseException:
            self.close()
            raise

    def _wait_for_address(self):
        printed = ""
        for line in self._driver.stdout:
            printed += line
            if found := STARTED.search(line):
                # What it prints later must not fill the pipe.
                threading.Thread(target=self._driver.stdout.read, daemon=True).start()
                return f"http://127.0.0.1:{found[1]}"
        raise RuntimeError(f"chromedriver does not start: {printed}")

    def _open_session(self):
        options = {"binary": shutil.which("chromium"), "args": browser_arguments(Path(self._home) / "profile")}
        capabilities = {"browserName": "chrome", "goog:chromeOptions": options,
                        "timeouts": {"script": SCRIPT_TIMEOUT_MS}}
        return self._send("POST", "/session", {"capabilities": {"alwaysMatch": capabilities}})["sessionId"]

    def _send(self, method, path, content=None):
        body = None if content is None else json.dumps(content).encode()
        request = urllib.request.Request(self._address + path, body, {"Content-Type": "application/json"},
                                         method=method)
        try:
            with urllib.request.urlopen(request, timeout=COMMAND_TIMEOUT_SECONDS) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(f"{method} {path}: {json.load(error)['value'].get('message')}") from None

    def open(self, address):
        self._send("POST", self._session + "/url", {"url": address})

    def resize(self, width, height):
        self._send("POST", self._session + "/window/rect", {"width": width, "height": height})

    def emulate_colour_scheme(self, scheme):
        """What the reader likes: "light" or "dark"."""
        features = [{"name": "prefers-color-scheme", "value": scheme}]
        self._send("POST", self._session + "/goog/cdp/execute",
                   {"cmd": "Emulation.setEmulatedMedia", "params": {"features": features}})

    def call(self, function, *arguments):
        """The result of a function of the page; of what it promises, when that is so."""
        script = "const done = arguments[arguments.length - 1];" \
                 f"Promise.resolve({function}(...Array.from(arguments).slice(0, -1)))" \
                 ".then(value => done({value}), error => done({error: String(error)}));"
        answer = self._send("POST", self._session + "/execute/async", {"script": script, "args": arguments})
        if "error" in answer:
            raise RuntimeError(f"{function}{arguments}: {answer['error']}")
        return answer.get("value")

    def screenshot_of(self, selector):
        """The element as it is shown, as PNG."""
        found = self._send("POST", self._session + "/element", {"using": "css selector", "value": selector})
        return base64.b64decode(self._send("GET", f"{self._session}/element/{found[ELEMENT_KEY]}/screenshot"))

    def close(self):
        if self._session:
            self._send("DELETE", self._session)
        self._driver.terminate()
        self._driver.wait()
        self._driver.stdout.close()
        shutil.rmtree(self._home, ignore_errors=True)
