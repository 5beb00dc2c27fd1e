"""What shells complete of a command's words."""

import os
import pty
import shutil
import subprocess

from harness.command import ENVIRONMENT
from harness.console import read_within


def completed_by_bash(completion, command, *words):
    """What that file's function has for the last one of the words behind the command."""
    function = f"_{command.replace('-', '_')}"
    say = 'printf "%s\\n" "${COMPREPLY[@]}"'
    script = f'. {completion}; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); {function}; {say}'
    result = subprocess.run(["bash", "--norc", "-c", script, "bash", command, *words], capture_output=True, text=True,
                            check=True)
    assert result.stderr == ""
    return set(result.stdout.split())


class Zsh:
    """One that a person types at, which has this completion."""

    def __init__(self, folder, completion):
        shutil.copy(completion, folder)
        self._terminal, end = pty.openpty()
        self._process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", "zsh", "-f", "-i"], stdin=end, stdout=end,
                                         stderr=end, env=ENVIRONMENT | {"TERM": "dumb", "COLUMNS": "200"}, cwd=folder)
        os.close(end)
        self._type(f"PS1='ready> '; LISTMAX=0; fpath=({folder} $fpath)\n")
        self._type(f"autoload -Uz compinit; compinit -u -d {folder}/dump\n")
        self._read_until_done()

    def _type(self, text):
        os.write(self._terminal, text.encode())

    def _read_until_done(self):
        """All that it writes until it has done what was typed before, and reads keys again."""
        self._type("echo all''done\n")  # not written so, but only done gives the word
        seen = ""
        while "ready> " not in seen.partition("alldone")[2]:
            seen += read_within(self._terminal, 65536).decode(errors="replace")
        return seen

    def completions(self, line):
        """What it lists below the line, when that is typed."""
        self._type(f"{line}\x04\x15")  # ^D lists what is possible, ^U empties the line
        return self._read_until_done()

    def close(self):
        self._process.kill()
        self._process.wait()
        os.close(self._terminal)
