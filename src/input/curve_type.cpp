#include "input/curve_type.h"

#include "base/catalog.h"
#include "base/chars.h"

namespace sorvel {

int get_curve_type(Source& src, float& code, float& value, bool allow_beats) {
  value = 1.0f;
  switch (to_lower(src.cur())) {
    case 'c': code = 5.0f; ++src.pos; break;
    case 'e': code = 1.0f; ++src.pos; break;
    case 'f': code = 0.0f; ++src.pos; break;
    case 'l': code = 2.0f; ++src.pos; break;
    case 's': code = 4.0f; ++src.pos; break;
    case 'v':
      code = 3.0f;
      ++src.pos;
      if (!src.get_f(value) || !(value > 0.0f)) return kErrBadCurveType;
      break;
    default: code = 0.0f; break;
  }
  src.skip_blanks();
  if (src.cur() == '*') {
    if (!allow_beats) return kErrBeatMoveNotAllowed;
    ++src.pos;
    code = code + 100.0f;
  }
  return kOk;
}

}  // namespace sorvel
