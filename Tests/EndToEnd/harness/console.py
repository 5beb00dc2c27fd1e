"""A hub started with its console, for what a person types and sees."""

import os
import pty
import re
import select
import shutil
import subprocess

from harness.hub import EXECUTABLE, HTTP_PORT, RPC_PORT, Hub
from harness.wait import PATIENCE, wait_until

PROMPTS = ("Main> ", "ActOnCamera> ", "Which?> ", "ID?>", "Kind?>", "Exposure?> ", "Focus?> ", "WhiteBalance?> ")


def read_within(descriptor, size):
    """What has been written, at most `size` bytes, as soon as there is something."""
    assert select.select([descriptor], [], [], PATIENCE)[0], "nothing has been written"
    return os.read(descriptor, size)


# What the hub itself writes behind the console's output when it starts.
HUB_LINE = "Console logging is disabled.\n"


class ConsoleHub(Hub):
    """Runs a copy of the executable, so that the pictures are saved in a folder of this hub's own."""

    def __init__(self, folder, scenario, arguments=("--debug",)):
        super().__init__(folder, scenario)
        self.program_folder = folder / "program"
        self.program_folder.mkdir()
        self._program = shutil.copy2(EXECUTABLE, self.program_folder)
        self._arguments = arguments

    def start(self, stdin, stdout):
        command = ["setpriv", "--pdeathsig", "KILL", str(self._program), *self._arguments]
        with open(self.stderr_file, "wb") as stderr:
            self.process = self.network.run(subprocess.Popen, command, env=self._environment, cwd=self.folder,
                                            stdin=stdin, stdout=stdout, stderr=stderr)
        return self

    def wait_for_ports(self):
        for port in (RPC_PORT, HTTP_PORT):
            wait_until(lambda port=port: self._answers_at(port), f"port {port} is open")

    def saved_files(self, camera):
        return sorted((self.program_folder / camera).iterdir())

    def plain(self, output):
        """The console's part, with FOLDER for the program's, and {1}, {2} for the ids of pictures as they came."""
        text = output.decode().replace("\r\n", "\n").replace(str(self.program_folder), "FOLDER")
        assert text.endswith(HUB_LINE), text
        text = text.removesuffix(HUB_LINE)
        ids = dict.fromkeys(re.findall(r"\{[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}\}", text))
        for number, name in enumerate(ids, 1):
            text = text.replace(name, f"{{{number}}}")
        return text


class PipedHub(ConsoleHub):
    def start_with(self, typed):
        """Starts it with this as its whole input."""
        super().start(subprocess.PIPE, subprocess.PIPE)
        self.process.stdin.write(typed.encode())
        self.process.stdin.close()
        return self

    def read(self, size):
        """So many bytes of its output."""
        output = b""
        while len(output) < size:
            output += read_within(self.process.stdout.fileno(), size - len(output))
        return output

    def transcript(self):
        """All output, once the hub itself is up."""
        self.wait_for_ports()
        os.set_blocking(self.process.stdout.fileno(), False)
        return self.plain(self.process.stdout.read() or b"")

    def stop(self):
        super().stop()
        if self.process is not None:
            self.process.stdout.close()


class TerminalHub(ConsoleHub):
    """Somebody types at it, and sees what they type."""

    def start_at_terminal(self):
        self._terminal, end = pty.openpty()
        super().start(end, end)
        os.close(end)
        self._seen = b""
        return self

    def _see_prompt(self):
        while not self._seen.endswith(tuple(prompt.encode() for prompt in PROMPTS)):
            self._seen += read_within(self._terminal, 4096)

    def type(self, *lines):
        """Each line at the prompt that asks for it."""
        for line in lines:
            self._see_prompt()
            os.write(self._terminal, line.encode() + b"\n")
            # With its echo, so that the prompt just answered is not taken for the next one.
            echo = self._seen + line.encode() + b"\r\n"
            while len(self._seen) < len(echo):
                self._seen += read_within(self._terminal, len(echo) - len(self._seen))

    def transcript(self):
        self.wait_for_ports()
        # What has been written to a terminal reaches its other end a moment later, and in parts.
        while not self._seen.endswith(HUB_LINE.replace("\n", "\r\n").encode()):
            self._seen += read_within(self._terminal, 65536)
        return self.plain(self._seen)

    def stop(self):
        super().stop()
        os.close(self._terminal)
