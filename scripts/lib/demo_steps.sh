#!/usr/bin/env bash
# demo_steps.sh BIN [EMULATOR...]: shows the registry at work through the programs of the folder BIN,
# which a given emulator runs. Ends with the first step that does not go as told.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. scripts/lib/common.sh

bin=$(realpath "$1")
shift
emulator=("$@")
suffix=
[ -e "$bin/ltreg" ] || suffix=.exe
component=$(find "$bin" -name 'greeter_component.so' -o -name 'greeter_component.dll')

work=$(mktemp -d)
writer=
trap 'report_failed_step; [ -z "$writer" ] || kill -9 "$writer" 2>/dev/null; rm -rf "$work"' EXIT
cd "$work"

# run PROGRAM ARGUMENTS...: in place of the calling shell, so that its process is the program's.
run() {
  exec ${emulator[@]+"${emulator[@]}"} "$bin/$1$suffix" "${@:2}"
}

ltreg() {
  (run ltreg "$@")
}

# A path as the programs take it.
native() {
  if [ -z "$suffix" ]; then
    printf '%s' "$1"
  else
    printf 'Z:%s' "${1//\//\\}"
  fi
}

# use_store ROOT FILE: one variable for each root names its store file.
use_store() {
  mkdir -p "$(dirname "$work/$2")"
  store=$work/$2
  export "$1=$(native "$store")"
}

say() {
  echo
  printf '# %s\n' "$@"
}

# show_failing STATUS COMMAND...: shows a command as a user would type it and runs it; it must end
# with that status.
show_failing() {
  local expected=$1 word line='$' status=0
  shift
  for word in "$@"; do
    case $word in
      *[!A-Za-z0-9_./-]*) line+=" '$word'" ;;
      *) line+=" $word" ;;
    esac
  done
  printf '\n%s\n' "$line"
  "$@" || status=$?
  [ "$status" -eq 0 ] || echo "(exit status $status)"
  [ "$status" -eq "$expected" ]
}

show() {
  show_failing 0 "$@"
}

write_small_store() {
  use_store HKEY_LOCAL_MACHINE small/HKEY_LOCAL_MACHINE.cfg
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
}

read_values() {
  say "A store file written by hand, with a value of each type:"
  show cat small/HKEY_LOCAL_MACHINE.cfg
  say "The same, as the library reads it:"
  show ltreg path HKLM
  show ltreg tree 'HKLM\Software\Demo'
  show ltreg list 'HKLM\Software\Demo'
  show ltreg get 'HKLM\Software\Demo\Sub' Long
  show_failing 1 ltreg get 'HKLM\Software\Demo' Absent
}

change_values() {
  say "A save would drop the comment, and keeps it in a file of its own where that is asked for:"
  show_failing 4 ltreg set 'HKLM\Software\Demo' Title --type string 'Good evening'
  show ltreg set 'HKLM\Software\Demo' Title --type string 'Good evening' --force
  show cat small/HKEY_LOCAL_MACHINE.cfg.dropped
  say "Each change is saved at once:"
  show ltreg set 'HKLM\Software\Demo' Retries --type ulong 5
  show ltreg set 'HKLM\Software\Demo' Paths --type list four five
  show ltreg set 'HKLM\Software\Demo\New' Blob --type binary --text 'any bytes'
  show ltreg delete 'HKLM\Software\Demo\Sub' Long
  say "The store file, and the version before the last change, which stays beside it:"
  show cat small/HKEY_LOCAL_MACHINE.cfg
  show_failing 1 diff -u small/HKEY_LOCAL_MACHINE.cfg_old small/HKEY_LOCAL_MACHINE.cfg
  say "The identity file names the lock that all store files of this folder share:"
  show cat small/qsconfig.dat
  echo
}

# Starts a save of the large store and stops it half-way, while it holds the folder's lock.
stop_a_save() {
  local attempt
  for attempt in 1 2 3 4 5 6 7 8 9 10; do
    run ltreg set 'HKLM\Software\Demo' Writer --type string "attempt $attempt" &
    writer=$!
    until [ -e "$store"_new ] || ! kill -0 "$writer" 2>/dev/null; do :; done
    if kill -STOP "$writer" 2>/dev/null; then
      until grep -q '^State:[[:space:]]*[TZ]' "/proc/$writer/status"; do :; done
      [ -e "$store"_new ] && return
      kill -CONT "$writer"
    fi
    wait "$writer"
  done
  echo "each of $attempt saves was over before it could be stopped" >&2
  return 1
}

