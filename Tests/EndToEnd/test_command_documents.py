"""The manual, the completions and the documents of camera-hub say what the program says of itself."""

import json
import re
import signal
import subprocess

import pytest
from harness.command import COMMAND, ENVIRONMENT, run
from harness.completion import Zsh, completed_by_bash
from harness.guides import guide_commands
from harness.hub import ROOT
from harness.scenario import EXPOSURE, scenario
from harness.wait import PATIENCE

FOLDER = ROOT / "Tools/CameraHub"
MANUAL = FOLDER / "camera-hub.1.scd"
DOCUMENT = ROOT / "Docs/command-line.md"
BASH = FOLDER / "completions/camera-hub.bash"
ZSH = FOLDER / "completions/_camera-hub"

OPTION = re.compile(r"(?<![\w-])--?[a-z][a-z-]*")


def help_of(*command):
    return subprocess.run([COMMAND, *command, "--help"], capture_output=True, text=True, check=True).stdout


def options_in_help(*command):
    """Those that stand at the beginning of a line."""
    names = re.findall(r"^  (-\S+)", help_of(*command), re.MULTILINE)
    return {option for name in names for option in name.split(",")}


COMMANDS = re.findall(r"^  (\w+) ", help_of().partition("\nSubcommands:\n")[2].partition("\nExamples")[0], re.MULTILINE)
EVERYWHERE = options_in_help()


def sections(file, mark):
    """What stands below each heading of a command; below none: what stands before them all."""
    before, *rest = re.split(f"^{mark} ({'|'.join(COMMANDS)})$", file.read_text(encoding="utf-8"), flags=re.MULTILINE)
    return {"": before} | dict(zip(rest[::2], rest[1::2], strict=True))


def test_the_help_names_commands_and_options():
    assert COMMANDS == ["list", "capture", "bracket", "find", "version", "diagnostics", "health"]
    assert {"--host", "--json", "-q", "--quiet", "--version", "-h", "--help"} <= EVERYWHERE
    assert {"--camera", "-c", "--show"} <= options_in_help("capture")


@pytest.mark.parametrize("command", COMMANDS)
def test_the_manual_and_the_document_have_each_option_of_a_command_and_no_other(command):
    own = options_in_help(command) - EVERYWHERE
    in_manual = re.split(r"^# ", sections(MANUAL, "##")[command], flags=re.MULTILINE)[0]
    assert {name for line in re.findall(r"^\*-.*", in_manual, re.MULTILINE) for name in OPTION.findall(line)} == own
    rows = re.findall(r"^\| (`-.*?) \|", sections(DOCUMENT, "##")[command], re.MULTILINE)
    assert {name for row in rows for name in OPTION.findall(row)} == own


def test_the_manual_and_the_document_have_each_option_of_all_commands():
    in_manual = sections(MANUAL, "##")[""]
    assert {name for line in re.findall(r"^\*-.*", in_manual, re.MULTILINE)
            for name in OPTION.findall(line)} == EVERYWHERE
    rows = re.findall(r"^\| (`-.*?) \|", sections(DOCUMENT, "##")[""], re.MULTILINE)
    assert {name for row in rows for name in OPTION.findall(row)} == EVERYWHERE


def test_the_exit_codes_are_the_same_everywhere():
    code = (FOLDER / "Terminal/ExitCode.h").read_text(encoding="utf-8")
    codes = set(map(int, re.findall(r"^    \w+ = (\d+),", code, re.MULTILINE)))
    assert 128 in codes
    codes = codes - {128} | {128 + signal.SIGINT}
    in_help = help_of().partition("Exit codes: ")[2]
    assert set(map(int, re.findall(r"(?:^|, |\n)(\d+) ", in_help))) == codes
    assert set(map(int, re.findall(r"^\| (\d+) \|", DOCUMENT.read_text(encoding="utf-8"), re.MULTILINE))) == codes
    status = MANUAL.read_text(encoding="utf-8").partition("# EXIT STATUS")[2]
    assert set(map(int, re.findall(r"^\*(\d+)\*$", status, re.MULTILINE))) == codes


def test_the_manual_becomes_a_page():
    page = subprocess.run(["scdoc"], stdin=MANUAL.open("rb"), capture_output=True, check=True).stdout.decode()
    assert page.count("\n.SH ") >= 6 and all(f"\\fB{command}\\fR" in page or command in page for command in COMMANDS)


