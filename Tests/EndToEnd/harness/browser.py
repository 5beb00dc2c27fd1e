"""A browser in the network of a hub, and a page in it."""

import re
import subprocess

from harness.hub import EXECUTABLE
from harness.wait import wait_until
from selenium import webdriver
from selenium.common.exceptions import JavascriptException, StaleElementReferenceException
from selenium.webdriver.chromium.remote_connection import ChromiumRemoteConnection
from selenium.webdriver.common.by import By

WIDE, NARROW = (1440, 900), (390, 844)
AXE = EXECUTABLE.parents[1] / "node_modules/axe-core/axe.min.js"
LISTENS = re.compile(r"started successfully on port (\d+)")
# It runs as root where the tests do, and is to look for nothing outside of its network.
ARGUMENTS = ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--disable-dev-shm-usage",
             "--no-first-run", "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--disable-default-apps", "--disable-extensions", "--window-size=1440,1000")


class _Connection(ChromiumRemoteConnection):
    """To a driver in a network; each command may need a new connection there."""

    def __init__(self, network, address):
        super().__init__(address, vendor_prefix="goog", browser_name="chrome")
        self._network = network

    def execute(self, command, params):
        return self._network.run(super().execute, command, params)


class Browser:
    """Chromium, until close(). It saves files in `downloads`."""

    def __init__(self, folder, network):
        self.downloads = folder / "downloads"
        self.downloads.mkdir()
        output = folder / "driver.txt"
        with open(output, "wb") as stream:
            self._driver = network.run(subprocess.Popen, ["setpriv", "--pdeathsig", "KILL", "chromedriver", "--port=0"],
                                       cwd=folder, stdin=subprocess.DEVNULL, stdout=stream, stderr=stream)
        port = wait_until(lambda: LISTENS.search(output.read_text(encoding="utf-8")), "the driver listens")[1]
        self.driver = webdriver.Remote(_Connection(network, f"http://127.0.0.1:{port}"),
                                       options=self._options(folder / "profile"))

    def _options(self, profile):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for argument in (*ARGUMENTS, f"--user-data-dir={profile}"):
            options.add_argument(argument)
        options.add_experimental_option("prefs", {"download.default_directory": str(self.downloads)})
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        return options

    def devtools(self, command, **params):
        return self.driver.execute("executeCdpCommand", {"cmd": command, "params": params})["value"]

    def set_screen(self, size, dark=False, **features):
        width, height = size
        self.devtools("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                      mobile=False)
        wanted = {"prefers-color-scheme": "dark" if dark else "light"} | features
        self.devtools("Emulation.setEmulatedMedia",
                      features=[{"name": name, "value": value} for name, value in wanted.items()])

    def saved_file(self, name):
        """Its path once it is whole: the browser gives a file its name last."""
        file = self.downloads / name
        wait_until(file.is_file, f"the download of {name}")
        return file

    def close(self):
        try:
            self.driver.quit()
        finally:
            self._driver.kill()
            self._driver.wait()


class Page:
    """What the browser shows. Elements are named by CSS selectors; `close` fails if the page has complained in the
    console of anything but what `expect` named."""

    def __init__(self, browser, address, path="/"):
        self.browser, self.driver, self.address = browser, browser.driver, address
        self._expected = []
        self.driver.get_log("browser")  # what an earlier page has said
        self.driver.get(address + path)

    def js(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector):
        """As it is seen; empty where there is no such element, or it is hidden."""
        return self.js("return document.querySelector(arguments[0])?.innerText ?? ''", selector).strip()

    def texts(self, selector):
        return [text.strip() for text in
                self.js("return [...document.querySelectorAll(arguments[0])].map((one) => one.innerText)", selector)]

    def attribute(self, selector, name):
        return self.js("return document.querySelector(arguments[0])?.getAttribute(arguments[1])", selector, name)

    def is_seen(self, selector):
        return self.js("return document.querySelector(arguments[0])?.checkVisibility({visibilityProperty: true})"
                       " ?? false", selector)

    def click(self, selector):
        self.find(selector).click()

    def press(self, keys, selector=None):
        """Types at an element, or at the one that has the focus."""
        (self.find(selector) if selector else self.driver.switch_to.active_element).send_keys(keys)

    def set_value(self, selector, value):
        """As a hand does: a slider tells every step, and a field its end."""
        self.js("const [selector, value] = arguments; const element = document.querySelector(selector);"
                "element.value = value; element.dispatchEvent(new Event('input', {bubbles: true}));"
                "element.dispatchEvent(new Event('change', {bubbles: true}));", selector, str(value))

    def wait_for(self, condition, what):
        """The first true value of condition(page), while the page may change under it."""
        def value():
            try:
                return condition(self)
            except (StaleElementReferenceException, JavascriptException):
                return None

        try:
            return wait_until(value, what, interval=0.05)
        except AssertionError as error:
            raise AssertionError(f"{error}, on a page that says: {self.text('body')}") from None

    def wait_for_text(self, selector, part):
        return self.wait_for(lambda page: (text := page.text(selector)) and part in text and text,
                             f"{part!r} in {selector}")

    def is_ready(self):
        return self.attribute("#take", "aria-disabled") == "false"

    def wait_until_ready(self):
        self.wait_for(Page.is_ready, "something can be taken")
        return self

    def choose(self, name):
        """The camera whose card has this name."""
        card = next(card for card in self.all(".camera") if name in card.text)
        card.click()
        self.wait_for(lambda page: card.get_attribute("aria-current") == "true", f"{name} is chosen")

    def shown_still(self):
        return self.is_seen("#picture") and self.attribute("#picture", "data-still")

    def wait_for_new_still(self, before=None):
        """The id of the still that is shown, once it is another one."""
        def shown(page):
            still = page.shown_still()
            return still and still != before and page.attribute("#about", "data-still") == still and still

        return self.wait_for(shown, "a new still")

    def take(self):
        """A still, by the button; its id."""
        before = self.shown_still()
        self.click("#take")
        still = self.wait_for_new_still(before)
        self.wait_until_ready()
        return still

    def findings(self):
        """What axe finds that is serious or critical, one line each."""
        self.js(AXE.read_text(encoding="utf-8"))
        result = self.driver.execute_async_script("axe.run(document).then(arguments[0])")
        assert result["passes"], "nothing was looked at"
        return [f"{finding['id']}: {[node['target'] for node in finding['nodes']]}" for finding in result["violations"]
                if finding["impact"] in ("serious", "critical")]

    def expect(self, *parts):
        """Messages of the browser itself that have one of these in them: it tells every answer that is a failure."""
        self._expected += parts

    def complaints(self):
        return [entry["message"] for entry in self.driver.get_log("browser")
                if entry["level"] in ("SEVERE", "WARNING")
                and not (entry["source"] == "network" and any(part in entry["message"] for part in self._expected))]

    def close(self):
        complaints = self.complaints()
        self.js("localStorage.clear()")
        self.driver.delete_all_cookies()
        self.driver.get("about:blank")  # which ends what the page follows
        assert complaints == [], complaints
