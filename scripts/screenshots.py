#!/usr/bin/python3
"""Takes the pictures of the page that the documents show, Docs/images/web-*.png, with the programs of a build
(HUB_EXECUTABLE, default build/bin/LarkspurWindowsCameraHub) and simulated cameras.
Usage: scripts/screenshots.py"""

import io
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "Tests/EndToEnd"))

from harness.browser import NARROW, WIDE, Browser, Page
from harness.hub import Hub
from harness.named_cameras import named_cameras
from harness.network import allow_networks
from harness.web import Web
from PIL import Image

NAMES = {"desk": "Desk Camera", "lab": "Halden Lab 4", "door": "Door Camera"}


def save(page, name):
    page.js("scrollTo(0, 0); document.activeElement.blur()")
    with Image.open(io.BytesIO(page.driver.get_screenshot_as_png())) as image:
        image.convert("RGB").save(ROOT / f"Docs/images/web-{name}.png", optimize=True)


def take(page, stop):
    page.set_value("#stop", stop)
    page.take()


def show_still(page):
    page.choose("Halden Lab 4")
    take(page, 6)
    page.choose("Desk Camera")
    for stop in (9, 5, 7):
        take(page, stop)


def show_pixels(page):
    show_still(page)
    page.click("#one-to-one")
    for _ in range(5):
        page.click("#zoom-in")
    page.click("#clipping-toggle")
    page.click("#crosshair-toggle")


def show_bracket(page):
    page.choose("Desk Camera")
    page.click("#tab-bracket")
    for field, exposure in (("#bracket-from", 1953), ("#bracket-to", 250000)):
        page.set_value(field, exposure)
    page.click("#take")
    page.wait_until_ready()


def main():
    allow_networks()
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        hub = Hub(folder, named_cameras(NAMES, (1920, 1080), {"door": {}})).start().wait_for_cameras(*NAMES)
        browser = Browser(folder, hub.network)
        try:
            for picture, show, size, dark in (("still", show_still, WIDE, False), ("pixels", show_pixels, WIDE, True),
                                              ("bracket", show_bracket, WIDE, True),
                                              ("phone", show_still, NARROW, False)):
                web = Web(folder, hub.network).wait_for_cameras(*NAMES)
                browser.set_screen(size, dark)
                browser.devtools("Emulation.setScrollbarsHidden", hidden=True)
                page = Page(browser, f"http://127.0.0.1:{web.port}").wait_until_ready()
                show(page)
                save(page, picture)
                page.close()
                web.stop()
        finally:
            browser.close()
            hub.stop()


if __name__ == "__main__":
    main()
