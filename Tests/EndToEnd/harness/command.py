"""The command line "camera-hub", run in the network of a hub."""

import fcntl
import os
import pty
import select
import signal
import struct
import subprocess
import termios

from harness.console import read_within
from harness.hub import EXECUTABLE
from harness.wait import PATIENCE, wait_until

COMMAND = EXECUTABLE.with_name("camera-hub")
ENVIRONMENT = {"PATH": os.environ["PATH"], "HOME": "/nonexistent", "TERM": "xterm-256color", "COLORTERM": "truecolor"}

# Nothing that the command writes.
LAST = b"<the last>"


def run(network, *arguments, folder=None, text=True, **environment):
    """Its result, with standard output and error in pipes."""
    return network.run(subprocess.run, [str(COMMAND), *map(str, arguments)], cwd=folder, capture_output=True,
                       text=text, stdin=subprocess.DEVNULL, timeout=PATIENCE, check=False,
                       env=ENVIRONMENT | environment)


def fails_with(code, line, result):
    """It told one line at standard error, and nothing else."""
    assert (result.returncode, result.stdout, result.stderr) == (code, "", f"camera-hub: {line}\n")


class StartedCommand:
    """One that runs on, at a terminal or with pipes; stop() ends it if nothing else has."""

    def __init__(self, network, *arguments, folder=None, columns=None, rows=50, **environment):
        self._terminal = None
        output = errors = subprocess.PIPE
        if columns:
            self._terminal, output = pty.openpty()
            fcntl.ioctl(output, termios.TIOCSWINSZ, struct.pack("4H", rows, columns, 0, 0))
            errors = output
        # setpriv: it goes down with the tests, however they end.
        self.process = network.run(subprocess.Popen,
                                   ["setpriv", "--pdeathsig", "KILL", str(COMMAND), *map(str, arguments)],
                                   cwd=folder, stdin=subprocess.DEVNULL, stdout=output, stderr=errors,
                                   env=ENVIRONMENT | environment)
        self._end = output
        self.seen = b""

    def read_until(self, text):
        """All that it has written at its terminal, or to standard output, once that is among it."""
        source = self._terminal if self._terminal is not None else self.process.stdout.fileno()
        while text.encode() not in self.seen:
            more = read_within(source, 65536)
            assert more, f"it ended: {self.seen.decode()}"
            self.seen += more
        return self.seen.decode()

    def _has_ended(self):
        if select.select([self._terminal], [], [], 0)[0]:
            self.seen += os.read(self._terminal, 65536)
        return self.process.poll() is not None

    def rest(self):
        """All that it writes at its terminal until its end."""
        wait_until(self._has_ended, "the end of the command")
        # What has been written to a terminal reaches its other end a moment later: this as the last of it.
        os.write(self._end, LAST)
        while not self.seen.endswith(LAST):
            self.seen += read_within(self._terminal, 65536)
        self.seen = self.seen.removesuffix(LAST)
        return self.seen.decode().replace("\r\n", "\n")

    def interrupt(self, number=signal.SIGINT):
        """The code that it then ends with."""
        self.process.send_signal(number)
        return self.process.wait(PATIENCE)

    def stop(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        for stream in (self.process.stdout, self.process.stderr):
            if stream is not None:
                stream.close()
        if self._terminal is not None:
            os.close(self._terminal)
            os.close(self._end)
