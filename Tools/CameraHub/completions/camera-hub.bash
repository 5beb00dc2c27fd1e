# shellcheck shell=bash
# Completion of "camera-hub" for bash.

_camera_hub() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local everywhere="-h --help --host --port --image-port --json -q --quiet --version"
  local command='' word options=''
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in
      list | capture | bracket | find | version | diagnostics | health) command=$word ;;
    esac
  done

  COMPREPLY=()
  case $previous in
    -o | --output | --to)
      compopt -o filenames 2>/dev/null # it is unknown outside of a completion
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --host)
      mapfile -t COMPREPLY < <(compgen -A hostname -- "$current")
      return
      ;;
    -c | --camera | -e | --exposure | -p | --percent | -n | --count | --settle | --every | --from | --timeout) return ;;
    --port | --image-port) return ;;
  esac

  case $command in
    '') options="list capture bracket find version diagnostics health" ;;
    list) options="-w --watch" ;;
    capture) options="-c --camera -e --exposure -p --percent --settle -o --output -n --count --every --show" ;;
    bracket) options="-c --camera --from --to --settle -o --output" ;;
    diagnostics) options="--to" ;;
    find | health) options="--timeout" ;;
  esac
  [[ -z $command && $current != -* ]] || options+=" $everywhere"
  mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
}

complete -F _camera_hub camera-hub
