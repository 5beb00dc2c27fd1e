"""Adds up the test reports (JUnit XML) named as arguments: "Tests: N passed, N failed, N skipped"."""

import sys
import xml.etree.ElementTree as ElementTree


def outcome(case):
    """pytest marks a case by a child element, ctest by its status, which for a case that skipped itself
    and for one that could not be run is the same, with the reason in the child."""
    skipped = case.find("skipped")
    if case.find("failure") is not None or case.find("error") is not None or case.get("status") == "fail":
        return "failed"
    if case.get("status") == "notrun" and not (skipped is not None and skipped.get("message", "").startswith("SKIP_")):
        return "failed"
    return "skipped" if skipped is not None or case.get("status") == "disabled" else "passed"


def main(reports):
    count = {"passed": 0, "failed": 0, "skipped": 0}
    for report in reports:
        try:
            cases = list(ElementTree.parse(report).iter("testcase"))
        except (OSError, ElementTree.ParseError) as error:
            print(f"No test report: {error}")
            cases = []
        if not cases:
            count["failed"] += 1  # the run itself
        for case in cases:
            count[outcome(case)] += 1
    print("Tests: {passed} passed, {failed} failed, {skipped} skipped".format(**count))
    return 1 if count["failed"] else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
