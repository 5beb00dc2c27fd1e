#!/bin/bash
# Runs the built hub on the kernel's own camera drivers, in a virtual machine: nothing of this machine's kernel is
# used or changed. The last line counts the tests; the exit code is 0 if none failed.
# Usage: Tests/RealDrivers/run.sh [BUILD FOLDER [ARGUMENTS OF PYTEST]]
# HUB_EXECUTABLE: another hub than that of the build folder. What is fetched is kept in BUILD FOLDER/real-drivers.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/../../scripts/common.sh"

build=$(cd "${1:-$root/build}" && pwd)
shift $(($# > 0))

work=$build/real-drivers
report=$build/test-results/real-drivers.xml
seconds=3600 # the machine's whole time: a run takes a tenth of it, and several times as long on a busy machine
hub=$(realpath "${HUB_EXECUTABLE:-$build/bin/LarkspurWindowsCameraHub}")

install_packages "${machine_packages[@]}" "${test_packages[@]}"
for program in "$hub" "$build/bin/UsbCamera" "$build/bin/EveryFormat"; do
  [[ -x $program ]] || { echo "$program has not been built" >&2; exit 2; }
done

"$here/machine/prepare.sh" "$work"
mkdir -p "${report%/*}"
rm -f "$report"
"$here/machine/boot.sh" "$work" "$seconds" env \
  HUB_EXECUTABLE="$hub" REAL_DRIVERS_PROGRAMS="$build/bin" PYTHONDONTWRITEBYTECODE=1 \
  /usr/bin/python3 -m pytest -p no:cacheprovider --quiet -r fEs --color=no --durations=5 --basetemp=/mnt/tests \
  --junit-xml=/mnt/report.xml "$here" "$@" || true
cp "$work/results/report.xml" "$report" || true
exec /usr/bin/python3 "$root/scripts/count_tests.py" "$report"
