#!/bin/bash
# Builds the Debian packages, in build-package/, and has lintian look at them; installs what that takes.
# Usage: scripts/package.sh
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

case ${1:-} in
  "") ;;
  --help) show_help; exit ;;
  *) show_help >&2; exit 2 ;;
esac

folder=$(build_folder package)
install_packages "${build_packages[@]}" "${package_packages[@]}"

# As Debian compiles: hardened, and without the names of this machine's folders.
cd "$root"
CXXFLAGS="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)"
LDFLAGS=$(dpkg-buildflags --get LDFLAGS)
export CXXFLAGS LDFLAGS

build package all
cmake -E rm -f "$folder"/*.deb "$folder"/*.ddeb
(cd "$folder" && umask 022 && cpack)
lintian --allow-root --pedantic --fail-on error,warning "$folder"/*.deb
printf '%s\n' "Packages:" "$folder"/*.deb "$folder"/*.ddeb