wait_for_another_process() {
  local reader
  use_store HKEY_LOCAL_MACHINE large/HKEY_LOCAL_MACHINE.cfg
  awk 'BEGIN { print "[Software\\Demo]"
               for (i = 0; i < 200000; ++i) printf "\"Value %d\"=string:\"%d\"\n", i, i }' \
    >"$store"

  say "Two processes exclude each other. One is stopped half-way through the save of a large store:"
  stop_a_save
  show ls large
  say "Another one that reads a value now has to wait; after a second it has nothing yet:"
  run ltreg get 'HKLM\Software\Demo' Writer >answer &
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

# A system may forget a lock with its last user, so the one that is told is there before the kill.
survive_a_killed_process() {
  local waiting
  say "A process that is killed half-way leaves the store as it was. The one that waits for it is" \
    "told that the lock was abandoned, once:"
  stop_a_save
  run ltreg get 'HKLM\Software\Demo' 'Value 7' &
  waiting=$!
  sleep 1
  kill -9 "$writer"
  wait "$writer" 2>/dev/null || true
  writer=
  wait "$waiting" || echo "(exit status $?)"
  show ltreg get 'HKLM\Software\Demo' 'Value 7'
}

set_in_a_loop() {
  local i
  for i in $(seq 25); do
    ltreg set 'HKLM\Software\Demo' "$1 $i" --type ulong "$i"
  done
}

write_from_two_processes() {
  local left right
  use_store HKEY_LOCAL_MACHINE shared/HKEY_LOCAL_MACHINE.cfg
  say "Two loops change one store at the same time. ltreg holds the folder's lock from before it" \
    "reads to the end of its save, so that none of the 50 values is lost and no line is torn:"
  set_in_a_loop Left & left=$!
  set_in_a_loop Right & right=$!
  wait "$left"
  wait "$right"
  show grep -c '=ulong:' shared/HKEY_LOCAL_MACHINE.cfg
  [ "$(grep -c '=ulong:' "$store")" -eq 50 ]
  show_failing 1 grep -Evc \
    '^(\[Software\\Demo\]|"(Left|Right) [0-9]+"=ulong:[0-9]+|)[[:cntrl:]]?$' \
    shared/HKEY_LOCAL_MACHINE.cfg
  say "And all of it loads:"
  show ltreg list 'HKLM\Software\Demo' | tail -n 5
}

# A program of its own: examples/settings.
keep_settings_of_a_program() {
  use_store HKEY_CURRENT_USER settings.cfg
  say "A program keeps its settings under a path of its own variables, and finds them again:"
  (run settings write)
  (run settings show)
  show cat settings.cfg
  (run settings clear)
  unset HKEY_CURRENT_USER
}

# The component library and the program of examples/greeter.
walk_the_road_of_a_request() {
  local library
  library=$(native "$component")
  use_store HKEY_LOCAL_MACHINE components/HKEY_LOCAL_MACHINE.cfg
  say "A class of a component library is found through its entry in the registry, whose place is" \
    "written in variables:"
  show ltreg vars
  show ltreg expand '%CLASSID%\Example.Hello' --trace
  show_failing 1 ltreg component check Example.Hello
  say "A library's file tells what it offers, and its class is entered:"
  show ltreg component offers "$library"
  show ltreg component register --all "$library"
  show cat components/HKEY_LOCAL_MACHINE.cfg
  show ltreg component list
  say "A process of its own loads the library, and with --create makes an object of a component:"
  show ltreg component check Example.Hello --create
  say "What is wrong with a class is told in one line:"
  show ltreg component register Example.Text components/HKEY_LOCAL_MACHINE.cfg
  show_failing 5 ltreg component check Example.Text
  show ltreg component register Example.Other "$library"
  show_failing 5 ltreg component check Example.Other
  say "A program creates an object of the class and uses it by two interfaces:"
  (run greeter "$library")
}

step "write a store" write_small_store
step "read it" read_values
step "change it" change_values
step "make one process wait for another" wait_for_another_process
step "kill a process that saves" survive_a_killed_process
step "change one store from two processes" write_from_two_processes
step "keep the settings of a program" keep_settings_of_a_program
step "create objects of component classes" walk_the_road_of_a_request
