#!/usr/bin/python3
"""Makes the packages that are to be tried, as the guides tell."""

import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "EndToEnd"))

from harness.guides import guide_commands  # noqa: E402
from harness.hub import ROOT  # noqa: E402


def main():
    commands = {
        *guide_commands("README.md", "scripts/package.sh"),
        *guide_commands("Docs/quick-start.md", "scripts/package.sh"),
        *guide_commands("Docs/service.md", "scripts/package.sh"),
        *guide_commands("Docs/web.md", "scripts/package.sh"),
    }
    for command in sorted(commands):
        subprocess.run(command.split(), cwd=ROOT, check=True)


if __name__ == "__main__":
    main()
