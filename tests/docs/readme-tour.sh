#!/usr/bin/env bash
# Runs the bash blocks of the README's tour in order, as a reader pastes them, against a fresh
# emulator, so the tour cannot drift from what ocw does. A line that ends in
#   ; echo "exit code $?"   # N: ...
# must exit with N; every other command must succeed. Then the tour's start-up block is run once
# more with an emulator that cannot start: its wait must end instead of spinning forever.
set -u
readme=$1 build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ln -s "$build" "$work/build"   # the tour names build/ relative to the repository's top directory

awk '/^## A five-minute tour/ {on = 1; next}
     /^## / {on = 0}
     on && /^```bash$/ {inblock = 1; next}
     on && /^```$/ {inblock = 0; print "# --- end of block"; next}
     on && inblock' "$readme" > "$work/blocks"
[ -s "$work/blocks" ] || { echo "no tour found in $readme"; exit 1; }
first_block=$(sed '/^# --- end of block$/q' "$work/blocks")

{
  echo 'set -e'
  echo 'trap '\''[ -n "${EMULATOR:-}" ] && kill $EMULATOR 2>/dev/null'\'' EXIT'
  sed -E -e "s#/tmp/ocw-tour#$work/tour#g" \
         -e 's/^(.*); echo "exit code \$\?" *# *([0-9]+):.*$/rc=0; \1 || rc=$?; [ $rc -eq \2 ] || { echo "tour: exit $rc instead of \2: \1" >\&2; exit 1; }/' \
         -e '/ocw\(\) \{/a cd /   # the helper must keep working elsewhere' \
         "$work/blocks"
} > "$work/tour.sh"

cd "$work"
if ! bash "$work/tour.sh" > "$work/tour.out" 2>&1; then
  echo "the tour failed; its output:"; cat "$work/tour.out"; exit 1
fi
grep -q '"oci_endpoint"' "$work/tour.out" || { echo "the tour never showed the ready line"; cat "$work/tour.out"; exit 1; }

# A state directory that is a file: the emulator refuses to start, and the wait must notice.
: > "$work/not-a-dir"
printf '%s\n' "$first_block" | sed "s#/tmp/ocw-tour#$work/not-a-dir#g" > "$work/start.sh"
status=0
timeout 30 bash "$work/start.sh" > "$work/start.out" 2>&1 || status=$?
[ $status -eq 124 ] && { echo "the tour's wait for the ready line did not end when the emulator failed to start"; exit 1; }
grep -q '"oci_endpoint"' "$work/start.out" && { echo "the emulator started on a file as its state directory"; exit 1; }
echo "tour ran: $(grep -c . "$work/tour.out") lines of output"
