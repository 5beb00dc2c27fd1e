"""The commands that the guides tell their readers to run. A test takes those that it runs from here, so that a guide
that changes changes what is run; test_guides.py holds that each of them is taken by some test."""

import re

from harness.hub import ROOT

GUIDES = ("README.md", "Docs/quick-start.md", "Docs/service.md", "Docs/fleet.md", "Docs/command-line.md",
          "Docs/client-libraries.md", "Docs/web.md")

# What begins a command within a sentence or a table, if something stands behind it.
PROGRAM = (r"(?:sudo|camera-hub(?:-[a-z]+)?|cmake|curl|journalctl|nginx|python3|scripts/[a-z]+\.sh|systemctl|"
           r"systemd-[a-z]+)")


def commands_of(text):
    """In their order: the lines of indented blocks, with those that a backslash at the end joins to them, and what
    begins like a command between backticks."""
    text = re.sub(r"^```.*?^```$", "", text, flags=re.MULTILINE | re.DOTALL)
    found = re.findall(rf"^    (\S(?:.*\\\n)*.*)$|`({PROGRAM}\s[^`]+)`", text, re.MULTILINE)
    return [" ".join((line or within).replace("\\\n", " ").split()) for line, within in found]


def guide_commands(guide, beginning=""):
    """Those of a guide that begin so. There is one at least."""
    found = [line for line in commands_of((ROOT / guide).read_text(encoding="utf-8")) if line.startswith(beginning)]
    assert found, f"{guide} has no command that begins with {beginning!r}"
    return found
