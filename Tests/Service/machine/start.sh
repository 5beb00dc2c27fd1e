#!/bin/bash
# The guest's first process: makes the bare system below SYSTEM the root, with everything else below /host, and systemd
# the first process of it, which runs COMMAND when it has started everything, and switches off. To be called by exec.
# Usage: start.sh SYSTEM COMMAND [ARGUMENT...]; the paths of the command are those of this machine, below /host.
set -euo pipefail
system=$1
shift

mount --bind "$system" "$system"
mkdir -p "$system/host"
for folder in dev proc sys run mnt; do
  mount --move "/$folder" "$system/$folder"
done
ln -s "/host$KERNEL_TREE/lib/modules" "$system/usr/lib/modules"
tr -d - <"$system/proc/sys/kernel/random/uuid" >"$system/etc/machine-id"

units=$system/run/systemd/system
mkdir -p "$units/multi-user.target.wants"
cat >"$units/service-tests.service" <<UNIT
[Unit]
After=multi-user.target
[Service]
Type=oneshot
TimeoutStartSec=infinity
Environment=KERNEL_TREE=/host$KERNEL_TREE PYTHONDONTWRITEBYTECODE=1
StandardOutput=tty
StandardError=tty
TTYPath=/dev/console
ExecStart=/bin/bash /run/service-tests
UNIT
ln -s ../service-tests.service "$units/multi-user.target.wants"

{
  printf '%q ' "$@"
  printf '\n%s\n' 'echo $? >/mnt/exit-code' sync 'systemctl --force --force poweroff'
} >"$system/run/service-tests"

cd "$system"
pivot_root . host
exec chroot . /lib/systemd/systemd
