#!/usr/bin/env bash
# A temporary directory that fills up: a tmpfs of 8 KB, mounted in a mount
# namespace of this test's own, as TMPDIR. The input (406 blocks, 12 KB) does
# not fit, so the run ends with error 9 and status 1, leaves the score of an
# earlier run as it was and the temporary directory empty. (It once wrote a
# complete-looking score of the blocks that fitted, and exited 0.)
# Exits 77 (skipped) where the mount cannot be made.
#   full_tmpdir.sh SORVEL
set -u
sorvel="$1"
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir "$dir/tmp"
cd "$dir"
for i in $(seq 406); do printf 'i1 = 4 0 1 {\np2 1\np3 1\np4 1\n}\n'; done > many.sor
printf 'a previous score\n' > many.sco

unshare -m sh -c '
  mount -t tmpfs -o size=8k sorvel-full "$1/tmp" 2>/dev/null || exit 77
  cd "$1" || exit 1
  TMPDIR="$1/tmp" "$2" -s many.sor many.sco 2> err.txt
  echo $? > status.txt
  ls -A "$1/tmp" > left.txt
' sh "$dir" "$sorvel" 2>/dev/null
case $? in
  0) ;;
  77 | 1) echo "skipped: no tmpfs can be mounted in a mount namespace here"; exit 77 ;;
  *) echo "the test's own commands failed"; exit 1 ;;
esac

fail=0
status=$(cat status.txt)
expected=$'\nERROR: Ouch! Can\'t open the temporary file (huh?).\n\n'
if [ "$status" != 1 ]; then echo "exit status $status, expected 1"; fail=1; fi
if ! tail -c ${#expected} err.txt | cmp -s - <(printf '%s' "$expected"); then
  echo "error 9 not reported at the end:"; tail -5 err.txt | cat -A; fail=1
fi
if [ "$(cat many.sco)" != "a previous score" ]; then echo "the previous score was changed"; fail=1; fi
if [ -s left.txt ]; then echo "left in the temporary directory:"; cat left.txt; fail=1; fi
extra=$(ls -A | grep -v -x -E 'many.sor|many.sco|tmp|err.txt|status.txt|left.txt')
if [ -n "$extra" ]; then echo "left beside the score: $extra"; fail=1; fi
[ "$fail" = 0 ] && echo "ok: error 9 with a full temporary directory, nothing lost or left"
exit "$fail"
