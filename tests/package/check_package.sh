#!/usr/bin/env bash
# The Debian package, built from a build tree and installed with dpkg --root into a scratch root:
# it holds the program at /home/vtx/Code/update and, where it carries its runtime (i386), that
# runtime in /home/vtx/Code/update-runtime and nothing else; it declares the tools and fonts it
# needs and, the plain one, the packages its libraries come from; it installs and removes cleanly.
# Needs no root rights and never touches the real /home/vtx.
#
#   check_package.sh BUILD_DIR
set -euo pipefail
build=$(readlink -f "$1")
scratch=$(mktemp -d "${TMPDIR:-/tmp}/vtx-package-test.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$scratch/out" > "$scratch/cpack.log" 2>&1 ||
  { cat "$scratch/cpack.log" >&2; echo "FAIL: cpack could not build the package" >&2; exit 1; }
debs=("$scratch"/out/*.deb)
[ ${#debs[@]} = 1 ] && [ -f "${debs[0]}" ] || { echo "FAIL: not one package: ${debs[*]}" >&2; exit 1; }
deb=${debs[0]}

[ "$(dpkg-deb -f "$deb" Package)" = vtx-update ] || fail "package name $(dpkg-deb -f "$deb" Package)"
[ "$(dpkg-deb -f "$deb" Architecture)" = "$(dpkg --print-architecture)" ] || fail "architecture"
# The bare package names of Depends, one a line.
depends=$(dpkg-deb -f "$deb" Depends | tr ',' '\n' | sed 's/([^)]*)//; s/^ *//; s/ *$//; /^$/d')
for needed in mount fonts-liberation fonts-linuxlibertine fonts-wqy-microhei; do
  grep -qxF "$needed" <<<"$depends" || fail "Depends lacks $needed"
done

# The files with owner and mode (some dpkg-deb versions list the root folder itself); the runtime
# folder's are looked at below.
runtime=home/vtx/Code/update-runtime
all=$(dpkg-deb -c "$deb" | awk '$6 != "./" {print $1, $2, $6}')
listing=$(grep -v " ./$runtime/." <<<"$all")
expected="drwxr-xr-x root/root ./home/
drwxr-xr-x root/root ./home/vtx/
drwxr-xr-x root/root ./home/vtx/Code/
-rwxr-xr-x root/root ./home/vtx/Code/update"
bundled=0
if grep -q " ./$runtime/\$" <<<"$all"; then
  bundled=1
  expected=$expected$'\n'"drwxr-xr-x root/root ./$runtime/"
  # Plain files owned by root, the libraries not executable, the loader executable.
  odd=$(grep " ./$runtime/." <<<"$all" | grep -vE '^-rw-r--r-- root/root [^ ]+\.so[.0-9]*$' |
        grep -vE "^-rwxr-xr-x root/root ./$runtime/ld-linux[^/]*\\.so\\.[0-9]+$" || true)
  [ -z "$odd" ] || fail "runtime folder entries:"$'\n'"$odd"
  lib_depends=$(grep -E '^lib' <<<"$depends" || true)
  [ -z "$lib_depends" ] || fail "the package carrying its runtime depends on libraries: $lib_depends"
fi
[ "$listing" = "$expected" ] || fail "package contents:"$'\n'"$listing"

root=$scratch/root
mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info"
: > "$root/var/lib/dpkg/status"
# The scratch root holds none of the dependencies; they are checked below against this host.
dpkg_root() { dpkg --root="$root" --log=/dev/null --force-not-root --force-depends --force-script-chrootless "$@"; }
dpkg_root -i "$deb" > "$scratch/install.log" 2>&1 || { cat "$scratch/install.log" >&2; fail "dpkg -i"; }
program=$root/home/vtx/Code/update
head -c 4 "$program" 2>/dev/null | grep -q ELF && [ -x "$program" ] || fail "no program at /home/vtx/Code/update"
dynamic() { readelf -dW "$1" 2>/dev/null; }
if [ "$bundled" = 1 ]; then
  # Tied to its runtime by interpreter and RPATH, searching no default folder; every library that
  # it or a bundled one names is there; no bundled library searches elsewhere.
  interp=$(readelf -lW "$program" | sed -n 's/.*Requesting program interpreter: \(.*\)]/\1/p')
  [[ "$interp" == "/$runtime/ld-linux"* ]] && [ -x "$root$interp" ] || fail "interpreter $interp"
  dynamic "$program" | grep -qE "\(RPATH\) +Library rpath: \[/$runtime\]" || fail "no RPATH /$runtime"
  for f in "$program" "$root/$runtime"/*.so*; do
    [ "$f" = "$root$interp" ] && continue
    dynamic "$f" | grep -q 'Flags: .*NODEFLIB' || fail "$f searches the default folders"
    [ "$f" = "$program" ] || ! dynamic "$f" | grep -qE '\((RPATH|RUNPATH)\)' || fail "$f has a search path of its own"
    for soname in $(dynamic "$f" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
      [ -f "$root/$runtime/$soname" ] || fail "$soname, needed by $(basename "$f"), is not in the runtime folder"
    done
  done
  # The system's loader cache and gconv modules are out of reach of the bundled loader and C library.
  ! grep -qaP '\x00/etc/ld\.so\.cache\x00' "$root$interp" || fail "the bundled loader still reads /etc/ld.so.cache"
  ! grep -qaP '\x00/usr/lib/i386-linux-gnu/gconv\x00' "$root/$runtime/libc.so.6" || fail "the bundled C library reads the system's gconv"
else
# Every library the program names resolves, and comes from a package in Depends.
resolved=$(ldd "$program" 2>&1) && ! grep -q 'not found' <<<"$resolved" || fail "ldd:"$'\n'"$resolved"
for soname in $(objdump -p "$program" 2>/dev/null | awk '$1 == "NEEDED" {print $2}'); do
  path=$(awk -v so="$soname" '$1 == so && $2 == "=>" {print $3}' <<<"$resolved")
  [ -n "$path" ] || continue
  owner=$(dpkg-query -S "$path" 2>/dev/null || dpkg-query -S "$(readlink -f "$path")" 2>/dev/null ||
          dpkg-query -S "${path#/usr}" 2>/dev/null || true)
  grep -qxF "${owner%%:*}" <<<"$depends" || fail "Depends lacks ${owner%%:*}, which provides $soname ($path)"
done
fi
# The package names the build it holds: the version the program states on its first console line.
version=$(dpkg-deb -f "$deb" Version)
[ "$version" = "$(cat "$build/version.txt" 2>/dev/null)" ] || fail "package version $version, build $(cat "$build/version.txt")"
[[ $version =~ ^[0-9][0-9.]*((\+|~dev\.)[0-9]+\.g[0-9a-f]+(\.dirty)?|~~nogit)?$ ]] || fail "version $version names no build"
grep -aqF -- "$version" "$program" || fail "the program does not name its version $version"
dpkg_root -r vtx-update > "$scratch/remove.log" 2>&1 || fail "dpkg could not remove the package"
[ ! -e "$program" ] && [ ! -e "$root/$runtime" ] || fail "the program is still there after removal"

[ "$failures" = 0 ] && echo "package $(basename "$deb"): contents, dependencies, install and removal as expected"
exit $((failures > 0))
