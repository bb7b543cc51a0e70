#!/usr/bin/env bash
# The build's versions, made from a history as cmake/BuildVersion.cmake makes them, sort for dpkg
# in the order the builds were made: outside git, before the first tag, at it, after it, changed.
set -euo pipefail
script=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
version() { cmake -DSOURCE_DIR="$work/src" -DVERSION=1.0.0 -P "$script"; }
mkdir "$work/src"
versions=("$(version)")
git -C "$work/src" init -q
commit() { echo "$1" >> "$work/src/f"; git -C "$work/src" add f; git -C "$work/src" -c user.name=t -c user.email=t@t commit -qm "$1"; }
commit one; commit two; versions+=("$(version)")
git -C "$work/src" tag v1.0.0; versions+=("$(version)")
commit three; versions+=("$(version)")
echo dirty >> "$work/src/f"; versions+=("$(version)")
echo "${versions[*]}"
for ((i = 1; i < ${#versions[@]}; i++)); do
  dpkg --compare-versions "${versions[i-1]}" lt "${versions[i]}" ||
    { echo "FAIL: ${versions[i-1]} does not sort before ${versions[i]}"; exit 1; }
done
[[ ${versions[2]} == 1.0.0 ]] || { echo "FAIL: the tag v1.0.0 gives ${versions[2]}"; exit 1; }
