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

// The loose keyword test of "#define", "#undef" and "#const": the word's
// characters are read from the position, any one of them matching its letter
// is enough ("#dfooo6" passes for "define"), and then white space must follow.
// The characters are read before the white space is looked at, so a failure
// (80) leaves the position on the character after them ("#constant": on the
// "a" of "ant"); a line that ends first leaves it at the line's end.
// On success the blanks after the word are skipped too.
inline int loose_keyword(Source& src, const char* word, int length) {
  bool match = false;
  for (int k = 0; k < length && src.cur(); ++k) {
    if (src.cur() == word[k]) match = true;
    ++src.pos;
  }
  if (!match || !is_space(src.cur())) return 80;
  src.skip_blanks();
  return 0;
}

}  // namespace sorvel
