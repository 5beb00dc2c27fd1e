#!/bin/bash
# Builds the container of Packaging/Containerfile and asks the hub in it for its version. Where no container engine
# runs, its steps are done in folders with a bare Debian instead, as root. Takes about ten minutes.
# Usage: Tests/Container/run.sh
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/../../scripts/common.sh"

[[ ${1:-} != --help ]] || { show_help; exit; }

work=$(mktemp -d)
stop=()
trap '((${#stop[@]} == 0)) || "${stop[@]}"; rm -rf --one-file-system "$work"' EXIT

# What is committed, as others have it.
git -C "$root" archive HEAD | (mkdir "$work/context" && tar -x -C "$work/context")

engine() {
  local name
  for name in podman docker; do
    if "$name" info >/dev/null 2>&1; then echo "$name"; fi
  done | head -n 1
}

run_in_engine() {
  "$1" build --tag camera-hub-test --file "$work/context/Packaging/Containerfile" "$work/context"
  stop=("$1" rm --force camera-hub-test)
  "$1" run --detach --name camera-hub-test --env CAMERA_HUB_PLATFORM=simulated --publish 127.0.0.1:3141:3141 \
    camera-hub-test
}

# In a network of its own, whose ports nobody else has.
run_in_folders() {
  ((EUID == 0)) || { echo "There is no container engine, and only root makes a system of its own." >&2; exit 2; }
  install_packages debootstrap
  "$python" "$here/containerfile.py" "$work/context/Packaging/Containerfile" "$work/context" "$work/stages"
  ip netns add camera-hub-container
  stop=(ip netns delete camera-hub-container)
  ip -n camera-hub-container link set lo up
  inside=(ip netns exec camera-hub-container)
  "${inside[@]}" env CAMERA_HUB_PLATFORM=simulated "$work/stages/run" &
  stop=(bash -c "kill $!; ip netns delete camera-hub-container")
}

inside=()
name=$(engine)
if [[ -n $name ]]; then run_in_engine "$name"; else run_in_folders; fi
for ((second = 0; second < 60; ++second)); do
  reply=$("${inside[@]}" "$python" "$root/Examples/capture.py" --list 2>&1) && break
  sleep 1
done
echo "$reply"
[[ $reply == *"Simulated Camera"* ]] && echo "The hub in the container answers."
