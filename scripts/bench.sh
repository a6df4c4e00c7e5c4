#!/usr/bin/env bash
# Installs what is missing, builds the benchmarks and prints their ratios; see usage below.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/common.sh

usage() {
  cat <<'TEXT'
usage: scripts/bench.sh [FILTER] [--help]

Installs missing packages, builds the preset bench and runs every benchmark program, or only the
benchmarks that the regular expression FILTER matches. Each benchmark runs several times, mixed with
the others, and its best time counts. Of the lines that differ only in what stands between < and >,
the first is the library and the others are its peers: their last column is the library's time
divided by the peer's, so that a number below 1 says that the library is faster.

  REPETITIONS   environment variable, how often each benchmark runs; 7 if it is not set
  --help        prints this text
TEXT
}

# From the names of all benchmarks in their own order and then a CSV report: the best processor time
# of each, with the ratios to its peers.
ratios() {
  awk -F, '
    /^name,/ { started = 1; next }
    !started { order[++count] = $0; next }
    {
      name = $1
      gsub(/"/, "", name)
      if (name ~ /_(mean|median|stddev|cv)$/ || $4 == "") next
      factor = $5 == "ms" ? 1e6 : $5 == "us" ? 1e3 : $5 == "s" ? 1e9 : 1
      time = (name ~ /real_time/ ? $3 : $4) * factor
      if (!(name in best) || time < best[name]) best[name] = time
    }
    END {
      for (i = 1; i <= count; ++i) {
        family = order[i]
        gsub(/<[^>]*>/, "", family)
        if (!(family in first)) {
          first[family] = order[i]
          families[++kinds] = family
        }
        members[family] = members[family] order[i] "\n"
      }
      for (k = 1; k <= kinds; ++k) {
        n = split(members[families[k]], names, "\n") - 1
        for (i = 1; i <= n; ++i) {
          printf "%-58s %14.1f ns", names[i], best[names[i]]
          if (i > 1) printf " %8.2f", best[first[families[k]]] / best[names[i]]
          print ""
        }
      }
    }'
}

run_bench() {
  {
    "$1" --benchmark_filter="$filter" --benchmark_list_tests
    "$1" --benchmark_filter="$filter" --benchmark_repetitions="${REPETITIONS:-7}" \
      --benchmark_min_time=0.05 --benchmark_enable_random_interleaving=true \
      --benchmark_format=csv 2>/dev/null
  } | ratios
}

filter=.
for option in "$@"; do
  case $option in
    --help) usage; exit ;;
    -*) usage >&2; exit 2 ;;
    *) filter=$option ;;
  esac
done

step "install packages" install_packages "${build_packages[@]}" "${bench_packages[@]}"
step "build bench" build bench
for program in build/bench/bin/*_bench; do
  step "run ${program##*/}" run_bench "$program"
done
