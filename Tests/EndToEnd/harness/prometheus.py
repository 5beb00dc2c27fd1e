"""The text format of Prometheus, version 0.0.4, taken to the letter."""

import math
import re
from dataclasses import dataclass, field

NAME = r"[a-zA-Z_:][a-zA-Z0-9_:]*"
LABEL = r'([a-zA-Z_][a-zA-Z0-9_]*)="((?:[^"\\\n]|\\["\\n])*)"'
SAMPLE = re.compile(rf"({NAME})(?:\{{((?:{LABEL}(?:,{LABEL})*)?)\}})? (\S+)(?: -?[0-9]+)?")
SUFFIXES = {"histogram": ("_bucket", "_sum", "_count"), "summary": ("", "_sum", "_count")}


@dataclass
class Family:
    kind: str
    help: str
    samples: dict = field(default_factory=dict)  # value by name and labels

    def value(self, **labels):
        """Of the one sample that has these labels, and maybe others."""
        (found,) = [value for (_, has), value in self.samples.items() if labels.items() <= dict(has).items()]
        return found


def _number(text):
    assert re.fullmatch(r"[+-]?(Inf|[0-9.]+(e[+-]?[0-9]+)?)|NaN", text, re.IGNORECASE), text
    return float(text)


def _add(families, name, line):
    match = SAMPLE.fullmatch(line)
    assert match, line
    family = families[name]
    assert match[1] in [name + suffix for suffix in SUFFIXES.get(family.kind, ("",))], line
    labels = tuple(sorted((label[1], label[2]) for label in re.finditer(LABEL, match[2] or "")))
    assert len(dict(labels)) == len(labels) and (match[1], labels) not in family.samples, line
    family.samples[match[1], labels] = _number(match.groups()[-1])


def _check_histogram(name, family):
    """Its counts grow with the limits, up to that of all."""
    series = {}
    for (sample, labels), value in family.samples.items():
        if sample == f"{name}_bucket":
            others = tuple(label for label in labels if label[0] != "le")
            series.setdefault(others, []).append((_number(dict(labels)["le"]), value))
    assert series or not family.samples, name
    for labels, buckets in series.items():
        assert buckets == sorted(buckets) and [count for _, count in buckets] == sorted(count for _, count in buckets)
        assert buckets[-1] == (math.inf, family.samples[f"{name}_count", labels])
        assert (f"{name}_sum", labels) in family.samples


def parse(text):
    """Families by their names: each has its help and its kind before its samples, which stand together."""
    assert text.endswith("\n")
    families, name = {}, None
    for line in text[:-1].split("\n"):
        if line.startswith("# HELP "):
            _, _, name, words = line.split(" ", 3)
            assert re.fullmatch(NAME, name) and name not in families and words, line
            families[name] = Family("", words)
        elif line.startswith("# TYPE "):
            _, _, typed, kind = line.split(" ")
            assert typed == name and families[name].kind == "" and not families[name].samples, line
            assert kind in ("counter", "gauge", "histogram", "summary"), line
            families[name].kind = kind
        else:
            _add(families, name, line)
    for name, family in families.items():
        assert family.kind and family.samples, name
        if family.kind == "histogram":
            _check_histogram(name, family)
        if family.kind == "counter":
            assert name.endswith("_total") and all(value >= 0 for value in family.samples.values())
    return families
