"""What the benchmarks make of what they measure. None of them runs here."""

import operator
import os
import shutil
import subprocess
import sys
import time

import pytest
from harness.hub import ROOT
from harness.wait import PATIENCE, wait_until

sys.path.append(str(ROOT / "Benchmarks"))

import bench
from figures import MET, MISSED, NOISE, NOT_MEASURED, STRETCH, Figure, Measurement, Round, at_least, at_most, table
from programs import NotBuilt, parse_lines, table_of
from timeline import MARKS, TimedLines, marks


def figure(goal, *values):
    return Figure("speed", goal, rounds=[Round(value) for value in values])


@pytest.mark.parametrize("goal, values, verdict", [
    (at_least(2, 3), [3], STRETCH),
    (at_least(2, 3), [2.99], MET),
    (at_least(2, 3), [2], MET),
    (at_least(2, 3), [1.99], MISSED),
    (at_most(3, 2), [2], STRETCH),
    (at_most(3, 2), [2.01], MET),
    (at_most(3, 2), [3], MET),
    (at_most(3, 2), [3.01], MISSED),
    (at_least(2, 3), [], NOT_MEASURED),
    # The median counts, whatever a few rounds say; a must that a quarter of them reach is not missed for certain.
    (at_least(2, 3), [0, 0, 2, 9, 9], MET),
    (at_least(2, 3), [1, 1, 1, 2, 2], NOISE),
    (at_least(2, 3), [1, 1, 1, 1, 9], MISSED),
    (at_most(3, 2), [9, 9, 9, 3, 3], NOISE),
    (at_most(3, 2), [9, 9, 9, 9, 0], MISSED),
])
def test_the_verdict_is_that_of_the_median_unless_the_rounds_differ_too_much(goal, values, verdict):
    assert figure(goal, *values).verdict() == verdict


@pytest.mark.parametrize("compare, values", [(operator.truediv, [2.0, 4.0]), (operator.sub, [2.0, 3.0])])
def test_each_round_is_compared_with_its_own_reference(compare, values):
    compared = Figure("speed", at_least(1, 2), compare=compare, rounds=[Round(4, 1), Round(4, 2)])
    assert compared.values() == values


def test_a_figure_that_meets_its_must_is_measured_once():
    measurement = Measurement([figure(at_least(2, 3))], lambda: [Round(2)], rounds=4)
    measurement.take()
    assert len(measurement.figures[0].rounds) == 4


def test_what_misses_its_must_is_measured_again_until_it_meets_it_and_no_round_is_left_out():
    values = iter([1, 1, 1, 5, 5, 5, 5, 5, 5])
    measurement = Measurement([figure(at_least(2, 3)), figure(at_most(2, 1))],
                              lambda: [Round(next(values)), Round(0)], rounds=3)
    measurement.take()
    assert [round.figure for round in measurement.figures[0].rounds] == [1, 1, 1, 5, 5, 5]
    assert len(measurement.figures[1].rounds) == 6

    missed = Measurement([figure(at_least(2, 3))], lambda: [Round(1)], rounds=3)
    missed.take()
    assert (len(missed.figures[0].rounds), missed.figures[0].verdict()) == (9, MISSED)


def test_a_table_shows_figure_reference_ratio_goals_and_verdict():
    compared = Figure("GET", at_most(1.5, 1.1), "ms", "nginx", rounds=[Round(4, 2), Round(6, 4), Round(3, 2)])
    beyond = Figure("GET", at_most(2, 1), "ms", "copy", operator.sub, [Round(4, 2.5)])
    ratio = Figure("speed", at_least(2, 3), "", "libpng", rounds=[Round(400)])
    lines = table("Images", [compared, beyond, ratio, figure(at_least(2, 3), 1), figure(at_least(2, 3))]).splitlines()
    assert [[cell.strip() for cell in line.split("|")[1:-1]] for line in lines[4:]] == [
        ["GET", "nginx 2.00 ms", "4.00 ms", "1.50", "1.50 to 1.75", "≤ 1.5", "≤ 1.1", MET],
        ["GET", "copy 2.50 ms", "4.00 ms", "+1.50", "1.50 to 1.50", "≤ 2", "≤ 1", MET],
        ["speed", "libpng = 1", "", "400", "400 to 400", "≥ 2", "≥ 3", STRETCH],
        ["speed", "", "1.00", "", "1.00 to 1.00", "≥ 2", "≥ 3", MISSED],
        ["speed", "", "", "", "", "≥ 2", "≥ 3", NOT_MEASURED],
    ]


def test_lines_of_a_program_are_read_by_the_names_of_their_fields_or_in_the_usual_order():
    named = "what\tmust\tstretch\tratio\tfigure\n"
    first, second = parse_lines(f"{named}speed\t9\t12\t10.5\t3 ms\nsize\t1.02\t1\t\t0.9 MB\n")
    assert (first.what, first.value, first.unit, first.goal) == ("speed", 10.5, "", at_least(9, 12))
    assert (second.what, second.value, second.unit, second.goal) == ("size", 0.9, "MB", at_most(1.02, 1))
    (usual,) = parse_lines("speed\tlibpng\t3 ms\t9.5\t>= 9\t>= 9\n")
    assert (usual.value, usual.goal, usual.figure().reference) == (9.5, at_least(9, 9), "libpng")


