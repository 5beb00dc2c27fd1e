"""The tables of programs that measure by themselves. With --lines such a program prints a line a figure, fields with a
tab between, the first line naming them; without such a line they are those of FIELDS. Numbers may have a unit behind
them, goals a sign before them."""

import operator
import subprocess
from collections.abc import Callable, Iterator
from dataclasses import dataclass
from pathlib import Path

from figures import Figure, Goal, Measurement, Round
from servers import PROGRAMS

FIELDS = ["what", "reference", "figure", "ratio", "must", "stretch"]
AT_LEAST, AT_MOST = (">=", "≥"), ("<=", "≤")


class NotBuilt(Exception):
    """The program is not there."""


@dataclass(frozen=True)
class Line:
    what: str
    reference: str
    value: float  # the ratio, or where there is no reference the figure
    unit: str  # of the value
    goal: Goal

    def figure(self) -> Figure:
        return Figure(self.what, self.goal, self.unit, self.reference)


def number_and_unit(text: str) -> tuple[float, str]:
    number, _, unit = text.strip().partition(" ")
    return float(number), unit


def goal_of(must: str, stretch: str) -> Goal:
    """Which way it goes tells a sign, else which of the two is larger. Raises ValueError where neither does."""
    signs = AT_LEAST + AT_MOST
    bounds = [number_and_unit(text.strip().lstrip("".join(signs)))[0] for text in (must, stretch)]
    sign = next((sign for sign in signs if must.strip().startswith(sign)), None)
    if sign is None and bounds[0] == bounds[1]:
        raise ValueError(f"a goal that tells no direction: {must}")
    rises = sign in AT_LEAST if sign else bounds[1] > bounds[0]
    return Goal(*bounds, operator.ge if rises else operator.le)


def parse_lines(text: str) -> list[Line]:
    """Raises ValueError for what is no figure, and if there is none."""
    rows = [line.split("\t") for line in text.splitlines() if line.strip()]
    names = [name.strip() for name in rows.pop(0)] if rows and rows[0][0].strip() == "what" else FIELDS
    lines = []
    for cells in rows:
        if len(cells) != len(names):
            raise ValueError(f"not {', '.join(names)}: {cells}")
        fields = dict(zip(names, cells))
        value, unit = number_and_unit(fields.get("ratio", "").strip() or fields["figure"])
        lines.append(Line(fields["what"].strip(), fields.get("reference", "").strip(), value, unit,
                          goal_of(fields["must"], fields["stretch"])))
    if not lines:
        raise ValueError("no figures")
    return lines


def table_of(program: str) -> Callable[[Path], Iterator[Measurement]]:
    def run() -> list[Line]:
        text = subprocess.run([PROGRAMS / program, "--lines"], stdout=subprocess.PIPE, check=True, text=True).stdout
        return parse_lines(text)

    def measurements(_: Path) -> Iterator[Measurement]:
        if not (PROGRAMS / program).exists():
            raise NotBuilt(program)
        runs = [run()]
        figures = [line.figure() for line in runs[0]]

        def measure() -> list[Round]:
            return [Round(line.value) for line in (runs.pop() if runs else run())]

        yield Measurement(figures, measure, rounds=1, repeats=1)  # a run takes minutes

    return measurements
