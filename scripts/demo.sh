#!/usr/bin/env bash
# Installs what is missing, builds, and shows the registry at work through the tool ltreg.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/lib/common.sh

if [ $# -gt 0 ]; then
  echo "usage: scripts/demo.sh   (installs, builds, and works on stores in a temporary folder)"
  [ "$1" = --help ] && exit 0 || exit 2
fi

step "install packages" install_packages "${build_packages[@]}" "${tool_packages[@]}"
step "build release" build release

bin=$PWD/build/release/bin
ltreg=$bin/ltreg
work=$(mktemp -d)
writer=
trap 'report_failed_step; [ -z "$writer" ] || kill -9 "$writer" 2>/dev/null; rm -rf "$work"' EXIT
cd "$work"

say() {
  echo
  printf '# %s\n' "$@"
}

# Shows a command as a user would type it, runs it, and tells when ltreg did not exit with 0.
show() {
  local word line='$' status=0
  for word in "$@"; do
    case $word in
      *[!A-Za-z0-9_./-]*) line+=" '$word'" ;;
      *) line+=" $word" ;;
    esac
  done
  printf '\n%s\n' "$line"
  if [ "$1" != ltreg ]; then
    "$@" || true
    return
  fi
  "$ltreg" "${@:2}" || status=$?
  [ "$status" -eq 0 ] || echo "(exit status $status)"
}

write_small_store() {
  mkdir small
  cat >small/HKEY_LOCAL_MACHINE.cfg <<'STORE'
; a line like this one is skipped
[Software\Demo]
"Title"=string:"Hello, world"
"InstallDir"=dir:"C:\Program Files\Demo\"
"Retries"=ulong:3
"Blob"=binary:00 1F A0
"Paths"=liststring:"one",\
"two",\
"three"

[Software\Demo\Sub]
"Long"=string:"first half \
second half"
STORE
  # One variable for each root names its store file.
  export HKEY_LOCAL_MACHINE=$work/small/HKEY_LOCAL_MACHINE.cfg
}

read_values() {
  say "A store file written by hand, with a value of each type:"
  show cat small/HKEY_LOCAL_MACHINE.cfg
  say "The same, as the library reads it:"
  show ltreg path HKLM
  show ltreg tree 'HKLM\Software\Demo'
  show ltreg list 'HKLM\Software\Demo'
  show ltreg get 'HKLM\Software\Demo\Sub' Long
  show ltreg get 'HKLM\Software\Demo' Absent
}

change_values() {
  say "Each change is saved at once:"
  show ltreg set 'HKLM\Software\Demo' Title --type string 'Good evening'
  show ltreg set 'HKLM\Software\Demo' Retries --type ulong 5
  show ltreg set 'HKLM\Software\Demo' Paths --type list four five
  show ltreg set 'HKLM\Software\Demo\New' Blob --type binary 'any bytes'
  show ltreg delete 'HKLM\Software\Demo\Sub' Long
  say "The store file, and the version before the last change, which stays beside it:"
  show cat small/HKEY_LOCAL_MACHINE.cfg
  show diff -u small/HKEY_LOCAL_MACHINE.cfg_old small/HKEY_LOCAL_MACHINE.cfg
  say "The identity file names the lock that all store files of this folder share:"
  show cat small/qsconfig.dat
  echo
}

# Starts a save of the large store and stops it half-way, while it holds the folder's lock.
stop_a_save() {
  local attempt
  for attempt in 1 2 3 4 5 6 7 8 9 10; do
    "$ltreg" set 'HKLM\Software\Demo' Writer --type string "attempt $attempt" &
    writer=$!
    until [ -e "$HKEY_LOCAL_MACHINE"_new ] || ! kill -0 "$writer" 2>/dev/null; do :; done
    if kill -STOP "$writer" 2>/dev/null; then
      until grep -q '^State:[[:space:]]*[TZ]' "/proc/$writer/status"; do :; done
      [ -e "$HKEY_LOCAL_MACHINE"_new ] && return
      kill -CONT "$writer"
    fi
    wait "$writer"
  done
  echo "each of $attempt saves was over before it could be stopped" >&2
  return 1
}

