"""The manual, the completions and the document of camera-hub-web say what the program says of itself."""

import re
import subprocess

from harness.completion import Zsh, completed_by_bash
from harness.hub import EXECUTABLE, ROOT
from harness.web import WEB_EXECUTABLE

FOLDER = ROOT / "Services/CameraHubWeb"
MANUAL = FOLDER / "camera-hub-web.1.scd"
DOCUMENT = ROOT / "Docs/web.md"
BASH = FOLDER / "completions/camera-hub-web.bash"
ZSH = FOLDER / "completions/_camera-hub-web"
NAME = re.compile(r"(?<![\w-])--?[a-z][a-z-]*")

HELP = subprocess.run([WEB_EXECUTABLE, "--help"], capture_output=True, text=True, check=True).stdout
OPTIONS = {name for words in re.findall(r"^  (-\S+)", HELP, re.MULTILINE) for name in words.split(",")}


def names_in(lines):
    return {name for line in lines for name in NAME.findall(line)}


def test_the_help_names_options():
    assert {"-h", "--help", "--version", "--listen", "--token-file", "--allow-host"} <= OPTIONS


def test_the_manual_and_the_document_have_each_option_and_no_other():
    manual, document = MANUAL.read_text(encoding="utf-8"), DOCUMENT.read_text(encoding="utf-8")
    assert names_in(re.findall(r"^\*-.*", manual, re.MULTILINE)) == OPTIONS
    assert names_in(re.findall(r"^\| (`-.*?) \|", document, re.MULTILINE)) == OPTIONS


def test_the_defaults_are_the_same_everywhere():
    manual, document = MANUAL.read_text(encoding="utf-8"), DOCUMENT.read_text(encoding="utf-8")
    in_document = dict(re.findall(r"^\| `(--[a-z-]+) [^|]*\| .*\(default: ([^)]*)\)", document, re.MULTILINE))
    assert {"--listen", "--keep", "--keep-memory", "--idle"} <= set(in_document)
    for option, value in in_document.items():
        (described,) = re.findall(rf"^\*{option}\* .*\n((?:\t.*\n)+)", manual, re.MULTILINE)
        assert f"Default: {value}" in described, option
        (help_of_it,) = re.findall(rf"^  {option} ((?:.*\n(?:    )?)*?)(?=^  -|\n|\Z)", HELP, re.MULTILINE)
        assert value in help_of_it, option


def test_the_exit_codes_are_the_same_everywhere():
    status = MANUAL.read_text(encoding="utf-8").partition("# EXIT STATUS")[2]
    assert re.findall(r"^\*(\d+)\*$", status, re.MULTILINE) == ["0", "1", "2"]
    assert subprocess.run([WEB_EXECUTABLE, "--unknown"], capture_output=True, check=False).returncode == 2


def test_the_manual_becomes_a_page():
    page = subprocess.run(["scdoc"], stdin=MANUAL.open("rb"), capture_output=True, check=True).stdout.decode()
    assert page.count("\n.SH ") >= 6 and "camera-hub-web" in page


def test_what_is_installed_runs_and_has_its_manual_completions_unit_and_settings(tmp_path):
    subprocess.run(["cmake", "--install", EXECUTABLE.parent.parent, "--component", "web", "--prefix", tmp_path],
                   capture_output=True, check=True)
    files = {path.relative_to(tmp_path).as_posix() for path in tmp_path.rglob("*") if path.is_file()}
    assert files == {"bin/camera-hub-web", "share/man/man1/camera-hub-web.1.gz", "etc/default/camera-hub-web",
                     "lib/systemd/system/camera-hub-web.service", "share/zsh/vendor-completions/_camera-hub-web",
                     "share/bash-completion/completions/camera-hub-web"}
    assert subprocess.run([tmp_path / "bin/camera-hub-web", "--version"], capture_output=True, text=True,
                          check=True).stdout == "camera-hub-web 2.9\n"


def test_bash_completes_options_and_files(tmp_path):
    def completed(*words):
        return completed_by_bash(BASH, "camera-hub-web", *words)

    assert completed("-") == OPTIONS
    assert completed("--tok") == {"--token-file"}
    assert completed("--listen", "") == set()
    (tmp_path / "secret").touch()
    assert completed("--token-file", f"{tmp_path}/sec") == {f"{tmp_path}/secret"}


def test_zsh_completes_options(tmp_path):
    zsh = Zsh(tmp_path, ZSH)
    try:
        listed = zsh.completions("camera-hub-web -")
        assert set(NAME.findall(listed.partition("camera-hub-web -")[2])) >= OPTIONS, listed
    finally:
        zsh.close()
