"""What the figures of a run depend on."""

import os
import platform
import re
import subprocess
from pathlib import Path

from harness.hub import ROOT


def first_match(pattern: str, file: Path) -> str:
    found = re.search(pattern, file.read_text(encoding="utf-8"), re.MULTILINE)
    return found[1] if found else "unknown"


def compiler() -> str:
    """That of the build that is measured, by name and version."""
    program = first_match(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", ROOT / "build/CMakeCache.txt")
    return subprocess.run([program, "--version"], stdout=subprocess.PIPE, check=True, text=True).stdout.splitlines()[0]


def version(command: str) -> str:
    text = subprocess.run(command.split(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                          text=True).stdout
    found = re.search(r"\d+\.\d+(\.\d+)?", text)
    return found[0] if found else "unknown"


def description() -> str:
    """Without names or paths of the machine."""
    processor = first_match(r"^model name\s*: (.*)$", Path("/proc/cpuinfo"))
    memory = int(first_match(r"^MemTotal:\s*(\d+) kB$", Path("/proc/meminfo"))) / (1 << 20)
    load = os.getloadavg()[0]
    return "\n".join([
        f"- {processor}, {os.cpu_count()} cores, {memory:.0f} GB; load before the run: {load:.1f}",
        f"- Linux {platform.release()}; {compiler()}",
        f"- nginx {version('nginx -v')}, redis {version('redis-server --version')}, wrk {version('wrk -v')}", ""])
