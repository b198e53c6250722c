#!/usr/bin/env bash
# Builds maths_probe natively and for WebAssembly against the two builds'
# core libraries, runs both and compares: the values Sorvel keeps must agree
# everywhere; where the libraries' own double results differ is reported for
# information.
#   web/test/maths_probe.sh NATIVE_BUILD_DIR [STRIDE]    (after web/build; STRIDE 1: every argument)
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
native_build=$(cd "$1" && pwd)
stride=${2:-16}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if [ -d /usr/share/nodejs ]; then export NODE_PATH="/usr/share/nodejs${NODE_PATH:+:$NODE_PATH}"; fi

flags=(-O2 -std=c++20 -ffp-contract=off -fno-fast-math -I"$root/src")
g++ "${flags[@]}" "$root/web/test/maths_probe.cpp" "$native_build/src/libsorvel_core.a" -o "$work/probe"
em++ "${flags[@]}" -fwasm-exceptions "$root/web/test/maths_probe.cpp" "$root/build-wasm/src/libsorvel_core.a" \
  -o "$work/probe.js" -sNODERAWFS=1 -sEXIT_RUNTIME=1 -sWASM_ASYNC_COMPILATION=0 -sALLOW_MEMORY_GROWTH=1
"$work/probe" "$stride" > "$work/native.txt"
node "$work/probe.js" "$stride" > "$work/wasm.txt"

lib_differ=$(paste -d' ' "$work/native.txt" "$work/wasm.txt" | awk '$3 != $7' | wc -l)
kept_differ=$(paste -d' ' "$work/native.txt" "$work/wasm.txt" | awk '$4 != $8 {print; n++} END {exit n > 0}' >&2 && echo 0 || echo some)
echo "maths_probe (stride $stride): $(wc -l < "$work/native.txt") stretches;" \
     "library results differ in $lib_differ, kept values differ in $kept_differ"
[ "$kept_differ" = 0 ]
