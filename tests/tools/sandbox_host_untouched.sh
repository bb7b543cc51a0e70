#!/usr/bin/env bash
# The instrument sandbox must keep every write of a sandboxed command inside its root: the
# instrument's fixed paths on the machine running the tests stay exactly as they were.
#
#   sandbox_host_untouched.sh path/to/instrument-sandbox
set -uo pipefail

sandbox=${1:?usage: $0 path/to/instrument-sandbox}
fixed=(/home/vtx /home/vtx/Code /home/vtx/bin /media/usb /opt/librime /usr/lib/i386-linux-gnu /mnt/root-ro)
probe="vtx-sandbox-probe-$$"

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# A fingerprint of a host path without touching it: absent, or its type and listing.
fingerprint() {
  local p=$1
  if [ ! -e "$p" ] && [ ! -L "$p" ]; then echo absent; return; fi
  { stat -c '%F %a %u %g' "$p"; ls -la --time-style=+%s "$p" 2>/dev/null; } | md5sum | cut -d' ' -f1
}
sandbox_mounts() { grep -cE ' vtx-(home|media|opt|mnt|usr-lib) ' /proc/self/mountinfo || true; }

declare -A before
for p in "${fixed[@]}"; do before[$p]=$(fingerprint "$p"); done
mounts_before=$(sandbox_mounts)

work=$(mktemp -d "${TMPDIR:-/tmp}/sandbox-host-test.XXXXXX") || { echo "FAIL: no temporary folder"; exit 1; }
root="$work/root"
cleanup() { chmod -R u+rwx "$work" 2>/dev/null; rm -rf "$work"; }
trap cleanup EXIT

# The sandboxed command. It refuses to write anything unless it sees the sandbox's own mounts,
# so a broken sandbox cannot make this test write to the real machine.
cat > "$work/inside.sh" <<'INSIDE'
set -u
probe=$1
out="$ROOT/record/inside.txt"
for m in vtx-home vtx-media vtx-opt vtx-mnt vtx-usr-lib; do
  grep -q " $m " /proc/self/mountinfo || { echo "not-in-sandbox $m" >> "$out"; exit 3; }
done
echo "inside" >> "$out"
if touch "/mnt/root-ro/$probe" 2>/dev/null; then echo "root-ro-writable" >> "$out"; else echo "root-ro-readonly" >> "$out"; fi
grep -E '^[^ ]+ [^ ]+ [^ ]+ [^ ]+ /mnt/root-ro ' /proc/self/mountinfo | grep -qE ' ro[, ]' \
  && echo "root-ro-mounted-ro" >> "$out"
echo code > "/home/vtx/Code/$probe" || echo "write-failed code" >> "$out"
echo usb > "/media/usb/$probe" || echo "write-failed usb" >> "$out"
mkdir -p /opt/librime && echo rime > "/opt/librime/$probe" || echo "write-failed librime" >> "$out"
echo lib > "/usr/lib/i386-linux-gnu/$probe" || echo "write-failed lib" >> "$out"
/home/vtx/bin/VtxSecret "mount -o remount,rw /mnt/root-ro && echo rootro > /mnt/root-ro/$probe" \
  || echo "privileged-failed" >> "$out"
echo "done" >> "$out"
INSIDE

echo "Running a sandboxed command that writes into the instrument's fixed paths (root $root)"
"$sandbox" --root "$root" --timeout 60 -- bash "$work/inside.sh" "$probe"
status=$?
[ "$status" = 0 ] || fail "the sandboxed command ended with status $status"

inside=$(cat "$root/record/inside.txt" 2>/dev/null || true)
grep -qx inside <<<"$inside" || fail "the command did not see the sandbox's mounts: $inside"
grep -qx done <<<"$inside" || fail "the command did not finish: $inside"
if grep -qx root-ro-writable <<<"$inside"; then
  fail "/mnt/root-ro was writable before the remount"
elif grep -qx root-ro-readonly <<<"$inside"; then
  grep -qx root-ro-mounted-ro <<<"$inside" || fail "/mnt/root-ro was not mounted read-only"
else
  fail "the read-only check of /mnt/root-ro did not run"
fi
grep -q write-failed <<<"$inside" && fail "writes failed inside the sandbox: $inside"
grep -qx privileged-failed <<<"$inside" && fail "the privileged tool failed"

# The writes landed in the sandbox root.
for f in "home/vtx/Code/$probe" "media/usb/$probe" "opt/librime/$probe" "usr-lib/i386-linux-gnu/$probe" \
         "rootro/$probe"; do
  [ -f "$root/$f" ] || fail "the sandbox root lacks $f"
done
[ "$(cat "$root/rootro/$probe" 2>/dev/null)" = rootro ] || fail "the privileged write did not reach the root image"

# The privileged tool recorded its argument exactly.
expected="mount -o remount,rw /mnt/root-ro && echo rootro > /mnt/root-ro/$probe"
grep -qxF -- "$expected" "$root/record/privileged.log" || fail "privileged.log lacks the argument: $(cat "$root/record/privileged.log" 2>/dev/null)"

# The host is exactly as before.
for p in "${fixed[@]}"; do
  after=$(fingerprint "$p")
  [ "$after" = "${before[$p]}" ] || fail "host path $p changed (${before[$p]} -> $after)"
done
for f in "/home/vtx/Code/$probe" "/media/usb/$probe" "/opt/librime/$probe" "/usr/lib/i386-linux-gnu/$probe" \
         "/mnt/root-ro/$probe"; do
  [ -e "$f" ] && fail "host file $f exists"
done
[ "$(sandbox_mounts)" = "$mounts_before" ] || fail "sandbox mounts are left on the host"

if [ "$failures" = 0 ]; then
  echo "PASS: the sandbox kept every write in its root; the host's fixed paths are untouched"
  exit 0
fi
echo "FAIL: $failures check(s) failed"
exit 1
