# shellcheck shell=bash disable=SC2034
# Shared by the scripts: the packages of each purpose, their installation, and steps with a name.
# Sourced, never run; works from the root of the tree.

build_packages=(g++ cmake ninja-build)
tool_packages=(libcli11-dev nlohmann-json3-dev)
test_packages=(libgtest-dev)
windows_packages=(cmake ninja-build g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix wine wine64
  googletest libcli11-dev nlohmann-json3-dev)
check_packages=(clang clang-format clang-tidy)
bench_packages=(python3 libbenchmark-dev pkg-config uuid-dev libglib2.0-dev libboost-dev libabsl-dev
  libpoco-dev qtbase5-dev rapidjson-dev crudini git wine wine64)

current_step=
report_failed_step() {
  local status=$?
  if [ "$status" -ne 0 ] && [ -n "$current_step" ]; then
    printf '\n%s: FAILED (status %s) in: %s\n' "${0##*/}" "$status" "$current_step" >&2
  fi
}
trap report_failed_step EXIT

# step NAME COMMAND...: runs the command under that name, which a failure is reported by; shows the
# time since the script began.
step() {
  current_step=$1
  shift
  printf '\n==> %s  [%d s]\n' "$current_step" "$SECONDS"
  "$@"
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    echo "no right to install packages: run as root, or install sudo" >&2
    return 1
  fi
}

is_installed() {
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs those of the packages that are missing; asks nobody anything.
install_packages() {
  local package missing=()
  if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "this system has no apt-get; needed are what Debian calls: $*"
    return
  fi
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  if [ ${#missing[@]} -eq 0 ]; then
    echo "all there: $*"
    return
  fi
  echo "missing: ${missing[*]}"
  as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends \
    "${missing[@]}"
}

# What runs Windows programs of 32 bits: of the system's second architecture, which not every system
# has, or can have beside what is installed. Where it is not to be had the system stays as it was.
wine32=wine32:i386
install_wine32() {
  local added=
  if is_installed "$wine32" || ! command -v apt-get >/dev/null; then
    return
  fi
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    as_root dpkg --add-architecture i386
    added=yes
  fi
  if as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q &&
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends \
      --no-remove "$wine32"; then
    return
  fi
  echo "there is no $wine32 to be had here: what is built of 32 bits will not be run"
  if [ -n "$added" ]; then
    as_root dpkg --remove-architecture i386
  fi
}

jobs=$(nproc 2>/dev/null || echo 2)

# build PRESET OPTIONS...: configures and builds.
build() {
  cmake --preset "$1"
  cmake --build --preset "$1" --parallel "$jobs" "${@:2}"
}
