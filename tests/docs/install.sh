#!/bin/sh
# install.sh -- installs the build into a temporary prefix and checks what
# a user gets: PREFIX/bin/sorvel turns an example into a score,
# PREFIX/bin/sorvel-roll draws it, their pages are installed, and
# PREFIX/share/man/man1/sorvel.1 renders without warnings.
#
#   install.sh CMAKE BUILD_DIR SOURCE_DIR
#
# Exit status: 0 good, 1 a failure, 77 when man is missing (the page is
# then not rendered and the test is reported as skipped).
set -u
cmake=$1
build=$2
src=$3

prefix=$(mktemp -d "${TMPDIR:-/tmp}/sorvel-install.XXXXXX") || exit 1
trap 'rm -rf "$prefix"' EXIT

if ! "$cmake" --install "$build" --prefix "$prefix" >"$prefix/install.log" 2>&1; then
  echo "FAIL: cmake --install"; cat "$prefix/install.log"; exit 1
fi

bin=$prefix/bin/sorvel
page=$prefix/share/man/man1/sorvel.1
[ -x "$bin" ] || { echo "FAIL: $bin was not installed"; exit 1; }
[ -f "$page" ] || { echo "FAIL: $page was not installed"; exit 1; }

cd "$prefix" || exit 1
if ! "$bin" -s "$src/examples/first.sor" first.sco >run.log 2>&1; then
  echo "FAIL: the installed sorvel did not run"; cat run.log; exit 1
fi
if [ "$(grep -c '^i1 ' first.sco)" -ne 4 ] || [ "$(tail -n 1 first.sco)" != "e" ]; then
  echo "FAIL: the installed sorvel wrote an unexpected score"; cat first.sco; exit 1
fi
echo "ok: $bin wrote a score of 4 notes"

roll=$prefix/bin/sorvel-roll
[ -x "$roll" ] || { echo "FAIL: $roll was not installed"; exit 1; }
[ -f "$prefix/share/man/man1/sorvel-roll.1" ] || { echo "FAIL: the sorvel-roll page was not installed"; exit 1; }
if ! "$roll" -s "$src/examples/first.sor" first.svg >roll.log 2>&1 ||
   [ "$(grep -c 'class="note"' first.svg)" -ne 4 ]; then
  echo "FAIL: the installed sorvel-roll did not draw the 4 notes"; cat roll.log; exit 1
fi
echo "ok: $roll drew 4 notes"

command -v man >/dev/null 2>&1 || { echo "man not found: the page is not rendered"; exit 77; }
if ! MANWIDTH=80 man -l "$page" >page.txt 2>page.err; then
  echo "FAIL: man -l could not render the page"; cat page.err; exit 1
fi
if [ -s page.err ] || ! grep -q 'sorvel - score generator' page.txt || ! grep -q 'EXIT STATUS' page.txt; then
  echo "FAIL: the page does not render cleanly"; cat page.err; head -20 page.txt; exit 1
fi
MANWIDTH=80 man --warnings -l "$page" 2>page.warn >/dev/null
if [ -s page.warn ]; then echo "FAIL: man warns about the page"; cat page.warn; exit 1; fi
echo "ok: $page renders ($(wc -l <page.txt) lines)"
