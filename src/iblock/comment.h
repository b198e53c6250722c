// Comments inside an i-block: skipped whole wherever an item may stand.
#pragma once

#include "input/source.h"

namespace sorvel {

// Skips the comment that starts at the position, if one does; `skipped` says
// whether there was one. Returns 0, error 25 when the comment runs to the end
// of the input, or the error of reading a further line.
inline int skip_block_comment(Source& src, bool& skipped) {
  int kind;
  skipped = src.is_comment(kind) != 0;
  if (!skipped) return 0;
  int r = src.skip_comment(kind);
  return r == -1 ? 25 : r;
}

}  // namespace sorvel
