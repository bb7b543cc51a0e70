#!/usr/bin/env bash
# make configures an existing build folder anew when CMAKE_ARGS changed (CI's -DVTX_WERROR=ON must
# hold on a machine that has built before), and keeps its configuration when CMAKE_ARGS is not given.
#
#   make_honours_cmake_args.sh SOURCE_DIR
set -uo pipefail
src=${1:?usage: $0 SOURCE_DIR}
build=$(mktemp -d "${TMPDIR:-/tmp}/make-args-test.XXXXXX") || exit 2
trap 'rm -rf "$build"' EXIT
failures=0

# A make of our own: not the arguments of a make that runs this test.
configure() { env -u MAKEFLAGS -u MFLAGS -u MAKELEVEL -u CMAKE_ARGS make -s -C "$src" BUILD="$build" "$build/build.ninja" "$@" >/dev/null 2>&1; }
werror() { sed -n 's/^VTX_WERROR:BOOL=//p' "$build/CMakeCache.txt"; }
expect() {  # what, expected werror, make arguments...
  local what=$1 want=$2 stamp
  shift 2
  # Set back, so that a configure shows in its time.
  [ -e "$build/build.ninja" ] && touch -d '-1 hour' "$build/build.ninja"
  stamp=$(stat -c %Y "$build/build.ninja" 2>/dev/null)
  configure "$@" || { echo "FAIL: $what: make failed"; failures=$((failures + 1)); return; }
  [ "$(werror)" = "$want" ] || { echo "FAIL: $what: VTX_WERROR is $(werror), expected $want"; failures=$((failures + 1)); }
  [ $# != 0 ] || [ "$(stat -c %Y "$build/build.ninja")" = "$stamp" ] ||
    { echo "FAIL: $what: configured again"; failures=$((failures + 1)); }
}
expect "fresh" OFF CMAKE_ARGS=
expect "option added" ON CMAKE_ARGS=-DVTX_WERROR=ON
expect "not given" ON
expect "option left out" OFF CMAKE_ARGS=
[ "$failures" = 0 ] && echo "PASS: make configured anew exactly when CMAKE_ARGS changed"
exit $((failures > 0))
