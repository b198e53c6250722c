// Small helpers shared by the preprocessors: name characters and a
// bounds-checked look at the line buffer.
#pragma once

#include "base/chars.h"
#include "input/source.h"

namespace sorvel {

// Characters that a line may hold after expansion (the buffer keeps its zero).
constexpr int kMaxLineText = kLineSize - 1;

// Names start with a letter and go on with letters, digits and "_".
inline bool is_name_char(int c) { return is_alnum(c) || c == '_'; }

// The character at index i of the line, or 0 outside the buffer. Past the
// end of the line the buffer holds zeros, so a look ahead stops there.
inline int char_at(const Source& src, int i) {
  return i >= 0 && i < kLineSize ? src.buffer[i] : 0;
}

}  // namespace sorvel
