#!/usr/bin/env bash
# tools/sign-update writes the manifest the instrument reads (every file, sorted, as signed),
# minisign accepts its signature, a link is never signed, and --check names a file changed since.
#
#   sign_update_signs.sh TOOLS
set -uo pipefail
tools=$1
command -v minisign >/dev/null || { echo "minisign is not installed: skipped"; exit 77; }
t=$(mktemp -d "${TMPDIR:-/tmp}/vtx-sign-test.XXXXXX")
trap 'rm -rf "$t"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
minisign -G -W -p "$t/k.pub" -s "$t/k.key" > /dev/null || fail "no key pair"
mkdir -p "$t/stick/update" "$t/NEW/lib"
printf 'auxiliary' > "$t/stick/update/zip"; printf 'fonts' > "$t/stick/jfonts.tgz"
printf 'runtime' > "$t/stick/update/libstdc++.so.6.0.22"; printf 'ignored' > "$t/stick/update/other"
printf 'app' > "$t/NEW/Application"; printf 'lib' > "$t/NEW/lib/lib x.so"
"$tools/sign-update" --key "$t/k.key" --release 2.1.0 --build "$t/NEW" "$t/stick" > /dev/null || fail "not signed"
want=$(printf 'vtx-update-manifest 1\nproduct korvalin\nrelease 2.1.0\n'
       cd "$t" && for f in NEW/Application "NEW/lib/lib x.so" stick/jfonts.tgz stick/update/libstdc++.so.6.0.22 \
                           stick/update/zip; do
         echo "$(stat -c %s "$f") $(sha256sum < "$f" | cut -c1-64) ${f#stick/}"; done)
[ "$(cat "$t/stick/update/manifest")" = "$want" ] || fail "manifest: $(cat "$t/stick/update/manifest")"
minisign -V -q -p "$t/k.pub" -m "$t/stick/update/manifest" || fail "minisign refuses the signature"
grep -qx 'trusted comment: release 2.1.0 for korvalin' "$t/stick/update/manifest.minisig" || fail "trusted comment"
"$tools/sign-update" --check "$t/k.pub" --build "$t/NEW" "$t/stick" > "$t/out" || fail "check: $(cat "$t/out")"
ln -s Application "$t/NEW/link"
"$tools/sign-update" --key "$t/k.key" --release 2.1.1 --build "$t/NEW" "$t/stick" 2> "$t/out" && fail "a link signed"
grep -q "NEW/link .* is a link" "$t/out" && grep -q "^release 2.1.0$" "$t/stick/update/manifest" || fail "link: $(cat "$t/out")"
rm "$t/NEW/link"
printf 'L' | dd of="$t/NEW/lib/lib x.so" bs=1 seek=1 conv=notrunc status=none
"$tools/sign-update" --check "$t/k.pub" --build "$t/NEW" "$t/stick" > "$t/out" && fail "a changed byte passes"
[ "$(grep -c '^differs: ' "$t/out")" = 1 ] && grep -q "^differs: .*NEW/lib/lib x.so differs" "$t/out" ||
  fail "changed byte: $(cat "$t/out")"
echo "ok"
