"""Chromium without a window, driven over the pipe of its DevTools protocol, with the standard library
alone.

    browser = Browser()
    page = browser.open("file:///.../report.html")
    page.evaluate("document.title")
    browser.close()
"""

import base64
import json
import os
import shutil
import subprocess
import tempfile

CHROMIUM = ("chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
            "--disable-dev-shm-usage", "--no-first-run", "--disable-extensions",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            "--remote-debugging-pipe")


class Browser:
    """One process of Chromium. Commands wait for their answers; events are kept until asked for."""

    def __init__(self):
        self.profile = tempfile.mkdtemp()
        to_browser, self.to_browser = os.pipe()
        self.from_browser, from_browser = os.pipe()
        # The browser reads from descriptor 3 and writes to descriptor 4.
        copies = [os.dup(end) for end in (to_browser, from_browser)]  # out of the way of 3 and 4
        copies = [self.high(end) for end in copies]

        def place():
            os.dup2(copies[0], 3)
            os.dup2(copies[1], 4)

        self.process = subprocess.Popen(  # pylint: disable=consider-using-with
            [*CHROMIUM, f"--user-data-dir={self.profile}"], preexec_fn=place, pass_fds=(3, 4),
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for end in (to_browser, from_browser, *copies):
            os.close(end)
        self.number = 0
        self.rest = b""
        self.events = []

    @staticmethod
    def high(end):
        """The same as a descriptor above 9."""
        import fcntl  # pylint: disable=import-outside-toplevel
        copy = fcntl.fcntl(end, fcntl.F_DUPFD, 10)
        os.close(end)
        return copy

    def close(self):
        try:
            self.call("Browser.close")
        except (EOFError, OSError):
            pass
        self.process.wait(timeout=20)
        os.close(self.to_browser)
        os.close(self.from_browser)
        shutil.rmtree(self.profile, ignore_errors=True)

    def message(self):
        """The next message of the browser."""
        while b"\0" not in self.rest:
            data = os.read(self.from_browser, 1 << 16)
            if not data:
                raise EOFError("the browser has ended")
            self.rest += data
        text, _, self.rest = self.rest.partition(b"\0")
        return json.loads(text)

    def call(self, method, session=None, **parameters):
        """Does a command and returns its result."""
        self.number += 1
        command = {"id": self.number, "method": method, "params": parameters}
        if session:
            command["sessionId"] = session
        os.write(self.to_browser, json.dumps(command).encode() + b"\0")
        while True:
            message = self.message()
            if message.get("id") == self.number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]
            self.events.append(message)

    def open(self, url, **settings):
        return Page(self, url, **settings)


class Page:
    """A page that is loaded. `failures`: what its console and its network have to complain of."""

    def __init__(self, browser, url, width=1280, height=900, scheme="light", script=True):
        self.browser = browser
        target = browser.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = browser.call("Target.attachToTarget", targetId=target,
                                    flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.scheme(scheme)
        self.call("Emulation.setScriptExecutionDisabled", value=not script)
        browser.events.clear()
        self.call("Page.navigate", url=url)
        self.wait("Page.loadEventFired")

    def call(self, method, **parameters):
        return self.browser.call(method, self.session, **parameters)

    def scheme(self, scheme, media=""):
        """"light" or "dark"; media "print": as on paper."""
        self.call("Emulation.setEmulatedMedia", media=media,
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

    def wait(self, event):
        while not any(message.get("method") == event for message in self.browser.events):
            self.browser.events.append(self.browser.message())

    def evaluate(self, expression):
        """The value of a JavaScript expression."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def requests(self):
        """All URLs that were asked for."""
        return [message["params"]["request"]["url"] for message in self.browser.events
                if message.get("method") == "Network.requestWillBeSent"]

    def complaints(self):
        """Messages of the console, exceptions and what the log has."""
        found = []
        for message in self.browser.events:
            if message.get("method") in ("Runtime.consoleAPICalled", "Runtime.exceptionThrown",
                                         "Log.entryAdded"):
                found.append(json.dumps(message["params"])[:400])
        return found

    def screenshot(self, file, clip=None):
        """A picture of all of the page, or of (x, y, width, height) of it."""
        size = self.call("Page.getLayoutMetrics")["cssContentSize"]
        x, y, width, height = clip or (0, 0, size["width"], size["height"])
        picture = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=True,
                            clip={"x": x, "y": y, "width": width, "height": min(height, 6000),
                                  "scale": 1})
        with open(file, "wb") as output:
            output.write(base64.b64decode(picture["data"]))

    def print(self, file):
        """The page on paper, as PDF."""
        printed = self.call("Page.printToPDF", printBackground=False, preferCSSPageSize=True)
        with open(file, "wb") as output:
            output.write(base64.b64decode(printed["data"]))
