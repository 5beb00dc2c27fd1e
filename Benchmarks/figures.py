"""Figures with their goals, what can be said about them, and the tables that show them."""

import operator
import statistics
from collections.abc import Callable, Iterable, Sequence
from dataclasses import dataclass, field


@dataclass(frozen=True)
class Goal:
    """What a figure must reach, and what it would be fine if it reached."""

    must: float
    stretch: float
    is_met_from: Callable[[float, float], bool]

    def text(self, bound: float) -> str:
        return f"{'≥' if self.is_met_from is operator.ge else '≤'} {bound:g}"


def at_least(must: float, stretch: float) -> Goal:
    return Goal(must, stretch, operator.ge)


def at_most(must: float, stretch: float) -> Goal:
    return Goal(must, stretch, operator.le)


@dataclass(frozen=True)
class Round:
    """One measurement, and that of the reference in the same moment."""

    figure: float
    reference: float | None = None


STRETCH, MET, NOISE, MISSED, NOT_MEASURED = "stretch", "met", "noise", "MISSED", "NOT MEASURED"


@dataclass
class Figure:
    """What is measured in rounds, by turns with its reference; what counts is the median of what `compare` makes of
    the two in each round. Rounds without a reference tell ratios if the figure names one."""

    what: str
    goal: Goal
    unit: str = ""
    reference: str = ""
    compare: Callable[[float, float], float] = operator.truediv
    rounds: list[Round] = field(default_factory=list)

    def values(self) -> list[float]:
        return sorted(each.figure if each.reference is None else self.compare(each.figure, each.reference)
                      for each in self.rounds)

    def better_quarter(self) -> float:
        """Which a quarter of the rounds reach."""
        lower, _, upper = quartiles(self.values())
        return upper if self.goal.is_met_from is operator.ge else lower

    def verdict(self) -> str:
        """A must counts as missed if more than three quarters of the rounds miss it; as long as it is only the median
        that does so, that is the noise of the machine."""
        if not self.rounds:
            return NOT_MEASURED
        is_met_from, middle = self.goal.is_met_from, quartiles(self.values())[1]
        if is_met_from(middle, self.goal.stretch):
            return STRETCH
        if is_met_from(middle, self.goal.must):
            return MET
        return NOISE if is_met_from(self.better_quarter(), self.goal.must) else MISSED

    def has_failed(self) -> bool:
        return self.verdict() in (MISSED, NOT_MEASURED)


def quartiles(values: Sequence[float]) -> tuple[float, float, float]:
    """Of one value or more: the lower one, the median, the upper one."""
    if len(values) == 1:
        return values[0], values[0], values[0]
    lower, middle, upper = statistics.quantiles(values, n=4, method="inclusive")
    return lower, middle, upper


def short(value: float) -> str:
    """Three significant digits, without an exponent."""
    decimals = next((digits for bound, digits in ((100, 0), (10, 1), (1, 2)) if abs(value) >= bound), 3)
    return f"{value:.{decimals}f}"


HEADINGS = ("what", "reference", "figure", "ratio", "middle half", "must", "stretch", "verdict")


def row(figure: Figure) -> tuple[str, ...]:
    def with_unit(value: float) -> str:
        return f"{short(value)} {figure.unit}".rstrip()

    must, stretch = figure.goal.text(figure.goal.must), figure.goal.text(figure.goal.stretch)
    if not figure.rounds:
        return figure.what, figure.reference, "", "", "", must, stretch, figure.verdict()
    lower, middle, upper = quartiles(figure.values())
    own = with_unit(statistics.median(each.figure for each in figure.rounds))
    references = [each.reference for each in figure.rounds if each.reference is not None]
    if references:
        ratio = ("+" if figure.compare is operator.sub and middle >= 0 else "") + short(middle)
        cells = (f"{figure.reference} {with_unit(statistics.median(references))}", own, ratio)
    else:
        cells = (f"{figure.reference} = 1", "", own) if figure.reference else ("", own, "")
    return figure.what, *cells, f"{short(lower)} to {short(upper)}", must, stretch, figure.verdict()


def table(title: str, figures: Iterable[Figure]) -> str:
    """As Markdown shows it, aligned for reading as it stands."""
    rows = [HEADINGS, *map(row, figures)]
    widths = [max(len(cells[column]) for cells in rows) for column in range(len(HEADINGS))]

    def line(cells: Iterable[str]) -> str:
        return "| " + " | ".join(cell.ljust(width) for cell, width in zip(cells, widths)) + " |"

    rule = "|" + "|".join("-" * (width + 2) for width in widths) + "|"
    return "\n".join([f"### {title}", "", line(HEADINGS), rule, *map(line, rows[1:]), ""])


@dataclass
class Measurement:
    """Figures that are measured together: `measure` makes one round of each."""

    figures: Sequence[Figure]
    measure: Callable[[], Sequence[Round]]
    rounds: int = 9
    repeats: int = 2  # of all rounds, as long as a must is not met

    def take(self) -> None:
        for _ in range(1 + self.repeats):
            for _ in range(self.rounds):
                for figure, result in zip(self.figures, self.measure(), strict=True):
                    figure.rounds.append(result)
            if all(figure.verdict() in (STRETCH, MET) for figure in self.figures):
                break
