#!/usr/bin/env bash
# A block that needs more memory than the run may have ends with error 32 and
# exit status 1, not a crash.
#   memory_limit.sh SORVEL LIMIT_KB   the native program under a ulimit; it
#                                     must leave no score either
#   memory_limit.sh SORVEL-NODE       the WebAssembly build at its own
#                                     maximum (2 GB)
# (That no temporary file outlives such a run is checked in-process, where
# each run has a private temporary directory.)
set -u
sorvel="$1"
limit="${2:-}"
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
# 9,000,000 events of 128 p-fields need about 5 GB.
printf 'i1 = 128 0 -9000000 {\n p2 1\n}\n' > big.sor
if [ -n "$limit" ]; then
  (ulimit -v "$limit"; exec "$sorvel" -s big.sor big.sco) 2> err.txt
else
  "$sorvel" -s big.sor big.sco 2> err.txt
fi
status=$?
# The block fills up when its "}" is read, on line 3.
expected=$'\n\nERROR: Line 3: Yikes, out of memory!\n} \n^\n'
if [ "$status" -ne 1 ]; then echo "exit status $status, expected 1"; tail -5 err.txt; exit 1; fi
if ! tail -c ${#expected} err.txt | cmp -s - <(printf '%s' "$expected"); then
  echo "unexpected ending:"; tail -5 err.txt | cat -A; exit 1
fi
if [ -n "$limit" ] && [ -e big.sco ]; then echo "the failed run left big.sco"; exit 1; fi
echo "ok: error 32 and exit status 1 ${limit:+under a limit of $limit KB}"
