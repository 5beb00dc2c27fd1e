"""Every command of the guides is run by some test."""

import ast

from harness.guides import GUIDES, commands_of, guide_commands
from harness.hub import ROOT


def taken_by(text):
    """What a test's source takes from the guides, as (guide, command)."""
    for call in ast.walk(ast.parse(text)):
        if isinstance(call, ast.Call) and isinstance(call.func, ast.Name) and call.func.id == "guide_commands":
            guide, *beginning = [ast.literal_eval(argument) for argument in call.args]
            yield from ((guide, command) for command in guide_commands(guide, *beginning))


def test_every_command_of_the_guides_is_taken_by_a_test_that_runs_it():
    sources = [path for path in sorted((ROOT / "Tests").rglob("*.py")) if path.name != "test_guides.py"]
    taken = {found for path in sources for found in taken_by(path.read_text(encoding="utf-8"))}
    assert [(guide, command) for guide in GUIDES for command in guide_commands(guide)
            if (guide, command) not in taken] == []


def test_commands_are_found_in_blocks_and_in_sentences():
    text = """Text, `scripts/run.sh`, `kill -9`, and `systemctl
edit camera-hub`.

    first --option \\
      continued
    second | third

```text
    not this one
```

| `camera-hub-expose all` | everybody |
"""
    assert commands_of(text) == ["systemctl edit camera-hub", "first --option continued", "second | third",
                                 "camera-hub-expose all"]


def test_what_a_test_takes_is_what_begins_so():
    assert list(taken_by('(a, b) = guide_commands("README.md", "python3 Examples/capture.py")\ncommands("README.md")')
                ) == [("README.md", command) for command in guide_commands("README.md")
                      if command.startswith("python3 Examples/capture.py")]
    assert list(taken_by("guide_commands_of('README.md')")) == []
