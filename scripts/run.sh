#!/bin/bash
# Builds the Camera Hub, where that has not been done, and runs it in the foreground until Ctrl-C.
# Usage: scripts/run.sh [ARGUMENTS OF THE HUB]
#        scripts/run.sh --web [ARGUMENTS OF camera-hub-web]
#   --debug  begins with the console for trying a camera by hand
#   --web    runs the page besides, and prints its address; Ctrl-C ends the page, then the hub
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

web=
case ${1:-} in
  --help) show_help; exit ;;
  --web)
    web=yes
    shift
    ;;
esac

install_packages "${build_packages[@]}"
build release LarkspurWindowsCameraHub
[[ -z $web ]] || build release CameraHubWeb

# A folder for the hub's data that needs no special rights; it has to exist.
if [[ -z ${CAMERA_HUB_COMMON_DATA:-} ]]; then
  export CAMERA_HUB_COMMON_DATA=${XDG_STATE_HOME:-${HOME:?}/.local/state}/camera-hub
fi
mkdir -p "$CAMERA_HUB_COMMON_DATA"

if [[ -z ${CAMERA_HUB_PLATFORM:-} ]] && ! compgen -G '/dev/video*' >/dev/null; then
  export CAMERA_HUB_PLATFORM=simulated
  echo "No camera found at /dev/video*: a simulated one stands in (CAMERA_HUB_PLATFORM=simulated)."
fi

programs=$(build_folder release)/bin
[[ $web ]] || exec "$programs/LarkspurWindowsCameraHub" "$@"

# Both in sessions of their own, which Ctrl-C does not reach, and not without this script, however it ends.
apart=(setsid setpriv --pdeathsig TERM)
started=()

# shellcheck disable=SC2317 # the trap calls it
end() {
  local index
  trap '' INT TERM
  for ((index = ${#started[@]} - 1; index >= 0; --index)); do # the latest first
    kill "${started[index]}" 2>/dev/null || true
    wait "${started[index]}" 2>/dev/null || true
  done
}

trap end EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
"${apart[@]}" "$programs/LarkspurWindowsCameraHub" &
started+=($!)
"${apart[@]}" "$programs/camera-hub-web" "$@" &
started+=($!)
while kill -0 "${started[0]}" && kill -0 "${started[1]}"; do
  sleep 0.5 # a signal counts at its end at the latest, which a wait may miss when a child changes its state just then
done 2>/dev/null
exit 1 # one of them has not started, or has ended by itself
