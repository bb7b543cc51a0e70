#!/usr/bin/env bash
# The sandbox test binaries, run outside the instrument sandbox, refuse and touch nothing: not even
# on a machine where /home/vtx/Code is writable and ROOT names something that looks like a sandbox
# root. A private mount namespace plants an instrument's tree at the fixed paths for this.
#
#   sandbox_tests_refuse_outside.sh test_binary...
set -uo pipefail
[ $# -gt 0 ] || { echo "usage: $0 test_binary..." >&2; exit 2; }

if [ "${1:-}" != --inside ]; then
  if [ "$(id -u)" = 0 ]; then ns=(unshare --mount); else ns=(unshare --user --map-root-user --mount); fi
  exec "${ns[@]}" "$0" --inside "$@"
fi
shift
# Whatever a binary that does not refuse writes stays in this namespace, /usr/lib's in an overlay.
fake=$(mktemp -d) && mkdir "$fake/record" "$fake/upper" "$fake/work" && echo current > "$fake/record/.sandbox"
trap 'rm -rf "$fake"' EXIT
mount --make-rprivate / || exit 2
for d in /home /media /opt /mnt; do mount -t tmpfs planted "$d" || exit 2; done
mount -t overlay planted -o "lowerdir=/usr/lib,upperdir=$fake/upper,workdir=$fake/work" /usr/lib || exit 2
mkdir -p /usr/lib/i386-linux-gnu /mnt/root-ro && ln -s libstdc++.so.6.0.22 /usr/lib/i386-linux-gnu/libstdc++.so.6
mkdir -p /home/vtx/Code/NEW /home/vtx/Code/Old /home/vtx/bin /media/usb/update
for f in settings.vtx settings.lmo factory.lmo instrument.log zip Application NEW/Application; do
  echo "planted $f" > "/home/vtx/Code/$f"
done
echo "planted zip" > /media/usb/update/zip
ln -s /usr/bin/false /home/vtx/bin/VtxSecret

tree() {
  find /home /media /opt /mnt /usr/lib/i386-linux-gnu -printf '%p %y %m %s %l\n' -type f -exec md5sum {} + | sort
}
before=$(tree)
failures=0
for binary in "$@"; do
  out=$(ROOT=$fake "$binary" 2>&1)
  status=$?
  if [ "$status" = 0 ] || ! grep -q 'refused' <<< "$out"; then
    echo "FAIL: $(basename "$binary") ran (exit status $status): $out"
    failures=$((failures + 1))
  fi
done
after=$(tree)
[ "$after" = "$before" ] || { echo "FAIL: the planted tree changed:"; diff <(echo "$before") <(echo "$after"); exit 1; }
[ "$failures" = 0 ] && echo "PASS: every sandbox test binary refused outside the sandbox; nothing changed"
exit $((failures > 0))
