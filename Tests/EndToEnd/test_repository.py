"""The checks and scripts of the repository itself."""

import re
import subprocess
import sys

import pytest
from harness.hub import ROOT


def check_layers(root):
    command = [sys.executable, str(ROOT / "cmake/check_layers.py"), str(root)]
    return subprocess.run(command, capture_output=True, text=True, check=False)


@pytest.fixture
def tree(tmp_path):
    def write(name, text):
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        (tmp_path / name).write_text(text)
        return tmp_path

    write("Platform/Interface/Guid.h", "#pragma once\n")
    write("Platform/Simulated/Chart.h", '#include <map>\n#include "Platform/Interface/Guid.h"\n')
    return write


def test_this_tree_keeps_to_the_layers():
    result = check_layers(ROOT)
    assert (result.returncode, result.stdout) == (0, "")


def test_an_include_that_goes_down_a_layer_is_fine(tree):
    result = check_layers(tree("Services/CameraAccess/Hub.cpp", '#include "Platform/Interface/Guid.h"\n'))
    assert (result.returncode, result.stdout) == (0, "")


@pytest.mark.parametrize(
    "name, include, reason",
    [
        ("Services/CameraAccess/Hub.cpp", "Platform/Simulated/Chart.h",
         'Services/CameraAccess may not include "Platform/Simulated/Chart.h"'),
        ("Platform/Simulated/World/New.h", "Platform/Simulated/Chart.h",
         'Platform/Simulated/World may not include "Platform/Simulated/Chart.h"'),
        ("Platform/Interface/New.h", "Platform/Simulated/Chart.h",
         'Platform/Interface may not include "Platform/Simulated/Chart.h"'),
        ("Framework/CXX/Json/New.h", "Platform/Interface/Guid.h",
         'Framework/CXX/Json may not include "Platform/Interface/Guid.h"'),
        ("Client/New.cpp", "Platform/Interface/Guid.h", 'Client may not include "Platform/Interface/Guid.h"'),
        ("Platform/Simulated/New.cpp", "Chart.h", '"Chart.h" is not written from the root of the tree'),
        ("Platform/Elsewhere/New.cpp", "Platform/Interface/Guid.h", "its folder has no row in MAY_INCLUDE"),
    ],
)
def test_a_breach_is_named_by_file_and_line(tree, name, include, reason):
    result = check_layers(tree(name, f'#include "{include}"\n'))
    assert (result.returncode, result.stdout) == (1, f"{name}:1: {reason}\n")


def test_a_public_header_of_the_client_library_counts_as_it_is_included_once_installed(tree):
    tree("Client/CameraHubClient/Still.h", "#pragma once\n")
    tree("Client/CameraHubClient/Still.cpp", "#include <CameraHubClient/Still.h>\n#include <string>\n")
    assert check_layers(tree("Tests/Client/StillTest.cpp", "#include <CameraHubClient/Still.h>\n")).returncode == 0
    result = check_layers(tree("Services/CameraAccess/Hub.cpp", "#include <CameraHubClient/Still.h>\n"))
    reason = 'Services/CameraAccess may not include "Client/CameraHubClient/Still.h"'
    assert (result.returncode, result.stdout) == (1, f"Services/CameraAccess/Hub.cpp:1: {reason}\n")


def test_what_stands_above_the_wings_may_include_them(tree):
    tree("Platform/Simulated/World/Sun.h", "#pragma once\n")
    result = check_layers(tree("Platform/Simulated/Sky.h", '#include "Platform/Simulated/World/Sun.h"\n'))
    assert (result.returncode, result.stdout) == (0, "")


def test_a_circle_of_units_is_a_breach(tree):
    tree("Platform/Imaging/A.cpp", '#include "Platform/Imaging/A.h"\n#include "Platform/Imaging/B.h"\n')
    tree("Platform/Imaging/A.h", "#pragma once\n")
    tree("Platform/Imaging/B.h", "#pragma once\n")
    tree("Platform/Imaging/B.cpp", '#include "Platform/Imaging/C.h"\n')
    result = check_layers(tree("Platform/Imaging/C.h", '#include "Platform/Imaging/A.h"\n'))
    circle = "Platform/Imaging/A, Platform/Imaging/B, Platform/Imaging/C"
    assert (result.returncode, result.stdout) == (1, f"Platform/Imaging/A.h:1: a circle of includes: {circle}\n")


