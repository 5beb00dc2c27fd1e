#!/bin/bash
# Runs the tests of the preset release over and over, to find those that fail by chance: the unit tests and the end-to-end
# tests N times each, then those on the kernel's drivers M times beside stress-ng, which keeps processors and disk busy.
# Stops at nothing. At the end it names each test that has failed, and how often; the exit code is 0 if none has.
# Usage: scripts/repeat.sh [N [M]]   (50 and 20); what the runs say is left in build/repeat
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

rounds=${1:-50}
machines=${2:-20}
[[ $rounds != --help ]] || { show_help; exit; }
[[ $#:$rounds:$machines =~ ^[0-2]:[0-9]+:[0-9]+$ ]] || { show_help >&2; exit 2; }

folder=$(build_folder release)
results=$folder/repeat
reports=()

# run COMMAND ROUND: COMMAND leaves its report in $report.
run() {
  report=$results/$1-$2.xml
  reports+=("$report")
  echo "$(date +%T) $1 $2"
  "$1" >"${report%.xml}.log" 2>&1 || true # the report tells
}

units() { unit_tests "$folder" "$report"; }
end_to_end() { end_to_end_tests release "$report"; }
real_drivers() {
  local made=$folder/test-results/real-drivers.xml
  rm -f "$made"
  "$root/Tests/RealDrivers/run.sh" "$folder"
  mv "$made" "$report"
}

install_packages "${build_packages[@]}" "${test_packages[@]}" "${check_packages[@]}"
build release all
rm -rf "$results"
mkdir -p "$results"

for ((round = 1; round <= rounds; ++round)); do
  run units "$round"
  run end_to_end "$round"
done

if ((machines > 0)); then
  install_packages "${stress_packages[@]}"
  stress-ng --quiet --cpu $((2 * $(nproc))) --io 2 &
  stress=$!
  trap 'kill "$stress"; wait "$stress" || true' EXIT
  for ((round = 1; round <= machines; ++round)); do
    run real_drivers "$round"
  done
fi

"$python" "$root/scripts/failed_tests.py" "${reports[@]}"
