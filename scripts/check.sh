#!/bin/bash
# Checks the sources without running them: format, shell scripts, Python, the types of its client library, layers, the
# pages that doxygen makes of headers and documents, and clang-tidy on what has changed.
# Runs every check, tells one line about each, and ends with 1 if one has failed.
# Usage: scripts/check.sh [--all | --since REVISION | --staged | --fix]
#   (nothing)         clang-tidy reads what the commits that origin/main lacks, or else the last commit, and uncommitted
#                     changes touch, at most 40 files
#   --since REVISION  ... what has changed since then
#   --all             ... everything, for about twenty minutes on two cores
#   --staged          checks what is about to be committed, without clang-tidy; the hook of .githooks does this
#   --fix             formats the C++ sources and checks nothing
# shellcheck disable=SC2317 # what each check does is called by its name
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

mode=${1:-}
case $mode:$# in
  :0 | --all:1 | --staged:1 | --fix:1) ;;
  --since:2) since=$(git rev-parse --verify --quiet "$2^{commit}") || { echo "No revision: $2" >&2; exit 2; } ;;
  --help:1) show_help; exit ;;
  *) show_help >&2; exit 2 ;;
esac

# What is checked is named from here: this folder, or a copy of the index.
tree=$root
failed=0

# tracked PATTERN...: the files of the tree that match, or if only staged ones count, those of them.
tracked() {
  local file
  if [[ $mode == --staged ]]; then
    git -C "$root" diff --cached --name-only --diff-filter=d -z -- "$@"
  else
    git -C "$root" ls-files -z -- "$@"
  fi | while read -rd '' file; do
    [[ ! -f $tree/$file ]] || printf '%s\0' "$file"
  done
}

shell_scripts() {
  local file first
  tracked | while read -rd '' file; do
    read -rn 80 first <"$file" || true
    [[ $file != *.sh && ! $first =~ ^'#!'.*sh$ ]] || printf '%s\0' "$file"
  done
}

# check NAME COMMAND...: tells how it went, and what it said if it failed.
check() {
  local name=$1 start=$SECONDS output
  shift
  if output=$("$@" 2>&1); then
    echo "ok      $name ($((SECONDS - start)) s)"
  else
    failed=1
    echo "FAILED  $name"
    printf '%s\n' "$output"
  fi
}

check_format() { tracked '*.h' '*.cpp' | xargs -0r clang-format-19 --dry-run -Werror; }
check_shell() { shell_scripts | xargs -0r shellcheck; }
check_python() { tracked '*.py' | xargs -0r /usr/bin/python3 -m flake8; }
check_types() { tracked 'Client/Python/*.py' | xargs -0r /usr/bin/python3 -m mypy --strict --python-version 3.9; }
check_pages() { doxygen Doxyfile.interface && doxygen Doxyfile; }
check_layers() { /usr/bin/python3 cmake/check_layers.py "$tree"; }

# The revision that the change begins at.
base_of_change() {
  local base
  base=$(git merge-base HEAD origin/main 2>/dev/null) || base=$(git rev-parse HEAD)
  if [[ $base == "$(git rev-parse HEAD)" ]]; then
    base=$(git rev-parse --verify --quiet HEAD~1) || base=$(git hash-object -t tree /dev/null) # all is new
  fi
  echo "$base"
}

# source_of HEADER: where clang-tidy meets it: its own source or the first one that includes it, directly or not.
source_of() {
  local source=${1%.h}.cpp includer
  [[ ! -f $source ]] || { echo "$source"; return; }
  for includer in $(git grep -lF -e "#include \"$1\"" -e "#include <${1#Client/}>" -- '*.cpp' '*.h' | sort -t. -k2); do
    if [[ $includer == *.cpp ]]; then echo "$includer"; else source_of "$includer"; fi
    return
  done
}

changed_sources() {
  git diff --name-only --diff-filter=d "$1" -- '*.h' '*.cpp' | while read -r file; do
    if [[ $file == *.h ]]; then source_of "$file"; else echo "$file"; fi
  done | sort -u
}

# tidy FILE...: clang-tidy on each, on all processors; its words only where it complains.
tidy() {
  build release autogen >/dev/null || return
  # What the compiler warns of is the presets' matter.
  local arguments=(--quiet -p "$(build_folder release)" --extra-arg=-Wno-error)
  # shellcheck disable=SC2016 # for the inner shell
  printf '%s\0' "$@" | xargs -0 -P "$(nproc)" -I{} bash -c 'output=$("$@" 2>&1) || { echo "$output"; exit 1; }' \
    - clang-tidy-19 "${arguments[@]}" {}
}

check_tidy() {
  local sources of=
  install_packages "${build_packages[@]}" "${test_packages[@]}" "${bench_packages[@]}" "${tidy_packages[@]}" || {
    failed=1
    return
  }
  if [[ $mode == --all ]]; then
    mapfile -t sources < <(git ls-files '*.cpp')
  else
    mapfile -t sources < <(changed_sources "${since:-$(base_of_change)}")
    if ((${#sources[@]} > 40)); then
      of=" of ${#sources[@]}, --all reads the others"
      sources=("${sources[@]:0:40}")
    fi
  fi
  if ((${#sources[@]} == 0)); then
    echo "ok      clang-tidy: no source has changed"
  else
    check "clang-tidy: ${#sources[@]} sources$of" tidy "${sources[@]}"
  fi
}

install_packages "${check_packages[@]}"

if [[ $mode == --fix ]]; then
  tracked '*.h' '*.cpp' | xargs -0r clang-format-19 -i
  exit
fi
if [[ $mode == --staged ]]; then
  tree=$(mktemp -d)
  trap 'rm -rf "$tree"' EXIT
  git checkout-index --all --prefix="$tree/"
fi

cd "$tree"
check "format" check_format
check "shell scripts" check_shell
check "Python" check_python
check "types of the Python client" check_types
check "layers" check_layers
if [[ $mode != --staged ]]; then
  check "pages of the headers and documents" check_pages
  check_tidy
fi
exit $failed
