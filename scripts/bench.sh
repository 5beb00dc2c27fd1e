#!/bin/bash
# Measures what the hub's speed rests on, beside others in the same run, and prints a table for each subject: the figure,
# the reference in the same rounds, what must be reached and what would be fine. Takes about five minutes, on a machine
# that does nothing else. A figure that misses its must is measured again, twice; the exit code is 1 if one is missed by
# more than the noise. Docs/performance.md tells what the tables mean.
# Where they are missing it installs nginx and redis, whose packages may start services of their own; those that it
# measures itself run in a network of their own, from temporary folders, and end with it.
# Usage: scripts/bench.sh [--timeline] [--table NAME]... [--hub EXECUTABLE]...
#   --timeline        instead of the tables, where the time of one still goes
#   --table NAME      that table alone: images, messages, crowds, captures, process, web, png, frames
#   --hub EXECUTABLE  another build of the hub than this tree's; each one in its turn
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[[ " $* " != *" --help "* ]] || { show_help; exit; }

install_packages "${build_packages[@]}" "${test_packages[@]}" "${bench_packages[@]}" "${bench_tools[@]}"
build release LarkspurWindowsCameraHub
build release AllBenchmarks

exec "$python" "$root/Benchmarks/bench.py" "$@"
