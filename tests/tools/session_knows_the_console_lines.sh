#!/usr/bin/env bash
# The session ends a run by the program's console lines (update/ConsoleLines.h): it ends a program
# that shows the failure line as failed, and refuses at once a program lacking one of the lines
# (as one whose text was changed in the code alone would), instead of waiting for its time-out.
#
#   session_knows_the_console_lines.sh path/to/tools
set -uo pipefail
tools=${1:?usage: $0 path/to/tools}
source "$tools/harness.sh"
ROOT=$(mktemp -d "${TMPDIR:-/tmp}/session-test.XXXXXX") && mkdir "$ROOT/record" || exit 2
export ROOT VTX_SCREENSHOT=0 VTX_SESSION_TIMEOUT=600
trap 'rm -rf "$ROOT"' EXIT
failures=0

# A stand-in program that holds (in a comment) the console lines named, prints the failure line
# (made of two halves, so that it holds it only when named) and waits to be stopped.
program() {
  local failed event
  failed=$(console_line kFailed) event=$(console_line kUpdateEvent)
  { echo '#!/bin/sh'; for name in "$@"; do echo "# $(console_line "$name")"; done
    echo "printf '$event%s%s\\n' '${failed:0:5}' '${failed:5}' >&2; exec sleep 600"; } > "$ROOT/program"
  chmod +x "$ROOT/program"
}
session() {  # expected session, the lines the program holds...
  local want=$1
  shift
  program "$@"
  rm -f "$ROOT/record/session"
  "$tools/run-update-session" "$ROOT/program" 2>/dev/null
  [ "$(cat "$ROOT/record/session" 2>/dev/null)" = "$want" ] ||
    { echo "FAIL: holding $*: session $(cat "$ROOT/record/session" 2>&1), expected $want"; failures=$((failures + 1)); }
}
# A build holds one of the two reboot lines (the reboot-suppressed build the first).
session "failed 143" kStatus kSucceeded kFailed kRebootReturned
session "failed 143" kStatus kSucceeded kFailed kRebootSuppressed
session "refused 2" kSucceeded kFailed kRebootReturned
session "refused 2" kStatus kFailed kRebootReturned
session "refused 2" kStatus kSucceeded kRebootReturned
session "refused 2" kStatus kSucceeded kFailed
[ "$failures" = 0 ] && echo "PASS: the session ends a run by the console lines and refuses a program lacking one"
exit $((failures > 0))
