#!/bin/bash
# Builds the preset coverage, runs the unit tests and the end-to-end tests, and reports which lines they have run:
# build-coverage/coverage.txt, a line a file, and build-coverage/coverage/index.html. The exit code is that of the tests.
# A process that a signal ends has counted nothing: the crash reporter's last steps stand as not run.
# Usage: scripts/coverage.sh
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

case ${1:-} in
  "") ;;
  --help) show_help; exit ;;
  *) show_help >&2; exit 2 ;;
esac

install_packages gcovr
folder=$(build_folder coverage)
find "$folder" -name '*.gcda' -delete 2>/dev/null || true # the counts of earlier runs

failed=0
"$root/scripts/test.sh" coverage || failed=1

# Of what is shipped, without what the compiler adds for exceptions. A counter that several processes write at their
# end at once may be off, and is no reason to stop.
mkdir -p "$folder/coverage"
(cd "$root" && gcovr --root "$root" --object-directory "$folder" -j "$(nproc)" \
  --filter Framework/ --filter Platform/ --filter Services/ --filter Tools/ \
  --exclude-throw-branches --exclude-unreachable-branches --gcov-ignore-parse-errors \
  --txt "$folder/coverage.txt" --html-details "$folder/coverage/index.html" --print-summary)
exit $failed
