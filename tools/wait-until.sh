# Sourced by the sandbox's shell scripts (and so there for --inside-setup scripts too).
#
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
