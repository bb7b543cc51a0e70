#!/usr/bin/env bash
# The instrument sandbox keeps every write of a sandboxed command inside its root: the instrument's
# fixed paths on the machine running the tests stay exactly as they were.
#
#   sandbox_host_untouched.sh path/to/instrument-sandbox
set -uo pipefail

sandbox=${1:?usage: $0 path/to/instrument-sandbox}
overlays=$(awk '$1 == "overlay" { print $4 }' "$(dirname "$sandbox")/sandbox-areas")
[ -n "$overlays" ] || { echo "FAIL: no overlay in $(dirname "$sandbox")/sandbox-areas"; exit 1; }
probe="vtx-sandbox-probe-$$"
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# The fixed paths, each as its type and listing (or absent), and the sandbox's mounts.
host() {
  for p in /home/vtx /home/vtx/Code /home/vtx/bin /media/usb /opt/librime /usr/lib/i386-linux-gnu /mnt/root-ro; do
    { stat -c '%F %a %u %g' "$p" && ls -la --time-style=+%s "$p"; } 2>&1 | md5sum | sed "s|-|$p|"
  done
  grep -cE " ($(echo $overlays | tr ' ' '|')) " /proc/self/mountinfo
}
before=$(host)

work=$(mktemp -d "${TMPDIR:-/tmp}/sandbox-host-test.XXXXXX") || exit 1
root=$work/root
trap 'chmod -R u+rwx "$work" 2>/dev/null; rm -rf "$work"' EXIT

# The sandboxed command writes nothing unless it sees the sandbox's own mounts, so a broken
# sandbox cannot make this test write to the real machine. It reports on its standard output.
cat > "$work/inside.sh" <<'INSIDE'
for m in $2; do
  grep -q " $m " /proc/self/mountinfo || { echo "not in the sandbox: no $m"; exit 3; }
done
touch "/mnt/root-ro/$1" 2>/dev/null && echo "/mnt/root-ro writable"
grep -E '^([^ ]+ ){4}/mnt/root-ro ' /proc/self/mountinfo | grep -qE ' ro[, ]' || echo "/mnt/root-ro not read-only"
for d in /home/vtx/Code /media/usb /opt/librime /usr/lib/i386-linux-gnu; do
  mkdir -p "$d" && echo x > "$d/$1" || echo "cannot write $d"
done
/home/vtx/bin/VtxSecret "mount -o remount,rw /mnt/root-ro && echo x > /mnt/root-ro/$1" || echo "privileged tool failed"
INSIDE
out=$("$sandbox" --root "$root" --timeout 60 -- bash "$work/inside.sh" "$probe" "$overlays" 2>&1) ||
  fail "the sandboxed command failed"
[ -z "$out" ] || fail "inside the sandbox: $out"

# The writes landed in the sandbox root; the privileged tool recorded its argument exactly.
for f in home/vtx/Code media/usb opt/librime usr-lib/i386-linux-gnu rootro; do
  [ -f "$root/$f/$probe" ] || fail "the sandbox root lacks $f/$probe"
done
expected="mount -o remount,rw /mnt/root-ro && echo x > /mnt/root-ro/$probe"
grep -qxF "$expected" "$root/record/privileged.log" 2>/dev/null ||
  fail "privileged.log: $(cat "$root/record/privileged.log" 2>&1)"
after=$(host)
[ "$after" = "$before" ] || fail "the host changed:"$'\n'"$(diff <(echo "$before") <(echo "$after"))"

[ "$failures" = 0 ] && echo "PASS: the sandbox kept every write in its root; the host is untouched"
exit $((failures > 0))
