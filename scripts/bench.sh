#!/usr/bin/env bash
# Installs what is missing, builds the benchmarks and measures the library beside its peers; see
# usage below.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/common.sh

usage() {
  cat <<'TEXT'
usage: scripts/bench.sh [FILTER] [--quick] [--help]

Installs missing packages, builds the preset bench, measures the library beside its peers in
interleaved rounds and prints one table of ratios. Without options it takes up to 15 minutes and
writes the figures and plots of docs/performance.md anew; what is written there by hand stays.

  FILTER    measures only the lines whose group and name the regular expression matches, as in
            'store: read' or 'ltreg', and writes no page
  --quick   fewer rounds and nothing beyond 100,000 values, in up to 4 minutes; writes no page
  --help    prints this text
TEXT
}

options=()
for option in "$@"; do
  case $option in
    --help) usage; exit ;;
    --quick) options+=("$option") ;;
    -*) usage >&2; exit 2 ;;
    *) options+=("$option") ;;
  esac
done
if [ ${#options[@]} -eq 0 ]; then
  options=(--write docs/performance.md)
fi

step "install packages" install_packages "${build_packages[@]}" "${tool_packages[@]}" \
  "${bench_packages[@]}"
step "build bench" build bench
step "measure" python3 -B bench/run.py build/bench/bin "${options[@]}"
