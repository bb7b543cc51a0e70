#!/usr/bin/env bash
# The Debian package, built from a build tree into a scratch folder and installed there into a
# scratch root with dpkg --root: it must hold the program at /home/vtx/Code/update and nothing
# else, declare every package that the program's libraries come from and the tools and fonts it
# needs, install and remove cleanly, and leave a program whose libraries all resolve. Needs no
# root rights and never touches the real /home/vtx.
#
#   check_package.sh BUILD_DIR
set -euo pipefail
build=$(readlink -f "$1")
scratch=$(mktemp -d "${TMPDIR:-/tmp}/vtx-package-test.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

if ! cpack --config "$build/CPackConfig.cmake" -G DEB -B "$scratch/out" > "$scratch/cpack.log" 2>&1; then
  cat "$scratch/cpack.log" >&2
  echo "FAIL: cpack could not build the package" >&2
  exit 1
fi
debs=("$scratch"/out/*.deb)
if [ ${#debs[@]} != 1 ] || [ ! -f "${debs[0]}" ]; then
  echo "FAIL: expected one package, found: ${debs[*]}" >&2
  exit 1
fi
deb=${debs[0]}
field() { dpkg-deb -f "$deb" "$1"; }

# ---- what the package says about itself
[ "$(field Package)" = vtx-update ] || fail "package name $(field Package)"
[ "$(field Architecture)" = "$(dpkg --print-architecture)" ] || fail "architecture $(field Architecture)"
# The bare package names of Depends, one a line.
depends=$(field Depends | tr ',' '\n' | sed 's/([^)]*)//; s/^ *//; s/ *$//' | sed '/^$/d')
for needed in mount fonts-liberation fonts-linuxlibertine fonts-wqy-microhei; do
  grep -qxF "$needed" <<<"$depends" || fail "Depends lacks $needed"
done

# ---- the files, with owner and mode
listing=$(dpkg-deb -c "$deb" | awk '{print $1, $2, $6}')
expected="drwxr-xr-x root/root ./home/
drwxr-xr-x root/root ./home/vtx/
drwxr-xr-x root/root ./home/vtx/Code/
-rwxr-xr-x root/root ./home/vtx/Code/update"
# Some dpkg-deb versions list the root folder itself.
if [ "$(grep -v '^drwxr-xr-x root/root ./$' <<<"$listing")" != "$expected" ]; then
  fail "package contents:"$'\n'"$listing"$'\n'"expected:"$'\n'"$expected"
fi

# ---- installed and removed in a scratch root
root=$scratch/root
mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info"
: > "$root/var/lib/dpkg/status"
dpkg_root() {
  # The scratch root holds none of the dependencies; they are checked below against this host.
  dpkg --root="$root" --log=/dev/null --force-not-root --force-depends --force-script-chrootless "$@"
}
if ! dpkg_root -i "$deb" > "$scratch/install.log" 2>&1; then
  cat "$scratch/install.log" >&2
  fail "dpkg could not install the package"
fi
program=$root/home/vtx/Code/update
if [ ! -x "$program" ] || ! head -c 4 "$program" | grep -q 'ELF'; then
  fail "no executable program at /home/vtx/Code/update in the scratch root"
else
  # Every library the program names must resolve, and come from a package in Depends.
  resolved=$(ldd "$program" 2>&1) || fail "ldd: $resolved"
  grep -q 'not found' <<<"$resolved" && fail "unresolved libraries:"$'\n'"$resolved"
  for soname in $(objdump -p "$program" | awk '$1 == "NEEDED" {print $2}'); do
    path=$(awk -v so="$soname" '$1 == so && $2 == "=>" {print $3}' <<<"$resolved")
    [ -n "$path" ] || continue
    owner=$(dpkg-query -S "$path" 2>/dev/null || dpkg-query -S "$(readlink -f "$path")" 2>/dev/null ||
            dpkg-query -S "${path#/usr}" 2>/dev/null || true)
    owner=${owner%%:*}
    if [ -z "$owner" ]; then
      fail "no package owns $path ($soname)"
    elif ! grep -qxF "$owner" <<<"$depends"; then
      fail "Depends lacks $owner, which provides $soname"
    fi
  done
fi
installed=$(dpkg --root="$root" -L vtx-update | sort)
[ "$(grep -c . <<<"$installed")" = 4 ] && grep -qxF /home/vtx/Code/update <<<"$installed" ||
  fail "dpkg lists as installed:"$'\n'"$installed"
dpkg_root -r vtx-update > "$scratch/remove.log" 2>&1 || fail "dpkg could not remove the package"
[ ! -e "$program" ] || fail "the program is still there after removal"

if [ "$failures" = 0 ]; then
  echo "package $(basename "$deb"): contents, dependencies, install and removal as expected"
  exit 0
fi
exit 1
