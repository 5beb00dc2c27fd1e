"""scripts/check.sh and the hook that runs it, on a small repository of their own."""

import json
import os
import shutil
import subprocess

import pytest
from harness.hub import ROOT
from harness.wait import PATIENCE

HEADER = "Platform/Interface/Guid.h"
SOURCE = "Platform/Interface/Guid.cpp"

# What a check of sources needs no build for: nothing is installed or configured, and clang-tidy complains of the word
# DEFECT alone.
STAND_INS = {
    "dpkg-query": "echo -n installed",
    "cmake": "mkdir -p build; touch build/build.ninja",
    "doxygen": "true",
    "ninja": "echo ninja: no work to do.",
    "clang-tidy-19": 'for file; do :; done; echo "$file" >>"$TIDY_LOG"; ! grep -H DEFECT "$file"',
}

OK = [f"ok      {check}" for check in ("format", "shell scripts", "Python", "types of the Python client", "layers")]


class Repository:
    def __init__(self, folder):
        self.folder = folder / "tree"
        self.programs = folder / "programs"
        self.tidy_log = folder / "tidy.log"
        for name, text in STAND_INS.items():
            self._write(self.programs / name, f"#!/bin/bash\n{text}\n").chmod(0o755)
        for name in ("scripts", ".githooks"):
            shutil.copytree(ROOT / name, self.folder / name, ignore=shutil.ignore_patterns("__pycache__"))
        for name in ("cmake/check_layers.py", ".clang-format", ".flake8", ".shellcheckrc", "CMakePresets.json"):
            self.write(name, (ROOT / name).read_text())
        self.write(HEADER, "#pragma once\n")
        self.write(SOURCE, f'#include "{HEADER}"\n')
        self.git("init", "-q", "-b", "main")
        self.commit()

    @staticmethod
    def _write(path, text):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def write(self, name, text):
        return self._write(self.folder / name, text)

    def run(self, *command):
        environment = {name: value for name, value in os.environ.items() if not name.startswith("GIT_")}
        environment |= {"PATH": f'{self.programs}:{environment["PATH"]}', "TIDY_LOG": str(self.tidy_log)}
        return subprocess.run(
            command, cwd=self.folder, env=environment, capture_output=True, text=True, check=False, timeout=PATIENCE
        )

    def git(self, *arguments):
        return self.run("git", "-c", "user.name=A", "-c", "user.email=a@b", *arguments)

    def commit(self):
        self.git("add", "--all")
        assert self.git("commit", "-q", "-m", "A change").returncode == 0

    def check(self, *arguments):
        """The exit code, and the lines without how long each took."""
        result = self.run("scripts/check.sh", *arguments)
        return result.returncode, [line.split(" (")[0] for line in result.stdout.splitlines()]

    def read_by_tidy(self, *arguments):
        """The files that clang-tidy read."""
        self.tidy_log.write_text("")
        assert self.check(*arguments)[0] == 0
        return sorted(self.tidy_log.read_text().split())


@pytest.fixture
def repository(tmp_path):
    return Repository(tmp_path)


def test_a_clean_change_passes_every_check(repository):
    repository.write("Platform/Interface/Size.h", "#pragma once\n")
    repository.git("add", "--all")
    assert repository.check("--staged") == (0, OK)


@pytest.mark.parametrize(
    "name, text, failed",
    [
        ("Platform/Interface/New.h", "#pragma once\nint  x;\n", "format"),
        ("scripts/new.sh", "#!/bin/bash\nrm $1\n", "shell scripts"),
        ("scripts/new", "#!/bin/sh\nrm $1\n", "shell scripts"),
        ("scripts/new.py", "import os\n", "Python"),
        ("Client/Python/new.py", "def double(x):\n    return 2 * x\n", "types of the Python client"),
        ("Platform/Interface/New.h", '#include "Framework/CXX/Common/Clock.h"\n', "layers"),
    ],
)
def test_a_breach_fails_its_check_and_the_others_go_on(repository, name, text, failed):
    repository.write(name, text)
    repository.git("add", "--all")
    code, lines = repository.check("--staged")
    assert code == 1
    told = [line for line in lines if line.startswith(("ok ", "FAILED "))]
    assert told == [line.replace("ok    ", "FAILED") if line.endswith(failed) else line for line in OK]
    assert any(name in line for line in lines)


