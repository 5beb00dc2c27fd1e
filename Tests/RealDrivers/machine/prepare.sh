#!/bin/bash
# Unpacks, without installing them, Debian's kernel and the udev daemon, which machines without devices of their own
# lack, and makes the initramfs that boots the kernel.
# Usage: prepare.sh FOLDER; leaves FOLDER/kernel and FOLDER/udev (the packages), FOLDER/vmlinuz and FOLDER/initramfs.
set -euo pipefail
PATH=$PATH:/usr/sbin:/sbin
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$1

# What it takes to reach the root file system; all other modules are loaded from there.
boot_modules=(virtio_pci 9p 9pnet_virtio overlay)

# The package that stands for the release's kernel of the day depends on the one that has it.
kernel_package() {
  apt-cache show --no-all-versions linux-image-amd64 2>/dev/null |
    sed -n 's/^Depends: \(linux-image-[^ ,]*\).*/\1/p'
}

# fetch PACKAGE TREE
fetch() {
  local download=$2.download
  rm -rf "$download" "$2.new"
  mkdir -p "$download"
  echo "Fetching $1"
  (cd "$download" && apt-get -qq -o APT::Sandbox::User=root download "$1")
  dpkg-deb -x "$download"/*.deb "$2.new"
  rm -rf "$download"
}

fetch_kernel() {
  local package
  package=$(kernel_package)
  [[ -n $package ]] || { echo "apt-cache knows no kernel package; apt-get update may help" >&2; return 1; }
  fetch "$package" "$folder/kernel"
  depmod -b "$folder/kernel.new" "$(ls "$folder/kernel.new/lib/modules")"
  mv "$folder/kernel.new" "$folder/kernel"
}

fetch_udev() {
  fetch udev "$folder/udev"
  mv "$folder/udev.new" "$folder/udev"
}

# The files that the boot modules consist of, each behind what it needs.
module_files() {
  local module
  for module in "${boot_modules[@]}"; do
    modprobe -d "$folder/kernel" -S "$release" --show-depends "$module" | sed -n 's/^insmod \([^ ]*\).*/\1/p'
  done | awk '!seen[$0]++'
}

make_initramfs() {
  local tree=$folder/initramfs.tree file number=10 # two digits: the order of the names is that of loading
  rm -rf "$tree"
  mkdir -p "$tree"/{bin,modules,proc,dev,lower,upper,root}
  cp "$(command -v busybox)" "$tree/bin/busybox"
  cp "$here/init" "$tree/init"
  while read -r file; do
    cp "$file" "$tree/modules/$((number += 1))-${file##*/}"
  done < <(module_files)
  (cd "$tree" && find . | cpio --quiet -o -H newc) >"$folder/initramfs.new"
  rm -rf "$tree"
  mv "$folder/initramfs.new" "$folder/initramfs"
}

mkdir -p "$folder"
[[ -d $folder/kernel ]] || fetch_kernel
[[ -d $folder/udev ]] || fetch_udev
release=$(ls "$folder/kernel/lib/modules")
cp "$folder/kernel/boot/vmlinuz-$release" "$folder/vmlinuz"
make_initramfs
