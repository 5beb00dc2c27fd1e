# Shared by the scripts of this folder, which source it: the Debian packages, the building, the testing, and --help.
# shellcheck shell=bash
# The lists are used by the scripts that source this file.
# shellcheck disable=SC2034

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What building and running the hub takes. The unit-test libraries are among them because configuring
# looks for them, whatever is built afterwards.
build_packages=(
  g++ cmake ninja-build pkg-config ccache
  qtbase5-dev libjsoncpp-dev liblog4cxx-dev
  libpng-dev zlib1g-dev libturbojpeg0-dev libjpeg-dev libyuv-dev libcairo2-dev libutfcpp-dev fonts-dejavu-core
  libhwy-dev libdeflate-dev
  libcli11-dev libchafa-dev libavahi-client-dev scdoc
  libboost1.81-dev libssl-dev
  libudev-dev libsystemd-dev libdw-dev libelf-dev uuid-dev
  libgtest-dev libgmock-dev
  python3
)

# What the tests take besides: pytest and its parallel runner, Pillow to make and to read pictures, numpy for pictures
# as arrays, jq and curl as clients, YAML and JSON schemas for documents that programs read, umockdev for a /sys of their
# own, the sources of locales, systemd to judge the units, which need not run, nginx to stand in front with a certificate
# of openssl's making, Avahi and its message bus to find hubs by, zsh for its completion, a browser with its driver to
# look at the page with.
test_packages=(
  python3-pytest python3-pytest-xdist python3-pil python3-numpy python3-yaml python3-jsonschema
  umockdev libumockdev-dev locales systemd nginx-light openssl avahi-daemon dbus zsh
  chromium chromium-driver python3-selenium curl jq
)

# What scripts/check.sh takes besides: all but clang-tidy look at the sources alone. mypy reads numpy's types.
check_packages=(doxygen git clang-format-19 shellcheck flake8 mypy python3-numpy)
tidy_packages=(clang-tidy-19)

# The second compiler, of the preset clang.
clang_packages=(clang-19)

# What Benchmarks takes besides what the tests do: other makers of PNG; and what scripts/bench.sh runs: another server,
# a client for servers, a counter of instructions.
bench_packages=(libspng-dev libisal-dev)
bench_tools=(redis-server wrk valgrind)

# What scripts/package.sh takes besides: what makes the packages, and what judges them.
package_packages=(dpkg-dev fakeroot file lintian)

# The virtual machine of Tests/RealDrivers and Tests/Service, its first program, and what packs them.
machine_packages=(qemu-system-x86 busybox-static cpio kmod)

# What keeps a machine busy while scripts/repeat.sh looks for tests that cannot bear that.
stress_packages=(stress-ng)

# The Python of the system, for which the packages are installed, whichever one comes first in PATH.
python=/usr/bin/python3

# show_help: the head of the script, to its first line that is no comment.
show_help() {
  sed -n '2,/^[^#]/{/^# shellcheck/d; s/^# \{0,1\}//p}' "$0"
}

is_installed() {
  [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

# Set once packages have been installed: what configuring has found before may have changed.
packages_changed=

# install_packages NAME...: those that are missing, with apt-get, as root or through sudo.
install_packages() {
  local missing=() package
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  ((${#missing[@]} == 0)) && return

  local as_root=()
  if ((EUID != 0)); then
    command -v sudo >/dev/null || {
      echo "These packages are missing, and there is no sudo to install them: ${missing[*]}" >&2
      return 1
    }
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}"
  "${as_root[@]}" apt-get -qq update
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -qq install --yes --no-install-recommends "${missing[@]}" >/dev/null
  packages_changed=yes
}

# build_folder PRESET: the build directory that CMakePresets.json gives it.
build_folder() {
  if [[ $1 == release ]]; then echo "$root/build"; else echo "$root/build-$1"; fi
}

# build PRESET TARGET: configures where that has not been done since packages were installed or the presets changed,
# and builds what is not up to date.
build() {
  local folder
  folder=$(build_folder "$1")
  if [[ $root/CMakePresets.json -nt $folder/build.ninja || -n $packages_changed ]]; then
    (cd "$root" && cmake --preset "$1")
  fi
  if [[ $(ninja -C "$folder" -n "$2") != *"no work to do"* ]]; then
    cmake --build "$folder" --target "$2"
  fi
}

# What judges whether everybody can use the page.
axe_version=4.14.1

# install_axe FOLDER: into that build where it is missing, with the npm that is there or else Debian's.
install_axe() {
  local package=$1/node_modules/axe-core/package.json
  if ! grep -qsF "\"version\": \"$axe_version\"" "$package"; then
    command -v npm >/dev/null || install_packages npm
    echo "Installing axe-core"
    npm install --prefix "$1" --no-save --no-audit --no-fund --loglevel=error "axe-core@$axe_version" >/dev/null
  fi
}

# What unit_tests and end_to_end_tests run under.
launcher=()

# unit_tests FOLDER REPORT: all of that build.
unit_tests() {
  "${launcher[@]}" ctest --test-dir "$1" --parallel "$(nproc)" --output-on-failure --no-tests=error --output-junit "$2"
}

# end_to_end_tests PRESET REPORT: all, on the hub of that build. They give each hub a network of its own, which takes
# root: at least in a namespace.
end_to_end_tests() {
  local isolation=()
  local arguments=()
  if [[ $1 == release ]]; then
    install_axe "$(build_folder "$1")"
  else
    arguments+=(--ignore-glob='*/test_web_page_*') # what runs in the browser is the same in all builds
  fi
  ((EUID == 0)) || isolation=(unshare --user --map-root-user --net)
  HUB_EXECUTABLE=$(build_folder "$1")/bin/LarkspurWindowsCameraHub HUB_PRESET=$1 \
    "${launcher[@]}" "${isolation[@]}" "$python" -m pytest -p no:cacheprovider --quiet -r fEs \
    --numprocesses $((2 * $(nproc))) --dist loadfile --junit-xml="$2" "${arguments[@]}" "$root/Tests/EndToEnd"
}
