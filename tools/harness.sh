# Shell helpers of the sandbox's scripts, sourced by them (and so there for --inside-setup scripts).

# wait_until SECONDS CONDITION: evaluates the shell condition CONDITION every 0.05 s until it holds
# (status 0) or SECONDS have passed (status 1, after one last look). The one "wait until, then
# act" loop: act after it, on its status.
wait_until() {
  local _wait_end=$((SECONDS + $1))
  until eval "$2"; do
    if [ "$SECONDS" -ge "$_wait_end" ]; then
      eval "$2" && return 0
      return 1
    fi
    sleep 0.05
  done
}

# console_line NAME: the text of one of the program's console lines that tell how a run goes and
# ends (update/ConsoleLines.h, the interface between the program and this harness), e.g. kFailed.
console_line() {
  sed -n "s/^inline constexpr char $1\\[\\] = \"\\([^\"\\\\]*\\)\";.*/\\1/p" \
    "$(dirname "${BASH_SOURCE[0]}")/../update/ConsoleLines.h"
}
