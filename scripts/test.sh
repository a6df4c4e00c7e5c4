#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests; see usage below.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/common.sh

usage() {
  cat <<'TEXT'
usage: scripts/test.sh [--all] [--help]

Installs missing packages, builds the preset dev and runs its tests.

  --all    also checks the format and runs clang-tidy, and runs the tests once more under the
           address and undefined-behaviour sanitizers (preset asan) and under the thread
           sanitizer (preset tsan)
  --help   prints this text
TEXT
}

# The files below the given patterns that the project keeps, also where there is no git.
sources() {
  if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    git ls-files -z -- "$@"
  else
    local pattern
    for pattern in "$@"; do
      find . -path ./build -prune -o -path "./$pattern" -type f -print0
    done
  fi
}

check_format() {
  sources '*.h' '*.cpp' | xargs -0 clang-format --dry-run -Werror
}

# Prints what clang-tidy finds in one source; its count of hidden findings is no news.
tidy_one() {
  local findings
  findings=$(clang-tidy --quiet -p build/dev "$1" 2>/dev/null) || { echo "$findings"; return 1; }
}

# The product's sources that the dev build compiles.
check_tidy() {
  export -f tidy_one
  sources 'ltlib/*.cpp' 'lttracer/*.cpp' 'ltreg/*.cpp' |
    { grep -zv '/win32/' || true; } |
    xargs -0 -P "$jobs" -I{} bash -c 'tidy_one {}'
}

# The thread sanitizer's runtime does not start where the system spreads addresses too widely.
without_address_spread() {
  if setarch -R true 2>/dev/null; then
    setarch -R "$@"
  else
    "$@"
  fi
}

test_tsan() {
  cmake --preset tsan
  without_address_spread cmake --build --preset tsan --parallel "$jobs"
  without_address_spread ctest --preset tsan
}

all=false
for option in "$@"; do
  case $option in
    --all) all=true ;;
    --help) usage; exit ;;
    *) usage >&2; exit 2 ;;
  esac
done

packages=("${build_packages[@]}" "${tool_packages[@]}" "${test_packages[@]}")
if $all; then
  packages+=("${check_packages[@]}")
fi
step "install packages" install_packages "${packages[@]}"
if $all; then
  step "check the format" check_format
fi
step "build dev" build dev
step "test dev" ctest --preset dev
if $all; then
  step "run clang-tidy" check_tidy
  step "build asan" build asan
  step "test asan" ctest --preset asan
  step "build and test tsan" test_tsan
fi