wait_for_another_process() {
  local reader
  mkdir large
  export HKEY_LOCAL_MACHINE=$work/large/HKEY_LOCAL_MACHINE.cfg
  awk 'BEGIN { print "[Software\\Demo]"
               for (i = 0; i < 200000; ++i) printf "\"Value %d\"=string:\"%d\"\n", i, i }' \
    >"$HKEY_LOCAL_MACHINE"

  say "Two processes exclude each other. One is stopped half-way through the save of a large store:"
  stop_a_save
  show ls large
  say "Another one that reads a value now has to wait; after a second it has nothing yet:"
  "$ltreg" get 'HKLM\Software\Demo' Writer >answer &
  reader=$!
  sleep 1
  kill -0 "$reader"
  show wc -c answer
  say "The first one goes on and ends its save, and the second one sees all of it:"
  kill -CONT "$writer"
  wait "$writer"
  writer=
  wait "$reader"
  show cat answer
}

survive_a_killed_process() {
  say "A process that is killed half-way leaves the store as it was. Who comes next is told once" \
    "that the lock was abandoned:"
  stop_a_save
  kill -9 "$writer"
  wait "$writer" 2>/dev/null || true
  writer=
  show ltreg get 'HKLM\Software\Demo' 'Value 7'
  show ltreg get 'HKLM\Software\Demo' 'Value 7'
}

set_in_a_loop() {
  local i
  for i in $(seq 25); do
    "$ltreg" set 'HKLM\Software\Demo' "$1 $i" --type ulong "$i"
  done
}

write_from_two_processes() {
  local left right
  mkdir shared
  export HKEY_LOCAL_MACHINE=$work/shared/HKEY_LOCAL_MACHINE.cfg
  say "Two loops change one store at the same time. ltreg holds the folder's lock from before it" \
    "reads to the end of its save, so that none of the 50 values is lost and no line is torn:"
  set_in_a_loop Left & left=$!
  set_in_a_loop Right & right=$!
  wait "$left"
  wait "$right"
  show grep -c '=ulong:' shared/HKEY_LOCAL_MACHINE.cfg
  show grep -Evc '^(\[Software\\Demo\]|"(Left|Right) [0-9]+"=ulong:[0-9]+|)$' \
    shared/HKEY_LOCAL_MACHINE.cfg
  say "And all of it loads:"
  show ltreg list 'HKLM\Software\Demo' | tail -n 5
}

# A program of its own: examples/settings.
keep_settings_of_a_program() {
  local settings=$bin/settings
  export HKEY_CURRENT_USER=$work/settings.cfg
  say "A program keeps its settings under a path of its own variables, and finds them again:"
  "$settings" write
  "$settings" show
  show cat settings.cfg
  "$settings" clear
  unset HKEY_CURRENT_USER
}

# The component library and the program of examples/greeter.
walk_the_road_of_a_request() {
  local component=$bin/greeter_component.so
  mkdir components
  export HKEY_LOCAL_MACHINE=$work/components/HKEY_LOCAL_MACHINE.cfg
  say "A class of a component library is found through its entry in the registry, whose place is" \
    "written in variables:"
  show ltreg vars
  show ltreg expand '%CLASSID%\Example.Hello' --trace
  show ltreg component check Example.Hello
  say "The two classes of a library are entered:"
  show ltreg component register Example.Hello "$component"
  show ltreg component register Example.Counter "$component"
  show cat components/HKEY_LOCAL_MACHINE.cfg
  show ltreg component list
  say "A process of its own loads the library, and with --create makes an object of a component:"
  show ltreg component check Example.Hello --create
  show ltreg component check Example.Counter
  say "What is wrong with a class is told in one line:"
  show ltreg component register Example.Text components/HKEY_LOCAL_MACHINE.cfg
  show ltreg component check Example.Text
  show ltreg component register Example.Other "$component"
  show ltreg component check Example.Other
  say "A program creates objects of the two classes and uses them:"
  show "$bin/greeter" "$component"
}

step "write a store" write_small_store
step "read it" read_values
step "change it" change_values
step "make one process wait for another" wait_for_another_process
step "kill a process that saves" survive_a_killed_process
step "change one store from two processes" write_from_two_processes
step "keep the settings of a program" keep_settings_of_a_program
step "create objects of component classes" walk_the_road_of_a_request