def test_the_hook_lets_a_clean_change_pass_and_no_other(repository):
    repository.git("config", "core.hooksPath", ".githooks")
    repository.write(HEADER, "#pragma once\nint  x;\n")
    assert repository.git("commit", "-a", "-m", "Badly set").returncode == 1
    repository.write(HEADER, "#pragma once\nint x;\n")
    assert repository.git("commit", "-a", "-m", "Well set").returncode == 0


def test_what_is_about_to_be_committed_counts_and_not_what_is_in_the_folder(repository):
    repository.write(HEADER, "#pragma once\nint  x;\n")
    assert repository.check("--staged") == (0, OK)
    repository.git("add", "--all")
    repository.write(HEADER, "#pragma once\nint x;\n")
    assert repository.check("--staged")[0] == 1


def test_fix_formats(repository):
    repository.write(HEADER, "#pragma once\nint  x;\n")
    assert repository.check("--fix") == (0, [])
    assert (repository.folder / HEADER).read_text() == "#pragma once\nint x;\n"


def test_clang_tidy_reads_what_the_last_commit_and_the_folder_have_changed(repository):
    repository.write("Platform/Interface/Size.cpp", "int size;\n")
    repository.commit()
    assert repository.read_by_tidy() == ["Platform/Interface/Size.cpp"]
    repository.write("README.md", "Text\n")
    repository.commit()
    assert repository.read_by_tidy() == []
    repository.write(SOURCE, f'#include "{HEADER}"\n\nint guid;\n')
    assert repository.read_by_tidy() == [SOURCE]


def test_clang_tidy_reads_all_that_the_main_branch_lacks(repository):
    repository.git("update-ref", "refs/remotes/origin/main", "HEAD")
    for name in ("Size", "Place"):
        repository.write(f"Platform/Interface/{name}.cpp", "int number;\n")
        repository.commit()
    assert repository.read_by_tidy() == ["Platform/Interface/Place.cpp", "Platform/Interface/Size.cpp"]
    assert repository.read_by_tidy("--since", "HEAD~1") == ["Platform/Interface/Place.cpp"]


def test_clang_tidy_meets_a_header_in_its_own_source_or_in_one_that_includes_it(repository):
    outer, inner = "Platform/Interface/Outer.h", "Platform/Interface/Inner.h"
    repository.write(inner, "#pragma once\n")
    repository.write(outer, f'#pragma once\n\n#include "{inner}"\n')
    repository.write("Platform/Shared/User.cpp", f'#include "{outer}"\n')
    repository.commit()
    repository.write(inner, "#pragma once\n\nint x;\n")
    assert repository.read_by_tidy() == ["Platform/Shared/User.cpp"]
    repository.commit()
    repository.write(HEADER, "#pragma once\n\nint x;\n")
    assert repository.read_by_tidy("--since", "HEAD") == [SOURCE]


def test_clang_tidy_reads_everything_when_told_to(repository):
    repository.write("README.md", "Text\n")
    repository.commit()
    assert repository.read_by_tidy("--all") == [SOURCE]


def test_what_clang_tidy_complains_of_fails(repository):
    repository.write(SOURCE, f'#include "{HEADER}"\n\nint x; // DEFECT\n')
    code, lines = repository.check()
    assert code == 1
    assert lines[-2:] == ["FAILED  clang-tidy: 1 sources", f"{SOURCE}:int x; // DEFECT"]


@pytest.mark.parametrize("arguments", [["--sometimes"], ["--since"], ["--since", "nowhere"]])
def test_an_argument_that_means_nothing_is_refused(repository, arguments):
    assert repository.check(*arguments) == (2, [])


def test_every_script_tells_what_it_does(repository):
    for name in ("check", "test", "coverage", "package"):
        result = repository.run(f"scripts/{name}.sh", "--help")
        assert result.returncode == 0
        assert f"Usage: scripts/{name}.sh" in result.stdout


def test_all_presets_take_warnings_for_errors_and_the_sanitizers_have_assertions_on():
    presets = json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]
    variables = {preset["name"]: preset.get("cacheVariables", {}) for preset in presets}
    assert variables["base"]["HUB_WARNINGS_AS_ERRORS"] == "ON"
    assert {preset["name"] for preset in presets if preset.get("inherits") != "base"} == {"base"}
    for name in ("asan", "tsan"):
        assert "NDEBUG" not in variables[name]["CMAKE_CXX_FLAGS_RELWITHDEBINFO"]
