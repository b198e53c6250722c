#!/usr/bin/env bash
# Under a memory limit, a block that needs more memory than allowed ends with
# error 32 and exit status 1. (That no temporary file outlives such a run is
# checked in-process, where each run has a private temporary directory.)
#   memory_limit.sh SORVEL
set -u
sorvel="$1"
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
# 9,000,000 events of 128 p-fields need about 5 GB; the limit is 300 MB.
printf 'i1 = 128 0 -9000000 {\n p2 1\n}\n' > big.sor
(ulimit -v 300000; exec "$sorvel" -s big.sor big.sco) 2> err.txt
status=$?
# The block fills up when its "}" is read, on line 3.
expected=$'\n\nERROR: Line 3: Yikes, out of memory!\n} \n^\n'
if [ "$status" -ne 1 ]; then echo "exit status $status, expected 1"; cat err.txt; exit 1; fi
if ! grep -qF "ERROR: Line 3: Yikes, out of memory!" err.txt; then
  echo "error 32 not reported:"; tail -5 err.txt; exit 1
fi
if ! tail -c ${#expected} err.txt | cmp -s - <(printf '%s' "$expected"); then
  echo "unexpected ending:"; tail -5 err.txt | cat -A; exit 1
fi
if [ -e big.sco ]; then echo "the failed run left big.sco"; exit 1; fi
echo "ok: error 32 under a 300 MB limit, and no score"
