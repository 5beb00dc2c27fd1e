"""One running hub with a network, a scenario and data folders of its own."""

import contextlib
import json
import os
import re
import signal
import subprocess
import time
from dataclasses import dataclass
from pathlib import Path

from harness.files import complete_lines
from harness.http import HttpConnection
from harness.network import Network
from harness.rpc import RpcClient
from harness.wait import PATIENCE, wait_until

ROOT = Path(__file__).resolve().parents[3]
EXECUTABLE = Path(os.environ.get("HUB_EXECUTABLE", ROOT / "build/bin/LarkspurWindowsCameraHub")).absolute()
PRESET = os.environ.get("HUB_PRESET", "release")
IS_SANITIZED = PRESET in ("asan", "tsan")
ASSERTS = IS_SANITIZED or PRESET == "debug"
RPC_PORT, HTTP_PORT = 3141, 3142

SERVICE_LOGGER = "LarkspurWindowsCameraHub.Service"
DEVICE_LOGGER = "LarkspurWindowsCameraHub.Device"
COMMUNICATION_LOGGER = "LarkspurWindowsCameraHub.Device.Communication"

PARAMETERS_KEY = r"[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Services\Larkspur Windows Camera Hub\Parameters]"

LOG_LINE = re.compile(r"\S+ \S+ +\[[^]]*\] (?P<level>[A-Z]+) +(?P<logger>\S+) - (?P<text>.*)")
SANITIZER_REPORT = re.compile(r"(Thread|Address|Leak)Sanitizer|runtime error:")


@dataclass(frozen=True)
class LogEntry:
    level: str
    logger: str
    text: str


def log_entries(file):
    """The entries in a log file; none if it is not there."""
    return [LogEntry(**match.groupdict()) for line in complete_lines(file) if (match := LOG_LINE.fullmatch(line))]


