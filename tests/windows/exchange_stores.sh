#!/usr/bin/env bash
# exchange_stores.sh LTREG LTREG_EXE EMULATOR...: values that the program of one system writes are
# read by that of the other, and each leaves the same store but for the line ends.
set -euo pipefail
ours=$(realpath "$1")
theirs=$(realpath "$2")
emulator=("${@:3}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir ours theirs

# on SIDE FOLDER ARGUMENTS...: ltreg of that side, on the store of the folder.
on() {
  if [ "$1" = ours ]; then
    "$ours" "${@:3}" --store "$2/store.cfg"
  else
    "${emulator[@]}" "$theirs" "${@:3}" --store "$2\\store.cfg" | tr -d '\r'
  fi
}

same() {
  diff <(tr -d '\r' <"$1") <(tr -d '\r' <"$2") || { echo "$3" >&2; exit 1; }
}

for side in ours theirs; do
  on $side $side set 'HKLM\Software\Demo' Text --type string $'a "quoted" \xc3\xa4 \xf0\x9f\x98\x80'
  on $side $side set 'HKLM\Software\Demo' Number --type ulong 4294967295
  on $side $side set 'HKLM\Software\Demo' Bytes --type binary --text ' x = 1 '
  on $side $side set 'HKLM\Software\Demo\Sub' List --type list one two three
  on ours $side tree HKLM --json >"by_ours_of_$side"
  on theirs $side tree HKLM --json >"by_theirs_of_$side"
  same "by_ours_of_$side" "by_theirs_of_$side" "the two read different values"
done
grep -q $'\r$' theirs/store.cfg
same ours/store.cfg theirs/store.cfg "the stores differ in more than their line ends"

# Each changes the other's store, whose lines from then on end in its own way.
on ours theirs set 'HKLM\Software\Demo' Number --type ulong 7
on theirs ours set 'HKLM\Software\Demo' Number --type ulong 7
same ours/store.cfg theirs/store.cfg "the changed stores differ in more than their line ends"
[ "$(on ours ours get 'HKLM\Software\Demo' Number)" = 7 ]
