#!/bin/sh
# vim.sh -- the Vim syntax file loads without an error, and highlights the
# tokens that check.vim names in examples/variants.sor as it should.
#
#   vim.sh SOURCE_DIR
#
# Exit status: 0 good, 1 a failure, 77 when vim is missing (skipped).
set -u
cd "$1" || exit 1
command -v vim >/dev/null 2>&1 || { echo "vim not found: the Vim syntax file is not checked"; exit 77; }

if ! out=$(vim -u NONE -es -c 'source editors/vim/syntax/sorvel.vim' -c q </dev/null 2>&1); then
  echo "FAIL: editors/vim/syntax/sorvel.vim does not load"; echo "$out"
  vim -u NONE -es -c 'redir >> /dev/stdout' -c 'source editors/vim/syntax/sorvel.vim' -c q </dev/null
  exit 1
fi
if ! vim -u NONE -es -c 'source editors/vim/ftdetect/sorvel.vim' -c q </dev/null; then
  echo "FAIL: editors/vim/ftdetect/sorvel.vim does not load"; exit 1
fi
echo "ok: the syntax and ftdetect files load"
vim -u NONE -es -N -S tests/editors/check.vim examples/variants.sor </dev/null