class Hub:
    """Made with what it is to find at its start; start() runs it, stop() ends it if nothing else has. The shell
    command `prepare`, if there is one, runs before it in the same process."""

    def __init__(self, folder, scenario=None, environment=None, network=None, prepare=None, executable=EXECUTABLE):
        self.folder = folder
        self.executable = executable
        self.network = network or Network()
        self.prepare = prepare
        self.scenario_file = folder / "scenario.json"
        self.journal_file = folder / "journal.jsonl"
        self.registry_file = folder / "registry.reg"
        self.stdout_file = folder / "stdout.txt"
        self.stderr_file = folder / "stderr.txt"
        self.common_data = folder / "common"
        if scenario is not None:
            self.write_scenario(scenario)
        self._clients = []
        self._environment = self._make_environment(environment or {})
        self.process = None

    def _make_environment(self, additions):
        environment = {name: value for name, value in os.environ.items() if not name.startswith("CAMERA_HUB_")}
        for variable, name in (("CAMERA_HUB_COMMON_DATA", "common"), ("CAMERA_HUB_LOCAL_DATA", "local")):
            (self.folder / name).mkdir()
            environment[variable] = str(self.folder / name)
        environment["CAMERA_HUB_REGISTRY"] = str(self.registry_file)
        environment["CAMERA_HUB_PLATFORM"] = "simulated"
        environment["CAMERA_HUB_SIMULATION"] = str(self.scenario_file)
        environment.update(additions)
        return {name: value for name, value in environment.items() if value is not None}

    def write_scenario(self, scenario):
        """In one step, as the hub may be reading the file."""
        new = self.scenario_file.with_suffix(".new")
        new.write_text(json.dumps({"journal": self.journal_file.name} | scenario), encoding="utf-8")
        new.rename(self.scenario_file)

    def write_registry(self, *values, encoding="utf-8"):
        text = "\r\n".join(["Windows Registry Editor Version 5.00", "", PARAMETERS_KEY, *values, ""])
        self.registry_file.write_bytes(text.encode(encoding))

    def start(self, wait_for_ports=True):
        # setpriv: the hub goes down with the tests, however they end.
        command = ["setpriv", "--pdeathsig", "KILL", str(self.executable)]
        if self.prepare:
            command = ["sh", "-e", "-c", f'{self.prepare}\nexec "$@"', "sh", *command]
        with open(self.stdout_file, "wb") as stdout, open(self.stderr_file, "wb") as stderr:
            self.process = self.network.run(subprocess.Popen, command, env=self._environment, cwd=self.folder,
                                            stdin=subprocess.DEVNULL, stdout=stdout, stderr=stderr)
        if wait_for_ports:
            for port in (RPC_PORT, HTTP_PORT):
                wait_until(lambda port=port: self._answers_at(port), f"port {port} is open")
        return self

    def restart(self):
        """Kills this run and starts the next, in a folder of its own."""
        self.process.kill()
        self.process.wait()
        self.wait_for_the_next_run_name()
        return self.start()

    def wait_for_the_next_run_name(self):
        """Until the second of the latest run is over: two runs of one second share their folder."""
        last = self.run_folders()[-1].name
        wait_until(lambda: time.strftime("%Y-%m-%d_%H-%M-%S") != last, "the next second")

    def _answers_at(self, port):
        assert self.process.poll() is None, f"the hub ended: {self.stderr()}"
        try:
            self.network.connect(port).close()
        except ConnectionRefusedError:
            return False
        return True

    def rpc(self):
        client = RpcClient(self.network.connect(RPC_PORT))
        self._clients.append(client)
        return client

    def http(self):
        client = HttpConnection(self.network.connect(HTTP_PORT))
        self._clients.append(client)
        return client

    def get(self, path):
        """One GET on a connection of its own."""
        connection = self.http()
        response = connection.get(path)
        connection.close()
        return response

    def image(self, resid):
        response = self.get(f"/res/{resid}")
        assert response.status == 200, response.head
        return response.body

    def wait_for_cameras(self, *uids):
        """Until discovery gives exactly these."""
        client = self.rpc()
        wait_until(lambda: [camera["uid"] for camera in client.discover()] == sorted(uids), f"the cameras {uids}")
        client.close()
        return self

    def wait_for_end(self):
        """The number of the signal that has ended the hub; fails if it ended otherwise, or not in time."""
        code = self.process.wait(PATIENCE)
        assert code < 0, f"exit code {code}: {self.stderr()}"
        return signal.Signals(-code)

    def is_running(self):
        return self.process.poll() is None

    def stderr(self):
        return self.stderr_file.read_text(encoding="utf-8", errors="replace")

    def stdout(self):
        return self.stdout_file.read_text(encoding="utf-8")

    @property
    def data_folder(self):
        return self.common_data / "Halden Imaging Group" / "Larkspur Windows Camera Hub 2.9"

    def run_folders(self):
        """Those of all runs, the oldest first."""
        folder = self.data_folder / "Diagnostics"
        return sorted(folder.iterdir()) if folder.is_dir() else []

    def log(self, name="DEFAULT.log"):
        """The entries of all runs that are still there."""
        entries = []
        for folder in self.run_folders():
            entries += log_entries(folder / "logs" / name)
        return entries

    def crash_records(self):
        return [path.read_text(encoding="utf-8") for folder in self.run_folders()
                for path in sorted((folder / "Crash").glob("crash-*.txt"))]

    def wait_for_log(self, level, logger, text):
        entry = LogEntry(level, logger, text)
        wait_until(lambda: entry in self.log(), f"log entry {entry}")

    def journal(self):
        """The platform calls so far."""
        return [json.loads(line) for line in complete_lines(self.journal_file)]

    def proc(self, name):
        return Path(f"/proc/{self.process.pid}/{name}")

    def open_files(self):
        """The paths behind its descriptors, without those that are closed meanwhile."""
        paths = []
        for link in self.proc("fd").iterdir():
            with contextlib.suppress(FileNotFoundError):
                paths.append(link.readlink())
        return paths

    def stop(self):
        for client in self._clients:
            client.close()
        if self.process is not None and self.process.poll() is None:
            # Where coverage is counted, a hub writes its counts before this ends it.
            self.process.send_signal(signal.SIGTERM if PRESET == "coverage" else signal.SIGKILL)
            self.process.wait()
        self.network.close()
        if self.process is not None:
            assert not SANITIZER_REPORT.search(self.stderr()), self.stderr()
