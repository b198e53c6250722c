// Comments inside an i-block: skipped whole wherever an item may stand.
#pragma once

#include "base/catalog.h"
#include "input/source.h"

namespace sorvel {

// Skips the comment that starts at the position, if one does; `skipped` says
// whether there was one. Returns kOk, kErrEofInComment when the comment runs to the end
// of the input, or the error of reading a further line.
inline int skip_block_comment(Source& src, bool& skipped) {
  int kind;
  skipped = src.is_comment(kind) != 0;
  if (!skipped) return kOk;
  int r = src.skip_comment(kind);
  return r == kEndOfInput ? kErrEofInComment : r;
}

}  // namespace sorvel
