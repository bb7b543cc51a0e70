#!/usr/bin/env bash
# The rehearsal explains itself: a scenario it does not know and a display it cannot open each end
# it in one line with exit status 2; a stick is rehearsed on a copy of its files (the stick stays
# as it was), in the language asked for with the date format kept, and its failure comes with the
# service sheet's section. No Python exception text anywhere.
#
#   rehearse_explains.sh REHEARSE PROGRAM
set -uo pipefail
rehearse=$1 program=$2
scratch=$(mktemp -d "${TMPDIR:-/tmp}/vtx-rehearse-test.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }
run() { "$rehearse" --program "$program" --out "$scratch/out" "$@" > "$scratch/output" 2>&1; }

run --scenario code_99
rc=$? out=$(cat "$scratch/output")
[ $rc = 2 ] && [ "$(wc -l <<<"$out")" = 1 ] && grep -q "no scenario code_99; known: .* code_06 " <<<"$out" ||
  fail "unknown scenario: status $rc: $out"
DISPLAY=:4711 run
rc=$? out=$(cat "$scratch/output")
[ $rc = 2 ] && [ "$(wc -l <<<"$out")" = 1 ] && grep -q "display :4711 cannot be opened" <<<"$out" ||
  fail "display that cannot be opened: status $rc: $out"

stick=$scratch/stick
mkdir -p "$stick/update"
printf 'auxiliary data\n' > "$stick/update/zip"
printf 'not a gzip archive' > "$stick/jfonts.tgz"
touch -d '2020-01-01 10:00' "$stick" "$stick/update" "$stick/update/zip" "$stick/jfonts.tgz"
state() { (cd "$stick" && find . -printf '%p %s %m %T@\n' | sort && find . -type f -exec sha256sum {} + | sort); }
before=$(state)
env -u DISPLAY "$rehearse" --program "$program" --out "$scratch/out" --stick "$stick" --language DE \
  > "$scratch/output" 2>&1
rc=$? out=$(cat "$scratch/output")
[ $rc = 1 ] || fail "stick: status $rc, not 1 for a stick that stops the update"
[ "$(state)" = "$before" ] || fail "the stick changed"
for want in "Rehearsing the stick $stick: the full update, screen in German (DE) on Xvfb" \
            "Daten konnten nicht kopiert werden: font package unpack" "== Installed: the new build" \
            "== Service sheet (docs/service/service-sheet.md): Could not copy file(s): font package unpack" \
            "<date> could not unpack font package" "new      /home/vtx/Code/zip" \
            "  refused: jfonts.tgz: not a whole gzip stream" "verdict: this stick would stop at Daten konnten nicht \
kopiert werden: font package unpack because jfonts.tgz: not a whole gzip stream"; do
  grep -qF -- "$want" <<<"$out" || fail "stick: no line \"$want\""
done
grep -qE "^  [0-9]{2}/[0-9]{2}/[0-9]{4} [0-9]{2}:[0-9]{2} [AP]M auxillary files copied" <<<"$out" ||
  fail "stick: the date format changed with the language"
[ -s "$scratch/out/stick_stick_de.console.log" ] || fail "stick: no console named after the run"
grep -q "Traceback\|Error:\|Errno" "$scratch"/output && fail "exception text in the output"

[ "$failures" = 0 ] || { echo "--- rehearsal output ---" >&2; cat "$scratch/output" >&2; }
exit $((failures > 0))
