#!/usr/bin/env bash
# Installs what is missing, builds, and shows the registry at work through the tool ltreg.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/common.sh

usage() {
  cat <<'TEXT'
usage: scripts/demo.sh [--windows] [--help]

Installs missing packages, builds, and works on stores in a temporary folder.

  --windows   builds for Windows, and runs the programs with Wine
  --help      prints this text
TEXT
}

case ${1-} in
  '')
    step "install packages" install_packages "${build_packages[@]}" "${tool_packages[@]}"
    step "build release" build release
    exec scripts/lib/demo_steps.sh build/release/bin
    ;;
  --windows)
    step "install packages" install_packages "${windows_packages[@]}"
    step "build windows" build windows
    exec scripts/lib/demo_steps.sh build/windows/bin "$PWD/cmake/run_with_wine.sh" \
      "$PWD/build/windows"
    ;;
  --help) usage ;;
  *) usage >&2; exit 2 ;;
esac