def test_what_is_installed_runs_and_has_its_manual_and_completions(tmp_path):
    (command,) = guide_commands("Docs/command-line.md", "cmake --install build ")
    command = command.replace(" build ", f" {COMMAND.parent.parent} ")
    subprocess.run([*command.split(), "--prefix", tmp_path], capture_output=True, check=True)
    files = {path.relative_to(tmp_path).as_posix() for path in tmp_path.rglob("*") if path.is_file()}
    assert files == {"bin/camera-hub", "share/man/man1/camera-hub.1.gz", "share/bash-completion/completions/camera-hub",
                     "share/zsh/vendor-completions/_camera-hub"}
    assert subprocess.run([tmp_path / "bin/camera-hub", "--version"], capture_output=True, text=True,
                          check=True).stdout == "camera-hub 2.9\n"


def completed(*words):
    return completed_by_bash(BASH, "camera-hub", *words)


def test_bash_completes_commands_and_options():
    assert completed("") == set(COMMANDS)
    assert completed("-") == EVERYWHERE
    for command in COMMANDS:
        assert completed(command, "-") == options_in_help(command) | EVERYWHERE
    assert completed("capture", "--ex") == {"--exposure"}
    assert completed("capture", "--exposure", "") == set()


def test_bash_completes_files(tmp_path):
    (tmp_path / "still.png").touch()
    assert completed("capture", "-o", f"{tmp_path}/st") == {f"{tmp_path}/still.png"}


def test_zsh_completes_commands_and_options(tmp_path):
    zsh = Zsh(tmp_path, ZSH)
    try:
        listed = zsh.completions("camera-hub ")
        assert all(re.search(rf"\b{command} +-- ", listed) for command in COMMANDS), listed
        for command in COMMANDS:
            listed = zsh.completions(f"camera-hub {command} -")
            shown = set(OPTION.findall(listed.partition(f"camera-hub {command} -")[2]))
            assert shown >= options_in_help(command) | EVERYWHERE, listed
    finally:
        zsh.close()


@pytest.fixture(scope="module")
def hub(start_shared_hub):
    return start_shared_hub(scenario("desk", camera={"exposure": EXPOSURE})).wait_for_cameras("desk")


def documented_commands():
    lines = guide_commands("Docs/command-line.md", "camera-hub ") + guide_commands("README.md", "camera-hub ")
    examples = re.findall(r"^  (camera-hub .*)$", help_of().partition("Examples:")[2], re.MULTILINE)
    manual = re.findall(r"^\t(camera-hub .*)$", MANUAL.read_text(encoding="utf-8"), re.MULTILINE)
    return sorted({*lines, *examples, *manual})


@pytest.mark.parametrize("line", documented_commands())
def test_a_documented_command_does_what_it_should(hub, tmp_path, line):
    line = line.replace("lab.example", "localhost").replace("10s", "1s").replace("pngtopnm", "cat")
    environment = ENVIRONMENT | {"PATH": f"{COMMAND.parent}:{ENVIRONMENT['PATH']}"}
    result = hub.network.run(subprocess.run, ["bash", "-o", "pipefail", "-c", line], cwd=tmp_path, env=environment,
                             capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert result.returncode == 0, result.stderr


def members(section):
    """Those of the document's tables and sentences below a heading."""
    text = sections(DOCUMENT, "##")[section].partition("The JSON value")[2]
    return set(re.findall(r"`([a-zA-Z]+)`", text))


def test_the_members_of_each_json_value_are_documented(hub, tmp_path):
    def value(*arguments):
        return json.loads(run(hub.network, *arguments, "--json", "-q", folder=tmp_path).stdout)

    assert members("list") == set(value("list")[0])
    still = value("capture", "-o", "a.png")
    assert members("capture") == {*still, *still["stills"][0]}
    assert members("bracket") == set(value("bracket", "--from", "1ms", "--to", "1ms")) - set(still)
    assert members("health") == set(value("health"))
    assert {f"`{name}`" for name in value("version")} <= set(
        re.findall(r"`\w+`", sections(DOCUMENT, "##")["version"]))
