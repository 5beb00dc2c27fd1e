"""Names the tests that have failed in reports (JUnit XML) of many runs, each with how often: "3 of 50  NAME"."""

import sys
import xml.etree.ElementTree as ElementTree
from collections import Counter
from pathlib import Path

from count_tests import outcome


def name_of(case):
    """ctest gives each case its own name for its class, too."""
    names = (case.get("classname"), case.get("name"))
    return "::".join(dict.fromkeys(name for name in names if name))


def main(reports):
    runs, failures = Counter(), Counter()
    for report in reports:
        try:
            cases = list(ElementTree.parse(report).iter("testcase"))
        except (OSError, ElementTree.ParseError):
            cases = []
        if not cases:
            runs[f"no report: {Path(report).name}"] += 1
            failures[f"no report: {Path(report).name}"] += 1
        for case in cases:
            runs[name_of(case)] += 1
            failures[name_of(case)] += outcome(case) == "failed"
    failed = +failures
    for name, count in sorted(failed.items()):
        print(f"{count} of {runs[name]}  {name}")
    print(f"Tests that have failed: {len(failed)} of {len(runs)}, in {len(reports)} runs")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
