#!/bin/sh
# install.sh -- installs the build into a temporary prefix and checks what
# a user gets: PREFIX/bin/sorvel turns the installed example into a score,
# PREFIX/bin/sorvel-roll draws it and PREFIX/bin/sorvel-hints finds nothing
# in it; PREFIX/share/doc/sorvel holds the guide, the licence, the pictures
# the guide shows and every example with its orchestra, the same as in the
# source tree, and every file that the man page's SEE ALSO names; the three
# programs' pages are installed and sorvel.1 renders without warnings.
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

doc=$prefix/share/doc/sorvel
for f in docs/guide.md LICENSE; do
  if ! cmp -s "$src/$f" "$doc/$(basename "$f")"; then echo "FAIL: $doc/$(basename "$f") differs or is missing"; exit 1; fi
done
for f in "$src"/docs/pictures/*; do
  name=pictures/$(basename "$f")
  if ! cmp -s "$f" "$doc/$name"; then echo "FAIL: $doc/$name differs or is missing"; exit 1; fi
done
for f in "$src"/examples/*.sor "$src"/examples/*.inc "$src"/examples/*.orc \
         "$src"/examples/*.csd "$src"/examples/*.md; do
  name=examples/$(basename "$f")
  if ! cmp -s "$f" "$doc/$name"; then echo "FAIL: $doc/$name differs or is missing"; exit 1; fi
done
# The names in the man page's SEE ALSO (".I name" after ".TP"), relative to
# the documentation directory.
see_also=$(sed -n '/^\.SH SEE ALSO/,/^\.SH/{/^\.TP/{n;s/^\.I //p;};}' "$page")
[ -n "$see_also" ] || { echo "FAIL: the man page's SEE ALSO names no installed file"; exit 1; }
for name in $see_also; do
  [ -e "$doc/$name" ] || { echo "FAIL: the man page names $name, which is not in $doc"; exit 1; }
done
echo "ok: $doc holds the guide, the licence, $(ls "$doc/examples" | wc -l) example files and all that SEE ALSO names"

cd "$prefix" || exit 1
if ! "$bin" -s "$doc/examples/first.sor" first.sco >run.log 2>&1; then
  echo "FAIL: the installed sorvel did not run"; cat run.log; exit 1
fi
if [ "$(grep -c '^i1 ' first.sco)" -ne 4 ] || [ "$(tail -n 1 first.sco)" != "e" ]; then
  echo "FAIL: the installed sorvel wrote an unexpected score"; cat first.sco; exit 1
fi
echo "ok: $bin wrote a score of 4 notes"

roll=$prefix/bin/sorvel-roll
[ -x "$roll" ] || { echo "FAIL: $roll was not installed"; exit 1; }
[ -f "$prefix/share/man/man1/sorvel-roll.1" ] || { echo "FAIL: the sorvel-roll page was not installed"; exit 1; }
if ! "$roll" -s "$doc/examples/first.sor" first.svg >roll.log 2>&1 ||
   [ "$(grep -c 'class="note"' first.svg)" -ne 4 ]; then
  echo "FAIL: the installed sorvel-roll did not draw the 4 notes"; cat roll.log; exit 1
fi
echo "ok: $roll drew 4 notes"

hints=$prefix/bin/sorvel-hints
[ -x "$hints" ] || { echo "FAIL: $hints was not installed"; exit 1; }
[ -f "$prefix/share/man/man1/sorvel-hints.1" ] || { echo "FAIL: the sorvel-hints page was not installed"; exit 1; }
if ! "$hints" "$doc/examples/first.sor" >hints.out 2>&1 || [ -s hints.out ]; then
  echo "FAIL: the installed sorvel-hints found something in first.sor"; cat hints.out; exit 1
fi
echo "ok: $hints has nothing to say about first.sor"

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
