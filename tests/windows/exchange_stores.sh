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

# on SIDE ARGUMENTS...: ltreg of that side, on the store of the folder that stands in `folder`.
on() {
  if [ "$1" = ours ]; then
    "$ours" "${@:2}" --store "$folder/store.cfg"
  else
    "${emulator[@]}" "$theirs" "${@:2}" --store "$folder\\store.cfg" | tr -d '\r'
  fi
}

write_values() {
  on "$1" set 'HKLM\Software\Demo' Text --type string $'a "quoted" \xc3\xa4 \xf0\x9f\x98\x80'
  on "$1" set 'HKLM\Software\Demo' Folder --type string 'C:\x\'
  on "$1" set 'HKLM\Software\Demo' Empty --type string ''
  on "$1" set 'HKLM\Software\Demo' Number --type ulong 4294967295
  on "$1" set 'HKLM\Software\Demo' Bytes --type binary ' x = 1 '
  on "$1" set 'HKLM\Software\Demo\Sub' List --type list one two three
}

same() {
  diff "$1" "$2" || { echo "$3" >&2; exit 1; }
}

for side in ours theirs; do
  folder=$side
  write_values "$side"
  on ours tree HKLM --json >"by_ours_of_$side"
  on theirs tree HKLM --json >"by_theirs_of_$side"
  same "by_ours_of_$side" "by_theirs_of_$side" "the two read different values"
done
same by_ours_of_ours by_ours_of_theirs "the two wrote different values"
grep -q $'\r$' theirs/store.cfg
tr -d '\r' <theirs/store.cfg >theirs/store
same ours/store.cfg theirs/store "the stores differ in more than their line ends"

# Each changes the other's store, whose lines from then on end in its own way.
folder=theirs on ours set 'HKLM\Software\Demo' Number --type ulong 7
folder=ours on theirs set 'HKLM\Software\Demo' Number --type ulong 7
tr -d '\r' <ours/store.cfg >ours/store
same theirs/store.cfg ours/store "the changed stores differ in more than their line ends"
[ "$(folder=ours on ours get 'HKLM\Software\Demo' Number)" = 7 ]
