#!/bin/bash
# Makes a bare Debian 12 with what the hub's package depends on, but without the package.
# Usage: prepare.sh FOLDER PACKAGE; leaves FOLDER/system.
set -euo pipefail
folder=$1
package=$2

# systemd and what a machine has besides; what the tests run on.
packages=systemd-sysv,udev,kmod,dbus,iproute2,adduser,python3,python3-pytest,python3-pil

in_system() { chroot "$folder/system.new" env DEBIAN_FRONTEND=noninteractive "$@"; }

[[ ! -d $folder/system ]] || exit 0
rm -rf --one-file-system "$folder/system.new"
mkdir -p "$folder"
echo "Making a bare Debian"
debootstrap --variant=minbase --include="$packages" bookworm "$folder/system.new" >"$folder/debootstrap.log"
in_system apt-get -qq satisfy --yes --no-install-recommends "$(dpkg-deb --field "$package" Depends)" \
  >"$folder/dependencies.log"
mv "$folder/system.new" "$folder/system"