def suites_of(source):
    return set(re.findall(r"^TEST(?:_[FP])?\(\s*(\w+)", source.read_text(encoding="utf-8"), re.MULTILINE))


def test_a_suite_has_the_name_of_its_file_or_ends_in_test_where_a_file_has_several():
    misnamed = []
    for source in (ROOT / "Tests").rglob("*Test.cpp"):
        suites = suites_of(source)
        is_named = suites == {source.stem} or (len(suites) > 1 and all(name.endswith("Test") for name in suites))
        misnamed += [] if is_named or not suites else [(source.name, suites)]
    assert misnamed == []


def count_tests(*reports):
    command = [sys.executable, str(ROOT / "scripts/count_tests.py"), *map(str, reports)]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    return result.returncode, result.stdout.splitlines()[-1]


CTEST = """<testsuite><testcase name="a" status="run"/><testcase name="b" status="fail"><failure/></testcase>
<testcase name="c" status="notrun"><skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/></testcase>
<testcase name="d" status="notrun"><skipped message="Unable to find executable"/></testcase></testsuite>"""
PYTEST = """<testsuites><testsuite><testcase name="a"/><testcase name="b"><error/></testcase>
<testcase name="c"><skipped/></testcase></testsuite></testsuites>"""


def test_the_count_adds_up_both_kinds_of_reports(tmp_path):
    (tmp_path / "unit.xml").write_text(CTEST)
    (tmp_path / "end.xml").write_text(PYTEST)
    counted = count_tests(tmp_path / "unit.xml", tmp_path / "end.xml")
    assert counted == (1, "Tests: 2 passed, 3 failed, 2 skipped")


def test_the_count_is_good_only_if_nothing_failed(tmp_path):
    (tmp_path / "good.xml").write_text("<testsuite><testcase/><testcase/></testsuite>")
    assert count_tests(tmp_path / "good.xml") == (0, "Tests: 2 passed, 0 failed, 0 skipped")


@pytest.mark.parametrize("content", [None, "", "<testsuite/>"])
def test_a_report_that_is_missing_or_empty_counts_as_a_failure(tmp_path, content):
    (tmp_path / "good.xml").write_text("<testsuite><testcase/></testsuite>")
    if content is not None:
        (tmp_path / "bad.xml").write_text(content)
    counted = count_tests(tmp_path / "good.xml", tmp_path / "bad.xml")
    assert counted == (1, "Tests: 1 passed, 1 failed, 0 skipped")


def test_the_failures_of_many_runs_are_named_with_their_number(tmp_path):
    for number, report in enumerate((CTEST, PYTEST, CTEST, "")):
        (tmp_path / f"{number}.xml").write_text(report)
    command = [sys.executable, str(ROOT / "scripts/failed_tests.py"), *map(str, sorted(tmp_path.iterdir()))]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    assert (result.returncode, result.stdout.splitlines()) == (1, [
        "3 of 3  b",
        "2 of 2  d",
        "1 of 1  no report: 3.xml",
        "Tests that have failed: 3 of 5, in 4 runs",
    ])
    command = command[:2] + [str(tmp_path / "none.xml")]
    (tmp_path / "none.xml").write_text('<testsuite><testcase classname="a.b" name="c"/></testsuite>')
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    assert (result.returncode, result.stdout) == (0, "Tests that have failed: 0 of 1, in 1 runs\n")


def test_a_test_above_a_second_that_is_not_labelled_slow_is_told(tmp_path):
    names = {"quick": 0.2, "long": 1.5, "longer": 2.5}
    tests = "".join(f"add_test({name} true)\n" for name in names)
    (tmp_path / "CTestTestfile.cmake").write_text(f"{tests}set_tests_properties(longer PROPERTIES LABELS slow)\n")
    (tmp_path / "test-results").mkdir()
    cases = "".join(f'<testcase name="{name}" time="{seconds}"/>' for name, seconds in names.items())
    (tmp_path / "test-results/unit.xml").write_text(f"<testsuite>{cases}</testsuite>")
    command = [sys.executable, str(ROOT / "scripts/slow_tests.py"), str(tmp_path)]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    assert (result.returncode, result.stdout) == (0, "Not labelled slow: long (1.5 s)\n")
