#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests; see usage below.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/common.sh

usage() {
  cat <<'TEXT'
usage: scripts/test.sh [--windows | --all] [--help]

Installs missing packages, builds the preset dev and runs its tests.

  --windows   builds the preset windows with MinGW-w64 and runs its tests and the demo with Wine;
              of the preset dev it builds the tool alone, to exchange stores with it. Builds the
              preset windows32, too, and runs its tests where a Wine for 32 bits can be had
  --all       both of these, with a check of the format and of clang-tidy, each benchmark once,
              and the tests once more under the address and undefined-behaviour sanitizers (preset
              asan) and under the thread sanitizer (preset tsan)
  --help      prints this text
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

# The benchmarks with the peers that are there, so that they go on to build and to run.
check_benchmarks() {
  cmake --preset dev -DLTLIB_BUILD_BENCHMARKS=ON
  cmake --build --preset dev --parallel "$jobs" --target ltlib_benchmarks
  if command -v python3 >/dev/null; then
    python3 -B bench/run.py build/dev/bin --once
  fi
}

test_windows() {
  step "build windows" build windows
  step "test windows" ctest --preset windows
  step "build the tool of this system" build dev --target ltreg
  step "exchange stores between the systems" tests/windows/exchange_stores.sh \
    build/dev/bin/ltreg build/windows/bin/ltreg.exe "$PWD/cmake/run_with_wine.sh" \
    "$PWD/build/windows"
  step "build windows32" build windows32
  if is_installed "$wine32"; then
    step "test windows32" ctest --preset windows32
  else
    echo "without $wine32 the programs of windows32 are not run"
  fi
}

test_all() {
  step "check the format" check_format
  step "build dev" build dev
  step "test dev" ctest --preset dev
  step "run clang-tidy" check_tidy
  step "run each benchmark once" check_benchmarks
  test_windows
  step "build asan" build asan
  step "test asan" ctest --preset asan
  step "build and test tsan" test_tsan
}

case ${1-} in
  --help)
    usage
    ;;
  --windows)
    step "install packages" install_packages "${build_packages[@]}" "${test_packages[@]}" \
      "${windows_packages[@]}"
    step "install Wine for 32 bits" install_wine32
    test_windows
    ;;
  --all)
    step "install packages" install_packages "${build_packages[@]}" "${tool_packages[@]}" \
      "${test_packages[@]}" "${windows_packages[@]}" "${check_packages[@]}"
    step "install Wine for 32 bits" install_wine32
    test_all
    ;;
  '')
    step "install packages" install_packages "${build_packages[@]}" "${tool_packages[@]}" \
      "${test_packages[@]}"
    step "build dev" build dev
    step "test dev" ctest --preset dev
    ;;
  *)
    usage >&2
    exit 2
    ;;
esac
