#!/bin/bash
# Installs the packages on a bare Debian 12 whose first process is systemd, in a virtual machine, and tries the
# service there, with an emulated USB camera. The last line counts the tests; the exit code is 0 if none failed.
# Usage: Tests/Service/run.sh [ARGUMENTS OF PYTEST]
# Makes the packages, and takes the release build's hub and UsbCamera. What is fetched is kept in build/service and
# build/real-drivers.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/../../scripts/common.sh"

machine=$root/Tests/RealDrivers/machine
work=$root/build/service
drivers=$root/build/real-drivers
report=$root/build/test-results/service.xml
seconds=7200

((EUID == 0)) || { echo "Only root makes a system of its own." >&2; exit 2; }
install_packages "${machine_packages[@]}" debootstrap
for program in LarkspurWindowsCameraHub UsbCamera; do
  [[ -e $root/build/bin/$program ]] || { echo "$program has not been built" >&2; exit 2; }
done
"$python" "$here/make_packages.py"
packages=("$root"/build-package/*.deb)

"$machine/prepare.sh" "$drivers"
"$here/machine/prepare.sh" "$work" "${packages[@]}"
mkdir -p "${report%/*}"
rm -f "$report"
"$machine/boot.sh" "$drivers" "$seconds" exec "$here/machine/start.sh" "$work/system" \
  env HUB_PACKAGES="/host$root/build-package" REAL_DRIVERS_PROGRAMS="/host$root/build/bin" \
  /usr/bin/python3 -m pytest -p no:cacheprovider --verbose -r fEsP --color=no --durations=5 \
  --junit-xml=/mnt/report.xml "/host$here" "$@" || true
cp "$drivers/results/report.xml" "$report" || true
exec "$python" "$root/scripts/count_tests.py" "$report"
