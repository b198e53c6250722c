#!/usr/bin/env bash
# The WebAssembly build runs out of memory at its maximum (2 GB) and must end
# as the native program does: error 32 and exit status 1, not a crash.
#   memory_limit.sh SORVEL-NODE
set -u
sorvel="$1"
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
# 9,000,000 events of 128 p-fields need about 5 GB.
printf 'i1 = 128 0 -9000000 {\n p2 1\n}\n' > big.sor
"$sorvel" -s big.sor big.sco 2> err.txt
status=$?
expected=$'\n\nERROR: Line 3: Yikes, out of memory!\n} \n^\n'
if [ "$status" -ne 1 ]; then echo "exit status $status, expected 1"; tail -5 err.txt; exit 1; fi
if ! tail -c ${#expected} err.txt | cmp -s - <(printf '%s' "$expected"); then
  echo "unexpected ending:"; tail -5 err.txt | cat -A; exit 1
fi
echo "ok: error 32 at the module's memory maximum"
