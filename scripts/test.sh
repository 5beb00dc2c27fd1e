#!/bin/bash
# Builds everything, a warning being an error, and runs every test. The last line counts them; the exit code is 0 if
# none failed. asan and tsan have assertions on, as debug has.
# Where it is missing it installs nginx, whose package may start a service of its own on port 80.
# Usage: scripts/test.sh [release|debug|asan|tsan|coverage ...]
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

presets=("${@:-release}")
for preset in "${presets[@]}"; do
  case $preset in
    release | debug | asan | tsan | coverage) ;;
    --help)
      show_help
      exit
      ;;
    *)
      show_help >&2
      exit 2
      ;;
  esac
done

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1${TSAN_OPTIONS:+:$TSAN_OPTIONS}

# The thread sanitizer cannot start where the kernel spreads addresses over more bits than it knows.
if [[ " ${presets[*]} " == *" tsan "* ]] && setarch --addr-no-randomize true 2>/dev/null; then
  launcher=(setarch --addr-no-randomize)
fi

install_packages "${build_packages[@]}" "${test_packages[@]}" "${check_packages[@]}"

# start_real_drivers FOLDER: beside what follows, since their one emulated processor leaves the others idle. In a process
# group of its own, which ends with this script.
start_real_drivers() {
  drivers_log=$1/test-results/real-drivers.log
  set -m
  "$root/Tests/RealDrivers/run.sh" "$1" </dev/null >"$drivers_log" 2>&1 &
  set +m
  drivers=$!
  trap 'kill -- "-$drivers" 2>/dev/null || true' EXIT
}

failed=0
drivers=
reports=()
for preset in "${presets[@]}"; do
  folder=$(build_folder "$preset")
  unit=$folder/test-results/unit.xml
  end_to_end=$folder/test-results/end-to-end.xml
  reports+=("$unit" "$end_to_end")
  mkdir -p "$folder/test-results"
  rm -f "$unit" "$end_to_end"

  echo "== $preset"
  build "$preset" all || { failed=1; continue; }
  unit_tests "$folder" "$unit" || failed=1
  [[ $preset != release ]] || "$python" "$root/scripts/slow_tests.py" "$folder" || failed=1
  end_to_end_tests "$preset" "$end_to_end" || failed=1

  # Against the kernel's drivers once: what a sanitizer would find there, it finds on the scripted driver.
  if [[ $preset == release ]]; then
    reports+=("$folder/test-results/real-drivers.xml")
    start_real_drivers "$folder"
  fi
done

if [[ -n $drivers ]]; then
  echo "== the kernel's drivers"
  tail --lines=+1 --follow --pid="$drivers" "$drivers_log"
  wait "$drivers" || failed=1
  trap - EXIT
fi

"$python" "$root/scripts/count_tests.py" "${reports[@]}" || failed=1
exit $failed
