#!/bin/bash
# Runs a command in a virtual machine with Debian's kernel and this machine's files, and ends with its exit code.
# Usage: boot.sh FOLDER SECONDS COMMAND [ARGUMENT...]
# FOLDER is that of prepare.sh. FOLDER/results is the guest's /mnt: what the command leaves there stays; nothing else
# that the guest writes reaches this machine. The command finds the unpacked packages in KERNEL_TREE and UDEV_TREE,
# and loads the modules that it needs: modprobe -d "$KERNEL_TREE" NAME.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$(cd "$1" && pwd)
seconds=$2
shift 2

results=$folder/results
rm -rf "$results"
mkdir -p "$results"
{
  printf 'export KERNEL_TREE=%q UDEV_TREE=%q\n' "$folder/kernel" "$folder/udev"
  printf 'source %q' "$here/guest.sh"
  printf ' %q' "$@"
  echo
} >"$results/start"

# Emulated throughout: virtualisation in hardware is often missing, or half there, where tests run.
# One processor: an emulated one is not so much faster with a second thread as it is less steady.
timeout --kill-after=5 "$seconds" qemu-system-x86_64 \
  -accel tcg,thread=multi -cpu max -smp 1 -m 1G -nic none -nographic -no-reboot \
  -kernel "$folder/vmlinuz" -initrd "$folder/initramfs" \
  -append "console=ttyS0 quiet panic=-1 mitigations=off" \
  -fsdev local,id=root,path=/,security_model=none,readonly=on,multidevs=remap \
  -device virtio-9p-pci,fsdev=root,mount_tag=root \
  -fsdev "local,id=results,path=$results,security_model=none" \
  -device virtio-9p-pci,fsdev=results,mount_tag=results \
  </dev/null | sed -u 's/\x1bc//g; s/\x1b\[[0-9;?]*[a-zA-Z]//g; s/\r//g' | tee "$folder/console.log" || true

if [[ ! -s $results/exit-code ]]; then
  echo "The virtual machine has not come to the end of its work within $seconds seconds." >&2
  exit 1
fi
exit "$(<"$results/exit-code")"
