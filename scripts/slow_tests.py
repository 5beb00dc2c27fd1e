"""Names the tests that took over a second in the last run of a build folder of the preset release, and do not have the
label "slow", which SLOW of hub_test gives. Usage: slow_tests.py [build folder]"""

import json
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

LIMIT = 1.0  # seconds


def labelled_slow(folder):
    """The names of the tests that are. The report of the run has no labels, ctest itself tells them."""
    command = ["ctest", "--test-dir", str(folder), "--label-regex", "^slow$", "--show-only=json-v1"]
    listing = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    return {test["name"] for test in json.loads(listing)["tests"]}


def main(folder):
    slow = labelled_slow(folder)
    for case in ElementTree.parse(folder / "test-results/unit.xml").iter("testcase"):
        name, seconds = case.get("name"), float(case.get("time", 0))
        if seconds > LIMIT and name not in slow:
            print(f"Not labelled slow: {name} ({seconds:.1f} s)")


if __name__ == "__main__":
    main(Path(sys.argv[1] if len(sys.argv) > 1 else "build"))
