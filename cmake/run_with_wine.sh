#!/usr/bin/env bash
# run_with_wine.sh BUILD PROGRAM ARGUMENTS...: runs a Windows program on a registry and a drive of
# the build's own, which are made at the first use and go with the build folder.
set -euo pipefail

export WINEPREFIX=$1/wine
export WINEDEBUG=-all
# No menus of the desktop, and no offers to install what nothing here needs.
export WINEDLLOVERRIDES='winemenubuilder.exe=d;mscoree,mshtml='
unset DISPLAY
# By this the words of a command line are taken for UTF-8, wherever the caller stands.
export LC_ALL=C.UTF-8
shift

# The first program starts the server and the system's services, which live on for a while and
# spare the later programs that cost. They must hold neither the lock nor an output that a caller
# waits for; and programs that start at once must not both make the prefix. A start can fail while
# an earlier server goes: the next one finds it gone.
(
  flock 9
  for attempt in 1 2 3; do
    wineserver --persistent=60 9>&- || true
    wine cmd /c exit 9>&- && break
    sleep "$attempt"
  done
) </dev/null >/dev/null 2>&1 9>"$WINEPREFIX.lock"

exec wine "$@"
