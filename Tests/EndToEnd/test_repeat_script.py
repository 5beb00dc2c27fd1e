"""scripts/repeat.sh, on a tree of its own whose tests take no time."""

import os
import shutil
import subprocess

import pytest
from harness.hub import ROOT
from harness.wait import PATIENCE

# A unit test that fails each second time, and a virtual machine that never comes to its end.
STAND_INS = {
    "dpkg-query": "echo -n installed",
    "cmake": "true",
    "ninja": "echo ninja: no work to do.",
    "ctest": '''for report; do :; done
echo >>calls
(($(wc -l <calls) % 2)) || failure="<failure/>"
echo "<testsuite><testcase name=\\"unit\\" status=\\"run\\">${failure:-}</testcase></testsuite>" >"$report"''',
    "stress-ng": "echo $$ >stress; exec sleep 1000",
}


def make_executable(file, text):
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(f"#!/bin/bash\n{text}\n")
    file.chmod(0o755)


@pytest.fixture
def repeat(tmp_path):
    tree = tmp_path / "tree"
    for name, text in STAND_INS.items():
        make_executable(tmp_path / "programs" / name, text)
    shutil.copytree(ROOT / "scripts", tree / "scripts", ignore=shutil.ignore_patterns("__pycache__"))
    make_executable(tree / "Tests/RealDrivers/run.sh", "test -e stress; exit 1")
    (tree / "Tests/EndToEnd").mkdir()
    (tree / "Tests/EndToEnd/test_hub.py").write_text("def test_good(): pass\n")
    (tree / "build").mkdir()
    (tree / "build/build.ninja").touch()

    def run(*arguments):
        environment = os.environ | {"PATH": f'{tmp_path / "programs"}:{os.environ["PATH"]}'}
        environment.pop("PYTEST_XDIST_WORKER", None)
        result = subprocess.run([tree / "scripts/repeat.sh", *arguments], cwd=tree, env=environment, check=False,
                                capture_output=True, text=True, timeout=PATIENCE)
        return result.returncode, result.stdout.splitlines(), tree

    return run


def test_all_runs_are_made_and_each_failure_is_counted(repeat):
    code, lines, tree = repeat("3", "2")
    assert [line.partition(" ")[2] for line in lines[:8]] == [
        "units 1", "end_to_end 1", "units 2", "end_to_end 2", "units 3", "end_to_end 3",
        "real_drivers 1", "real_drivers 2",
    ]  # fmt: skip
    assert (code, lines[8:]) == (1, [
        "1 of 1  no report: real_drivers-1.xml",
        "1 of 1  no report: real_drivers-2.xml",
        "1 of 3  unit",
        "Tests that have failed: 3 of 4, in 8 runs",
    ])
    with pytest.raises(ProcessLookupError):
        os.kill(int((tree / "stress").read_text()), 0)


def test_without_real_drivers_nothing_keeps_the_machine_busy(repeat):
    code, lines, tree = repeat("1", "0")
    assert (code, lines[-1]) == (0, "Tests that have failed: 0 of 2, in 2 runs")
    assert not (tree / "stress").exists()


@pytest.mark.parametrize("arguments", [["x"], ["1", "-1"], ["1", "2", "3"]])
def test_what_is_no_number_of_runs_is_refused(repeat, arguments):
    assert repeat(*arguments)[:2] == (2, [])