@pytest.mark.parametrize("text", ["", "what\tmust\tstretch\tfigure\n", "speed\tlibpng\t3\n", "speed\t\t3 ms\t\t9\t9\n",
                                  "speed\t\tfast\t\t9\t12\n"])
def test_lines_that_tell_no_figure_are_an_error(text):
    with pytest.raises(ValueError):
        parse_lines(text)


@pytest.fixture
def run(monkeypatch, capsys):
    """Runs the benchmarks with other tables in place of their own."""
    def run(*arguments, **tables):
        monkeypatch.setattr(bench, "prepare", lambda: None)
        monkeypatch.setattr(bench, "description", lambda: "a machine")
        monkeypatch.setattr(bench, "TABLES", {name: (name, made) for name, made in tables.items()})
        code = bench.main(list(arguments))
        return code, capsys.readouterr().out

    return run


def table_with(value):
    def measurements(_):
        yield Measurement([figure(at_least(2, 3))], lambda: [Round(value)], rounds=1)

    return measurements


def broken_table(_):
    yield Measurement([figure(at_least(2, 3))], lambda: [Round(2)], rounds=1)
    raise AssertionError("nobody answers")


def unbuilt_table(_):
    raise NotBuilt("Program")
    yield


def test_the_run_fails_if_one_must_is_missed_whatever_comes_after_it(run):
    assert run(first=table_with(2), second=table_with(3))[0] == 0
    code, printed = run(first=table_with(1), second=table_with(3))
    assert (code, MISSED in printed, STRETCH in printed) == (1, True, True)


def test_a_table_that_cannot_be_made_fails_the_run_and_the_others_are_made(run):
    code, printed = run(first=broken_table, second=table_with(3))
    assert (code, "nobody answers" in printed, STRETCH in printed) == (1, True, True)


def test_a_table_without_a_figure_fails_the_run(run):
    assert run(first=lambda _: iter(()))[0] == 1


def test_a_program_that_has_not_been_built_is_told_and_no_failure(run):
    code, printed = run(first=unbuilt_table)
    assert (code, "Program has not been built." in printed) == (0, True)
    with pytest.raises(NotBuilt):
        next(table_of("NoSuchProgram")(None))


def test_only_the_tables_that_are_asked_for_are_made(run):
    assert run("--table", "second", first=table_with(1), second=table_with(2))[0] == 0


def test_the_steps_of_a_still_are_found_in_the_log_in_their_order():
    log = ["capturing photo", "--> handling method", "handling method -- camera:capture", "capturing photo",
           "waiting... ", "waiting... done", "capturing photo -- done"]
    steps = list(MARKS.values())
    assert marks(list(enumerate(log))) == dict(zip(steps[:-1], [2, 3, 5, 6]))
    assert marks(list(enumerate([*log, '<-- {"id":1}', "<-- {}"]))) == dict(zip(steps, [2, 3, 5, 6, 7]))


def test_the_time_of_a_line_is_that_of_its_coming():
    reading, writing = os.pipe()
    lines = TimedLines(reading)
    begin = time.monotonic()
    os.write(writing, b"one\ntwo\n")
    first = wait_until(lines.so_far, "the first lines")
    os.write(writing, b"three\n")
    os.close(writing)
    found = wait_until(lambda: all_lines if len(all_lines := lines.so_far()) == 3 else None, "the last line")
    assert [line for _, line in found] == ["one", "two", "three"]
    assert found[:2] == first
    assert begin <= found[0][0] <= found[2][0] <= time.monotonic()


def test_the_script_builds_hands_its_arguments_on_and_ends_as_the_benchmarks_do(tmp_path):
    tree = tmp_path / "tree"
    shutil.copytree(ROOT / "scripts", tree / "scripts", ignore=shutil.ignore_patterns("__pycache__"))
    (tree / "Benchmarks").mkdir()
    (tree / "Benchmarks/bench.py").write_text("import sys\nprint(*sys.argv[1:])\nsys.exit(3)\n")
    programs = tmp_path / "programs"
    programs.mkdir()
    for name, text in {"dpkg-query": "echo -n installed", "cmake": 'echo "$@" >>calls', "ninja": "echo work"}.items():
        (programs / name).write_text(f"#!/bin/bash\n{text}\n")
        (programs / name).chmod(0o755)
    environment = os.environ | {"PATH": f'{programs}:{os.environ["PATH"]}'}
    result = subprocess.run([tree / "scripts/bench.sh", "--table", "images"], cwd=tree, env=environment, check=False,
                            capture_output=True, text=True, timeout=PATIENCE)
    assert (result.returncode, result.stdout) == (3, "--table images\n")
    built = [line.split()[-1] for line in (tree / "calls").read_text().splitlines() if line.startswith("--build")]
    assert built == ["LarkspurWindowsCameraHub", "AllBenchmarks"]
