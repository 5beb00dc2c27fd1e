# shellcheck shell=bash
# Completion of "camera-hub-web" for bash.

_camera_hub_web() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local options="-h --help --version --listen --hub --hub-port --hub-image-port --tls-certificate --tls-key"
  options+=" --token-file --no-token --allow-host --keep --keep-memory --idle --max-connections"

  COMPREPLY=()
  case $previous in
    --tls-certificate | --tls-key | --token-file)
      compopt -o filenames 2>/dev/null # it is unknown outside of a completion
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      ;;
    --hub | --allow-host) mapfile -t COMPREPLY < <(compgen -A hostname -- "$current") ;;
    --listen | --hub-port | --hub-image-port | --keep | --keep-memory | --idle | --max-connections) ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current") ;;
  esac
}

complete -F _camera_hub_web camera-hub-web
