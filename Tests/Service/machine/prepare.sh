#!/bin/bash
# Makes a bare Debian 12 with what the packages depend on, but without themselves.
# Usage: prepare.sh FOLDER PACKAGE...; leaves FOLDER/system.
set -euo pipefail
folder=$1
shift

# systemd and what a machine has besides; what the guides use; what the tests run on.
packages=systemd-sysv,udev,kmod,dbus,iproute2,adduser,cmake,curl,nginx-light,openssl,python3,python3-pytest
packages+=,python3-pil

in_system() { chroot "$folder/system.new" env DEBIAN_FRONTEND=noninteractive "$@"; }

# dependencies PACKAGE...: of all of them, but for each other.
dependencies() {
  local package own
  own=$(for package in "$@"; do dpkg-deb --field "$package" Package; done | paste -sd '|')
  for package in "$@"; do
    dpkg-deb --field "$package" Depends | tr ',' '\n'
  done | sed 's/^ *//' | grep -vE "^($own)( |$)" | sort -u | paste -sd ','
}

wanted=$(dependencies "$@")
made_of=$packages,$wanted
[[ ! -d $folder/system || $made_of != "$(cat "$folder/made-of")" ]] || exit 0
rm -rf --one-file-system "$folder/system.new"
mkdir -p "$folder"
echo "Making a bare Debian"
debootstrap --variant=minbase --include="$packages" bookworm "$folder/system.new" >"$folder/debootstrap.log"
in_system apt-get -qq satisfy --yes --no-install-recommends "$wanted" >"$folder/dependencies.log"
printf '%s\n' "127.0.0.1 localhost" "::1 localhost" >"$folder/system.new/etc/hosts" # as the installer does
rm -rf --one-file-system "$folder/system"
mv "$folder/system.new" "$folder/system"
echo "$made_of" >"$folder/made-of"
