#!/bin/bash
# Builds the Camera Hub, where that has not been done, and runs it in the foreground.
# Usage: scripts/run.sh [arguments of the hub]
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

install_packages "${build_packages[@]}"
build release LarkspurWindowsCameraHub

# A folder for the hub's data that needs no special rights; it has to exist.
if [[ -z ${CAMERA_HUB_COMMON_DATA:-} ]]; then
  export CAMERA_HUB_COMMON_DATA=${XDG_STATE_HOME:-${HOME:?}/.local/state}/camera-hub
fi
mkdir -p "$CAMERA_HUB_COMMON_DATA"

if [[ -z ${CAMERA_HUB_PLATFORM:-} ]] && ! compgen -G '/dev/video*' >/dev/null; then
  export CAMERA_HUB_PLATFORM=simulated
  echo "No camera found at /dev/video*: a simulated one stands in (CAMERA_HUB_PLATFORM=simulated)."
fi

exec "$(build_folder release)/bin/LarkspurWindowsCameraHub" "$@"
